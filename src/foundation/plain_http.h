#pragma once

#include "foundation/http_client.h"

#include <chrono>

namespace lexicorn {

// HTTP/1.1 over plain TCP, for "http" addresses: AnkiConnect on this machine
// and the plain-text services. It runs on the calling thread and keeps idle
// connections open for the next request to the same host, so a round trip
// costs little more than the server's own work. Every wait, connecting
// included, ends at the request's time-out.
HttpResponse sendPlainHttp(const HttpRequest& request);

// Reads one reply to a request from a connected socket, as sendPlainHttp
// does (the reply-reading half, for the fuzz target).
HttpResponse readPlainHttpReply(int fd, bool isHead, qsizetype maxReplyBytes, std::chrono::milliseconds timeout);

}  // namespace lexicorn
