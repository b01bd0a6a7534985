// The text recognised on a scanned page against the typeset page it was made
// from: the same words in the same places, upright and turned; and the
// reader's document taking it for pages without text of their own.

#include "scan_books.h"

#include "host/pdf/page_ocr.h"
#include "host/pdf/pdf_objc_api.h"

#include <poppler-qt6.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <thread>

namespace {

using namespace lexicorn;
using namespace lexicorn::testing;

struct LayerCase {
    const char* name;
    QString scan;
    QString text;
    bool downwards;  // lines run down the displayed page rather than across
};

struct Recognition {
    PageLines lines;
    QString problem;
    QSizeF pageSize;
};

double fraction(const std::vector<double>& values, double bound)
{
    return double(std::count_if(values.begin(), values.end(), [bound](double v) { return v <= bound; }))
        / double(values.size());
}

double median(std::vector<double> values)
{
    std::nth_element(values.begin(), values.begin() + std::ptrdiff_t(values.size() / 2), values.end());
    return values[values.size() / 2];
}

// The first character of each word, counted over the non-blank characters.
std::vector<std::size_t> wordStarts(const std::vector<PageWord>& words)
{
    std::vector<std::size_t> starts;
    std::size_t at = 0;
    for (const PageWord& word : words) {
        starts.push_back(at);
        at += std::size_t(word.text.size());
    }
    return starts;
}

std::vector<const CharRecord*> nonBlank(const PageLines& lines)
{
    std::vector<const CharRecord*> records;
    for (const CharLine& line : lines) {
        for (const CharRecord& record : line) {
            if (record.ch != u' ')
                records.push_back(&record);
        }
    }
    return records;
}

TEST(OcrLayer, WordsAndPlacesMatchTheTypesetPage)
{
    const ScanBooks& books = scanBooks();
    ASSERT_FALSE(HasFailure());
    const std::vector<LayerCase> cases{
        {"upright", books.scan, books.text, false},
        {"turned a quarter clockwise", books.turnedScan, books.turnedText, true},
    };

    // Both at once, each on its own thread with its own document, as the
    // reader's workers do.
    std::vector<Recognition> results(cases.size());
    {
        std::vector<std::thread> workers;
        for (std::size_t i = 0; i < cases.size(); ++i) {
            workers.emplace_back([&cases, &results, i] {
                const std::unique_ptr<Poppler::Document> document = Poppler::Document::load(cases[i].scan);
                if (!document)
                    return;
                results[i].pageSize = document->page(prosePage - 1)->pageSizeF();
                results[i].lines = host::recognisePage(*document, prosePage, &results[i].problem);
            });
        }
        for (std::thread& worker : workers)
            worker.join();
    }

    for (std::size_t c = 0; c < cases.size(); ++c) {
        const LayerCase& test = cases[c];
        SCOPED_TRACE(test.name);
        const PageLines& lines = results[c].lines;
        EXPECT_TRUE(results[c].problem.isEmpty()) << results[c].problem.toStdString();
        const host::PdfObjCAPI typeset(test.text);
        ASSERT_TRUE(typeset.isOpen());
        const PageLines typesetLines = typeset.textContentsForPageNo_(prosePage);
        const std::vector<PageWord> expected = wordsOf(typesetLines);
        const std::vector<PageWord> read = wordsOf(lines);
        ASSERT_GT(expected.size(), 150u);

        // The words, by their letters: a few may be misread, none made up.
        const auto pairs = matchWords(expected, read);
        EXPECT_GE(double(pairs.size()), 0.95 * double(expected.size())) << pairs.size() << " of " << expected.size();
        EXPECT_LE(read.size(), expected.size() + expected.size() / 20);

        // Each word's box within a point or so of the typeset one; the odd
        // word Tesseract boxes badly still within a character.
        std::vector<double> wordErrors;
        for (const auto& [e, r] : pairs) {
            const QRectF& want = expected[e].box;
            const QRectF& got = read[r].box;
            const double error = std::max({std::fabs(want.left() - got.left()), std::fabs(want.right() - got.right()),
                                           std::fabs(want.top() - got.top()), std::fabs(want.bottom() - got.bottom())});
            EXPECT_LE(error, 3.0) << expected[e].text.toStdString() << ": typeset " << want.left() << ", "
                                  << want.top() << ", " << want.right() << ", " << want.bottom() << "; read "
                                  << got.left() << ", " << got.top() << ", " << got.right() << ", " << got.bottom();
            wordErrors.push_back(error);
        }
        EXPECT_GE(fraction(wordErrors, 1.25), 0.9);

        // Characters along the line, in words read with as many letters as
        // typeset: shared out evenly they would be off by 1.7 pt in one case
        // of ten.
        const std::vector<const CharRecord*> typesetChars = nonBlank(typesetLines);
        const std::vector<const CharRecord*> readChars = nonBlank(lines);
        const std::vector<std::size_t> typesetStarts = wordStarts(expected);
        const std::vector<std::size_t> readStarts = wordStarts(read);
        std::vector<double> charErrors;
        for (const auto& [e, r] : pairs) {
            if (expected[e].text.size() != read[r].text.size())
                continue;
            for (qsizetype k = 0; k < expected[e].text.size(); ++k) {
                const QPointF want = typesetChars[typesetStarts[e] + std::size_t(k)]->rect.center();
                const QPointF got = readChars[readStarts[r] + std::size_t(k)]->rect.center();
                charErrors.push_back(std::fabs(test.downwards ? want.y() - got.y() : want.x() - got.x()));
            }
        }
        ASSERT_GT(charErrors.size(), 500u);
        EXPECT_LE(median(charErrors), 0.5);
        EXPECT_GE(fraction(charErrors, 1.0), 0.9);

        // The shape of page text: characters edge to edge in reading order,
        // one blank between words, all on the page.
        const QRectF page(QPointF(0, 0), results[c].pageSize);
        for (const CharLine& line : lines) {
            const QString text = textOf(line);
            ASSERT_FALSE(text.isEmpty());
            EXPECT_FALSE(text.startsWith(u' ') || text.endsWith(u' ') || text.contains(QStringLiteral("  ")))
                << text.toStdString();
            for (std::size_t i = 0; i < line.size(); ++i) {
                const QRectF& rect = line[i].rect;
                EXPECT_TRUE(page.contains(rect)) << text.toStdString();
                if (i == 0)
                    continue;
                const QRectF& before = line[i - 1].rect;
                EXPECT_NEAR(test.downwards ? rect.top() : rect.left(), test.downwards ? before.bottom() : before.right(),
                            0.011)
                    << text.toStdString() << " at " << i;
            }
        }
    }
}

TEST(OcrLayer, TheDocumentTakesARecognisedLayerOnlyForPagesWithoutText)
{
    const ScanBooks& books = scanBooks();
    ASSERT_FALSE(HasFailure());
    host::PdfObjCAPI text(books.text);
    host::PdfObjCAPI scan(books.scan);
    ASSERT_TRUE(text.isOpen() && scan.isOpen());
    const CharLine word{CharRecord{u'O', QRectF(72, 72, 8, 10)}, CharRecord{u'K', QRectF(80, 72, 7, 10)}};
    const PageLines layer{word};

    struct Case {
        const char* name;
        host::PdfObjCAPI* document;
        int pageNo;
        bool ownText;
        bool takesLayer;
    };
    const std::vector<Case> cases{
        {"typeset page", &text, prosePage, true, false},
        {"blank page", &text, blankPage, false, true},
        {"scanned page", &scan, prosePage, false, true},
        {"no such page", &text, 99, false, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.document->hasPopplerText(c.pageNo), c.ownText);
        const PageLines before = c.document->textContentsForPageNo_(c.pageNo);  // read, and kept, first
        EXPECT_EQ(before.empty(), !c.ownText);
        c.document->setTextLayer(c.pageNo, layer);
        EXPECT_TRUE(sameLines(c.document->textContentsForPageNo_(c.pageNo), c.takesLayer ? layer : before));
        EXPECT_EQ(c.document->hasPopplerText(c.pageNo), c.ownText);
    }
}

}  // namespace
