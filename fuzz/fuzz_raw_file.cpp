// Feeds arbitrary bytes to the raw Collins decoder and converts what decodes.
// The cache text made from it must load back with the same headwords.

#include "lexicorn/dictionary/cache_dict.h"
#include "lexicorn/dictionary/collins_raw.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    lexicorn::jsonread::Failure failure;
    const auto words = lexicorn::collinsWords(lexicorn::JsonBuffer::copyOf({reinterpret_cast<const char*>(data), size}), failure);
    if (!words)
        return 0;
    const auto made = lexicorn::CacheDict::fromRecords(lexicorn::toEnWordData(*words));
    const auto loaded = lexicorn::CacheDict::fromJson(lexicorn::JsonBuffer::copyOf(made->json()), failure);
    if (!loaded || loaded->size() != made->size())
        std::abort();
    for (const QString& headword : made->headwords()) {
        if (!loaded->find(headword))
            std::abort();
    }
    return 0;
}
