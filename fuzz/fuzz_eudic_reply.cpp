// Feeds arbitrary bytes to the Eudic reply reader: the translation is the
// whole decoded body unless that is an HTML page, and then it is empty.

#include "lexicorn/services/translation_replies.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray body(reinterpret_cast<const char*>(data), qsizetype(size));
    const lexicorn::EudicReply reply = lexicorn::readEudicReply(body);
    const QString decoded = QString::fromUtf8(body);
    if (reply.text != decoded || reply.isErrorPage != decoded.contains(u"<!DOCTYPE html>"))
        std::abort();
    if (reply.translation() != (reply.isErrorPage ? QString() : decoded))
        std::abort();
    return 0;
}
