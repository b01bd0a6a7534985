// lexicorn-bench-dictionary: how fast the dictionary engine loads, converts
// and answers lookups, on generated files of real-world size.
//
// The data folder is $LEXICORN_BENCH_DATA, else bench-data in the build
// folder; when it is missing or incomplete it is generated first (a few
// seconds, not part of any figure). Google Benchmark options apply, e.g.
// --benchmark_filter=query or --benchmark_out=results.json.
//
// Every benchmark reports its figures as counters: MB/s is in millions of
// bytes per second, latencies are in microseconds.

#include "dict_generator.h"

#include "lexicorn/dictionary/cache_index_file.h"
#include "lexicorn/dictionary/dictionary_files.h"
#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/dictionary/word_forms.h"

#include <benchmark/benchmark.h>

#include <QString>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using lexicorn::bench::DataPaths;
using Clock = std::chrono::steady_clock;

const DataPaths* data = nullptr;  // set by main before any benchmark runs

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

QString qtPath(const fs::path& path)
{
    return QString::fromStdString(path.string());
}

// A counter shown as "value per second of measured time", for MB/s.
benchmark::Counter perSecond(double perIteration)
{
    return benchmark::Counter(perIteration, benchmark::Counter::kIsIterationInvariantRate);
}

// --- loading the cache file

// A load without the index kept beside the file reads, checks and indexes
// the whole file, as the first start after an import or a conversion does.
void removeIndex()
{
    fs::remove(lexicorn::indexPathOf(qtPath(data->cache)).toStdString());
}

void cacheLoad(benchmark::State& state)
{
    const double bytes = double(fs::file_size(data->cache));
    std::shared_ptr<const lexicorn::CacheDict> dict;
    for (auto _ : state) {
        // Freeing the previous copy is not part of a load.
        state.PauseTiming();
        dict.reset();
        removeIndex();
        state.ResumeTiming();
        dict = lexicorn::readDictionaryFile(qtPath(data->cache));
    }
    if (!dict || dict->isEmpty()) {
        state.SkipWithError("the cache file loaded empty");
        return;
    }
    state.SetBytesProcessed(int64_t(bytes) * state.iterations());
    state.counters["file_MB"] = bytes / 1e6;
    state.counters["headwords"] = double(dict->size());
    state.counters["MB/s"] = perSecond(bytes / 1e6);
}

// --- converting the raw file and writing the cache

void rawConvert(benchmark::State& state)
{
    const double bytes = double(fs::file_size(data->raw));
    // Named like the real cache file but kept out of Dict/, so the engine never reads it.
    const fs::path output = data->root / "collins_html.converted.json";
    size_t headwords = 0;
    double readSeconds = 0;
    double writeSeconds = 0;
    double written = 0;
    bool ok = true;
    std::shared_ptr<const lexicorn::CacheDict> dict;
    for (auto _ : state) {
        // The engine keeps the converted dictionary, so freeing the previous
        // one is not part of a conversion. The writer does not truncate, so
        // each round writes a fresh file.
        state.PauseTiming();
        dict.reset();
        fs::remove(output);
        state.ResumeTiming();
        const auto start = Clock::now();
        dict = lexicorn::readDictionaryFile(qtPath(data->raw));
        readSeconds += secondsSince(start);
        const auto writeStart = Clock::now();
        ok = ok && lexicorn::writeCacheFile(*dict, qtPath(output));
        writeSeconds += secondsSince(writeStart);
        headwords = dict->size();
        written = double(dict->json().size());
    }
    fs::remove(output);
    if (!ok || headwords == 0) {
        state.SkipWithError("the raw file did not convert or the cache could not be written");
        return;
    }
    const double n = double(state.iterations());
    state.SetBytesProcessed(int64_t(bytes) * state.iterations());
    state.counters["file_MB"] = bytes / 1e6;
    state.counters["written_MB"] = written / 1e6;
    state.counters["headwords"] = double(headwords);
    state.counters["read_convert_s"] = readSeconds / n;
    state.counters["write_s"] = writeSeconds / n;
    state.counters["MB/s"] = perSecond(bytes / 1e6);
}

// --- lookups

std::vector<QString> lookupWords()
{
    std::ifstream in(data->words);
    std::vector<QString> words;
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty())
            words.push_back(QString::fromStdString(line));
    }
    return words;
}

double percentile(const std::vector<double>& sorted, double fraction)
{
    if (sorted.empty())
        return 0;
    return sorted[std::min(sorted.size() - 1, size_t(fraction * double(sorted.size())))];
}

// Every lookup is timed on its own, so the tail shows; the counters are the
// latency distribution over all words of words.txt.
void query(benchmark::State& state)
{
    // The engine lives for the process, as it does in the application, so
    // its background loader can never outlive it.
    static lexicorn::EnWordServer* server = nullptr;
    double loadSeconds = 0;
    if (!server) {
        server = new lexicorn::EnWordServer;
        const auto start = Clock::now();
        server->setDictTypeWithNumber(0);
        server->waitForLoadJobs();
        loadSeconds = secondsSince(start);
    }
    if (server->cacheDictNull()) {
        state.SkipWithError("the engine loaded no dictionary");
        return;
    }

    const std::vector<QString> words = lookupWords();
    std::vector<QString> sentences;
    sentences.reserve(words.size());
    for (const QString& word : words)
        sentences.push_back(QStringLiteral("She stopped at the word %1 and read the line again.").arg(word));

    // The first lookup also reads wordforms.json; it is reported apart.
    const auto firstStart = Clock::now();
    benchmark::DoNotOptimize(server->query(QStringLiteral("warm"), QString()));
    const double firstSeconds = secondsSince(firstStart);

    std::vector<double> micros;
    micros.reserve(words.size());
    size_t hits = 0;
    size_t entries = 0;
    for (auto _ : state) {
        micros.clear();
        hits = entries = 0;
        for (size_t i = 0; i < words.size(); ++i) {
            const auto start = Clock::now();
            const lexicorn::DictDataPtr result = server->query(words[i], sentences[i]);
            const auto end = Clock::now();
            micros.push_back(std::chrono::duration<double, std::micro>(end - start).count());
            hits += result->enWords().empty() ? 0 : 1;
            entries += result->enWords().size();
        }
    }
    std::sort(micros.begin(), micros.end());
    double total = 0;
    for (double m : micros)
        total += m;

    state.SetItemsProcessed(int64_t(micros.size()));
    state.counters["queries"] = double(micros.size());
    state.counters["hit_pct"] = micros.empty() ? 0 : 100.0 * double(hits) / double(micros.size());
    state.counters["entries_per_hit"] = hits ? double(entries) / double(hits) : 0;
    state.counters["mean_us"] = micros.empty() ? 0 : total / double(micros.size());
    state.counters["p50_us"] = percentile(micros, 0.50);
    state.counters["p90_us"] = percentile(micros, 0.90);
    state.counters["p99_us"] = percentile(micros, 0.99);
    state.counters["p999_us"] = percentile(micros, 0.999);
    state.counters["max_us"] = micros.empty() ? 0 : micros.back();
    state.counters["first_query_ms"] = firstSeconds * 1e3;
    if (loadSeconds > 0)
        state.counters["engine_load_s"] = loadSeconds;
}

// --- the word-form map

void wordformsLoad(benchmark::State& state)
{
    const double bytes = double(fs::file_size(data->forms));
    std::optional<lexicorn::WordForms> map;
    for (auto _ : state) {
        // Freeing the previous map is not part of a load.
        state.PauseTiming();
        map.reset();
        state.ResumeTiming();
        map = lexicorn::WordForms::load(qtPath(data->forms));
    }
    const size_t forms = map ? map->size() : 0;
    if (forms == 0) {
        state.SkipWithError("the word-form file loaded empty");
        return;
    }
    state.SetBytesProcessed(int64_t(bytes) * state.iterations());
    state.counters["file_MB"] = bytes / 1e6;
    state.counters["forms"] = double(forms);
    state.counters["MB/s"] = perSecond(bytes / 1e6);
}

// --- the same cache file through Python's json module, for scale

std::string shellQuoted(const std::string& text)
{
    std::string out = "'";
    for (char c : text)
        out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

// Runs python3 on the cache file; the elapsed time is measured inside Python
// (interpreter start-up excluded). Returns a negative time on failure.
double pythonJsonLoadSeconds(const fs::path& file, size_t& headwords)
{
    const std::string script =
        "import json, sys, time\n"
        "start = time.perf_counter()\n"
        "with open(sys.argv[1], encoding='utf-8') as f:\n"
        "    d = json.load(f)\n"
        "print(time.perf_counter() - start, len(d))\n";
    const std::string command = "python3 -c " + shellQuoted(script) + ' ' + shellQuoted(file.string());
    std::FILE* pipe = popen(command.c_str(), "r");
    if (!pipe)
        return -1;
    std::string output;
    char chunk[256];
    while (std::fgets(chunk, sizeof chunk, pipe))
        output += chunk;
    if (pclose(pipe) != 0)
        return -1;
    std::istringstream in(output);
    double seconds = -1;
    in >> seconds >> headwords;
    return in ? seconds : -1;
}

void pythonJsonLoad(benchmark::State& state)
{
    const double bytes = double(fs::file_size(data->cache));
    double pythonSeconds = 0;
    double oursSeconds = 0;
    size_t pythonHeadwords = 0;
    for (auto _ : state) {
        pythonSeconds = pythonJsonLoadSeconds(data->cache, pythonHeadwords);
        if (pythonSeconds < 0) {
            state.SkipWithError("python3 could not load the cache file");
            return;
        }
        state.SetIterationTime(pythonSeconds);
        // Our load of the same file right after, median of three so one
        // disturbed run does not decide the ratio.
        std::vector<double> ours;
        for (int run = 0; run < 3; ++run) {
            removeIndex();
            const auto start = Clock::now();
            const auto dict = lexicorn::readDictionaryFile(qtPath(data->cache));
            ours.push_back(secondsSince(start));
            benchmark::DoNotOptimize(dict.get());
        }
        std::sort(ours.begin(), ours.end());
        oursSeconds = ours[1];
    }
    state.SetBytesProcessed(int64_t(bytes) * state.iterations());
    state.counters["headwords"] = double(pythonHeadwords);
    state.counters["python_s"] = pythonSeconds;
    state.counters["python_MB/s"] = bytes / 1e6 / pythonSeconds;
    state.counters["ours_s"] = oursSeconds;
    state.counters["ours_MB/s"] = bytes / 1e6 / oursSeconds;
    state.counters["speedup"] = pythonSeconds / oursSeconds;
}

}  // namespace

int main(int argc, char* argv[])
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;

    const char* fromEnvironment = std::getenv("LEXICORN_BENCH_DATA");
    const fs::path root = fromEnvironment && *fromEnvironment ? fs::path(fromEnvironment) : fs::path(LEXICORN_BENCH_DEFAULT_DATA);
    static const DataPaths paths(fs::absolute(root));
    data = &paths;
    if (!lexicorn::bench::dataIsComplete(paths)) {
        std::cerr << "generating benchmark data in " << paths.root.string() << '\n';
        try {
            lexicorn::bench::generateData(paths, {}, &std::cerr);
        } catch (const std::exception& error) {
            std::cerr << "lexicorn-bench-dictionary: " << error.what() << '\n';
            return 1;
        }
    }
    // The engine finds its Dict folder under LEXICORN_HOME.
    setenv("LEXICORN_HOME", paths.root.c_str(), 1);

    using benchmark::kMillisecond;
    benchmark::RegisterBenchmark("cache_load", cacheLoad)->Iterations(3)->UseRealTime()->Unit(kMillisecond);
    benchmark::RegisterBenchmark("raw_convert", rawConvert)->Iterations(3)->UseRealTime()->Unit(kMillisecond);
    benchmark::RegisterBenchmark("query", query)->Iterations(1)->UseRealTime()->Unit(kMillisecond);
    benchmark::RegisterBenchmark("wordforms_load", wordformsLoad)->Iterations(5)->UseRealTime()->Unit(kMillisecond);
    benchmark::RegisterBenchmark("python_json_load", pythonJsonLoad)->Iterations(1)->UseManualTime()->Unit(kMillisecond);

    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
