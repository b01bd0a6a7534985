// Feeds arbitrary bytes to the Youdao page reader. Whatever it finds comes
// from single lines of the page, so it never holds a line break.

#include "lexicorn/services/translation_replies.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString translation = lexicorn::youdaoTranslation(QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)));
    if (translation.contains(u'\n'))
        std::abort();
    return 0;
}
