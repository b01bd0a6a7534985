#include "page_lines.h"

#include "lexicorn/reader/sentences/raw_line_format.h"

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using testing::linePitch;
using testing::regularPage;

constexpr double firstTop = 100.0;  // where regularPage puts its first line

// Covers the first `lines` lines of a regular page from x to the right edge.
QRectF rows(int lines, double x = 0)
{
    return QRectF(x, firstTop, 1000 - x, linePitch * lines);
}

TEST(RawLineFormat, RebuildsRunningTextFromTheSelectedPartsOfLines)
{
    struct Case {
        const char* name;
        PageLines page;
        QRectF selection;
        QString expected;
    };
    const Case cases[] = {
        {"a word broken at the line end is joined again",
         regularPage({QStringLiteral("The vocab-"), QStringLiteral("ulary grows.")}), rows(2),
         QStringLiteral("The vocabulary grows.")},
        {"a hyphen before a capital or a digit stays",
         regularPage({QStringLiteral("from the Anglo-"), QStringLiteral("Saxon pages 10-"), QStringLiteral("20 on")}), rows(3),
         QStringLiteral("from the Anglo- Saxon pages 10- 20 on")},
        {"a lone dash is not a broken word", regularPage({QStringLiteral("and -"), QStringLiteral("so on")}), rows(2),
         QStringLiteral("and - so on")},
        {"runs of blanks become one and ends are trimmed",
         regularPage({QStringLiteral("  wide   gaps  "), QStringLiteral("here\tand there ")}), rows(2),
         QStringLiteral("wide gaps here and there")},
        {"Chinese lines run on without a blank", regularPage({QStringLiteral("中文的"), QStringLiteral("句子。"), QStringLiteral("Next")}),
         rows(3), QStringLiteral("中文的句子。 Next")},
        {"only characters whose centre is inside count",
         regularPage({QStringLiteral("abcdefghij"), QStringLiteral("klmnopqrst"), QStringLiteral("not this")}),
         // x from 250: the right half of each 400-point line (40 points a character).
         rows(2, 250), QStringLiteral("fghij pqrst")},
        {"lines with nothing selected are skipped", regularPage({QStringLiteral("one"), QStringLiteral("two")}),
         QRectF(0, firstTop + linePitch, 1000, linePitch), QStringLiteral("two")},
        {"an empty selection gives nothing", regularPage({QStringLiteral("one")}), QRectF(), QString()},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(rawLineFormat(c.page, c.selection), c.expected);
    }
}

}  // namespace
}  // namespace lexicorn
