// Feeds arbitrary bytes to the DeepL reply reader: no crash, and an HTML page
// never yields a translation.

#include "lexicorn/services/translation_replies.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray body(reinterpret_cast<const char*>(data), qsizetype(size));
    const QString translation = lexicorn::deeplTranslation(body);
    if (!translation.isEmpty() && QString::fromUtf8(body).contains(u"<!DOCTYPE html>"))
        std::abort();
    return 0;
}
