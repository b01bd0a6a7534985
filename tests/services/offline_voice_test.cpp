#include "sound_test_support.h"

#include "lexicorn/services/offline_voice.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace lexicorn {
namespace {

TEST(SoundOfflineVoice, SaysWordsAsCompleteWavFilesAndBlankTextAsNothing)
{
    const QString words[] = {QStringLiteral("hello"), QStringLiteral("ice cream"), QStringLiteral("naïve"),
                             QStringLiteral("  pronunciation  ")};
    for (const QString& word : words) {
        const testing::WavCheck check = testing::checkWav(offlinePronunciation(word));
        ASSERT_TRUE(check.problem.isEmpty()) << word.toStdString() << ": " << check.problem.toStdString();
        EXPECT_GE(check.sampleRate, 8000) << word.toStdString();
        // At least a fifth of a second of sound: a spoken word, not a click.
        EXPECT_GE(check.samples, check.sampleRate / 5) << word.toStdString();
        EXPECT_FALSE(check.silent) << word.toStdString();
    }
    for (const QString& blank : {QString(), QStringLiteral("   "), QStringLiteral("\n\t")})
        EXPECT_TRUE(offlinePronunciation(blank).isEmpty());
}

// eSpeak NG keeps global state; callers on several threads must each get the
// whole of their own text, not a mix or a share of someone else's. Its output
// varies slightly from one call to the next, so lengths are compared, for
// texts that take clearly different times to say.
TEST(SoundOfflineVoice, ThreadsSpeakingAtOnceEachGetTheirOwnText)
{
    const QString texts[] = {QStringLiteral("cat"), QStringLiteral("thunderstorm"), QStringLiteral("internationalization"),
                             QStringLiteral("the quick brown fox jumps over the lazy dog")};
    // Together first, so the threads also race to start eSpeak NG.
    std::vector<QByteArray> together(std::size(texts) * 3);
    std::vector<std::thread> threads;
    for (size_t i = 0; i < together.size(); ++i)
        threads.emplace_back([&, i] { together[i] = offlinePronunciation(texts[i % std::size(texts)]); });
    for (std::thread& thread : threads)
        thread.join();
    for (size_t i = 0; i < together.size(); ++i) {
        const QString& text = texts[i % std::size(texts)];
        const testing::WavCheck check = testing::checkWav(together[i]);
        ASSERT_TRUE(check.problem.isEmpty()) << text.toStdString() << ": " << check.problem.toStdString();
        const qint64 alone = testing::checkWav(offlinePronunciation(text)).samples;
        EXPECT_NEAR(double(check.samples), double(alone), alone * 0.15) << text.toStdString();
    }
}

}  // namespace
}  // namespace lexicorn
