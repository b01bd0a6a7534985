#include "dictionary_fixtures.h"

#include "support/temp_home.h"

#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/dictionary/hook_english_dict.h"

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

const QByteArray rawDictionary = R"({
  "go": {"star": "5", "readings": ["ɡəʊ", "ɡoʊ"], "defs": [
     {"def_cn": "去", "def_en": "move", "pos_cn": "动词", "pos_en": "VERB", "ext": [{"ext_cn": "他去了。", "ext_en": "He went."}]},
     {"def_cn": "短语", "def_en": "phrase", "pos_cn": "", "pos_en": "", "ext": []}]},
  "wellknown": {"star": "", "readings": [], "defs": []},
  "odd": {"star": 3, "defs": [{"def_en": "kept"}]}})";

class Legacy : public ::testing::Test {
protected:
    void SetUp() override
    {
        home_.writeDict(QStringLiteral("collins.json"), rawDictionary);
        home_.writeDict(QStringLiteral("wordforms.json"), R"({"went": "go", "well-known": "famous", "gone": 5})");
    }
    testing::TempHome home_;
    EnWordServer engine_;
    HookEnglishDict legacy_{engine_};
};

TEST_F(Legacy, FormatWordNormalisesThroughTheWordForms)
{
    struct Case {
        const char* word;
        const char* expected;
    };
    const Case cases[] = {
        {"  Went\n", "go"},            // trimmed, lower case, then the form's headword
        {"well-known", "famous"},      // the form itself is in the map
        {"Well\u2010Kno-wn", "wellknown"},  // hyphens removed, not in the map
        {"ice cream", "icecream"},     // then blanks removed as well
        {"gone", "gone"},              // a form whose value is not text counts as absent
    };
    for (const Case& c : cases)
        EXPECT_EQ(legacy_.formatWord_(QString::fromUtf8(c.word)), QString::fromUtf8(c.expected)) << c.word;

    legacy_.selectedDict = 0;
    EXPECT_EQ(legacy_.formatWord_(QStringLiteral(" Went ")), QStringLiteral("went"));
}

TEST_F(Legacy, CollinsLookupKeepsSensesInFileOrderWithoutGrouping)
{
    // The sense without a part of speech is kept, unlike the engine's.
    EXPECT_EQ(testing::described(*legacy_.queryWord_quoteSentence_(QStringLiteral("Went"), QStringLiteral("He went home."))),
              (QStringList{"Went|He went home.|5|ɡəʊ,ɡoʊ", "VERB|move|去|He went.", "|phrase|短语|"}));
    // Missing or mistyped members read as empty rather than failing.
    EXPECT_EQ(testing::described(*legacy_.queryWord_(QStringLiteral("odd"))), (QStringList{"odd|||", "|kept||"}));
}

TEST_F(Legacy, AWordNotFoundGivesOneEmptySense)
{
    const auto record = legacy_.queryWord_(QStringLiteral("Nothing"));
    EXPECT_EQ(testing::described(*record), (QStringList{"Nothing|||", "|||"}));
    EXPECT_FALSE(record->defs[0]->def_en.isNull());  // "" rather than nothing

    legacy_.selectedDict = 5;
    EXPECT_EQ(legacy_.queryWord_(QStringLiteral("go"))->defs.size(), 1u);
}

TEST_F(Legacy, Ldoce5LookupAsksTheEngineAndNeverReadsTheRawFile)
{
    home_.writeDict(QStringLiteral("collins.json"), "not json");
    home_.writeDict(QStringLiteral("LDOCE5_html.json"), testing::cacheJson({{QStringLiteral("go"), testing::oneSense(QStringLiteral("go"), "ldoce go")}}));
    engine_.setDictTypeWithNumber(0);
    engine_.waitForLoadJobs();
    legacy_.selectedDict = 0;

    ::testing::internal::CaptureStderr();
    const auto record = legacy_.queryWord_(QStringLiteral("Go"));
    const std::string log = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(log.find("JSON serialization error"), std::string::npos) << log;
    EXPECT_EQ(testing::described(*record), (QStringList{"go|||", "verb|ldoce go|释义|An example."}));
    EXPECT_EQ(engine_.path(), home_.dictPath(QStringLiteral("LDOCE5_html.json")));

    // Asked directly, enDict still reads collins.json, and keeps retrying while it is broken.
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(legacy_.enDict(), nullptr);
    EXPECT_EQ(legacy_.enDict(), nullptr);
    const std::string errors = ::testing::internal::GetCapturedStderr();
    EXPECT_NE(errors.find("JSON serialization error"), errors.rfind("JSON serialization error"));
    home_.writeDict(QStringLiteral("collins.json"), rawDictionary);
    EXPECT_NE(legacy_.enDict(), nullptr);
}

}  // namespace
}  // namespace lexicorn
