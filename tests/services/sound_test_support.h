#pragma once

#include "support/server_process.h"
#include "support/temp_home.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>

namespace lexicorn::testing {

// What a WAV file's header says, checked against its length.
struct WavCheck {
    QString problem;  // empty when the file is a well-formed 16-bit mono PCM WAV
    int sampleRate = 0;
    qint64 samples = 0;
    bool silent = true;  // every sample zero
};
WavCheck checkWav(const QByteArray& file);

// The stand-in voice service (voice_server.py).
std::unique_ptr<ServerProcess> startVoiceServer();

// Points the voice service setting of the current home at base.
void useVoiceService(const QString& base);

// Runs the event loop until done() holds or the limit passes; returns done().
// The limit only stops a broken test from hanging.
bool runEventsUntil(const std::function<bool()>& done, std::chrono::milliseconds limit = std::chrono::seconds(30));

}  // namespace lexicorn::testing
