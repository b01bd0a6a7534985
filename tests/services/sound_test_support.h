#pragma once

#include "support/server_process.h"
#include "support/temp_home.h"

#include <QByteArray>
#include <QString>

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

}  // namespace lexicorn::testing
