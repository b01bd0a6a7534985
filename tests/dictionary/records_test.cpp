#include "lexicorn/dictionary/records.h"

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

TEST(Records, EntriesMadeWithoutSensesShareOneDefaultSense)
{
    EnWord first(QStringLiteral("a"));
    EnWord second(QStringLiteral("b"));
    ASSERT_EQ(first.defs.size(), 1u);
    EXPECT_EQ(first.defs.front(), second.defs.front());
    EXPECT_TRUE(first.defs.front()->def_en.isEmpty());

    first.defs.front()->def_en = QStringLiteral("changed");
    EXPECT_EQ(second.defs.front()->def_en, QStringLiteral("changed"));
    first.defs.front()->def_en.clear();  // the sense is process-wide; leave it as found
}

TEST(RangeOfWord, FindsTheWordThroughEachLooserPattern)
{
    struct Case {
        const char* word;
        const char* sentence;
        qsizetype start;  // -1: not found
        qsizetype length;
    };
    const Case cases[] = {
        {"run", "They run home.", 5, 3},
        {"run", "They rerun it.", -1, 0},                           // whole words only
        {"well-known", "A wellknown face.", 2, 9},                   // second search: hyphens removed
        {"ice\ncream", "We ate icecream.", 7, 8},                     // third search: blanks and line breaks removed
        {"ex- ample", "An example here.", 3, 7},                      // both removed
        {"Run", "They run home.", -1, 0},                             // case-sensitive
        {"r.n", "They run home.", 5, 3},                              // not escaped: "." matches any character
        {"café", "Un café noir.", 3, 4},                               // word boundaries around non-ASCII letters
        {"(", "Open ( here.", -1, 0},                                 // an invalid pattern finds nothing
        {"run", "", -1, 0},
    };
    for (const Case& c : cases) {
        const DictData data(QString::fromUtf8(c.word), QString::fromUtf8(c.sentence), {});
        const DictData::Range range = data.rangeOfWord();
        EXPECT_EQ(std::pair(range.start, range.found() ? range.length : 0), std::pair(c.start, c.length))
            << c.word << " in " << c.sentence;
    }
}

}  // namespace
}  // namespace lexicorn
