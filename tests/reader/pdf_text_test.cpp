// The page text of real PDFs through Poppler, and the sentences and sections
// cut from it: the sample book, and PDFs written here with known layouts.

#include "page_lines.h"

#include "support/typeset.h"

#include "host/pdf/pdf_objc_api.h"
#include "lexicorn/reader/sentences/hook_pdf_page_text_tool.h"

#include <QFont>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace {

using namespace lexicorn;
using namespace lexicorn::testing;
using host::PdfObjCAPI;

const QString sampleBook = QStringLiteral(LEXICORN_SAMPLE_DIR "/books/sample-book.pdf");

Sentences sentencesOf(const PdfObjCAPI& document, int pageNo, const QString& book)
{
    return HookPDFPageTextTool::sentencesOfPage(
        [&document](int page) { return document.textContentsForPageNo_(page); }, pageNo, book);
}

// ---- PDFs with a known layout ---------------------------------------------

constexpr double left = 72.0;     // points from the page's left edge
double measure = 0.0;              // width of a full line, set by writePdf
constexpr double pitch = 16.0;    // baseline to baseline

struct DrawnLine {
    QString text;
    double baseline;
    bool justified;  // spread to the full measure, else set with plain spaces
};
using DrawnPage = std::vector<DrawnLine>;

// Writes the pages with QPdfWriter at 72 units per inch, so a unit is a point.
void writePdf(const QString& path, const std::vector<DrawnPage>& pages)
{
    QPdfWriter writer(path);
    writer.setResolution(72);
    writer.setPageLayout(QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait, QMarginsF(0, 0, 0, 0),
                                     QPageLayout::Point));
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPointSizeF(11);
    font.setKerning(false);
    font.setStyleStrategy(QFont::PreferNoShaping);
    ASSERT_EQ(QFontInfo(font).family(), QStringLiteral("DejaVu Sans")) << "the test font is missing";

    QPainter painter;
    ASSERT_TRUE(painter.begin(&writer));
    painter.setFont(font);
    const QFontMetricsF metrics(font, &writer);
    // The measure: the widest justified line set with plain spaces, plus a little.
    double widest = 0;
    for (const DrawnPage& page : pages) {
        for (const DrawnLine& line : page) {
            if (line.justified)
                widest = std::max(widest, metrics.horizontalAdvance(line.text));
        }
    }
    measure = widest + 4.0;
    for (std::size_t p = 0; p < pages.size(); ++p) {
        if (p > 0)
            writer.newPage();
        if (pages[p].empty())
            painter.drawRect(QRectF(100, 100, 50, 50));  // a page with a drawing but no text
        for (const DrawnLine& line : pages[p]) {
            if (!line.justified) {
                painter.drawText(QPointF(left, line.baseline), line.text);
                continue;
            }
            const QStringList words = line.text.split(u' ');
            double natural = 0;
            for (const QString& word : words)
                natural += metrics.horizontalAdvance(word);
            const double space = (measure - natural) / double(words.size() - 1);
            // Poppler reads much wider gaps as columns, so lines are chosen to
            // need little stretching, as in a well-set book.
            const double plain = metrics.horizontalAdvance(u' ');
            ASSERT_GT(space, plain * 0.9) << "line too long: " << line.text.toStdString();
            ASSERT_LT(space, plain * 2.0) << "line too short (" << space << "): " << line.text.toStdString();
            double x = left;
            for (const QString& word : words) {
                painter.drawText(QPointF(x, line.baseline), word);
                x += metrics.horizontalAdvance(word) + space;
            }
        }
    }
    painter.end();
}

const DrawnPage paragraphsPage{
    {"The first paragraph has three lines of text that", 100, true},
    {"are set full width so that the right edge is even", 100 + pitch, true},
    {"and it ends here.", 100 + 2 * pitch, false},
    {"A second paragraph follows. It has two lines that", 100 + 3 * pitch, true},
    {"fill the measure and then a short last line at", 100 + 4 * pitch, true},
    {"the end.", 100 + 5 * pitch, false},
};

class PdfTextGenerated : public ::testing::Test {
protected:
    void SetUp() override { writePdf(path_, {paragraphsPage, DrawnPage()}); }

    QTemporaryDir dir_;
    const QString path_ = dir_.filePath(QStringLiteral("layout.pdf"));
};

TEST_F(PdfTextGenerated, LinesHoldTheDrawnWordsAndTheCharactersFollowTheLayout)
{
    const PdfObjCAPI document(path_);
    ASSERT_TRUE(document.isOpen());
    ASSERT_EQ(document.pageCount(), 2);
    const PageLines lines = document.textContentsForPageNo_(1);
    QStringList expected;
    for (const DrawnLine& line : paragraphsPage)
        expected.append(line.text);
    ASSERT_EQ(textsOf(lines), expected);  // one blank between words
    for (std::size_t l = 0; l < lines.size(); ++l) {
        SCOPED_TRACE("line " + std::to_string(l));
        const CharLine& line = lines[l];
        EXPECT_NEAR(line.front().rect.left(), left, 1.5);
        if (paragraphsPage[l].justified) {
            EXPECT_NEAR(line.back().rect.right(), left + measure, 1.5);
        } else {
            EXPECT_LT(line.back().rect.right(), left + measure - 70);
        }
        if (l > 0) {
            EXPECT_NEAR(line.front().rect.top() - lines[l - 1].front().rect.top(), pitch, 0.3);
        }
        for (std::size_t i = 0; i < line.size(); ++i) {
            SCOPED_TRACE("char " + std::to_string(i));
            const QRectF& rect = line[i].rect;
            // The character's own height, not the line's pitch.
            EXPECT_GT(rect.height(), 8.0);
            EXPECT_LT(rect.height(), pitch);
            EXPECT_NEAR(rect.top(), line.front().rect.top(), 0.01);
            if (i > 0) {
                // Left to right without overlap; a blank fills the gap between words.
                EXPECT_NEAR(rect.left(), line[i - 1].rect.right(), 0.05);
            }
            if (line[i].ch != u' ') {
                EXPECT_GT(rect.width(), 0.5);
            }
        }
    }
}

TEST_F(PdfTextGenerated, ParagraphsEndAtTheirShortLastLines)
{
    const PdfObjCAPI document(path_);
    const QString book = QStringLiteral("generated-paragraphs");
    const Sentences sentences = sentencesOf(document, 1, book);
    ASSERT_EQ(textsOf(sentences),
              (QStringList{"The first paragraph has three lines of text thatare set full width so that the right edge is "
                           "evenand it ends here.",
                           "A second paragraph follows.",
                           "It has two lines thatfill the measure and then a short last line atthe end."}));
    // The first sentence is the first three printed lines, each ending flagged.
    const qsizetype first = paragraphsPage[0].text.size();
    const qsizetype second = first + paragraphsPage[1].text.size();
    const qsizetype third = second + paragraphsPage[2].text.size();
    EXPECT_EQ(flagged(sentences[0], &CharRecord::lineEnd), (std::vector<qsizetype>{first - 1, second - 1, third - 1}));
    EXPECT_EQ((std::vector<bool>{sentences[0].back().sectionEnd, sentences[1].back().sectionEnd, sentences[2].back().sectionEnd}),
              (std::vector<bool>{true, false, true}));
}

TEST_F(PdfTextGenerated, PagesWithoutTextGiveNothing)
{
    const PdfObjCAPI document(path_);
    const QString book = QStringLiteral("generated-empty");
    for (int pageNo : {2, 0, 3, -1}) {
        EXPECT_TRUE(document.textContentsForPageNo_(pageNo).empty()) << "page " << pageNo;
        EXPECT_TRUE(sentencesOf(document, pageNo, book).empty()) << "page " << pageNo;
        EXPECT_TRUE(HookPDFPageTextTool::sectionsOfPage({}, pageNo, book).empty()) << "page " << pageNo;
    }
}

TEST(PdfTextDocument, ViewHandlesFindOpenDocumentsOnly)
{
    std::int64_t firstHandle = 0;
    {
        const PdfObjCAPI first(sampleBook);
        const PdfObjCAPI second(sampleBook);
        firstHandle = first.viewHandle();
        EXPECT_NE(first.viewHandle(), second.viewHandle());
        EXPECT_EQ(PdfObjCAPI::withViewHandle(first.viewHandle()), &first);
        EXPECT_EQ(PdfObjCAPI::withViewHandle(second.viewHandle()), &second);
    }
    EXPECT_EQ(PdfObjCAPI::withViewHandle(firstHandle), nullptr);

    QTemporaryDir dir;
    const QString notPdf = dir.filePath(QStringLiteral("notes.pdf"));
    QFile file(notPdf);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("this is not a PDF");
    file.close();
    for (const QString& path : {notPdf, dir.filePath(QStringLiteral("missing.pdf"))}) {
        const PdfObjCAPI document(path);
        EXPECT_FALSE(document.isOpen()) << path.toStdString();
        EXPECT_EQ(document.pageCount(), 0);
        EXPECT_TRUE(document.textContentsForPageNo_(1).empty());
    }
}

// ---- Typeset two-column pages -------------------------------------------------

// Compared by their letters, the sentences cut from a two-column page are the
// prose's sentences, whole, whether or not the lines are numbered in the
// margins; the title and the numbers stand apart, and nothing else is there.
TEST(PdfTextTwoColumns, EverySentenceIsCutWholeAndMarginNumbersStandApart)
{
    QTemporaryDir dir;
    QStringList wanted{lettersOf(twoColumnTitle)};
    for (const QString& sentence : twoColumnProse())
        wanted.append(lettersOf(sentence));
    for (const bool numbered : {false, true}) {
        const QString name = numbered ? QStringLiteral("numbered") : QStringLiteral("plain");
        const PdfObjCAPI document(typesetPdf(dir.path(), name, twoColumnSource(numbered)));
        ASSERT_EQ(document.pageCount(), 1) << name.toStdString();
        QStringList cut;
        int numbers = 0;
        for (const Sentence& sentence : sentencesOf(document, 1, QStringLiteral("two-columns-") + name)) {
            const QString text = textOf(sentence);
            if (!text.isEmpty() && std::all_of(text.begin(), text.end(), [](QChar c) { return c.isDigit(); }))
                ++numbers;
            else
                cut.append(lettersOf(text));
        }
        EXPECT_EQ(cut, wanted) << name.toStdString();
        EXPECT_EQ(numbers > 0, numbered) << name.toStdString();
    }
}

// ---- The sample book --------------------------------------------------------

struct SampleSentence {
    int page;
    QString text;          // as cut: printed lines joined without a blank
    std::vector<qsizetype> lineEnds;
};

TEST(PdfTextSampleBook, SentencesAreCutWhereTheBookSays)
{
    const PdfObjCAPI document(sampleBook);
    const QString book = QStringLiteral("sample-book-sentences");
    const std::vector<SampleSentence> expected{
        {1, "The Second-hand Dictionary", {25}},
        {1, "Every Saturday morning my grandmother and I walk 2.5kilometres to the old market by the river.", {51, 93}},
        {2, "“Pi is 3.14 in everycountry and in every language.” But he had to agree thateven a number needs a name, "
            "and that the name isdifferent in every language too.",
         {19, 75, 123, 155}},
        // The hyphen that breaks "vocab-" at the line end is that line's last character.
        {2, "Slowly, page after page and note after note, my vocab-ulary grew.", {53, 64}},
        {3, "我每天读十页英文书。", {9}},
        {3, "遇到不认识的词，我先猜一猜，然后再查词典。", {14, 20}},
    };
    std::vector<Sentences> pages;
    for (int pageNo = 1; pageNo <= 3; ++pageNo)
        pages.push_back(sentencesOf(document, pageNo, book));
    for (const SampleSentence& want : expected) {
        const Sentences& sentences = pages[std::size_t(want.page - 1)];
        const auto found = std::find_if(sentences.begin(), sentences.end(),
                                        [&](const Sentence& s) { return textOf(s) == want.text; });
        ASSERT_NE(found, sentences.end()) << "page " << want.page << ": " << want.text.toStdString() << "\ngot:\n"
                                          << textsOf(sentences).join(u'\n').toStdString();
        EXPECT_EQ(flagged(*found, &CharRecord::lineEnd), want.lineEnds) << want.text.toStdString();
    }
}

}  // namespace
