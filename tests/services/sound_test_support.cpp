#include "sound_test_support.h"

#include "lexicorn/services/voice_endpoint.h"

#include "foundation/user_defaults.h"

#include <QtEndian>

namespace lexicorn::testing {

WavCheck checkWav(const QByteArray& file)
{
    WavCheck check;
    const auto u32 = [&](qsizetype at) { return qFromLittleEndian<quint32>(file.constData() + at); };
    const auto u16 = [&](qsizetype at) { return qFromLittleEndian<quint16>(file.constData() + at); };
    if (file.size() < 44)
        check.problem = QStringLiteral("shorter than a WAV header");
    else if (!file.startsWith("RIFF") || file.mid(8, 8) != "WAVEfmt ")
        check.problem = QStringLiteral("no RIFF/WAVE/fmt marks");
    else if (u32(4) != quint32(file.size() - 8))
        check.problem = QStringLiteral("RIFF size %1 for a file of %2 bytes").arg(u32(4)).arg(file.size());
    else if (u32(16) != 16 || u16(20) != 1 || u16(22) != 1 || u16(34) != 16)
        check.problem = QStringLiteral("not a 16-bit mono PCM format chunk");
    else if (u32(28) != u32(24) * 2 || u16(32) != 2)
        check.problem = QStringLiteral("byte rate or frame size does not fit the format");
    else if (file.mid(36, 4) != "data" || u32(40) != quint32(file.size() - 44))
        check.problem = QStringLiteral("data chunk missing or of the wrong size");
    if (!check.problem.isEmpty())
        return check;
    check.sampleRate = int(u32(24));
    check.samples = (file.size() - 44) / 2;
    for (qsizetype at = 44; at + 1 < file.size() && check.silent; at += 2)
        check.silent = u16(at) == 0;
    return check;
}

std::unique_ptr<ServerProcess> startVoiceServer()
{
    return std::make_unique<ServerProcess>(QStringLiteral("python3"), QStringList{QStringLiteral(LEXICORN_VOICE_SERVER)});
}

void useVoiceService(const QString& base)
{
    UserDefaults::standard().set(keys::voiceHost, base);
}

}  // namespace lexicorn::testing
