#include "foundation/http_client.h"

#include "foundation/dispatch.h"
#include "foundation/plain_http.h"

#include <QMetaObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QThread>
#include <QTimer>

#include <memory>

namespace lexicorn {

namespace {

const QString timedOut = QStringLiteral("The request timed out.");
const QString tooLarge = QStringLiteral("The reply is too large.");

// Failures that come before the request is written, so the server saw nothing.
bool failsBeforeSending(QNetworkReply::NetworkError error)
{
    switch (error) {
    case QNetworkReply::HostNotFoundError:
    case QNetworkReply::ConnectionRefusedError:
    case QNetworkReply::SslHandshakeFailedError:
    case QNetworkReply::ProxyNotFoundError:
    case QNetworkReply::ProxyConnectionRefusedError:
    case QNetworkReply::ProtocolUnknownError:
        return true;
    default:
        return false;
    }
}

// What the handlers of one reply learn along the way.
struct ReplyState {
    bool timedOut = false;
    bool tooLarge = false;
};

}  // namespace

// Lives on the network thread and owns the network access manager there.
class HttpClient::Worker : public QObject {
public:
    // Starts one exchange; done runs on the network thread when it ends.
    void start(const HttpRequest& request, std::function<void(HttpResponse)> done)
    {
        if (!manager_)
            manager_ = new QNetworkAccessManager(this);
        QNetworkRequest networkRequest(request.url);
        for (const auto& [name, value] : request.headers)
            networkRequest.setRawHeader(name, value);
        networkRequest.setTransferTimeout(int(request.timeout.count()));
        QNetworkReply* reply = manager_->sendCustomRequest(networkRequest, request.method, request.body);
        auto state = std::make_shared<ReplyState>();

        // A hard deadline as well: the transfer timeout restarts whenever a byte
        // arrives, and a server that trickles must not hold the caller longer.
        auto* deadline = new QTimer(reply);
        deadline->setSingleShot(true);
        connect(deadline, &QTimer::timeout, reply, [reply, state] {
            state->timedOut = true;
            reply->abort();
        });
        deadline->start(request.timeout);

        // Stops the reply as soon as its announced length or what has arrived
        // passes the cap, so an endless reply cannot fill memory.
        const auto checkSize = [reply, state, limit = request.maxReplyBytes] {
            const qint64 announced = reply->header(QNetworkRequest::ContentLengthHeader).toLongLong();
            if (!state->tooLarge && (announced > limit || reply->bytesAvailable() > limit)) {
                state->tooLarge = true;
                reply->abort();
            }
        };
        connect(reply, &QNetworkReply::metaDataChanged, reply, checkSize);
        connect(reply, &QNetworkReply::readyRead, reply, checkSize);

        connect(reply, &QNetworkReply::finished, this, [reply, state, done = std::move(done)] {
            HttpResponse response;
            const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
            if (state->tooLarge) {
                response.error = tooLarge;
            } else if (state->timedOut || reply->error() == QNetworkReply::OperationCanceledError) {
                // Checked before the status: a reply cut off by the deadline is not a reply.
                response.error = timedOut;
            } else if (status.isValid()) {
                // Any HTTP status is a reply, 500 included; only transport failures are errors.
                response.status = status.toInt();
                response.body = reply->readAll();
            } else {
                response.error = reply->errorString();
            }
            // Qt does not tell how often it wrote the request (it may write it
            // again itself on a kept-alive connection that was closed), so
            // unless it surely never left, say it went once.
            response.sends = failsBeforeSending(reply->error()) ? 0 : 1;
            reply->deleteLater();
            done(std::move(response));
        });
    }

private:
    QNetworkAccessManager* manager_ = nullptr;
};

HttpClient& HttpClient::shared()
{
    // Never destroyed: the network thread serves until the process ends.
    static HttpClient* client = new HttpClient;
    return *client;
}

HttpClient::Worker* HttpClient::worker()
{
    std::call_once(workerStarted_, [this] {
        worker_ = new Worker;
        auto* thread = new QThread;
        thread->setObjectName(QStringLiteral("lexicorn.network"));
        worker_->moveToThread(thread);
        thread->start();
    });
    return worker_;
}

HttpResponse HttpClient::send(const HttpRequest& request)
{
    if (request.url.scheme() == QStringLiteral("http"))
        return sendPlainHttp(request);
    DispatchSemaphore finished;
    HttpResponse response;
    Worker* network = worker();
    QMetaObject::invokeMethod(network, [&] {
        network->start(request, [&](HttpResponse result) {
            response = std::move(result);
            finished.signal();
        });
    });
    finished.wait();
    return response;
}

}  // namespace lexicorn
