#include "support/temp_home.h"

#include "lexicorn/dictionary/collins_raw.h"
#include "lexicorn/dictionary/dictionary_files.h"

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
    const EnWordData& record = *records[0].second.at(0);
    EXPECT_EQ(record.word, QStringLiteral("run"));
    EXPECT_EQ(record.index, 0);
    EXPECT_FALSE(record.link);
    ASSERT_EQ(record.enWords.size(), 2u);

    const EnWord& noun = *record.enWords[0];
    EXPECT_EQ(noun.pos_en, QStringLiteral("n"));
    EXPECT_EQ(noun.title, QStringLiteral("run"));
    EXPECT_EQ(noun.star, QStringLiteral("5"));
    EXPECT_EQ(noun.readings, QStringLiteral("/rʌn $ rɐn/"));
    ASSERT_EQ(noun.defs.size(), 1u);

    const EnWord& verb = *record.enWords[1];
    EXPECT_EQ(verb.pos_cn, QStringLiteral("动词"));  // from the group's first sense
    ASSERT_EQ(verb.defs.size(), 2u);
    EXPECT_EQ(verb.defs[0]->def_en, QStringLiteral("move fast"));
    EXPECT_EQ(verb.defs[1]->def_cn, QStringLiteral("经营"));
    ASSERT_EQ(verb.defs[0]->exts.size(), 1u);
    EXPECT_EQ(verb.defs[0]->exts[0]->en, QStringLiteral("He ran."));
    EXPECT_EQ(verb.defs[0]->exts[0]->cn, QStringLiteral("他跑了。"));
    EXPECT_TRUE(verb.defs[0]->exts[0]->speaker.isEmpty());
    EXPECT_TRUE(verb.brePron.isEmpty());
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
