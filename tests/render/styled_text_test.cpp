#include "styled_pieces.h"

#include "lexicorn/render/styled_text.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>

namespace lexicorn {
namespace {

using testing::describe;
using testing::Pieces;

const Rgba redColour{255, 0, 0};
const Rgba greyColour{55, 55, 55};

TextAttributes attributes(std::optional<Rgba> foreground, std::optional<double> size = {}, std::optional<Rgba> background = {})
{
    TextAttributes made;
    made.foreground = foreground;
    made.fontSize = size;
    made.background = background;
    return made;
}

const TextAttributes red = attributes(redColour);
const TextAttributes big = attributes({}, 18);
const TextAttributes grey = attributes({}, {}, greyColour);

// "ab" red, "cd" unstyled, "ef" big: three stretches to cut into.
StyledText threeStretches()
{
    StyledText text;
    text.append(QStringLiteral("ab"), red);
    text.append(QStringLiteral("cd"));
    text.append(QStringLiteral("ef"), big);
    return text;
}

TEST(StyledText, EditsKeepEachUnitsAttributes)
{
    struct Case {
        const char* name;
        StyledText text;
        std::function<void(StyledText&)> edit;
        Pieces expected;
    };
    const Case cases[] = {
        {"equal neighbours make one run", StyledText(QStringLiteral("ab"), red),
         [](StyledText& text) {
             text.append(QStringLiteral("cd"), red);
             text.append(QString(), big);
         },
         {{"abcd", red}}},
        {"appending styled text joins at the seam", StyledText(QStringLiteral("ab"), red),
         [](StyledText& text) {
             StyledText tail(QStringLiteral("cd"), red);
             tail.append(QStringLiteral("ef"));
             text.append(tail);
         },
         {{"abcd", red}, {"ef", {}}}},
        {"attributes added inside one run split it in three", StyledText(QStringLiteral("There is a cat."), big),
         [](StyledText& text) { text.addAttributes(9, 1, red); },
         {{"There is ", big}, {"a", attributes(redColour, 18)}, {" cat.", big}}},
        {"attributes added across runs keep what each run had", threeStretches(),
         [](StyledText& text) { text.addAttributes(1, 4, grey); },
         {{"a", red}, {"b", attributes(redColour, {}, greyColour)}, {"cd", grey}, {"e", attributes({}, 18, greyColour)}, {"f", big}}},
        {"an added colour replaces the old one", StyledText(QStringLiteral("abc"), grey),
         [](StyledText& text) {
             text.addAttributes(0, 3, red);
             text.addAttributes(0, 3, attributes(Rgba{0, 0, 255}));
         },
         {{"abc", attributes(Rgba{0, 0, 255}, {}, greyColour)}}},
        {"a range past the end is cut at the end", StyledText(QStringLiteral("abc")),
         [](StyledText& text) {
             text.addAttributes(2, 50, red);
             text.addAttributes(-3, 4, big);
         },
         {{"a", big}, {"b", {}}, {"c", red}}},
        {"a deletion inside a run shortens it and shifts the rest", threeStretches(),
         [](StyledText& text) { text.replace(2, 1, StyledText()); },
         {{"ab", red}, {"d", {}}, {"ef", big}}},
        {"deleting what stood between equal runs joins them", StyledText(QStringLiteral("ab"), red),
         [](StyledText& text) {
             text.append(QStringLiteral("<b>"));
             text.append(QStringLiteral("cd"), red);
             text.replace(2, 3, StyledText());
         },
         {{"abcd", red}}},
        {"a styled replacement across runs takes the place of both ends", threeStretches(),
         [](StyledText& text) { text.replace(1, 4, StyledText(QStringLiteral("XYZ"), grey)); },
         {{"a", red}, {"XYZ", grey}, {"f", big}}},
        {"an insertion at a run boundary splits nothing", threeStretches(),
         [](StyledText& text) { text.replace(4, 0, StyledText(QStringLiteral("+"), red)); },
         {{"ab", red}, {"cd", {}}, {"+", red}, {"ef", big}}},
        {"mid keeps the parts of the runs inside it", threeStretches(), [](StyledText& text) { text = text.mid(1, 4); },
         {{"b", red}, {"cd", {}}, {"e", big}}},
        {"mid past the end stops at the end", threeStretches(), [](StyledText& text) { text = text.mid(5, 10); }, {{"f", big}}},
    };
    for (const Case& c : cases) {
        StyledText text = c.text;
        c.edit(text);
        EXPECT_EQ(describe(text), describe(c.expected)) << c.name;
        // Runs are in order, never empty, never unstyled, and inside the text.
        qsizetype end = 0;
        for (const StyledText::Run& run : text.runs()) {
            EXPECT_GE(run.start, end) << c.name;
            EXPECT_GT(run.length, 0) << c.name;
            EXPECT_FALSE(run.attributes.isEmpty()) << c.name;
            end = run.start + run.length;
        }
        EXPECT_LE(end, text.length()) << c.name;
    }
}

TEST(StyledText, AttributesAtEachPosition)
{
    const StyledText text = threeStretches();
    const struct {
        qsizetype index;
        TextAttributes expected;
    } cases[] = {{-1, {}}, {0, red}, {1, red}, {2, {}}, {3, {}}, {4, big}, {5, big}, {6, {}}};
    for (const auto& c : cases)
        EXPECT_EQ(describe(text.attributesAt(c.index)), describe(c.expected)) << "index " << c.index;
}

TEST(StyledText, EqualityComparesTextAndEveryUnitsAttributes)
{
    StyledText piecewise(QStringLiteral("ab"), red);
    piecewise.append(QStringLiteral("c"), red);
    const struct {
        const char* name;
        StyledText other;
        bool equal;
    } cases[] = {
        {"same text and runs built differently", StyledText(QStringLiteral("abc"), red), true},
        {"other attributes", StyledText(QStringLiteral("abc"), big), false},
        {"unstyled", StyledText(QStringLiteral("abc")), false},
        {"other text", StyledText(QStringLiteral("abd"), red), false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(piecewise == c.other, c.equal) << c.name;
}

}  // namespace
}  // namespace lexicorn
