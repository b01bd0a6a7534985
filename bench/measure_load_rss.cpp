// lexicorn-measure-load-rss FILE [WORD] [--without-index]: loads one
// dictionary file the way the engine does, looks WORD up when given, and
// prints the file's size, the load time and the process's peak resident
// memory. With --without-index the index kept beside the file is removed
// first, so the load reads, checks and indexes the whole file (and writes the
// index again). Peak memory is a property of the whole process, so this runs
// on its own: anything loaded before would raise the figure.
//
// Output is one "key value" pair a line, for people and for bench/run.

#include "lexicorn/dictionary/cache_index_file.h"
#include "lexicorn/dictionary/dictionary_files.h"

#include <QFile>

#include <QString>

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

// Peak resident set size so far, in bytes (Linux reports kilobytes).
double peakRssBytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) * 1024.0;
}

// Resident set size now, in bytes.
double currentRssBytes()
{
    std::ifstream statm("/proc/self/statm");
    long pages = 0;
    long resident = 0;
    statm >> pages >> resident;
    return double(resident) * 4096.0;
}

}  // namespace

int main(int argc, char* argv[])
{
    const auto processStart = std::chrono::steady_clock::now();
    std::string path;
    std::string word;
    bool withoutIndex = false;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--without-index")
            withoutIndex = true;
        else if (path.empty())
            path = argument;
        else
            word = argument;
    }
    if (path.empty()) {
        std::fprintf(stderr, "usage: lexicorn-measure-load-rss FILE [WORD] [--without-index]\n");
        return 2;
    }
    if (withoutIndex)
        QFile::remove(lexicorn::indexPathOf(QString::fromStdString(path)));
    std::error_code error;
    const auto fileSize = std::filesystem::file_size(path, error);
    if (error) {
        std::fprintf(stderr, "lexicorn-measure-load-rss: cannot read %s: %s\n", path.c_str(), error.message().c_str());
        return 1;
    }

    const double startRss = peakRssBytes();
    const auto start = std::chrono::steady_clock::now();
    const auto dict = lexicorn::readDictionaryFile(QString::fromStdString(path));
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    const bool found = word.empty() || dict->find(QString::fromStdString(word)).has_value();
    const std::chrono::duration<double> sinceMain = std::chrono::steady_clock::now() - processStart;
    const double afterLoad = currentRssBytes();
    // The kernel keeps its memory counters loosely, so the high-water mark
    // can read a little under the present size, which is a lower bound for it.
    const double peak = std::max(peakRssBytes(), afterLoad);

    const double mb = 1e6;
    std::printf("file %s\n", path.c_str());
    std::printf("file_mb %.1f\n", double(fileSize) / mb);
    std::printf("headwords %zu\n", dict->size());
    std::printf("load_s %.3f\n", elapsed.count());
    std::printf("load_mb_per_s %.0f\n", double(fileSize) / mb / elapsed.count());
    std::printf("main_to_first_lookup_s %.3f\n", sinceMain.count());
    std::printf("rss_before_load_mb %.1f\n", startRss / mb);
    std::printf("rss_after_load_mb %.1f\n", afterLoad / mb);
    std::printf("peak_rss_mb %.1f\n", peak / mb);
    std::printf("peak_rss_over_file %.2f\n", peak / double(fileSize));
    if (!found)
        std::fprintf(stderr, "lexicorn-measure-load-rss: \"%s\" is not in %s\n", word.c_str(), path.c_str());
    return dict->isEmpty() || !found ? 1 : 0;
}
