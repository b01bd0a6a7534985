// ECDICT rows are turned into records straight from their UTF-8 where they
// allow it, and through QString otherwise. The two must agree: the same
// bytes read both ways give the same cache, word forms, warnings and error.

#include "lexicorn/dictionary/import/cache_writer.h"
#include "lexicorn/dictionary/import/ecdict_reader.h"

#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

struct Outcome {
    std::string cache;
    std::vector<std::pair<std::string, std::string>> forms;
    QStringList warnings;
    std::string error;
    bool operator==(const Outcome&) const = default;
};

Outcome read(const QByteArray& bytes, lexicorn::dictimport::EcdictRows rows)
{
    using namespace lexicorn::dictimport;
    static QTemporaryDir staging;
    CacheWriter writer(staging.path());
    Outcome outcome;
    try {
        readEcdictCsvBytes(bytes, QStringLiteral("fuzz.csv"), writer, rows);
    } catch (const ImportError& error) {
        outcome.error = error.what();
    }
    outcome.cache = writer.cacheJson();
    for (const auto& [form, headword] : writer.wordForms().pairs)
        outcome.forms.emplace_back(form, headword);
    outcome.warnings = writer.warnings();
    return outcome;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using lexicorn::dictimport::EcdictRows;
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const Outcome fast = read(bytes, EcdictRows::Fast);
    const Outcome reference = read(bytes, EcdictRows::ThroughQString);
    if (!(fast == reference)) {
        std::fprintf(stderr, "fast: %s\nreference: %s\n", fast.cache.c_str(), reference.cache.c_str());
        std::abort();
    }
    return 0;
}
