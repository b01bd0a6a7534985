#include "foundation/http_client.h"

#include "foundation/dispatch.h"
#include "foundation/plain_http.h"

#include <QMetaObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QThread>
#include <QTimer>

namespace lexicorn {

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

        // A hard deadline as well: the transfer timeout restarts whenever a byte
        // arrives, and a server that trickles must not hold the caller longer.
        auto* deadline = new QTimer(reply);
        deadline->setSingleShot(true);
        connect(deadline, &QTimer::timeout, reply, [reply] {
            reply->setProperty("lexicornTimedOut", true);
            reply->abort();
        });
        deadline->start(request.timeout);

        connect(reply, &QNetworkReply::finished, this, [reply, done = std::move(done)] {
            HttpResponse response;
            const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
            if (status.isValid()) {
                // Any HTTP status is a reply, 500 included; only transport failures are errors.
                response.status = status.toInt();
                response.body = reply->readAll();
            } else if (reply->property("lexicornTimedOut").toBool() || reply->error() == QNetworkReply::OperationCanceledError) {
                response.error = QStringLiteral("The request timed out.");
            } else {
                response.error = reply->errorString();
            }
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
