// Sentence cutting, section ends and the page caches, on made-up lines.

#include "page_lines.h"

#include "lexicorn/reader/sentences/hook_pdf_page_text_tool.h"

#include <gtest/gtest.h>

#include <QStringList>

#include <limits>
#include <vector>

namespace {

using namespace lexicorn;
using namespace lexicorn::testing;

struct CuttingCase {
    const char* name;
    PageLines lines;
    QStringList sentences;
};

TEST(SentenceCutting, EndsSentencesAtTheRightCharacters)
{
    const std::vector<CuttingCase> cases{
        {"full stop before a blank splits, even after Mr", regularPage({"Mr. Smith came. He sat."}),
         {"Mr.", "Smith came.", "He sat."}},
        {"a decimal number does not split", regularPage({"Pi is 3.14 today."}), {"Pi is 3.14 today."}},
        {"a parenthesis closed after a full stop ends at the parenthesis",
         regularPage({"He smiled. (He smiles.) Then left."}), {"He smiled.", "(He smiles.)", "Then left."}},
        {"a full stop at a line end splits without a blank", regularPage({"It ends here.", "Next one starts"}),
         {"It ends here.", "Next one starts"}},
        {"a full stop before a closing quote does not split", regularPage({"He said \"ok.\" and left"}),
         {"He said \"ok.\" and left"}},
        {"Chinese full stop needs no blank", regularPage({"我读书。你写字。"}), {"我读书。", "你写字。"}},
        {"Chinese exclamation, semicolon and question mark", regularPage({"好！走；来？去"}),
         {"好！", "走；", "来？", "去"}},
        {"ASCII ! ? ; before blanks", regularPage({"Go! Now? Yes; no"}), {"Go!", "Now?", "Yes;", "no"}},
        {"ASCII ! ? ; inside a word do not split", regularPage({"a!b a?b a;b end"}), {"a!b a?b a;b end"}},
        {"a blank opening a sentence is dropped", regularPage({" Leading blank. Next"}), {"Leading blank.", "Next"}},
        {"lines join without a blank", regularPage({"one two", "three. four"}), {"one twothree.", "four"}},
        {"a page without lines", PageLines(), {}},
        {"empty lines are skipped", regularPage({"", "Only this.", ""}), {"Only this."}},
        {"a character at NaN (a NaN right edge) and one of NaN height (a NaN line height) go through the median",
         [] {
             PageLines lines = regularPage({"First line. Still", "going on.", "Last."});
             lines[0][3].rect.moveLeft(std::numeric_limits<double>::quiet_NaN());
             lines[1][2].rect.setHeight(std::numeric_limits<double>::quiet_NaN());
             return lines;
         }(),
         {"First line.", "Stillgoing on.", "Last."}},
    };
    for (const CuttingCase& c : cases)
        EXPECT_EQ(textsOf(HookPDFPageTextTool::cutSentences(c.lines)), c.sentences) << c.name;
}

TEST(SentenceCutting, FlagsLineEndsAndSentenceEndsOnCopies)
{
    const PageLines lines = regularPage({"one two", "three. four", "five six"});
    const Sentences sentences = HookPDFPageTextTool::cutSentences(lines);
    ASSERT_EQ(textsOf(sentences), (QStringList{"one twothree.", "fourfive six"}));
    // The last character of each line and of each sentence.
    EXPECT_EQ(flagged(sentences[0], &CharRecord::lineEnd), (std::vector<qsizetype>{6, 12}));
    EXPECT_EQ(flagged(sentences[1], &CharRecord::lineEnd), (std::vector<qsizetype>{3, 11}));
    // Rectangles travel with the characters.
    EXPECT_EQ(sentences[1][0].rect, lines[1][7].rect);
    // The given lines keep their records as they were.
    for (const CharLine& line : lines) {
        for (const CharRecord& record : line)
            EXPECT_FALSE(record.lineEnd || record.sectionEnd);
    }
}

struct SectionCase {
    const char* name;
    PageLines lines;
    QStringList sections;
};

TEST(SentenceSections, SectionEndsFromGapsShortLinesAndFewLines)
{
    const double gapLimit = 3.0 + 6.0;  // smallest gap on these pages, plus the margin
    const std::vector<SectionCase> cases{
        {"a wide gap closes the line above it",
         makePage({{"Alpha beta.", 100}, {"Gamma delta", 115}, {"epsilon", 130},
                   {"Zeta eta.", 142 + gapLimit + 0.5}, {"Theta", 142 + gapLimit + 15.5}}),
         {"Alpha beta.Gamma deltaepsilon", "Zeta eta.Theta"}},
        {"a gap just under the limit does not",
         makePage({{"Alpha beta.", 100}, {"Gamma delta", 115}, {"epsilon", 130},
                   {"Zeta eta.", 142 + gapLimit - 0.5}, {"Theta", 142 + gapLimit + 14.5}}),
         {"Alpha beta.Gamma deltaepsilonZeta eta.Theta"}},
        {"a short last line closes the paragraph",
         makePage({{"First line of a", 100}, {"paragraph that ends", 115}, {"here", 130, fullRight - 70.5},
                   {"Second paragraph", 145}, {"goes on", 160}}),
         {"First line of aparagraph that endshere", "Second paragraphgoes on"}},
        {"a line ending just inside the margin does not",
         makePage({{"First line of a", 100}, {"paragraph that goes", 115}, {"on", 130, fullRight - 69.5},
                   {"and on", 145}, {"and on", 160}}),
         {"First line of aparagraph that goesonand onand on"}},
        {"overlapping lines floor the smallest gap at -3, so a 4-point gap closes and 3 does not",
         makePage({{"One", 100}, {"two", 107}, {"three", 123}, {"four", 138}, {"five", 153}}),
         {"Onetwo", "threefourfive"}},
        {"a single line closes its section", regularPage({"no stop here"}), {"no stop here"}},
        {"a sentence ending inside a closing line stays in its section",
         makePage({{"Full line one", 100}, {"Full line two", 115}, {"end. More", 130, 300}, {"Next one", 145},
                   {"Next two", 160}}),
         {"Full line oneFull line twoend.More", "Next oneNext two"}},
        {"a page ending without a closed section keeps the rest", regularPage({"One. Two", "three"}),
         {"One.Twothree"}},
        {"a page without text", PageLines(), {}},
    };
    for (const SectionCase& c : cases) {
        const Sentences sentences = HookPDFPageTextTool::cutSentences(c.lines);
        const Sentences sections = HookPDFPageTextTool::sectionsOfSentences(sentences);
        EXPECT_EQ(textsOf(sections), c.sections) << c.name;
        // Every closed section but a remainder ends on a flagged character,
        // and no other character of it is flagged.
        for (const Sentence& section : sections) {
            const std::vector<qsizetype> ends = flagged(section, &CharRecord::sectionEnd);
            EXPECT_TRUE(ends.empty() || ends == std::vector<qsizetype>{qsizetype(section.size()) - 1}) << c.name;
        }
    }
}

TEST(SentenceSections, ShortLineSplitsTheSentenceAtItsEnd)
{
    const Sentences sentences = HookPDFPageTextTool::cutSentences(
        makePage({{"Full line one", 100}, {"Full line two", 115}, {"no stop", 130, 200}, {"Full three", 145}}));
    ASSERT_EQ(textsOf(sentences), (QStringList{"Full line oneFull line twono stop", "Full three"}));
    EXPECT_TRUE(sentences[0].back().sectionEnd);
    EXPECT_FALSE(sentences[1].back().sectionEnd);
}

TEST(SentenceSections, BodyHeightIsTheMedianOfLineMedians)
{
    // Body lines of 12 points with a capital of 16 each, and a heading of 20;
    // with a fourth line of 14 the count is even and the lower middle is taken.
    const std::vector<std::pair<PageLines, double>> cases{
        {makePage({{"Heading", 60, 200, 20}, {"Body text one", 100}, {"Body text two", 115}}), 12.0},
        {makePage({{"Heading", 60, 200, 20}, {"Body text one", 100}, {"Body text two", 115}, {"Note", 130, 200, 14}}), 12.0},
        {makePage({{"Heading", 60, 200, 20}, {"Large", 100, 200, 16}, {"Body text two", 115}, {"Note", 130, 200, 14}}), 14.0},
    };
    for (auto [lines, expected] : cases) {
        for (CharLine& line : lines)
            line[0].rect.setHeight(line[0].rect.height() == lineHeight ? 16 : line[0].rect.height());
        double bodyHeight = 0;
        HookPDFPageTextTool::cutSentences(lines, &bodyHeight);
        EXPECT_EQ(bodyHeight, expected) << lines.size() << " lines";
    }
}

TEST(SentenceCache, CutsEachBookPageOnce)
{
    int calls = 0;
    const HookPDFPageTextTool::PageTextProvider provider = [&calls](int pageNo) {
        ++calls;
        return regularPage({QStringLiteral("Page %1 says hello. Bye.").arg(pageNo)});
    };
    const QString book = QStringLiteral("0f343b0931126a20f133d67c2b018a3b");
    const Sentences first = HookPDFPageTextTool::sentencesOfPage(provider, 3, book);
    EXPECT_EQ(textsOf(first), (QStringList{"Page 3 says hello.", "Bye."}));
    EXPECT_EQ(textsOf(HookPDFPageTextTool::sentencesOfPage(provider, 3, book)), textsOf(first));
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(HookPDFPageTextTool::sentensesCache().contains(book + QStringLiteral("-3")));
    EXPECT_EQ(HookPDFPageTextTool::bodyHeightCache().value(book + QStringLiteral("-3")), lineHeight);
    EXPECT_EQ(HookPDFPageTextTool::bodyHeightFor(book, 3), lineHeight);

    // Another page, or the same page of another book, is cut anew.
    HookPDFPageTextTool::sentencesOfPage(provider, 4, book);
    HookPDFPageTextTool::sectionsOfPage(provider, 3, book + QStringLiteral("x"));
    EXPECT_EQ(calls, 3);
    EXPECT_FALSE(HookPDFPageTextTool::bodyHeightFor(book, 5).has_value());
}

TEST(SentenceCache, ViewHandleEntryPointsAskTheSourceForThatDocument)
{
    std::vector<std::pair<std::int64_t, int>> asked;
    HookPDFPageTextTool::setPageTextSource([&asked](std::int64_t viewHandle, int pageNo) {
        asked.emplace_back(viewHandle, pageNo);
        return makePage({{"One. Two.", 100, 300}, {"Three", 115}, {"four.", 130}});
    });
    const QString book = QStringLiteral("view-handle-book");
    EXPECT_EQ(textsOf(HookPDFPageTextTool::sentenceWithViewHandle_pageNo_bookMD5_(77, 2, book)),
              (QStringList{"One.", "Two.", "Threefour."}));
    EXPECT_EQ(textsOf(HookPDFPageTextTool::sectionWithViewHandle_pageNo_bookMD5_(77, 2, book)),
              (QStringList{"One.Two.", "Threefour."}));
    EXPECT_EQ(asked, (std::vector<std::pair<std::int64_t, int>>{{77, 2}}));

    HookPDFPageTextTool::setPageTextSource({});
    EXPECT_TRUE(HookPDFPageTextTool::sentenceWithViewHandle_pageNo_bookMD5_(78, 1, book).empty());
    EXPECT_TRUE(HookPDFPageTextTool::sectionWithViewHandle_pageNo_bookMD5_(78, 1, book).empty());
}

}  // namespace
