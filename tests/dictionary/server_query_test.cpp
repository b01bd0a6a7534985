#include "dictionary_fixtures.h"

#include "support/temp_home.h"

#include "lexicorn/dictionary/en_word_server.h"

#include <QStringList>

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using testing::makeEntry;
using testing::makeRecord;

// One entry per headword whose definition names where it was filed, so a
// lookup shows which headword answered.
EnWordDataList filed(const char* headword)
{
    return testing::oneSense(QString::fromUtf8(headword), headword);
}

class ServerQuery : public ::testing::Test {
protected:
    void SetUp() override
    {
        // colour and color link to each other; grey has a linking record and a plain one; a -> b -> c -> a.
        const auto linking = [](const char* word, const char* link) {
            return makeRecord(QString::fromUtf8(word), {}, QString::fromUtf8(link));
        };
        std::vector<std::pair<QString, EnWordDataList>> records{
            {QStringLiteral("empty"), {}},
            {QStringLiteral("grey"),
             {linking("grey", "gray"), makeRecord(QStringLiteral("grey"), {makeEntry(QStringLiteral("grey"), QStringLiteral("adj"), {"grey"})})}},
            {QStringLiteral("a"), {linking("a", "b")}},
            {QStringLiteral("b"), {linking("b", "c")}},
        };
        for (const auto& [word, link] : {std::pair{"colour", "color"}, {"color", "colour"}, {"c", "a"}}) {
            records.push_back({QString::fromUtf8(word), filed(word)});
            records.back().second.front()->link = QString::fromUtf8(link);
        }
        for (const char* word : {"running", "UN", "example", "go", "run", "ran", "look up", "wellknown", "icecream",
                                 "Polish", "polish", "void", "gray"})
            records.push_back({QString::fromUtf8(word), filed(word)});
        home_.writeDict(QStringLiteral("LDOCE5_html.json"), testing::cacheJson(records));
        home_.writeDict(QStringLiteral("wordforms.json"),
                        R"({"went": "go", "ran": "run", "looked": "look", "Empty": "void", "empty": "void", "gone": "nowhere"})");
        server_.setDictTypeWithNumber(0);
        server_.waitForLoadJobs();
        ASSERT_FALSE(server_.cacheDictNull());
    }

    QStringList answer(const char* word) { return testing::definitionsFound(server_, QString::fromUtf8(word)); }

    testing::TempHome home_;
    EnWordServer server_;
};

TEST_F(ServerQuery, CandidatesAreTriedInOrderTheFirstMatchWinsAndLinksAreFollowed)
{
    struct Case {
        const char* word;
        QStringList expected;
    };
    const Case cases[] = {
        {"running", {"running"}},
        {"Running", {"running"}},            // lower case
        {"un", {"UN"}},                     // upper case
        {"ex- ample", {"example"}},          // line-end hyphenation joined
        {"went", {"go"}},                   // word-form map
        {"ran", {"ran"}},                   // an entry under the form beats the map
        {"looked up", {"look up"}},          // parts mapped one by one
        {"looked  up", {"look up"}},         // several blanks still make two parts
        {"well-known", {"wellknown"}},       // hyphens removed
        {"ice cream", {"icecream"}},         // blanks removed
        {"Polish", {"Polish"}},             // exact spelling first
        {"POLISH", {"polish"}},
        {"empty", {"void"}},                // an empty record list falls through to the forms
        {"gone", {}},                       // a form whose headword is not filed
        {"unknown", {}},
        {"", {}},
        // colour links to color, which links back: each headword's entries once, the loop ends.
        {"colour", {"color", "colour"}},
        {"color", {"colour", "color"}},
        {"grey", {"gray", "grey"}},  // the linking record gives its target's entries, the plain record its own
        {"a", {"c"}},                // a -> b -> c -> a: only c has entries
    };
    for (const Case& c : cases)
        EXPECT_EQ(answer(c.word), c.expected) << c.word;
}

TEST_F(ServerQuery, LookupKeepsTheWordAsGivenAndTheSentence)
{
    const DictDataPtr lookup = server_.query(QStringLiteral("Ex- ample"), QStringLiteral("An ex- ample."));
    EXPECT_EQ(lookup->word(), QStringLiteral("Ex- ample"));
    EXPECT_EQ(lookup->quoteSentence(), QStringLiteral("An ex- ample."));
    EXPECT_EQ(lookup->enWords().size(), 1u);
}

TEST_F(ServerQuery, LinkTargetsAreEverythingTheLinksReach)
{
    EXPECT_EQ(server_.findLinkInDict(QStringLiteral("grey")), QStringList{QStringLiteral("gray")});
    EXPECT_EQ(server_.findLinkInDict(QStringLiteral("missing")), QStringList{});
    EXPECT_EQ(server_.findLinkInDict(QStringList{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("c")}),
              (QStringList{QStringLiteral("b"), QStringLiteral("c"), QStringLiteral("a")}));
    EXPECT_EQ(server_.findAllLinkInDict(QStringLiteral("a")), (QStringList{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}));
    EXPECT_EQ(server_.findAllLinkInDict(QStringLiteral("run")), QStringList{QStringLiteral("run")});
}

TEST_F(ServerQuery, LegacyEntryPointBuildsTheOlderRecordFromTheSameEntries)
{
    EXPECT_EQ(testing::described(*server_.query(QStringLiteral("grey"))),
              (QStringList{"grey|||", "verb|gray|释义|An example.", "adj|grey|释义|An example."}));
    EXPECT_EQ(testing::described(*server_.query(QStringLiteral("nothing"))), (QStringList{"nothing|||", "|||"}));
}

}  // namespace
}  // namespace lexicorn
