#pragma once

#include <QByteArray>
#include <QString>

namespace lexicorn {

// The word spoken by eSpeak NG in its American English voice, as a complete
// WAV file (RIFF, 16-bit mono PCM at eSpeak's own rate), for when the voice
// service cannot be reached. Empty when the text is blank or eSpeak NG cannot
// start (its voice data missing, say). Blocks while it synthesises, a few
// tens of milliseconds for a word; safe from any thread, one call at a time
// speaking while others wait.
QByteArray offlinePronunciation(const QString& word);

}  // namespace lexicorn
