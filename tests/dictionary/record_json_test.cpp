#include "dictionary_fixtures.h"

#include "lexicorn/dictionary/json_buffer.h"
#include "lexicorn/dictionary/json_writer.h"
#include "lexicorn/dictionary/record_decoder.h"

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

std::optional<EnWordDataList> decodeList(const std::string& json, jsonread::Failure& failure)
{
    const JsonBuffer padded = JsonBuffer::copyOf(json);
    simdjson::ondemand::parser parser;
    return decodeEnWordDataList(parser, padded.data(), padded.size(), padded.capacity(), failure);
}

std::string fullRecordJson()
{
    auto entry = testing::makeEntry(QStringLiteral("take"), QStringLiteral("verb"), {"to carry \"it\"\n away"});
    entry->star = QStringLiteral("●●●");
    entry->readings = QStringLiteral("teɪk");
    entry->brePron = QStringLiteral("bre");
    entry->amePron = QStringLiteral("ame");
    entry->pos_cn = QStringLiteral("动词");
    EnWordDef& sense = *entry->defs.front();
    sense.subTitle = QStringLiteral("sub");
    sense.signpos_cn = QStringLiteral("拿");
    sense.signpos_en = QStringLiteral("MOVE");
    sense.gram = QStringLiteral("T");
    sense.exts.front()->speaker = QStringLiteral("take_1.mp3");
    auto record = testing::makeRecord(QStringLiteral("take"), {entry});
    record->index = 9007199254740993;  // beyond double precision
    std::string json;
    json::appendEnWordDataList(json, {record});
    return json;
}

TEST(RecordJson, EncodesAndDecodesEveryField)
{
    jsonread::Failure failure;
    const std::string json = fullRecordJson();
    const std::optional<EnWordDataList> decoded = decodeList(json, failure);
    ASSERT_TRUE(decoded) << failure.describe().toStdString();
    ASSERT_EQ(decoded->size(), 1u);
    std::string again;
    json::appendEnWordDataList(again, *decoded);
    EXPECT_EQ(again, json);

    const EnWordData& record = *decoded->front();
    EXPECT_EQ(record.index, 9007199254740993);
    EXPECT_FALSE(record.link);
    const EnWord& entry = *record.enWords.front();
    EXPECT_EQ(entry.defs.front()->def_en, QStringLiteral("to carry \"it\"\n away"));
    EXPECT_EQ(entry.defs.front()->exts.front()->speaker, QStringLiteral("take_1.mp3"));
    EXPECT_NE(entry.defs.front(), EnWord::defaultDefs().front());
}

TEST(RecordJson, LinkIsWrittenOnlyWhenPresentAndNullReadsAsAbsent)
{
    std::string withLink, without;
    json::appendEnWordData(withLink, *testing::makeRecord(QStringLiteral("colour"), {}, QStringLiteral("color")));
    json::appendEnWordData(without, *testing::makeRecord(QStringLiteral("color"), {}));
    EXPECT_EQ(withLink, R"({"index":0,"word":"colour","link":"color","enWords":[]})");
    EXPECT_EQ(without, R"({"index":0,"word":"color","enWords":[]})");
    jsonread::Failure failure;
    const auto decoded = decodeList(R"([{"index":1,"word":"a","link":null,"enWords":[]}])", failure);
    ASSERT_TRUE(decoded);
    EXPECT_FALSE(decoded->front()->link);
}

TEST(RecordJson, EveryKeyButLinkIsRequiredAndTypesAreChecked)
{
    const std::string json = fullRecordJson();
    struct Case {
        const char* from;  // text replaced in the full record
        const char* to;
        const char* where;
        const char* what;
    };
    const Case cases[] = {
        {"\"index\":9007199254740993,", "", "[0]", "key \"index\" is missing"},
        {",\"pos_en\":\"verb\"", "", "[0].enWords[0]", "key \"pos_en\" is missing"},
        {",\"gram\":\"T\"", "", "[0].enWords[0].defs[0]", "key \"gram\" is missing"},
        {",\"speaker\":\"take_1.mp3\"", "", "[0].enWords[0].defs[0].exts[0]", "key \"speaker\" is missing"},
        {"\"star\":\"●●●\"", "\"star\":3", "[0].enWords[0].star", "is not a string"},
        {"\"index\":9007199254740993", "\"index\":\"9\"", "[0].index", "is not a 64-bit integer"},
        {"\"exts\":[", "\"exts\":{\"x\":[", "[0].enWords[0].defs[0].exts", "is not an array"},
        {"\"word\":\"take\"", "\"word\":\"take\",\"link\":7", "[0].link", "is not a string"},
    };
    for (const Case& c : cases) {
        std::string broken = json;
        const size_t at = broken.find(c.from);
        ASSERT_NE(at, std::string::npos) << c.from;
        broken.replace(at, std::strlen(c.from), c.to);
        jsonread::Failure failure;
        EXPECT_FALSE(decodeList(broken, failure)) << c.from;
        EXPECT_EQ(failure.where.toStdString(), c.where) << c.from;
        EXPECT_EQ(failure.what.toStdString(), c.what) << c.from;
    }
}

TEST(RecordJson, UnknownKeysAreIgnoredAndTrailingContentIsRejected)
{
    jsonread::Failure failure;
    EXPECT_TRUE(decodeList(R"([{"index":1,"extra":{"a":[1]},"word":"a","enWords":[]}])", failure));
    EXPECT_FALSE(decodeList(R"([] [])", failure));
    EXPECT_FALSE(decodeList(R"([{"index":1,"word":"a","link":n[],"enWords":[]}])", failure));
    EXPECT_FALSE(decodeList(R"([{"index":1,"word":"a","enWords":[]})", failure));
}

TEST(RecordJson, DictDataRoundTrip)
{
    const auto entry = testing::makeEntry(QStringLiteral("run"), QStringLiteral("verb"), {"move fast", "manage"});
    // Control characters, quotes, backslashes and characters outside the BMP survive escaping.
    const DictData data(QStringLiteral("Ran"), QStringLiteral("She ran \u2014 fast.\ttab \\ \"q\" \x01 😀 /slash/"), {entry});
    const std::string json = json::encode(data);
    jsonread::Failure failure;
    const DictDataPtr decoded = decodeDictData(json, failure);
    ASSERT_TRUE(decoded) << failure.describe().toStdString();
    EXPECT_EQ(decoded->word(), data.word());
    EXPECT_EQ(decoded->quoteSentence(), data.quoteSentence());
    EXPECT_EQ(json::encode(*decoded), json);

    EXPECT_FALSE(decodeDictData(R"({"word":"a","enWords":[]})", failure));
    EXPECT_EQ(failure.what, QStringLiteral("key \"quoteSentence\" is missing"));
}

}  // namespace
}  // namespace lexicorn
