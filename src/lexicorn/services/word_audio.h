#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>

namespace lexicorn {

// A word's pronunciation as a file's bytes: the voice service's MP3 when it
// can be downloaded, else eSpeak NG's WAV. Cards get the same audio whether
// or not the service is reachable.
struct WordAudio {
    enum class Source { none, voiceService, offlineVoice };

    Source source = Source::none;
    QByteArray bytes;           // empty when source is none
    QString suffix;             // "mp3" or "wav"
    QString voiceServiceProblem;  // why the service's file was not used; empty when it was

    bool found() const { return source != Source::none; }
};

// How long a pronunciation waits for the voice service before speaking offline.
inline constexpr std::chrono::milliseconds voiceServiceTimeout{2500};

// Blocks for up to the time-out plus the synthesis; for background queues
// and the command line.
WordAudio wordAudio(const QString& word, std::chrono::milliseconds timeout = voiceServiceTimeout);

}  // namespace lexicorn
