#pragma once

// Makes dictionary files of realistic shape and size for the benchmarks:
// a cache-shape file, a raw-shape file, a word-form map and a list of lookup
// words. The text is invented (pseudo-words built from syllables, Chinese
// picked from a few hundred common characters) but the structure, the key
// set and the mix of short and long entries follow real dictionaries. The
// output depends only on the sizes asked for: every file has its own fixed
// seed, so two runs write the same bytes.

#include <cstddef>
#include <filesystem>
#include <iosfwd>

namespace lexicorn::bench {

struct GeneratorSizes {
    double cacheMb = 250;      // the cache-shape file, in millions of bytes
    double rawMb = 60;         // the raw-shape file, in millions of bytes
    size_t forms = 200000;     // entries of the word-form map
    size_t lookups = 200000;   // lines of words.txt
};

// Where the files of one data folder live.
struct DataPaths {
    explicit DataPaths(const std::filesystem::path& root);

    std::filesystem::path root;
    std::filesystem::path dict;   // root/Dict, what LEXICORN_HOME=root points the engine at
    std::filesystem::path cache;  // Dict/LDOCE5_html.json
    std::filesystem::path raw;    // Dict/collins.json
    std::filesystem::path forms;  // Dict/wordforms.json
    std::filesystem::path words;  // words.txt, one lookup word a line
    std::filesystem::path stamp;  // written last; its presence means the folder is complete
};

struct GeneratedData {
    size_t cacheHeadwords = 0;
    size_t cacheRecords = 0;
    size_t cacheLinkRecords = 0;
    size_t cacheBytes = 0;
    size_t rawHeadwords = 0;
    size_t rawBytes = 0;
    size_t forms = 0;
    size_t lookups = 0;
};

// True when a previous generation finished writing every file.
bool dataIsComplete(const DataPaths& paths);

// Writes every file (each through a temporary name, so a broken run leaves
// nothing that looks finished) and then the stamp. Progress lines go to log
// when given. Throws std::runtime_error when a file cannot be written.
GeneratedData generateData(const DataPaths& paths, const GeneratorSizes& sizes, std::ostream* log = nullptr);

}  // namespace lexicorn::bench
