// ECDICT-style CSV bytes to the importer's reader and converter: any row
// either becomes cache records or an error naming the line.

#include "lexicorn/dictionary/import/cache_writer.h"
#include "lexicorn/dictionary/import/ecdict_reader.h"

#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace lexicorn::dictimport;
    static QTemporaryDir staging;
    CacheWriter writer(staging.path());
    try {
        readEcdictCsvBytes(QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)), QStringLiteral("fuzz.csv"), writer);
    } catch (const ImportError&) {
        return 0;
    }
    (void)writer.cacheJson();
    (void)writer.wordForms();
    return 0;
}
