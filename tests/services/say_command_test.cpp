#include "sound_test_support.h"

#include "support/cli_run.h"

#include <QFile>

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using testing::CliRun;
using testing::TempHome;
const auto lexicorn = testing::runLexicorn;

TEST(SayCommand, WritesTheServiceFileOrElseTheOfflineVoice)
{
    const auto voiceServer = testing::startVoiceServer();
    ASSERT_TRUE(voiceServer->started());
    struct Case {
        QString word;
        QByteArray serviceFile;  // expected content; empty when the offline WAV is expected
        const char* said;
    };
    const Case cases[] = {
        {QStringLiteral("hello"), "ID3 fake mp3 for hello", "of MP3 from the voice service"},
        {QStringLiteral("missing"), {}, "of WAV from the offline voice (eSpeak NG; the voice service failed: the voice service answered HTTP 404)"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.word.toStdString());
        TempHome home;
        testing::useVoiceService(voiceServer->url());
        const QString out = home.path() + QStringLiteral("/voice.audio");
        const CliRun run = lexicorn({QStringLiteral("say"), QStringLiteral("--out"), out, c.word});
        EXPECT_EQ(run.status, 0) << run.err.toStdString();
        EXPECT_TRUE(run.out.startsWith(QStringLiteral("wrote ") + out + u':')) << run.out.toStdString();
        EXPECT_TRUE(run.out.contains(QString::fromUtf8(c.said))) << run.out.toStdString();
        QFile file(out);
        const QByteArray written = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        if (!c.serviceFile.isEmpty()) {
            EXPECT_EQ(written, c.serviceFile);
        } else {
            const testing::WavCheck check = testing::checkWav(written);
            EXPECT_TRUE(check.problem.isEmpty()) << check.problem.toStdString();
            EXPECT_FALSE(check.silent);
        }
    }
}

// Bad calls are in the command-line tool's table; this one fails only when writing.
TEST(SayCommand, AFileThatCannotBeWrittenFailsOnOneLine)
{
    TempHome home;
    testing::useVoiceService(QStringLiteral("http://127.0.0.1:%1").arg(testing::closedPort()));
    const CliRun run = lexicorn({"say", "--out", "/no/such/folder/voice.wav", "hello"});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.err.startsWith(QStringLiteral("lexicorn: cannot write /no/such/folder/voice.wav"))) << run.err.toStdString();
    EXPECT_EQ(run.err.count(u'\n'), 1) << run.err.toStdString();
    EXPECT_TRUE(run.out.isEmpty());
}

}  // namespace
}  // namespace lexicorn
