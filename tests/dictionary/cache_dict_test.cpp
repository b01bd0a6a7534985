#include "dictionary_fixtures.h"

#include "support/temp_home.h"

#include "lexicorn/dictionary/cache_dict.h"
#include "lexicorn/dictionary/dictionary_files.h"

#include <QFile>

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

std::shared_ptr<const CacheDict> load(const QByteArray& json, jsonread::Failure& failure)
{
    return CacheDict::fromJson(JsonBuffer::copyOf(json.toStdString()), failure);
}

TEST(CacheDict, IndexesEveryHeadwordAndDecodesItsRecordsOnLookup)
{
    const QByteArray json = testing::cacheJson({
        {QStringLiteral("run"), {testing::makeRecord(QStringLiteral("run"), {testing::makeEntry(QStringLiteral("run"), QStringLiteral("verb"), {"move"})})}},
        {QStringLiteral("ice cream"), {testing::makeRecord(QStringLiteral("ice cream"), {})}},
        {QStringLiteral("UN"), {}},
    });
    jsonread::Failure failure;
    const auto dict = load(json, failure);
    ASSERT_TRUE(dict) << failure.describe().toStdString();
    EXPECT_EQ(dict->size(), 3u);
    EXPECT_TRUE(dict->contains(QStringLiteral("ice cream")));
    EXPECT_FALSE(dict->contains(QStringLiteral("un")));
    EXPECT_FALSE(dict->find(QStringLiteral("walk")));
    ASSERT_TRUE(dict->find(QStringLiteral("UN")));
    EXPECT_TRUE(dict->find(QStringLiteral("UN"))->empty());

    const auto run = dict->find(QStringLiteral("run"));
    ASSERT_TRUE(run);
    EXPECT_EQ(run->front()->enWords.front()->defs.front()->def_en, QStringLiteral("move"));
    // Each lookup hands out objects of its own.
    EXPECT_NE(dict->find(QStringLiteral("run"))->front(), run->front());
}

TEST(CacheDict, KeysWithEscapesAndRepeatedKeys)
{
    const QByteArray json = R"({"caf\u00e9":[{"index":1,"word":"a","enWords":[]}],
        "say \"hi\"":[],
        "\ufeff\ufeffbom":[],
        "dup":[{"index":1,"word":"first","enWords":[]}],
        "dup":[{"index":2,"word":"second","enWords":[]}]})";
    jsonread::Failure failure;
    const auto dict = load(json, failure);
    ASSERT_TRUE(dict) << failure.describe().toStdString();
    EXPECT_TRUE(dict->contains(QStringLiteral("café")));
    EXPECT_TRUE(dict->contains(QStringLiteral("say \"hi\"")));
    EXPECT_TRUE(dict->headwords().contains(QStringLiteral("\uFEFF\uFEFFbom")));  // a leading U+FEFF is text, not a mark
    EXPECT_EQ(dict->size(), 4u);
    EXPECT_EQ(dict->find(QStringLiteral("dup"))->front()->word, QStringLiteral("second"));
}

TEST(CacheDict, RecordsMadeInMemoryIndexLikeTheSameTextLoadedFromAFile)
{
    CacheRecords records{
        {QStringLiteral("a \"quoted\" word"), {testing::makeRecord(QStringLiteral("q"), {})}},
        {QStringLiteral("中文"), {testing::makeRecord(QStringLiteral("zh"), {testing::makeEntry(QStringLiteral("中文"), QStringLiteral("n"), {"x"})})}},
    };
    const auto made = CacheDict::fromRecords(records);
    jsonread::Failure failure;
    const auto loaded = CacheDict::fromJson(JsonBuffer::copyOf(made->json()), failure);
    ASSERT_TRUE(loaded);
    for (const auto& [headword, list] : records) {
        ASSERT_TRUE(made->find(headword)) << headword.toStdString();
        EXPECT_EQ(made->find(headword)->front()->word, list.front()->word);
        EXPECT_EQ(loaded->find(headword)->front()->word, list.front()->word);
    }
}

TEST(CacheDict, MalformedDocumentsAreRejectedWithWhereAndWhat)
{
    struct Case {
        const char* json;
        const char* expected;  // part of the description
    };
    const Case cases[] = {
        {"", "not an object"},
        {"[]", "not an object"},
        {"{\"a\":[]", "unterminated object"},
        {"{\"a\":[] x", "expected ',' or '}'"},
        {"{\"a\" []}", "expected ':'"},
        {"{\"a\":[]} {}", "unexpected content"},
        {"{\"a\":[{\"index\":1}", "unterminated value"},
        {"{\"a\":\"text\"}", "record \"a\": is a single value, not an array or an object"},
        {"{\"a\":[1,]}", "record \"a\""},
        {"{\"a\":[{\"index\":1,\"word\":\"a\"}]}", "record \"a\"[0]: key \"enWords\" is missing"},
        {"{\"a\":[],\"b\":[{\"index\":1,\"word\":\"b\",\"enWords\":[{}]}]}", "record \"b\"[0].enWords[0]: key \"title\" is missing"},
        {"{\"a\":[\"\\q\"]}", "record \"a\""},
        {"{\"a\":[\"\xff\"]}", "record \"a\""},
        {"{\"\\x\":[]}", "not a valid string"},
        {"{\"6\xff\xff\":[]}", "not a valid string"},
        {"{\"a\tb\":[]}", "not a valid string"},
    };
    for (const Case& c : cases) {
        jsonread::Failure failure;
        EXPECT_FALSE(load(QByteArray(c.json), failure)) << c.json;
        EXPECT_TRUE(failure.describe().contains(QString::fromUtf8(c.expected))) << c.json << " -> " << failure.describe().toStdString();
    }
}

TEST(CacheDict, EmptyObjectAndByteOrderMark)
{
    jsonread::Failure failure;
    const auto empty = load(" { } ", failure);
    ASSERT_TRUE(empty);
    EXPECT_TRUE(empty->isEmpty());
    const auto marked = load("\xEF\xBB\xBF{\"a\":[]}", failure);
    ASSERT_TRUE(marked);
    EXPECT_TRUE(marked->contains(QStringLiteral("a")));
}

TEST(CacheFile, WritingDoesNotTruncateALongerOldFile)
{
    testing::TempHome home;
    const QString path = home.dictPath(QStringLiteral("collins_html.json"));
    const auto dict = CacheDict::fromRecords({{QStringLiteral("a"), {}}});
    ASSERT_TRUE(writeCacheFile(*dict, path));
    EXPECT_EQ(home.readDict(QStringLiteral("collins_html.json")), QByteArray("{\"a\":[]}"));

    home.writeDict(QStringLiteral("collins_html.json"), QByteArray(20, 'x'));
    ASSERT_TRUE(writeCacheFile(*dict, path));
    EXPECT_EQ(home.readDict(QStringLiteral("collins_html.json")), QByteArray("{\"a\":[]}") + QByteArray(12, 'x'));

    // An empty dictionary writes nothing, not even an empty file.
    ASSERT_TRUE(writeCacheFile(*CacheDict::empty(), home.dictPath(QStringLiteral("none.json"))));
    EXPECT_FALSE(QFile::exists(home.dictPath(QStringLiteral("none.json"))));
}

TEST(CacheFileDeathTest, ACacheFileThatDoesNotDecodeEndsTheProcessNamingFileRecordAndKey)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    testing::TempHome home;
    home.writeDict(QStringLiteral("LDOCE5_html.json"), R"({"take":[{"index":1,"word":"take","enWords":[{"title":"take"}]}]})");
    EXPECT_EXIT(readDictionaryFile(home.dictPath(QStringLiteral("LDOCE5_html.json"))), ::testing::ExitedWithCode(70),
                "LDOCE5_html.json.*record \"take\"\\[0\\]\\.enWords\\[0\\]: key \"star\" is missing");
}

}  // namespace
}  // namespace lexicorn
