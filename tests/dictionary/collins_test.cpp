#include "support/temp_home.h"

#include "lexicorn/dictionary/collins_raw.h"
#include "lexicorn/dictionary/dictionary_files.h"
#include "lexicorn/dictionary/json_writer.h"

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

CacheRecords convert(const char* raw)
{
    jsonread::Failure failure;
    const std::optional<CollinsWords> words = collinsWords(JsonBuffer::copyOf(raw), failure);
    EXPECT_TRUE(words) << failure.describe().toStdString();
    return words ? toEnWordData(*words) : CacheRecords{};
}

TEST(CollinsConversion, GroupsSensesByPartOfSpeechInSortedOrder)
{
    const CacheRecords records = convert(R"({"run": {"star": "5", "readings": ["rʌn", "rɐn"], "defs": [
        {"def_cn": "跑", "def_en": "move fast", "pos_cn": "动词", "pos_en": "v", "ext": [{"ext_cn": "他跑了。", "ext_en": "He ran."}]},
        {"def_cn": "一次跑步", "def_en": "a run", "pos_cn": "名词", "pos_en": "n", "ext": []},
        {"def_cn": "经营", "def_en": "manage", "pos_cn": "动词2", "pos_en": "v", "ext": []},
        {"def_cn": "无", "def_en": "none", "pos_cn": "无", "pos_en": "", "ext": []}]}})");
    ASSERT_EQ(records.size(), 1u);
    std::string json;
    json::appendEnWordDataList(json, records[0].second);
    // Nouns before verbs, each group's Chinese part of speech from its first sense, the readings joined, no link,
    // and the sense without a part of speech dropped.
    EXPECT_EQ(json, R"([{"index":0,"word":"run","enWords":[{"title":"run","star":"5","readings":"/rʌn $ rɐn/",)"
                    R"("brePron":"","amePron":"","defs":[{"def_cn":"一次跑步","def_en":"a run","exts":[],"subTitle":"",)"
                    R"("signpos_cn":"","signpos_en":"","gram":""}],"pos_cn":"名词","pos_en":"n"},{"title":"run",)"
                    R"("star":"5","readings":"/rʌn $ rɐn/","brePron":"","amePron":"","defs":[{"def_cn":"跑",)"
                    R"("def_en":"move fast","exts":[{"cn":"他跑了。","en":"He ran.","speaker":""}],"subTitle":"",)"
                    R"("signpos_cn":"","signpos_en":"","gram":""},{"def_cn":"经营","def_en":"manage","exts":[],)"
                    R"("subTitle":"","signpos_cn":"","signpos_en":"","gram":""}],"pos_cn":"动词","pos_en":"v"}]}])");
}

TEST(CollinsConversion, ReadingsAndEmptyCases)
{
    const CacheRecords records = convert(R"({
        "none": {"star": "", "readings": [], "defs": [{"def_cn": "", "def_en": "", "pos_cn": "", "pos_en": "x", "ext": []}]},
        "nopos": {"star": "", "readings": ["a"], "defs": [{"def_cn": "", "def_en": "", "pos_cn": "", "pos_en": "", "ext": []}]},
        "dup": {"star": "1", "readings": [], "defs": []},
        "dup": {"star": "2", "readings": [], "defs": [{"def_cn": "", "def_en": "", "pos_cn": "", "pos_en": "n", "ext": []}]}})");
    ASSERT_EQ(records.size(), 3u);
    EXPECT_EQ(records[0].second.at(0)->enWords.at(0)->readings, QStringLiteral("//"));
    EXPECT_TRUE(records[1].second.at(0)->enWords.empty());  // a record all the same, with no entries
    EXPECT_EQ(records[2].first, QStringLiteral("dup"));
    EXPECT_EQ(records[2].second.at(0)->enWords.at(0)->star, QStringLiteral("2"));  // the later one replaces
}

TEST(CollinsConversion, RawFileThatDoesNotDecodeGivesAnEmptyDictionaryAndADiagnostic)
{
    const char* broken[] = {
        R"({"a": {"star": "", "readings": []}})",                                   // "defs" missing
        R"({"a": {"star": "", "readings": [1], "defs": []}})",                       // a reading that is not text
        R"({"a": {"star": "", "readings": [], "defs": [{"def_cn": "", "def_en": "", "pos_cn": "", "pos_en": ""}]}})",
        R"([])",
        R"({"a": )",
    };
    for (const char* raw : broken) {
        testing::TempHome home;
        home.writeDict(QStringLiteral("collins.json"), raw);
        ::testing::internal::CaptureStderr();
        const auto dict = readDictionaryFile(home.dictPath(QStringLiteral("collins.json")));
        const std::string log = ::testing::internal::GetCapturedStderr();
        EXPECT_TRUE(dict->isEmpty()) << raw;
        EXPECT_NE(log.find("collins.json does not decode"), std::string::npos) << raw;
    }
}

TEST(CollinsConversion, ProgressReachesTheTotal)
{
    std::string raw = "{";
    for (int i = 0; i < 10000; ++i) {
        raw += i ? ",\"w" : "\"w";
        raw += std::to_string(i);
        raw += R"(": {"star": "", "readings": [], "defs": []})";
    }
    raw += "}";
    jsonread::Failure failure;
    const auto words = collinsWords(JsonBuffer::copyOf(raw), failure);
    ASSERT_TRUE(words);
    size_t last = 0;
    size_t calls = 0;
    const CacheRecords records = toEnWordData(*words, [&](size_t done, size_t total) {
        EXPECT_EQ(total, 10000u);
        EXPECT_GT(done, last);
        last = done;
        ++calls;
    });
    EXPECT_EQ(records.size(), 10000u);
    EXPECT_EQ(last, 10000u);
    EXPECT_GE(calls, 2u);
}

}  // namespace
}  // namespace lexicorn
