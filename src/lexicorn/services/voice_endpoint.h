#pragma once

#include <QByteArray>

#include "lexicorn/settings/preference_keys.h"
#include <QString>
#include <QUrl>

#include <chrono>

namespace lexicorn {

// The online voice service: GET https://HOST/dictvoice?audio=WORD&type=2
// answers with an MP3 of the word in an American voice.

// keys::voiceHost replaces the service's host. A value with its own scheme
// ("http://127.0.0.1:8000") is taken as the whole base address.
inline const QString defaultVoiceHost = QStringLiteral("dict.youdao.com");

// The word percent-encoded for a URL query: ASCII letters and digits and
// !$&'()*+,-./:;=?@_~ stay as they are, everything else (blanks, non-ASCII
// letters as UTF-8) becomes %XX.
QByteArray percentEncodedForQuery(const QString& text);

// The service address, from the setting or the default, without a trailing slash.
QString voiceBaseAddress();

// The address of the word's voice file; invalid when the host setting is unusable.
QUrl voiceURL(const QString& word);

// The name the voice file has among a card's media: "MN3_YD_" + word + "_1.mp3".
QString voiceFileName(const QString& word);

// The word's voice file from the service.
struct VoiceDownload {
    QByteArray audio;  // the file; empty when none came
    QString problem;   // why none came (no reply, HTTP status, empty reply)
    bool succeeded() const { return !audio.isEmpty(); }
};

// Fetches the word's voice file, giving up after the time-out. Blocks; safe
// from any thread (the main thread included, as the HTTP client has its own).
VoiceDownload downloadVoice(const QString& word, std::chrono::milliseconds timeout);
// The same for an address voiceURL made earlier.
VoiceDownload downloadVoice(const QUrl& url, std::chrono::milliseconds timeout);

}  // namespace lexicorn
