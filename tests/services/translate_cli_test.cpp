#include "translation_server.h"

#include "support/server_process.h"
#include "support/temp_home.h"

#include "foundation/user_defaults.h"

#include "support/cli_run.h"

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using testing::CliRun;
const auto lexicorn = testing::runLexicorn;

// The stored engine as the command left it on disk.
QString storedEngine(const testing::TempHome& home)
{
    return UserDefaults(home.path() + QStringLiteral("/.config/Lexicorn/Lexicorn.ini")).string(QStringLiteral("SPECIAL_ENGINE"));
}

// Which engine translates is the library's; the command picks the stored one
// unless --engine names another for this call, and joins the words with blanks.
TEST(TranslateCli, EngineOptionIsForThisCallOnly)
{
    testing::TempHome home;
    testing::TranslationServer server({{"google_cn", QJsonObject{{"answer", "谷歌"}}},
                                       {"youdao", QJsonObject{{"answer", "有道"}}},
                                       {"eudic", QJsonObject{{"answer", "欧路"}}}});
    ASSERT_TRUE(server.started());
    server.pointHostsHere();
    struct Case {
        const char* name;
        std::optional<int> storedBefore;
        QStringList arguments;
        QString out;
        QString asked;
        QString storedAfter;
    };
    const Case cases[] = {
        {"first use stores and uses engine 1", std::nullopt, {"translate", "The", "cat."}, "谷歌\n", "google_cn", "1"},
        {"the stored engine is used", 2, {"translate", "The", "cat."}, "有道\n", "youdao", "2"},
        {"--engine overrides without storing", 2, {"translate", "--engine=4", "Tom", "&", "Jerry"}, "欧路\n", "eudic", "2"},
    };
    for (const Case& c : cases) {
        if (c.storedBefore)
            UserDefaults::standard().set(QStringLiteral("SPECIAL_ENGINE"), *c.storedBefore);
        else
            UserDefaults::standard().remove(QStringLiteral("SPECIAL_ENGINE"));
        const CliRun run = lexicorn(c.arguments);
        EXPECT_EQ(run.status, 0) << c.name << "\n" << run.err.toStdString();
        EXPECT_EQ(run.out, c.out) << c.name;
        EXPECT_EQ(storedEngine(home), c.storedAfter) << c.name;
        const QStringList asked = server.rolesAsked();
        EXPECT_EQ(asked.isEmpty() ? QString() : asked.last(), c.asked) << c.name;
    }
    EXPECT_EQ(server.requests().last()["target"].toString(),
              QStringLiteral("/Home/TranslationAjax?to=zh-CN&from=en&text=Tom%20&%20Jerry&contentType=text/plain"));
}

TEST(TranslateCli, EudicLogsWhatItGot)
{
    testing::TempHome home;
    const QString page = QStringLiteral("<!DOCTYPE html><html><body>Busy</body></html>");
    testing::TranslationServer server({{"eudic", QJsonObject{{"answer", "你好"}}}});
    testing::TranslationServer errorPage({{"eudic", QJsonObject{{"body", page}}}});
    testing::TranslationServer empty({{"eudic", QJsonObject{{"answer", ""}}}});
    ASSERT_TRUE(server.started() && errorPage.started() && empty.started());
    const QString null = QStringLiteral("🌀🌀🌀🌀 sentenceCN Null!!! 🌀🌀🌀🌀");
    struct Case {
        const char* name;
        QString host;
        QStringList logged;
        QStringList notLogged;
    };
    const Case cases[] = {
        {"translation", server.root("eudic"), {"🌀🌀🌀🌀 sentenceCN: 你好 🌀🌀🌀🌀"}, {null, "Olu error"}},
        {"error page", errorPage.root("eudic"), {"🌀🌀🌀🌀 Olu error: " + page + " 🌀🌀🌀🌀", null}, {"sentenceCN:"}},
        {"empty body", empty.root("eudic"), {"🌀🌀🌀🌀 sentenceCN:  🌀🌀🌀🌀", null}, {"Olu error"}},
        {"refused", QStringLiteral("http://127.0.0.1:%1").arg(testing::closedPort()), {"🌀🌀🌀🌀 Olu error: ", null}, {"sentenceCN:"}},
    };
    for (const Case& c : cases) {
        UserDefaults::standard().set(QStringLiteral("SPECIAL_HOST_EUDIC"), c.host);
        const CliRun run = lexicorn({"translate", "--engine", "4", "Hello"});
        EXPECT_EQ(run.status, 0) << c.name;
        for (const QString& line : c.logged)
            EXPECT_TRUE(run.err.contains(line)) << c.name << ": no \"" << line.toStdString() << "\" in\n" << run.err.toStdString();
        for (const QString& line : c.notLogged)
            EXPECT_FALSE(run.err.contains(line)) << c.name << ": \"" << line.toStdString() << "\" in\n" << run.err.toStdString();
    }
}

}  // namespace
}  // namespace lexicorn
