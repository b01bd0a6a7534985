#include "dictionary_fixtures.h"

#include "support/temp_home.h"

#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/dictionary/legacy_records.h"

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
    const QString word = QString::fromUtf8(headword);
    return {makeRecord(word, {makeEntry(word, QStringLiteral("n"), {headword})})};
}

class ServerQuery : public ::testing::Test {
protected:
    void SetUp() override
    {
        home_.writeDict(QStringLiteral("LDOCE5_html.json"), testing::cacheJson({
            {QStringLiteral("running"), filed("running")},
            {QStringLiteral("UN"), filed("UN")},
            {QStringLiteral("example"), filed("example")},
            {QStringLiteral("go"), filed("go")},
            {QStringLiteral("run"), filed("run")},
            {QStringLiteral("ran"), filed("ran")},
            {QStringLiteral("look up"), filed("look up")},
            {QStringLiteral("wellknown"), filed("wellknown")},
            {QStringLiteral("icecream"), filed("icecream")},
            {QStringLiteral("Polish"), filed("Polish")},
            {QStringLiteral("polish"), filed("polish")},
            {QStringLiteral("empty"), {}},
            {QStringLiteral("void"), filed("void")},
            {QStringLiteral("colour"), {makeRecord(QStringLiteral("colour"), {makeEntry(QStringLiteral("colour"), QStringLiteral("n"), {"colour"})}, QStringLiteral("color"))}},
            {QStringLiteral("color"), {makeRecord(QStringLiteral("color"), {makeEntry(QStringLiteral("color"), QStringLiteral("n"), {"color"})}, QStringLiteral("colour"))}},
            {QStringLiteral("grey"), {makeRecord(QStringLiteral("grey"), {}, QStringLiteral("gray")), makeRecord(QStringLiteral("grey"), {makeEntry(QStringLiteral("grey"), QStringLiteral("adj"), {"grey"})})}},
            {QStringLiteral("gray"), filed("gray")},
            {QStringLiteral("a"), {makeRecord(QStringLiteral("a"), {}, QStringLiteral("b"))}},
            {QStringLiteral("b"), {makeRecord(QStringLiteral("b"), {}, QStringLiteral("c"))}},
            {QStringLiteral("c"), {makeRecord(QStringLiteral("c"), {makeEntry(QStringLiteral("c"), QStringLiteral("n"), {"c"})}, QStringLiteral("a"))}},
        }));
        home_.writeDict(QStringLiteral("wordforms.json"),
                        R"({"went": "go", "ran": "run", "looked": "look", "Empty": "void", "empty": "void", "gone": "nowhere"})");
        server_.setDictTypeWithNumber(0);
        server_.waitForLoadJobs();
        ASSERT_FALSE(server_.cacheDictNull());
    }

    // The definitions of every entry found, in order.
    QStringList answer(const char* word)
    {
        QStringList found;
        const DictDataPtr lookup = server_.query(QString::fromUtf8(word), QString());
        for (const EnWordPtr& entry : lookup->enWords())
            found.append(entry->defs.front()->def_en);
        return found;
    }

    testing::TempHome home_;
    EnWordServer server_;
};

TEST_F(ServerQuery, CandidatesAreTriedInOrderAndTheFirstMatchWins)
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

TEST_F(ServerQuery, LinksAreFollowedToEverythingTheyReach)
{
    EXPECT_EQ(server_.findLinkInDict(QStringLiteral("grey")), QStringList{QStringLiteral("gray")});
    EXPECT_EQ(server_.findLinkInDict(QStringLiteral("missing")), QStringList{});
    EXPECT_EQ(server_.findLinkInDict(QStringList{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("c")}),
              (QStringList{QStringLiteral("b"), QStringLiteral("c"), QStringLiteral("a")}));
    EXPECT_EQ(server_.findAllLinkInDict(QStringLiteral("a")), (QStringList{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}));
    EXPECT_EQ(server_.findAllLinkInDict(QStringLiteral("run")), QStringList{QStringLiteral("run")});

    struct Case {
        const char* word;
        QStringList expected;
    };
    const Case cases[] = {
        // colour links to color, which links back: each headword's entries once, the loop ends.
        {"colour", {"color", "colour"}},
        {"color", {"colour", "color"}},
        // The linking record gives its target's entries; the plain record its own.
        {"grey", {"gray", "grey"}},
        // a -> b -> c -> a: only c has entries.
        {"a", {"c"}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(answer(c.word), c.expected) << c.word;
}

TEST_F(ServerQuery, LegacyEntryPointBuildsTheOlderRecordFromTheSameEntries)
{
    const auto record = server_.query(QStringLiteral("grey"));
    EXPECT_EQ(record->word, QStringLiteral("grey"));
    ASSERT_EQ(record->defs.size(), 2u);
    EXPECT_EQ(record->defs[0]->def_en, QStringLiteral("gray"));
    EXPECT_EQ(record->defs[1]->pos_en, QStringLiteral("adj"));
    ASSERT_EQ(record->defs[1]->exts.size(), 1u);
    EXPECT_EQ(record->defs[1]->exts[0]->en, QStringLiteral("An example."));

    const auto missing = server_.query(QStringLiteral("nothing"));
    ASSERT_EQ(missing->defs.size(), 1u);
    EXPECT_TRUE(missing->defs[0]->def_en.isEmpty());
    EXPECT_TRUE(missing->readings.isEmpty());
    EXPECT_EQ(missing->star, QStringLiteral(""));
}

}  // namespace
}  // namespace lexicorn
