// lexicorn-gen-dict: writes benchmark dictionaries of realistic shape.
//
//   lexicorn-gen-dict --out DIR [--cache-mb 250] [--raw-mb 60] [--forms 200000] [--lookups 200000]
//
// DIR/Dict/LDOCE5_html.json   cache shape, about --cache-mb million bytes
// DIR/Dict/collins.json       raw shape, about --raw-mb million bytes
// DIR/Dict/wordforms.json     --forms entries, form -> headword of the cache file
// DIR/words.txt               --lookups words to look up, one a line

#include "dict_generator.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <string_view>

namespace {

const char* const usage =
    "usage: lexicorn-gen-dict --out DIR [--cache-mb 250] [--raw-mb 60] [--forms 200000] [--lookups 200000]\n";

[[noreturn]] void usageError(const std::string& message)
{
    std::cerr << "lexicorn-gen-dict: " << message << '\n' << usage;
    std::exit(2);
}

double parseNumber(std::string_view option, const char* text)
{
    char* end = nullptr;
    const double value = std::strtod(text, &end);
    if (end == text || *end != '\0' || !(value >= 0))
        usageError(std::string(option) + " needs a number, not \"" + text + '"');
    return value;
}

}  // namespace

int main(int argc, char* argv[])
{
    lexicorn::bench::GeneratorSizes sizes;
    std::string out;
    for (int i = 1; i < argc; ++i) {
        const std::string_view option = argv[i];
        if (option == "--help" || option == "-h") {
            std::cout << usage;
            return 0;
        }
        if (i + 1 >= argc)
            usageError(std::string(option) + " needs a value");
        const char* value = argv[++i];
        if (option == "--out")
            out = value;
        else if (option == "--cache-mb")
            sizes.cacheMb = parseNumber(option, value);
        else if (option == "--raw-mb")
            sizes.rawMb = parseNumber(option, value);
        else if (option == "--forms")
            sizes.forms = size_t(parseNumber(option, value));
        else if (option == "--lookups")
            sizes.lookups = size_t(parseNumber(option, value));
        else
            usageError("unknown option " + std::string(option));
    }
    if (out.empty())
        usageError("--out is required");

    try {
        const auto start = std::chrono::steady_clock::now();
        lexicorn::bench::generateData(lexicorn::bench::DataPaths(out), sizes, &std::cerr);
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        std::cerr << "done in " << elapsed.count() << " s\n";
    } catch (const std::exception& error) {
        std::cerr << "lexicorn-gen-dict: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
