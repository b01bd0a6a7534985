#include "sound_test_support.h"

#include "lexicorn/services/voice_endpoint.h"
#include "lexicorn/services/word_audio.h"

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using testing::TempHome;

TEST(SoundVoiceURL, EncodesTheWordForTheQueryOfTheConfiguredService)
{
    struct Case {
        std::optional<QString> host;  // the setting; none when unset
        QString word;
        QString expected;
    };
    const Case cases[] = {
        {std::nullopt, QStringLiteral("hello"), QStringLiteral("https://dict.youdao.com/dictvoice?audio=hello&type=2")},
        {QString(), QStringLiteral("hello"), QStringLiteral("https://dict.youdao.com/dictvoice?audio=hello&type=2")},
        {std::nullopt, QStringLiteral("ice cream"), QStringLiteral("https://dict.youdao.com/dictvoice?audio=ice%20cream&type=2")},
        {std::nullopt, QStringLiteral("café"), QStringLiteral("https://dict.youdao.com/dictvoice?audio=caf%C3%A9&type=2")},
        {std::nullopt, QStringLiteral("rock'n'roll"), QStringLiteral("https://dict.youdao.com/dictvoice?audio=rock'n'roll&type=2")},
        {std::nullopt, QStringLiteral("well-being_~."), QStringLiteral("https://dict.youdao.com/dictvoice?audio=well-being_~.&type=2")},
        {std::nullopt, QStringLiteral("C#\"<>%"), QStringLiteral("https://dict.youdao.com/dictvoice?audio=C%23%22%3C%3E%25&type=2")},
        {QStringLiteral("voice.example.org"), QStringLiteral("a b"), QStringLiteral("https://voice.example.org/dictvoice?audio=a%20b&type=2")},
        {QStringLiteral("http://127.0.0.1:8080"), QStringLiteral("hello"), QStringLiteral("http://127.0.0.1:8080/dictvoice?audio=hello&type=2")},
        {QStringLiteral("http://127.0.0.1:8080/"), QStringLiteral("hello"), QStringLiteral("http://127.0.0.1:8080/dictvoice?audio=hello&type=2")},
    };
    for (const Case& c : cases) {
        TempHome home;
        if (c.host)
            testing::useVoiceService(*c.host);
        const QUrl url = voiceURL(c.word);
        EXPECT_TRUE(url.isValid()) << c.word.toStdString();
        EXPECT_EQ(url.toString(QUrl::FullyEncoded), c.expected) << c.word.toStdString();
    }
}

TEST(SoundWordAudio, TakesTheServiceFileWhenThereIsOneElseTheOfflineVoice)
{
    const auto voiceServer = testing::startVoiceServer();
    ASSERT_TRUE(voiceServer->started());
    struct Case {
        QString service;
        QString word;
        WordAudio::Source source;
        QByteArray bytes;      // the service's file, when it is used
        const char* problem;   // part of the reason the service was not used
    };
    const Case cases[] = {
        {voiceServer->url(), QStringLiteral("hello"), WordAudio::Source::voiceService, "ID3 fake mp3 for hello", ""},
        // The service sees the word encoded.
        {voiceServer->url(), QStringLiteral("ice cream"), WordAudio::Source::voiceService, "ID3 fake mp3 for ice%20cream", ""},
        {voiceServer->url(), QStringLiteral("missing"), WordAudio::Source::offlineVoice, {}, "HTTP 404"},
        {QStringLiteral("http://bad host"), QStringLiteral("hello"), WordAudio::Source::offlineVoice, {}, "SPECIAL_HOST_VOICE"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE((c.service + u' ' + c.word).toStdString());
        TempHome home;
        testing::useVoiceService(c.service);
        const WordAudio audio = wordAudio(c.word, std::chrono::milliseconds(500));
        EXPECT_EQ(audio.source, c.source);
        EXPECT_TRUE(audio.voiceServiceProblem.contains(QString::fromUtf8(c.problem))) << audio.voiceServiceProblem.toStdString();
        if (c.source == WordAudio::Source::voiceService) {
            EXPECT_EQ(audio.bytes, c.bytes);
            EXPECT_EQ(audio.suffix, QStringLiteral("mp3"));
        } else {
            const testing::WavCheck check = testing::checkWav(audio.bytes);
            EXPECT_TRUE(check.problem.isEmpty()) << check.problem.toStdString();
            EXPECT_EQ(audio.suffix, QStringLiteral("wav"));
        }
    }
}

}  // namespace
}  // namespace lexicorn
