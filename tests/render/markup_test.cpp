#include "styled_pieces.h"

#include "lexicorn/render/markup.h"

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using testing::describe;
using testing::Pieces;

const TextAttributes plain16 = [] { TextAttributes made; made.fontSize = 16; return made; }();
const TextAttributes bold16 = [] { TextAttributes made = plain16; made.bold = true; return made; }();
const TextAttributes italic = [] { TextAttributes made; made.italic = true; return made; }();

TextAttributes medium(const char* fontName)
{
    TextAttributes made;
    made.fontName = QString::fromUtf8(fontName);
    return made;
}

TextAttributes boldRed(TextAttributes attributes)
{
    attributes.bold = true;
    attributes.foreground = Rgba{255, 0, 0};
    return attributes;
}

StyledText fromPieces(const Pieces& pieces)
{
    StyledText text;
    for (const auto& [string, attributes] : pieces)
        text.append(string, attributes);
    return text;
}

TEST(MarkupString, PlainTextChecksAndRepair)
{
    const struct {
        const char* text;
        QString repaired;
        bool chinese;
        bool includesChinese;
    } cases[] = {
        {"Thi  s", QStringLiteral("This"), false, false},
        {"a  b", QStringLiteral("a  b"), false, false},
        {"wil  l sti  ll", QStringLiteral("will still"), false, false},
        {"I  s", QStringLiteral("I  s"), false, false},  // capital I is not repaired
        {"中文", QStringLiteral("中文"), true, true},
        {"中文 ", QStringLiteral("中文 "), false, true},
        {"中文\n", QStringLiteral("中文\n"), false, true},
        {"一", QStringLiteral("一"), true, false},      // U+4E00, just below the "includes" range
        {"丁", QStringLiteral("丁"), true, true},        // U+4E01, its first character
        {"\u9FFE", QStringLiteral("\u9FFE"), false, true},  // its last one
        {"\u9FFF", QStringLiteral("\u9FFF"), false, false},
        {"abc，", QStringLiteral("abc，"), false, false},
        {"a中", QStringLiteral("a中"), false, true},
        {"", QString(), false, false},
    };
    for (const auto& c : cases) {
        const QString text = QString::fromUtf8(c.text);
        EXPECT_EQ(pdfRepair(text), c.repaired) << c.text;
        EXPECT_EQ(isChinese(text), c.chinese) << c.text;
        EXPECT_EQ(includeChinese(text), c.includesChinese) << c.text;
    }
}

TEST(MarkupTrait, BoldRangesAndTheirJoining)
{
    struct Case {
        const char* name;
        Pieces text;
        unsigned mask;
        std::vector<TextRange> ranges;
        QString tagged;  // highlighTextWithFormat "<b>%@</b>"
    };
    const Case cases[] = {
        {"no bold text", {{"plain", plain16}}, boldTrait, {}, QStringLiteral("plain")},
        {"one bold word", {{"a ", plain16}, {"big", bold16}, {" cat", plain16}}, boldTrait, {{2, 3}},
         QStringLiteral("a <b>big</b> cat")},
        {"runs of other attributes that touch join",
         {{"x", {}}, {"ab", bold16}, {"cd", boldRed(plain16)}, {"y", {}}}, boldTrait, {{1, 4}},
         QStringLiteral("x<b>abcd</b>y")},
        {"only blanks and line breaks between: joined",
         {{"big", bold16}, {" \n\t", plain16}, {"red", bold16}, {".", {}}}, boldTrait, {{0, 9}},
         QStringLiteral("<b>big \n\tred</b>.")},
        {"other text between: apart",
         {{"big", bold16}, {" and ", plain16}, {"red", bold16}}, boldTrait, {{0, 3}, {8, 3}},
         QStringLiteral("<b>big</b> and <b>red</b>")},
        {"blanks at the ends are not taken in",
         {{" ", {}}, {"big", bold16}, {" ", {}}}, boldTrait, {{1, 3}}, QStringLiteral(" <b>big</b> ")},
        {"a Medium font counts as bold",
         {{"a ", {}}, {"heavy", medium("PingFangSC-Medium")}, {" b", {}}}, boldTrait, {{2, 5}},
         QStringLiteral("a <b>heavy</b> b")},
        {"other font names do not",
         {{"light", medium("PingFangSC-Light")}}, boldTrait, {}, QStringLiteral("light")},
        {"the mask picks the trait",
         {{"it", italic}, {" ", {}}, {"bo", bold16}}, italicTrait, {{0, 2}}, QStringLiteral("it <b>bo</b>")},
        {"Chinese text counts by units",
         {{"中文", {}}, {"粗体", bold16}, {"🇨🇳", {}}, {"再粗", bold16}}, boldTrait, {{2, 2}, {8, 2}},
         QStringLiteral("中文<b>粗体</b>🇨🇳<b>再粗</b>")},
    };
    for (const Case& c : cases) {
        const StyledText text = fromPieces(c.text);
        EXPECT_EQ(rangesOfTextTrait(text, c.mask), c.ranges) << c.name;
        EXPECT_EQ(highlighTextWithFormat(text, QStringLiteral("<b>%@</b>")), c.tagged) << c.name;
    }
}

TEST(MarkupTrait, FormatStandsForEachRange)
{
    const StyledText text = fromPieces({{"one ", {}}, {"two", bold16}, {" three ", {}}, {"four", bold16}});
    const struct {
        const char* format;
        QString expected;
    } cases[] = {
        {"**%@**", QStringLiteral("one **two** three **four**")},
        {"%@", QStringLiteral("one two three four")},
        {"[%@] 100%%", QStringLiteral("one [two] 100% three [four] 100%")},
        {"", QStringLiteral("one  three ")},
    };
    for (const auto& c : cases)
        EXPECT_EQ(highlighTextWithFormat(text, QString::fromUtf8(c.format)), c.expected) << c.format;
}

TEST(MarkupBoldTags, TagPairsBecomeRedBoldRuns)
{
    TextAttributes grey = plain16;
    grey.background = Rgba{55, 55, 55};
    struct Case {
        const char* name;
        Pieces text;
        Pieces expected;
    };
    const Case cases[] = {
        {"one pair", {{"a <b>big</b> cat", plain16}}, {{"a ", plain16}, {"big", boldRed(plain16)}, {" cat", plain16}}},
        {"two pairs", {{"<b>A</b> and <b>B</b>", plain16}},
         {{"A", boldRed(plain16)}, {" and ", plain16}, {"B", boldRed(plain16)}}},
        {"unpaired opening tag: no bold run, tag removed", {{"a <b>big cat", plain16}}, {{"a big cat", plain16}}},
        {"unpaired closing tag: removed", {{"big</b> cat", plain16}}, {{"big cat", plain16}}},
        {"an opening tag pairs with the closing tag right after it",
         {{"<b>a<b>b</b>c", plain16}}, {{"a", plain16}, {"b", boldRed(plain16)}, {"c", plain16}}},
        {"empty pair", {{"x<b></b>y", plain16}}, {{"xy", plain16}}},
        {"the font at the start sets the whole range",
         {{"<b>", {}}, {"big", plain16}, {" text", grey}, {"</b>", {}}},
         {{"big", boldRed(plain16)}, {" text", boldRed(grey)}}},
        {"no tags: unchanged", {{"plain ", plain16}, {"<bold>", grey}}, {{"plain ", plain16}, {"<bold>", grey}}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(describe(attrTextFromBoldTagText(fromPieces(c.text))), describe(c.expected)) << c.name;
}

}  // namespace
}  // namespace lexicorn
