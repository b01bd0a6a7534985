#include "lexicorn/services/offline_voice.h"

#include "foundation/log.h"

#include <espeak-ng/speak_lib.h>

#include <QHash>
#include <QtEndian>

#include <cstdint>
#include <mutex>
#include <vector>

namespace lexicorn {

namespace {

// eSpeak NG keeps all its state in globals, so it is started once and every
// synthesis holds this lock.
std::mutex espeakMutex;
int sampleRate = 0;  // 0 before the first start, -1 when it could not start
std::vector<int16_t>* collected = nullptr;

// What was said lately, by text: a batch of cards says the same words and
// sentences again and again, and synthesis is the dearest part of a card.
// Cleared when full rather than kept in order of use; held under espeakMutex.
constexpr qsizetype spokenLimit = 1024;
QHash<QByteArray, QByteArray> spoken;

// eSpeak hands the samples over in pieces; a null buffer marks the end.
int collectSamples(short* samples, int count, espeak_EVENT*)
{
    if (samples && count > 0 && collected)
        collected->insert(collected->end(), samples, samples + count);
    return 0;
}

// Starts eSpeak NG on first use. Must hold espeakMutex.
bool started()
{
    if (sampleRate != 0)
        return sampleRate > 0;
    // Without DONT_EXIT, eSpeak ends the whole process when its data is missing.
    const int rate = espeak_Initialize(AUDIO_OUTPUT_SYNCHRONOUS, 0, nullptr, espeakINITIALIZE_DONT_EXIT);
    if (rate <= 0) {
        logLine(QStringLiteral("offline voice: eSpeak NG could not start (is espeak-ng-data installed?)"));
        sampleRate = -1;
        return false;
    }
    espeak_SetSynthCallback(collectSamples);
    // The American voice, like the voice service's pronunciation; any English one otherwise.
    if (espeak_SetVoiceByName("en-us") != EE_OK && espeak_SetVoiceByName("en") != EE_OK) {
        logLine(QStringLiteral("offline voice: eSpeak NG has no English voice"));
        sampleRate = -1;
        return false;
    }
    sampleRate = rate;
    return true;
}

void appendLittleEndian32(QByteArray& out, uint32_t value)
{
    char bytes[4];
    qToLittleEndian(value, bytes);
    out.append(bytes, 4);
}

void appendLittleEndian16(QByteArray& out, uint16_t value)
{
    char bytes[2];
    qToLittleEndian(value, bytes);
    out.append(bytes, 2);
}

QByteArray wavFile(const std::vector<int16_t>& samples, int rate)
{
    const uint32_t dataBytes = uint32_t(samples.size() * sizeof(int16_t));
    QByteArray out;
    out.reserve(44 + qsizetype(dataBytes));
    out.append("RIFF", 4);
    appendLittleEndian32(out, 36 + dataBytes);
    out.append("WAVEfmt ", 8);
    appendLittleEndian32(out, 16);           // size of the format chunk
    appendLittleEndian16(out, 1);            // PCM
    appendLittleEndian16(out, 1);            // mono
    appendLittleEndian32(out, uint32_t(rate));
    appendLittleEndian32(out, uint32_t(rate) * 2);  // bytes per second
    appendLittleEndian16(out, 2);            // bytes per frame
    appendLittleEndian16(out, 16);           // bits per sample
    out.append("data", 4);
    appendLittleEndian32(out, dataBytes);
    const qsizetype at = out.size();
    out.resize(at + qsizetype(dataBytes));
    qToLittleEndian<int16_t>(samples.data(), qsizetype(samples.size()), out.data() + at);
    return out;
}

}  // namespace

QByteArray offlinePronunciation(const QString& word)
{
    const QByteArray text = word.trimmed().toUtf8();
    if (text.isEmpty())
        return {};
    std::vector<int16_t> samples;
    int rate = 0;
    {
        std::lock_guard lock(espeakMutex);
        if (const auto found = spoken.constFind(text); found != spoken.constEnd())
            return *found;
        if (!started())
            return {};
        collected = &samples;
        // The size counts the terminating zero, which QByteArray always has.
        const espeak_ERROR result = espeak_Synth(text.constData(), size_t(text.size()) + 1, 0, POS_CHARACTER, 0,
                                                 espeakCHARS_UTF8, nullptr, nullptr);
        collected = nullptr;
        rate = sampleRate;
        if (result != EE_OK) {
            logLine(QStringLiteral("offline voice: eSpeak NG could not say \"%1\"").arg(word));
            return {};
        }
    }
    if (samples.empty())
        return {};
    QByteArray wav = wavFile(samples, rate);
    std::lock_guard lock(espeakMutex);
    if (spoken.size() >= spokenLimit)
        spoken.clear();
    spoken.insert(text, wav);
    return wav;
}

}  // namespace lexicorn
