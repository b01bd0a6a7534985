// Entry bodies of any markup to senses: the first byte picks the markup.

#include "lexicorn/dictionary/import/html_senses.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace lexicorn::dictimport;
    if (size == 0)
        return 0;
    const Markup markup = Markup(data[0] % 4);
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data + 1), qsizetype(size - 1));
    for (const SourceSense& sense : sensesFromMarkup(text, markup))
        (void)sense.defEn.size();
    (void)plainTextOf(text);
    return 0;
}
