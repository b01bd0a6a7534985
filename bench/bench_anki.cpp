// lexicorn-bench-anki: the AnkiConnect client's own cost, measured against a
// real Anki collection served by tools/anki-peer on 127.0.0.1:
//   - "version" round trips per second from one thread;
//   - 1000 addNote calls through our client, against the same 1000 calls
//     made directly from Python (tools/anki-peer/direct_adds.py) on the same
//     peer, in the same run;
//   - what a server that never answers costs a caller.

#include "lexicorn/anki/anki_reply.h"
#include "lexicorn/anki/ksw_ankiconnect.h"

#include "child_server.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>

namespace {

using lexicorn::KSWAnkiconnect;

using Server = ChildServer;

QTemporaryDir* scratch = nullptr;
Server* peer = nullptr;

QJsonObject noteFor(const QString& front)
{
    return {{"note", QJsonObject{{"deckName", "Default"},
                                 {"modelName", "Basic"},
                                 {"fields", QJsonObject{{"Front", front}, {"Back", "释义"}}},
                                 {"options", QJsonObject{{"allowDuplicate", false}, {"duplicateScope", "deck"}}},
                                 {"tags", QJsonArray{"Lexicorn"}}}}};
}

void version_round_trips(benchmark::State& state)
{
    KSWAnkiconnect& anki = KSWAnkiconnect::shareInstance();
    anki.setIpString_(peer->address);
    int64_t count = 0;
    for (auto _ : state) {
        for (int i = 0; i < 1000; ++i) {
            if (!anki.postRequestCommand_params_(QStringLiteral("version"), std::nullopt))
                state.SkipWithError("no reply from the peer");
        }
        count += 1000;
    }
    state.counters["requests_per_s"] = benchmark::Counter(double(count), benchmark::Counter::kIsRate);
}

void add_notes_ours_vs_python(benchmark::State& state)
{
    KSWAnkiconnect& anki = KSWAnkiconnect::shareInstance();
    anki.setIpString_(peer->address);
    static int round = 0;
    for (auto _ : state) {
        ++round;
        QElapsedTimer timer;
        timer.start();
        for (int i = 0; i < 1000; ++i) {
            const auto reply = anki.addToAnkiWithWordDict_(noteFor(QStringLiteral("ours-%1-%2").arg(round).arg(i)));
            if (!reply || !lexicorn::ankiReplySucceeded(*reply))
                state.SkipWithError("addNote failed");
        }
        const double ours = double(timer.nsecsElapsed()) / 1e9;

        QProcess python;
        python.start(QStringLiteral(LEXICORN_ANKI_PEER_PYTHON),
                     {QStringLiteral(LEXICORN_DIRECT_ADDS), QStringLiteral("--url"), QStringLiteral("http://") + peer->address,
                      QStringLiteral("--count"), QStringLiteral("1000"), QStringLiteral("--deck"), QStringLiteral("Default"),
                      QStringLiteral("--model"), QStringLiteral("Basic")});
        python.waitForFinished(600000);
        const QString output = QString::fromUtf8(python.readAllStandardOutput());
        const double direct = output.section(u' ', 1, 1).trimmed().toDouble();
        if (direct <= 0)
            state.SkipWithError(("direct_adds.py gave no time: " + output + QString::fromUtf8(python.readAllStandardError())).toStdString().c_str());
        state.SetIterationTime(ours);
        state.counters["ours_s"] = ours;
        state.counters["python_s"] = direct;
        state.counters["ours_over_python"] = direct > 0 ? ours / direct : 0;
    }
}

void server_that_never_answers(benchmark::State& state)
{
    Server hang(QStringLiteral("python3"), {QStringLiteral(LEXICORN_FAULT_SERVER), QStringLiteral("hang")});
    KSWAnkiconnect& anki = KSWAnkiconnect::shareInstance();
    anki.setIpString_(hang.address);
    for (auto _ : state) {
        QElapsedTimer timer;
        timer.start();
        if (anki.getDeckNames())
            state.SkipWithError("a hanging server gave a reply");
        state.SetIterationTime(double(timer.nsecsElapsed()) / 1e9);
        state.counters["cost_s"] = double(timer.nsecsElapsed()) / 1e9;
    }
}

BENCHMARK(version_round_trips)->Iterations(3)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(add_notes_ours_vs_python)->Iterations(1)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(server_that_never_answers)->Iterations(1)->Unit(benchmark::kMillisecond)->UseManualTime();

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QTemporaryDir home;
    scratch = &home;
    qputenv("LEXICORN_HOME", home.path().toUtf8());
    Server server(QStringLiteral(LEXICORN_ANKI_PEER), {QStringLiteral("--collection"), home.path() + QStringLiteral("/anki")});
    if (server.address.isEmpty()) {
        std::fprintf(stderr, "cannot start %s (run scripts/setup)\n", LEXICORN_ANKI_PEER);
        return 1;
    }
    peer = &server;
    // The client logs every reply; keep the measurement free of terminal output.
    std::freopen("/dev/null", "w", stderr);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
