// lexicorn-bench-rows: how long the dictionary popup takes to render a lookup
// into its styled rows (attrStrings), translation left out.
//
// The lookup is one entry of 40 senses, each with a grammar note, signposts,
// a subtitle and two examples, the size of a long dictionary entry. The
// translator is set to an engine that asks no service, so the figure is the
// rendering alone. Settings go to a scratch home folder, never the user's.
//
// The figure is the Time column, in microseconds per call.
// Google Benchmark options apply, e.g. --benchmark_repetitions=5.

#include "lexicorn/render/dict_data_rows.h"
#include "lexicorn/render/markup.h"
#include "lexicorn/services/ksw_translate.h"

#include <benchmark/benchmark.h>

#include <QTemporaryDir>

#include <cstdio>

namespace {

using namespace lexicorn;

constexpr int senseCount = 40;
constexpr int examplesPerSense = 2;

DictData longLookup()
{
    EnWordDefList defs;
    for (int k = 0; k < senseCount; ++k) {
        auto sense = std::make_shared<EnWordDef>();
        sense->subTitle = QStringLiteral("take something off");
        sense->signpos_en = QStringLiteral("REMOVE");
        sense->signpos_cn = QStringLiteral("移走");
        sense->gram = QStringLiteral("transitive");
        sense->def_en = QStringLiteral("to move something from one place to another, especially when sense %1 applies").arg(k);
        sense->def_cn = QStringLiteral("拿走；取走；带走");
        for (int e = 0; e < examplesPerSense; ++e) {
            sense->exts.push_back(std::make_shared<EnWordExt>(
                EnWordExt{QStringLiteral("他从架子上拿了一本书，然后离开了房间。"),
                          QStringLiteral("He took a book from the shelf and then left the room (%1).").arg(e),
                          QStringLiteral("take_ex%1.mp3").arg(e)}));
        }
        defs.push_back(std::move(sense));
    }
    auto entry = std::make_shared<EnWord>(QStringLiteral("take"), std::move(defs));
    entry->readings = QStringLiteral("/teɪk/");
    entry->star = QStringLiteral("●●●");
    entry->pos_en = QStringLiteral("verb");
    return DictData(QStringLiteral("took"), QStringLiteral("She took the book from the shelf and left without a word."), {entry});
}

void attrStringsOfALongEntry(benchmark::State& state)
{
    DictData data = longLookup();
    std::size_t lines = 0;
    for (auto _ : state) {
        StyledSections sections = attrStrings(data);
        lines = sections.back().size();
        benchmark::DoNotOptimize(sections);
    }
    if (lines != senseCount + 1) {
        state.SkipWithError("the entry did not render one line per sense");
        return;
    }
    state.counters["lines"] = double(lines);
}
BENCHMARK(attrStringsOfALongEntry)->Unit(benchmark::kMicrosecond);

// Bold runs of a rendered sense line back to tags, as the note editor does.
void highlightOfASenseLine(benchmark::State& state)
{
    DictData data = longLookup();
    StyledText line = attrStrings(data).back().back();
    TextAttributes bold;
    bold.bold = true;
    line.addAttributes(0, 20, bold);
    line.addAttributes(40, 30, bold);
    for (auto _ : state)
        benchmark::DoNotOptimize(highlighTextWithFormat(line, QStringLiteral("<b>%@</b>")));
}
BENCHMARK(highlightOfASenseLine)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char* argv[])
{
    // The translator reads and writes its engine in the settings of the home
    // folder; a scratch one keeps the user's settings out of it.
    QTemporaryDir home;
    if (!home.isValid()) {
        std::fprintf(stderr, "lexicorn-bench-rows: no scratch folder\n");
        return 1;
    }
    qputenv("LEXICORN_HOME", home.path().toUtf8());
    KSWTranslate::shareInstance().setEngine(7);

    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
