// lexicorn-bench-hosting: loading the plug-in into the host and installing
// every replacement, as the reader does at start. A library loads once per
// process, so each figure is one load; run the program a few times.

#include "host/app/event_classes.h"
#include "host/app/host_classes.h"
#include "host/app/note_classes.h"
#include "host/app/reader_classes.h"
#include "host/app/plugin_loader.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QElapsedTimer>

namespace {

void load_plugin(benchmark::State& state)
{
    // Every class the reader has, so the rows for them are installed.
    lexicorn::host::registerHostClasses();
    lexicorn::host::registerNoteClasses();
    lexicorn::host::registerReaderClasses();
    lexicorn::host::registerEventClasses();
    for (auto _ : state) {
        QElapsedTimer timer;
        timer.start();
        const lexicorn::host::PluginLoad load = lexicorn::host::loadPlugin(QStringLiteral(LEXICORN_PLUGIN_PATH));
        state.SetIterationTime(double(timer.nsecsElapsed()) / 1e9);
        if (!load.loaded)
            state.SkipWithError(load.problem.toStdString().c_str());
        state.counters["load_ms"] = double(timer.nsecsElapsed()) / 1e6;
    }
}

BENCHMARK(load_plugin)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
