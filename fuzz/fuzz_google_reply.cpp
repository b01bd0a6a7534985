// Feeds arbitrary bytes to the Google reply reader, which must never crash.

#include "lexicorn/services/translation_replies.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    (void)lexicorn::googleTranslation(QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)));
    return 0;
}
