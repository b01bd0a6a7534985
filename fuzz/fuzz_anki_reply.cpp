// Feeds arbitrary bytes to the AnkiConnect reply reader.

#include "lexicorn/anki/anki_reply.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const auto reply = lexicorn::parseAnkiReply(QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)));
    if (reply)
        (void)lexicorn::ankiReplySucceeded(*reply);
    return 0;
}
