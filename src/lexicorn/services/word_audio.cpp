#include "lexicorn/services/word_audio.h"

#include "lexicorn/services/offline_voice.h"
#include "lexicorn/services/voice_endpoint.h"

namespace lexicorn {

WordAudio wordAudio(const QString& word, std::chrono::milliseconds timeout)
{
    WordAudio audio;
    VoiceDownload download = downloadVoice(word, timeout);
    if (download.succeeded()) {
        audio.source = WordAudio::Source::voiceService;
        audio.bytes = std::move(download.audio);
        audio.suffix = QStringLiteral("mp3");
        return audio;
    }
    audio.voiceServiceProblem = download.problem;
    audio.bytes = offlinePronunciation(word);
    if (!audio.bytes.isEmpty()) {
        audio.source = WordAudio::Source::offlineVoice;
        audio.suffix = QStringLiteral("wav");
    }
    return audio;
}

}  // namespace lexicorn
