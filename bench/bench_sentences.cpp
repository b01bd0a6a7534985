// lexicorn-bench-sentences: how long the reader takes to cut one dense PDF
// page (about 3000 characters) into sentences the first time, when nothing is
// cached yet; and, for comparison, a page answered from the cache and the
// Poppler text extraction of a sample-book page.
//
// The made-up page has 50 lines of 64 characters: English sentences of
// varied length with decimals, abbreviations and parentheses, a short last
// line every eight lines and a wider gap every sixteen.
//
// The figure is the Time column, in microseconds per page.
// Google Benchmark options apply, e.g. --benchmark_repetitions=5.

#include "host/pdf/pdf_objc_api.h"
#include "host/pdf/reading_order.h"
#include "lexicorn/reader/sentences/hook_pdf_page_text_tool.h"

#include "support/typeset.h"

#include <benchmark/benchmark.h>

#include <QString>
#include <QTemporaryDir>

namespace {

using namespace lexicorn;

constexpr int lineCount = 50;
constexpr int lineLength = 64;

PageLines densePage()
{
    const QString prose = QStringLiteral(
        "Every morning Mr. Brown walks 2.5 kilometres to the market by the river. He buys fish, "
        "green tea and bread (and sometimes a newspaper.) Prices rose by 3.14 percent this year; "
        "nobody is pleased! Is that fair? The seller smiles and says nothing at all. ");
    PageLines lines;
    qsizetype at = 0;
    double top = 60;
    for (int l = 0; l < lineCount; ++l) {
        const bool shortLine = l % 8 == 7;
        const int length = shortLine ? lineLength / 3 : lineLength;
        const double right = shortLine ? 200.0 : 470.0;
        const double width = (right - 50.0) / length;
        CharLine line;
        line.reserve(std::size_t(length));
        for (int i = 0; i < length; ++i, ++at) {
            const QChar c = prose[at % prose.size()];
            line.push_back(CharRecord{char16_t(c.unicode()), QRectF(50.0 + i * width, top, width, 12.2)});
        }
        lines.push_back(std::move(line));
        top += l % 16 == 15 ? 30.0 : 15.5;
    }
    return lines;
}

std::size_t characters(const PageLines& lines)
{
    std::size_t count = 0;
    for (const CharLine& line : lines)
        count += line.size();
    return count;
}

// The work of a cache miss: measuring the page and cutting it.
void cutDensePage(benchmark::State& state)
{
    const PageLines lines = densePage();
    std::size_t sentences = 0;
    for (auto _ : state) {
        const Sentences cut = HookPDFPageTextTool::cutSentences(lines);
        sentences = cut.size();
        benchmark::DoNotOptimize(cut.data());
    }
    state.counters["characters"] = double(characters(lines));
    state.counters["sentences"] = double(sentences);
}
BENCHMARK(cutDensePage)->Unit(benchmark::kMicrosecond);

// The first call for a page through the cached entry point: provider, cut
// and cache insert. Each iteration uses a new book key, so the cache grows;
// the iteration count is fixed to keep its memory small.
void firstCallForAPage(benchmark::State& state)
{
    const PageLines lines = densePage();
    const HookPDFPageTextTool::PageTextProvider provider = [&lines](int) { return lines; };
    static int book = 0;  // static: repetitions must not reuse a key
    for (auto _ : state) {
        const Sentences cut = HookPDFPageTextTool::sentencesOfPage(provider, 1, QString::number(++book));
        benchmark::DoNotOptimize(cut.data());
    }
}
BENCHMARK(firstCallForAPage)->Unit(benchmark::kMicrosecond)->Iterations(400);

// A page already cut: answered from the cache (a copy of the sentences).
void cachedPage(benchmark::State& state)
{
    const PageLines lines = densePage();
    const HookPDFPageTextTool::PageTextProvider provider = [&lines](int) { return lines; };
    HookPDFPageTextTool::sentencesOfPage(provider, 1, QStringLiteral("cached-book"));
    for (auto _ : state) {
        const Sentences cut = HookPDFPageTextTool::sentencesOfPage(provider, 1, QStringLiteral("cached-book"));
        benchmark::DoNotOptimize(cut.data());
    }
}
BENCHMARK(cachedPage)->Unit(benchmark::kMicrosecond);

// Poppler's text of page 2 of the sample book, turned into character lines.
void popplerPageText(benchmark::State& state)
{
    const host::PdfObjCAPI document(QStringLiteral(LEXICORN_SAMPLE_DIR "/books/sample-book.pdf"));
    if (!document.isOpen()) {
        state.SkipWithError("the sample book is missing");
        return;
    }
    std::size_t count = 0;
    for (auto _ : state) {
        const PageLines lines = document.textContentsForPageNo_(2);
        count = characters(lines);
        benchmark::DoNotOptimize(lines.data());
    }
    state.counters["characters"] = double(count);
}
BENCHMARK(popplerPageText)->Unit(benchmark::kMicrosecond);

// A letter page typeset in two justified, hyphenated columns by groff: the
// lines put in reading order (gaps between columns found, pieces of a line
// joined) and cut into sentences, as on a first lookup on the page.
void cutTwoColumnPage(benchmark::State& state)
{
    QTemporaryDir dir;
    const QString pdf = testing::typesetPdf(dir.path(), QStringLiteral("two-columns"), testing::twoColumnSource(true));
    const host::PdfObjCAPI document(pdf);
    const PageLines lines = document.textContentsForPageNo_(1);
    if (lines.empty()) {
        state.SkipWithError("groff did not typeset the page");
        return;
    }
    std::size_t sentences = 0;
    for (auto _ : state) {
        const Sentences cut = HookPDFPageTextTool::cutSentences(host::inReadingOrder(lines));
        sentences = cut.size();
        benchmark::DoNotOptimize(cut.data());
    }
    state.counters["lines"] = double(lines.size());
    state.counters["characters"] = double(characters(lines));
    state.counters["sentences"] = double(sentences);
}
BENCHMARK(cutTwoColumnPage)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
