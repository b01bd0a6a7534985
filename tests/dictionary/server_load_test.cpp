#include "dictionary_fixtures.h"

#include "support/temp_home.h"

#include "lexicorn/dictionary/en_word_server.h"

#include <QFile>

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

const QByteArray rawRun = R"({"run": {"star": "5", "readings": ["rʌn"], "defs": [
    {"def_cn": "跑", "def_en": "move fast", "pos_cn": "动词", "pos_en": "VERB", "ext": []}]}})";

QByteArray cacheWith(const char* headword, const char* definition)
{
    return testing::cacheJson({{QString::fromUtf8(headword), testing::oneSense(QString::fromUtf8(headword), definition)}});
}

TEST(ServerLoad, RawCollinsIsConvertedOnceAndItsCacheWritten)
{
    testing::TempHome home;
    home.writeDict(QStringLiteral("collins.json"), rawRun);
    {
        EnWordServer server;
        server.setDictTypeWithNumber(1);
        server.waitForLoadJobs();
        EXPECT_FALSE(server.isCaching());
        EXPECT_EQ(testing::definitionsFound(server, QStringLiteral("run")), QStringList{"move fast"});
        EXPECT_EQ(server.path(), home.dictPath(QStringLiteral("collins_html.json")));
    }
    const QByteArray cache = home.readDict(QStringLiteral("collins_html.json"));
    EXPECT_TRUE(cache.contains("\"readings\":\"/rʌn/\"")) << cache.toStdString();

    // Once the cache exists it is read instead of the raw file.
    home.writeDict(QStringLiteral("collins_html.json"), cacheWith("run", "from the cache"));
    EnWordServer later;
    later.setDictTypeWithNumber(1);
    later.waitForLoadJobs();
    EXPECT_EQ(testing::definitionsFound(later, QStringLiteral("run")), QStringList{"from the cache"});
}

TEST(ServerLoad, WithoutAnyCollinsFileTheEngineStaysLoadingForever)
{
    testing::TempHome home;
    EnWordServer server;
    server.asyncInitDict();
    server.waitForLoadJobs();
    EXPECT_TRUE(server.isCaching());
    EXPECT_TRUE(server.cacheDictNull());
    EXPECT_EQ(server.path(), home.dictPath(QStringLiteral("collins.json")));

    // Even once the file is there, no new load starts, and no switch either.
    home.writeDict(QStringLiteral("collins.json"), rawRun);
    server.asyncInitDict();
    server.setDictTypeWithNumber(0);
    server.waitForLoadJobs();
    EXPECT_TRUE(server.isCaching());
    EXPECT_TRUE(server.cacheDictNull());
}

TEST(ServerLoad, AMissingLdoce5FileEndsLoadingWithAnEmptyDictionary)
{
    testing::TempHome home;
    EnWordServer server;
    ::testing::internal::CaptureStderr();
    server.setDictTypeWithNumber(0);
    server.waitForLoadJobs();
    const std::string log = ::testing::internal::GetCapturedStderr();
    EXPECT_FALSE(server.isCaching());
    EXPECT_TRUE(server.cacheDictNull());
    EXPECT_NE(log.find("LDOCE5_html.json"), std::string::npos);
}

TEST(ServerLoad, LoadsTheSelectedDictionaryAndSwitches)
{
    testing::TempHome home;
    home.writeDict(QStringLiteral("LDOCE5_html.json"), cacheWith("take", "ldoce"));
    home.writeDict(QStringLiteral("collins_html.json"), cacheWith("take", "collins"));
    EnWordServer server;
    // Collins is selected at first, and nothing is loaded until asked for.
    EXPECT_EQ(server.dictTypeNumber(), 1);
    EXPECT_EQ(server.dictName(), QStringLiteral("collins"));
    EXPECT_TRUE(server.cacheDictNull());
    EXPECT_TRUE(server.query(QStringLiteral("take"), QStringLiteral("s"))->enWords().empty());
    // enDict with a path only records it; without one it reads the file but does not keep it.
    EXPECT_TRUE(server.enDict(home.dictPath(QStringLiteral("LDOCE5_html.json")))->isEmpty());
    EXPECT_EQ(server.path(), home.dictPath(QStringLiteral("LDOCE5_html.json")));
    EXPECT_FALSE(server.enDict()->isEmpty());
    EXPECT_TRUE(server.cacheDictNull());
    server.setDictTypeWithNumber(1);
    server.waitForLoadJobs();
    EXPECT_EQ(testing::definitionsFound(server, QStringLiteral("take")), QStringList{"collins"});

    // Values other than 0 and 1 are ignored; the same dictionary once loaded is not reloaded.
    QFile::remove(home.dictPath(QStringLiteral("collins_html.json")));
    server.setDictTypeWithNumber(7);
    server.setDictTypeWithNumber(-1);
    server.setDictTypeWithNumber(1);
    server.waitForLoadJobs();
    EXPECT_EQ(server.dictTypeNumber(), 1);
    EXPECT_EQ(testing::definitionsFound(server, QStringLiteral("take")), QStringList{"collins"});

    // The other one loads in the background.
    server.setDictTypeWithNumber(0);
    EXPECT_EQ(server.dictTypeNumber(), 0);
    server.waitForLoadJobs();
    EXPECT_FALSE(server.isCaching());
    EXPECT_EQ(server.dictFileName(), QStringLiteral("LDOCE5_html.json"));
    EXPECT_EQ(server.path(), home.dictPath(QStringLiteral("LDOCE5_html.json")));
    EXPECT_EQ(testing::definitionsFound(server, QStringLiteral("take")), QStringList{"ldoce"});
}

TEST(ServerLoad, DictTypeWithAnUnknownIndexEndsTheProcess)
{
    EnWordServer server;
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(server.dictTypeWithIndex(2), ::testing::ExitedWithCode(70), "dictionary index 2");
}

TEST(ServerWordForms, MissingIsSilentBrokenIsReportedAndTheMapIsReadOnceUntilReloaded)
{
    struct Case {
        const char* content;  // nullptr: no file
        bool reported;
        size_t size;
    };
    const Case cases[] = {
        {nullptr, false, 0},
        {R"({"went": "go", "ran": "run"})", false, 2},
        {R"({"went": 1})", true, 0},
        {R"(["went"])", true, 0},
        {R"({"went": "go")", true, 0},
    };
    for (const Case& c : cases) {
        testing::TempHome home;
        if (c.content)
            home.writeDict(QStringLiteral("wordforms.json"), c.content);
        EnWordServer server;
        ::testing::internal::CaptureStderr();
        const size_t size = server.wordforms()->size();
        const std::string log = ::testing::internal::GetCapturedStderr();
        EXPECT_EQ(size, c.size) << (c.content ? c.content : "no file");
        EXPECT_EQ(log.find("🌀🌀🌀 wordforms 读取错误!") != std::string::npos, c.reported) << log;

        home.writeDict(QStringLiteral("wordforms.json"), R"({"a": "b", "c": "d", "e": "f"})");
        EXPECT_EQ(server.wordforms()->size(), c.size);  // kept until the files are reloaded
        server.reloadFiles();
        EXPECT_EQ(server.wordforms()->size(), 3u);
    }
}

}  // namespace
}  // namespace lexicorn
