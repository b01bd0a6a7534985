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
};

struct HttpResponse {
    int status = 0;        // the HTTP status; 0 when no reply came
    QByteArray body;       // the reply's body, whatever its status
    QString error;         // why no reply came (refused, timed out, ...); empty when one did

    bool replied() const { return error.isEmpty(); }
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
