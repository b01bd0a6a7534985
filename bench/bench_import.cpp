// Importing dictionaries users already own into a fresh Dict folder, through
// the same call the `lexicorn import` command makes: a generated ECDICT-style
// CSV of 770,000 rows, an MDX of 100,000 entries (written by mdict-utils) and
// a StarDict dictionary of 100,000 entries (written by stardict-tools). Peak resident memory of the process is
// reported beside the time (run one benchmark per process for a clean peak:
// --benchmark_filter=Ecdict).

#include "lexicorn/dictionary/import/dictionary_import.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <cstdio>
#include <random>
#include <string>

namespace {

using namespace lexicorn;

// Rows shaped like ECDICT's: a word, a reading, English and Chinese lines
// with their parts of speech, stars, tags, frequencies and forms.
void writeEcdictCsv(const QString& path, int rows)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        std::abort();
    std::mt19937 random(7);
    const char* parts[] = {"n.", "v.", "adj.", "adv."};
    const char* chinese[] = {"书；书籍", "跑；奔跑", "美丽的", "快速地", "研究，学习", "银行；河岸"};
    std::string out = "word,phonetic,definition,translation,pos,collins,oxford,tag,bnc,frq,exchange,detail,audio\n";
    for (int i = 0; i < rows; ++i) {
        std::string word;
        for (int n = i; ; n /= 26) {
            word += char('a' + n % 26);
            if (n < 26)
                break;
        }
        word += "ion";
        const char* pos = parts[random() % 4];
        const char* cn = chinese[random() % 6];
        out += word + ",'" + word + "ən,\"" + pos + " the state of being " + word + "\\n" + pos + " a kind of " + word
            + ", as in \"\"" + word + "s\"\"\",\"" + pos + " " + cn + "\\n" + pos + " " + chinese[random() % 6] + "\","
            + "n:60/v:40," + std::to_string(random() % 6) + ",0,cet4 cet6," + std::to_string(i) + "," + std::to_string(i)
            + ",s:" + word + "s/p:" + word + "ed,,\n";
        if (out.size() > (1 << 22)) {
            file.write(out.data(), qint64(out.size()));
            out.clear();
        }
    }
    file.write(out.data(), qint64(out.size()));
}

long peakResidentMb()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

// Imports the file into a fresh Dict folder once per iteration, as the
// command does, and reports the headwords and the process's peak memory.
void importEachIteration(benchmark::State& state, const QString& file, const QString& dictDir, bool wordForms)
{
    for (auto _ : state) {
        dictimport::ImportRequest request;
        request.files = {file};
        request.wordForms = wordForms;
        request.dictDir = dictDir;
        const dictimport::ImportReport report = dictimport::importDictionaries(request);
        benchmark::DoNotOptimize(report.headwords);
        state.counters["headwords"] = double(report.headwords);
        QDir(dictDir).removeRecursively();
    }
    state.counters["peak_RSS_MB"] = double(peakResidentMb());
}

void EcdictCsv770k(benchmark::State& state)
{
    QTemporaryDir dir;
    const QString csv = dir.path() + QStringLiteral("/ecdict.csv");
    writeEcdictCsv(csv, 770000);
    state.counters["csv_MB"] = double(QFile(csv).size()) / 1e6;
    importEachIteration(state, csv, dir.path() + QStringLiteral("/Dict"), true);
}
BENCHMARK(EcdictCsv770k)->Unit(benchmark::kSecond)->Iterations(1);

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
BENCHMARK(Mdx100k)->Unit(benchmark::kSecond)->Iterations(1);

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
BENCHMARK(StarDict100k)->Unit(benchmark::kSecond)->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
