// Feeds arbitrary bytes, as a server would send them, to the reader of plain
// HTTP replies: through a socket pair, closed after the bytes, with a small
// size cap so that the cap's paths are reached too. Whatever it reads must
// be a reply within the cap or a failure with its reason.

#include "foundation/plain_http.h"

#include <cstdlib>
#include <sys/socket.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    constexpr qsizetype cap = 1024;
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0)
        return 0;
    // Inputs stay far below a socket buffer, so the write does not block.
    if (size > 0 && ::write(ends[1], data, size) != ssize_t(size))
        std::abort();
    ::close(ends[1]);
    const bool isHead = size > 0 && data[0] % 2 == 0;
    const lexicorn::HttpResponse response = lexicorn::readPlainHttpReply(ends[0], isHead, cap, std::chrono::milliseconds(1000));
    ::close(ends[0]);
    if (response.replied() ? response.body.size() > cap : !response.body.isEmpty())
        std::abort();
    return 0;
}
