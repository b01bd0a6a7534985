// Feeds arbitrary bytes to the cache-file loader. A document it accepts must
// decode every headword it indexed, since lookups rely on that.

#include "lexicorn/dictionary/cache_dict.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    lexicorn::jsonread::Failure failure;
    const auto dict = lexicorn::CacheDict::fromJson(lexicorn::JsonBuffer::copyOf({reinterpret_cast<const char*>(data), size}), failure);
    if (!dict) {
        if (failure.what.isEmpty())
            std::abort();  // a rejection must say why
        return 0;
    }
    for (const QString& headword : dict->headwords()) {
        if (!dict->find(headword))
            std::abort();
    }
    return 0;
}
