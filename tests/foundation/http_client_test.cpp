#include "support/server_process.h"

#include "foundation/http_client.h"

#include <QRegularExpression>
#include <QSslConfiguration>

#include <gtest/gtest.h>

#include <thread>

namespace lexicorn {
namespace {

using testing::ServerProcess;

const QString shapesServer = QStringLiteral(LEXICORN_TESTS_DIR "/support/http_shapes_server.py");
const QString testKeyAndCertificate = QStringLiteral(LEXICORN_TESTS_DIR "/support/tls_localhost.pem");

HttpResponse get(const QString& url, const QByteArray& method = "GET", const QByteArray& body = {},
                 qsizetype cap = HttpRequest().maxReplyBytes)
{
    HttpRequest request;
    request.method = method;
    request.url = QUrl(url);
    request.body = body;
    request.timeout = std::chrono::milliseconds(3000);
    request.maxReplyBytes = cap;
    return HttpClient::shared().send(request);
}

int connectionsSeen(ServerProcess& server)
{
    int seen = 0;
    for (const QRegularExpressionMatch& match : QRegularExpression(QStringLiteral("connections (\\d+)")).globalMatch(server.errors()))
        seen = match.captured(1).toInt();
    return seen;
}

// Lets https requests trust the test servers' certificate (made for 127.0.0.1).
void trustTestCertificate()
{
    static const bool trusted = [] {
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        const bool added = configuration.addCaCertificates(testKeyAndCertificate);
        QSslConfiguration::setDefaultConfiguration(configuration);
        return added;
    }();
    ASSERT_TRUE(trusted);
}

TEST(PlainHttp, ReadsEveryShapeOfReply)
{
    ServerProcess server(QStringLiteral("python3"), {shapesServer});
    ASSERT_TRUE(server.started());
    struct Case {
        const char* path;
        QByteArray method;
        int status;
        QByteArray body;
    };
    const Case cases[] = {
        {"/length", "GET", 200, "hello"},
        {"/chunked", "GET", 200, "chunked"},
        {"/until-close", "GET", 200, "all of it"},
        {"/status/500", "GET", 500, "page"},  // an error status is a reply, with its body
        {"/length", "HEAD", 200, ""},
        {"/echo?q=a%20b", "POST", 200, "POST /echo?q=a%20b HTTP/1.1\nbody"},
    };
    for (const Case& c : cases) {
        const HttpResponse response = get(server.url() + QString::fromUtf8(c.path), c.method, c.method == "POST" ? "body" : "");
        EXPECT_TRUE(response.replied()) << c.path << " " << response.error.toStdString();
        EXPECT_EQ(response.status, c.status) << c.path;
        EXPECT_EQ(response.body, c.body) << c.path;
        EXPECT_EQ(response.sends, 1) << c.path;
    }
}

TEST(PlainHttp, KeepsConnectionsAliveAndSendsAgainOnceWhenOneWasClosed)
{
    ServerProcess server(QStringLiteral("python3"), {shapesServer});
    ASSERT_TRUE(server.started());
    for (int i = 0; i < 20; ++i)
        ASSERT_EQ(get(server.url() + QStringLiteral("/length")).body, QByteArray("hello"));

    // The server closes this connection after replying. Whether the next
    // request sees that before writing or only after, it gets its reply.
    EXPECT_EQ(get(server.url() + QStringLiteral("/drop-after")).body, QByteArray("ok"));
    const HttpResponse afterDrop = get(server.url() + QStringLiteral("/length"));
    EXPECT_EQ(afterDrop.body, QByteArray("hello"));
    EXPECT_TRUE(afterDrop.sends == 1 || afterDrop.sends == 2) << afterDrop.sends;

    // Two requests at once leave two kept-alive connections. The server
    // closes both unanswered when a request comes on them, yet the request
    // goes only once more, on a new connection.
    HttpResponse paired;
    std::thread other([&] { paired = get(server.url() + QStringLiteral("/pair")); });
    EXPECT_EQ(get(server.url() + QStringLiteral("/pair")).body, QByteArray("ok"));
    other.join();
    EXPECT_EQ(paired.body, QByteArray("ok"));
    const HttpResponse retried = get(server.url() + QStringLiteral("/fresh-only"));
    EXPECT_EQ(retried.body, QByteArray("ok"));
    EXPECT_EQ(retried.sends, 2);

    server.stop();
    // The first 21 requests, the next one and one /pair, the other /pair, the retry.
    EXPECT_EQ(connectionsSeen(server), 4);
}

TEST(HttpClient, FailuresSayWhy)
{
    ServerProcess hang(QStringLiteral("python3"), {testing::faultServerScript(), QStringLiteral("hang")});
    ServerProcess close(QStringLiteral("python3"), {testing::faultServerScript(), QStringLiteral("close")});
    ASSERT_TRUE(hang.started() && close.started());
    const int closedPort = testing::closedPort();
    struct Case {
        QString url;
        const char* error;
        int sends;
    };
    const Case cases[] = {
        {QStringLiteral("http://127.0.0.1:%1/").arg(closedPort), "Could not connect to the server.", 0},
        {QStringLiteral("https://127.0.0.1:%1/").arg(closedPort), "Connection refused", 0},
        {hang.url(), "The request timed out.", 1},
        {close.url(), "The network connection was lost.", 1},
        {QStringLiteral("http://no-such-host.invalid/"), "A server with the specified hostname could not be found.", 0},
    };
    for (const Case& c : cases) {
        const HttpResponse response = get(c.url);
        EXPECT_FALSE(response.replied()) << c.url.toStdString();
        EXPECT_EQ(response.error.toStdString(), c.error) << c.url.toStdString();
        EXPECT_EQ(response.status, 0);
        EXPECT_EQ(response.sends, c.sends) << c.url.toStdString();
    }
}

TEST(HttpClient, RefusesRepliesLargerThanTheCap)
{
    trustTestCertificate();
    ServerProcess plain(QStringLiteral("python3"), {shapesServer});
    ServerProcess tls(QStringLiteral("python3"), {shapesServer, QStringLiteral("--tls"), testKeyAndCertificate});
    ASSERT_TRUE(plain.started() && tls.started());
    struct Case {
        const char* path;
        qsizetype cap;
        const char* body;  // null: too large
        bool plainOnly;    // https headers are read by Qt, which has limits of its own
    };
    const Case cases[] = {
        // The huge length must fail before any of the body, which never comes.
        {"/huge-length", 1000, nullptr, false},
        {"/endless-chunked", 100000, nullptr, false},
        {"/endless-until-close", 100000, nullptr, false},
        // Headers have a bound of their own, whatever the cap on the body.
        {"/endless-header-line", 100000000, nullptr, true},
        {"/endless-headers", 100000000, nullptr, true},
        // A body exactly at the cap is a reply, in each shape.
        {"/length", 5, "hello", false},
        {"/chunked", 7, "chunked", false},
        {"/until-close", 9, "all of it", false},
    };
    for (const Case& c : cases) {
        for (const QString& url : {plain.url(), QStringLiteral("https://") + tls.address()}) {
            if (c.plainOnly && url.startsWith(QStringLiteral("https:")))
                continue;
            const std::string where = url.toStdString() + c.path;
            const HttpResponse response = get(url + QString::fromUtf8(c.path), "GET", {}, c.cap);
            if (c.body) {
                EXPECT_TRUE(response.replied()) << where << " " << response.error.toStdString();
                EXPECT_EQ(response.body, QByteArray(c.body)) << where;
            } else {
                EXPECT_EQ(response.error.toStdString(), "The reply is too large.") << where;
                EXPECT_EQ(response.status, 0) << where;
                EXPECT_TRUE(response.body.isEmpty()) << where;
            }
            EXPECT_EQ(response.sends, 1) << where;
        }
    }
}

}  // namespace
}  // namespace lexicorn
