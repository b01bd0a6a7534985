#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <chrono>
#include <mutex>
#include <utility>
#include <vector>

namespace lexicorn {

struct HttpRequest {
    QByteArray method = "GET";
    QUrl url;
    std::vector<std::pair<QByteArray, QByteArray>> headers;
    QByteArray body;
    // The whole exchange, connecting included, is abandoned after this long.
    std::chrono::milliseconds timeout{60000};
    // A reply whose body would be larger than this fails with "The reply is
    // too large." as soon as that is known, without reading the rest. The
    // default is far above any real AnkiConnect, translation or voice reply.
    qsizetype maxReplyBytes = 64 * 1024 * 1024;
};

struct HttpResponse {
    int status = 0;        // the HTTP status; 0 when no reply came
    QByteArray body;       // the reply's body, whatever its status
    QString error;         // why no reply came (refused, timed out, ...); empty when one did
    // How many times the request was written to a connection: 0 when it never
    // left this process (no address, connection refused), 2 when a kept-alive
    // connection turned out closed and the request went again on a new one.
    int sends = 0;

    bool replied() const { return error.isEmpty(); }
    // The server may have received (and acted on) the request.
    bool mayHaveArrived() const { return sends > 0; }
};

// Blocking HTTP for any thread. Plain "http" requests run on the calling
// thread over kept-alive sockets (see plain_http.h); "https" requests run on
// one network thread of Qt's, so a caller waits without needing an event
// loop of its own. Connections to a host are kept alive and reused.
class HttpClient {
public:
    static HttpClient& shared();

    HttpResponse send(const HttpRequest& request);

private:
    HttpClient() = default;
    class Worker;
    // The network thread and its worker, started by the first https request.
    Worker* worker();
    std::once_flag workerStarted_;
    Worker* worker_ = nullptr;
};

}  // namespace lexicorn
