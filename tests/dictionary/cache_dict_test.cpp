#include "dictionary_fixtures.h"

#include "support/temp_home.h"

#include "lexicorn/dictionary/cache_dict.h"
#include "lexicorn/dictionary/cache_index_file.h"
#include "lexicorn/dictionary/dictionary_files.h"

#include <QFile>

#include <sys/stat.h>
#include <fcntl.h>

#include <functional>

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
        {QStringLiteral("run"), testing::oneSense(QStringLiteral("run"), "move")},
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
    EXPECT_EQ(dict->find(QStringLiteral("UN")), std::optional(EnWordDataList{}));

    const auto run = dict->find(QStringLiteral("run"));
    ASSERT_TRUE(run);
    EXPECT_EQ(run->front()->enWords.front()->defs.front()->def_en, QStringLiteral("move"));
    // Each lookup hands out objects of its own.
    EXPECT_NE(dict->find(QStringLiteral("run"))->front(), run->front());
}

TEST(CacheDict, KeysWithEscapesRepeatedKeysAByteOrderMarkAndAnEmptyObject)
{
    // A byte order mark before the document is skipped.
    const QByteArray json = "\xEF\xBB\xBF" R"({"caf\u00e9":[{"index":1,"word":"a","enWords":[]}],
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
    const auto empty = load(" { } ", failure);
    ASSERT_TRUE(empty);
    EXPECT_TRUE(empty->isEmpty());
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

QByteArray cacheOf(const char* definition)
{
    // "zebra" comes last, so its records end within the parser's padding of the file's end.
    return testing::cacheJson({{QStringLiteral("run"), testing::oneSense(QStringLiteral("run"), definition)},
                               {QStringLiteral("say \"hi\""), testing::oneSense(QStringLiteral("hi"), definition)},
                               {QStringLiteral("zebra"), testing::oneSense(QStringLiteral("zebra"), definition)}});
}

QString definitionOf(const CacheDict& dict, const QString& word)
{
    const std::optional<EnWordDataList> records = dict.find(word);
    return records && !records->empty() ? records->front()->enWords.front()->defs.front()->def_en : QString();
}

ino_t inodeOf(const QString& path)
{
    struct stat status {};
    return ::stat(path.toLocal8Bit().constData(), &status) == 0 ? status.st_ino : 0;
}

// The index kept next to a cache file is used while it holds for the file,
// and made again, never trusted, when it is damaged or describes another file.
TEST(CacheIndexFile, IsUsedWhileItHoldsForTheFileAndMadeAgainOtherwise)
{
    struct Case {
        const char* what;
        std::function<void(testing::TempHome&, const QString& cache, const QString& index)> damage;
        QString definitionAfter;
    };
    const QString cacheName = QStringLiteral("LDOCE5_html.json");
    const auto resize = [](const QString& path, qint64 size) { QFile(path).resize(size); };
    const Case cases[] = {
        {"nothing changed", [](auto&, auto&, auto&) {}, QStringLiteral("move")},
        {"index truncated", [&](auto&, auto&, const QString& index) { resize(index, QFile(index).size() / 2); }, QStringLiteral("move")},
        {"index emptied", [&](auto&, auto&, const QString& index) { resize(index, 0); }, QStringLiteral("move")},
        {"index byte flipped",
         [&](testing::TempHome& home, auto&, auto&) {
             QByteArray bytes = home.readDict(cacheName + QStringLiteral(".index"));
             bytes[bytes.size() - 3] = char(bytes[bytes.size() - 3] ^ 0x20);
             home.writeDict(cacheName + QStringLiteral(".index"), bytes);
         },
         QStringLiteral("move")},
        {"cache rewritten, same size",
         [&](testing::TempHome& home, auto&, auto&) { home.writeDict(cacheName, cacheOf("walk")); },
         QStringLiteral("walk")},
        {"cache rewritten, same size and time",
         [&](testing::TempHome& home, const QString& cache, auto&) {
             struct stat before {};
             ::stat(cache.toLocal8Bit().constData(), &before);
             home.writeDict(cacheName, cacheOf("walk"));
             const timespec times[2] = {before.st_atim, before.st_mtim};
             ::utimensat(AT_FDCWD, cache.toLocal8Bit().constData(), times, 0);
         },
         QStringLiteral("walk")},
        {"index of another file",
         [&](testing::TempHome& home, auto&, const QString& index) {
             const QString other = home.dictPath(QStringLiteral("collins_html.json"));
             home.writeDict(QStringLiteral("collins_html.json"), cacheOf("swim") + "  ");
             readDictionaryFile(other);
             QFile::remove(index);
             QFile::copy(indexPathOf(other), index);
         },
         QStringLiteral("move")},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        testing::TempHome home;
        const QString cache = home.dictPath(cacheName);
        const QString index = indexPathOf(cache);
        home.writeDict(cacheName, cacheOf("move"));
        EXPECT_EQ(definitionOf(*readDictionaryFile(cache), QStringLiteral("zebra")), QStringLiteral("move"));
        ASSERT_TRUE(openIndexedCache(cache)) << "no index was written";

        const ino_t written = inodeOf(index);
        c.damage(home, cache, index);
        const auto dict = readDictionaryFile(cache);
        EXPECT_EQ(dict->size(), 3u);
        for (const QString& word : {QStringLiteral("run"), QStringLiteral("say \"hi\""), QStringLiteral("zebra")})
            EXPECT_EQ(definitionOf(*dict, word), c.definitionAfter) << word.toStdString();
        EXPECT_FALSE(dict->contains(QStringLiteral("walk")));
        // A whole index is used as it is; any other is replaced by one that holds.
        EXPECT_EQ(inodeOf(index) == written, std::string_view(c.what) == "nothing changed");
        const auto reopened = openIndexedCache(cache);
        ASSERT_TRUE(reopened);
        EXPECT_EQ(definitionOf(*reopened, QStringLiteral("zebra")), c.definitionAfter);
    }
}

}  // namespace
}  // namespace lexicorn
