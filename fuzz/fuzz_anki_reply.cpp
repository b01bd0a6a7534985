// Feeds arbitrary bytes to the AnkiConnect reply reader, as a plain reply
// and as the reply of a "multi" request of a few actions.

#include "lexicorn/anki/anki_reply.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const auto reply = lexicorn::parseAnkiReply(QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)));
    if (!reply)
        return 0;
    (void)lexicorn::ankiReplySucceeded(*reply);
    (void)reply->text();
    const std::size_t count = size % 5;
    const std::vector<lexicorn::AnkiReply> replies = lexicorn::splitMultiReply(*reply, count);
    if (replies.size() != count)
        std::abort();
    for (const lexicorn::AnkiReply& one : replies) {
        // Every action's reply reads as a version 6 reply.
        if (!one.contains(QStringLiteral("error")) || !one.contains(QStringLiteral("result")))
            std::abort();
    }
    return 0;
}
