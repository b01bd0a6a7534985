// Importing dictionaries users already own into a fresh Dict folder, through
// the same call the `lexicorn import` command makes: an ECDICT-style CSV of
// 770,000 rows beside Python's csv module reading it, an MDX of 100,000
// entries (written by mdict-utils) and a StarDict dictionary of 100,000
// entries (written by stardict-tools). Peak resident memory of the process is
// reported beside the time (run one benchmark per process for a clean peak:
// --benchmark_filter=Ecdict).

#include "lexicorn/dictionary/import/dictionary_import.h"

#include <QByteArray>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <cstdio>
#include <string>

namespace {

using namespace lexicorn;

// ECDICT-style rows written by Python's csv writer (bench/ecdict_csv.py):
// half the headwords phrases, Chinese translations of several lines joined
// by the two characters "\\n", forms on one row in eight, quoting where a
// field holds a comma or a quote.
bool writeEcdictCsv(const QString& path, int rows)
{
    QProcess python;
    python.start(QStringLiteral("python3"), {QStringLiteral(LEXICORN_ECDICT_CSV_SCRIPT), QStringLiteral("write"), path, QString::number(rows)});
    return python.waitForFinished(600000) && python.exitStatus() == QProcess::NormalExit && python.exitCode() == 0;
}

// Python's csv module reading the whole file (the median of three runs,
// timed inside Python so that starting the interpreter does not count).
double pythonCsvSeconds(const QString& path)
{
    QProcess python;
    python.start(QStringLiteral("python3"), {QStringLiteral(LEXICORN_ECDICT_CSV_SCRIPT), QStringLiteral("read"), path, QStringLiteral("3")});
    if (!python.waitForFinished(600000) || python.exitCode() != 0)
        return 0;
    // "rows N seconds S"
    const QStringList words = QString::fromUtf8(python.readAllStandardOutput()).split(u' ');
    return words.size() == 4 ? words[3].toDouble() : 0;
}

long peakResidentMb()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

// Imports the file into a fresh Dict folder once per iteration, as the
// command does, and reports the headwords and the process's peak memory.
// The time of the import alone (import_s) is handed to the benchmark as
// manual time; removing the Dict folder afterwards does not count.
void importEachIteration(benchmark::State& state, const QString& file, const QString& dictDir, bool wordForms)
{
    for (auto _ : state) {
        dictimport::ImportRequest request;
        request.files = {file};
        request.wordForms = wordForms;
        request.dictDir = dictDir;
        QElapsedTimer timer;
        timer.start();
        const dictimport::ImportReport report = dictimport::importDictionaries(request);
        const double seconds = double(timer.nsecsElapsed()) / 1e9;
        state.SetIterationTime(seconds);
        benchmark::DoNotOptimize(report.headwords);
        state.counters["headwords"] = double(report.headwords);
        state.counters["import_s"] = seconds;
        QDir(dictDir).removeRecursively();
    }
    state.counters["peak_RSS_MB"] = double(peakResidentMb());
}

// The whole of ECDICT: LEXICORN_ECDICT_CSV may name the real file, else
// 770,000 generated rows. Python's csv module reads the same file in the
// same run; the goal is ours <= 1.5x its time, at <= 1 GB peak resident.
void EcdictCsv770k(benchmark::State& state)
{
    QTemporaryDir dir;
    QString csv = qEnvironmentVariable("LEXICORN_ECDICT_CSV");
    if (csv.isEmpty()) {
        csv = dir.path() + QStringLiteral("/ecdict.csv");
        if (!writeEcdictCsv(csv, 770000)) {
            state.SkipWithError("python3 could not write the CSV");
            return;
        }
    }
    const double python = pythonCsvSeconds(csv);
    if (python <= 0) {
        state.SkipWithError("python3 could not read the CSV");
        return;
    }
    state.counters["csv_MB"] = double(QFile(csv).size()) / 1e6;
    importEachIteration(state, csv, dir.path() + QStringLiteral("/Dict"), true);
    const double ours = state.counters["import_s"];
    state.counters["python_csv_s"] = python;
    state.counters["ours_over_python"] = ours / python;
}
BENCHMARK(EcdictCsv770k)->Unit(benchmark::kSecond)->Iterations(1)->UseManualTime();

// An MDX of 100,000 HTML entries (every tenth a sound link, every
// twentieth an @@@LINK= cross-reference) written by PyPI's mdict-utils in
// the venv LEXICORN_ANKI_VENV, zlib blocks of 64 KiB, then imported whole.
bool writeMdx(const QString& path, int entries)
{
    const QString venv = qEnvironmentVariable("LEXICORN_ANKI_VENV", QStringLiteral("/opt/lexicorn/anki-peer-venv"));
    const QString script = QStringLiteral(
        "import sys\n"
        "from mdict_utils.base.writemdict import MDictWriter\n"
        "words = {}\n"
        "for i in range(int(sys.argv[2])):\n"
        "    w = 'w%06d' % i\n"
        "    words[w] = '@@@LINK=w%06d' % (i - 1) if i % 20 == 19 else (\n"
        "        '<div><p>n. the state of being %s</p><p>v. 使…%s化</p><p>e.g. a %s of things</p>%s</div>'\n"
        "        % (w, w, w, '<a href=\"sound://%s.mp3\">play</a>' % w if i % 10 == 0 else ''))\n"
        "with open(sys.argv[1], 'wb') as f:\n"
        "    MDictWriter(words, title='Bench', description='Generated').write(f)\n");
    QProcess python;
    python.start(venv + QStringLiteral("/bin/python"), {QStringLiteral("-c"), script, path, QString::number(entries)});
    return python.waitForFinished(600000) && python.exitStatus() == QProcess::NormalExit && python.exitCode() == 0;
}

void Mdx100k(benchmark::State& state)
{
    QTemporaryDir dir;
    const QString mdx = dir.path() + QStringLiteral("/bench.mdx");
    if (!writeMdx(mdx, 100000)) {
        state.SkipWithError("mdict-utils could not write the MDX (is the venv installed?)");
        return;
    }
    state.counters["mdx_MB"] = double(QFile(mdx).size()) / 1e6;
    importEachIteration(state, mdx, dir.path() + QStringLiteral("/Dict"), false);
}
BENCHMARK(Mdx100k)->Unit(benchmark::kSecond)->Iterations(1)->UseManualTime();

// A StarDict dictionary of `words` entries, made from a tab-separated source
// by Debian's stardict-tools (tabfile), as a user's would be: .ifo, .idx and
// a dictzip .dict.dz.
bool writeStarDict(const QString& dir, int words)
{
    QFile source(dir + QStringLiteral("/bench.txt"));
    if (!source.open(QIODevice::WriteOnly))
        return false;
    std::string out;
    for (int i = 0; i < words; ++i) {
        out += "word" + std::to_string(i) + "\t<b>n.</b> meaning number " + std::to_string(i)
            + " of a word in the benchmark dictionary\\n释义 " + std::to_string(i) + "\n";
    }
    source.write(out.data(), qint64(out.size()));
    source.close();
    QProcess tool;
    tool.setWorkingDirectory(dir);
    tool.start(QStringLiteral("/usr/lib/stardict-tools/tabfile"), {QStringLiteral("bench.txt")});
    return tool.waitForFinished(300000) && tool.exitCode() == 0;
}

void StarDict100k(benchmark::State& state)
{
    QTemporaryDir dir;
    if (!writeStarDict(dir.path(), 100000)) {
        state.SkipWithError("stardict-tools could not write the dictionary (is it installed?)");
        return;
    }
    const QString ifo = dir.path() + QStringLiteral("/bench.ifo");
    state.counters["dict_dz_MB"] = double(QFile(dir.path() + QStringLiteral("/bench.dict.dz")).size()) / 1e6;
    importEachIteration(state, ifo, dir.path() + QStringLiteral("/Dict"), false);
}
BENCHMARK(StarDict100k)->Unit(benchmark::kSecond)->Iterations(1)->UseManualTime();

}  // namespace

BENCHMARK_MAIN();
