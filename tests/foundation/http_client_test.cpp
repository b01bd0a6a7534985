#include "support/server_process.h"

#include "foundation/http_client.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using testing::ServerProcess;

HttpResponse get(const QString& url, const QByteArray& method = "GET", const QByteArray& body = {})
{
    HttpRequest request;
    request.method = method;
    request.url = QUrl(url);
    request.body = body;
    request.timeout = std::chrono::milliseconds(3000);
    return HttpClient::shared().send(request);
}

int connectionsSeen(ServerProcess& server)
{
    int seen = 0;
    for (const QRegularExpressionMatch& match : QRegularExpression(QStringLiteral("connections (\\d+)")).globalMatch(server.errors()))
        seen = match.captured(1).toInt();
    return seen;
}

TEST(PlainHttp, ReadsEveryShapeOfReply)
{
    ServerProcess server(QStringLiteral("python3"), {QStringLiteral(LEXICORN_TESTS_DIR "/support/http_shapes_server.py")});
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
        {"/status/404", "POST", 404, "page"},
        {"/length", "HEAD", 200, ""},
        {"/echo?q=a%20b", "POST", 200, "POST /echo?q=a%20b HTTP/1.1\nbody"},
    };
    for (const Case& c : cases) {
        const HttpResponse response = get(server.url() + QString::fromUtf8(c.path), c.method, c.method == "POST" ? "body" : "");
        EXPECT_TRUE(response.replied()) << c.path << " " << response.error.toStdString();
        EXPECT_EQ(response.status, c.status) << c.path;
        EXPECT_EQ(response.body, c.body) << c.path;
    }
}

TEST(PlainHttp, KeepsConnectionsAliveAndRecoversWhenTheServerDroppedOne)
{
    ServerProcess server(QStringLiteral("python3"), {QStringLiteral(LEXICORN_TESTS_DIR "/support/http_shapes_server.py")});
    ASSERT_TRUE(server.started());
    for (int i = 0; i < 20; ++i)
        ASSERT_EQ(get(server.url() + QStringLiteral("/length")).body, QByteArray("hello"));

    // The server closes this connection after replying; the next request
    // finds it dead, and goes out again on a new one.
    EXPECT_EQ(get(server.url() + QStringLiteral("/drop-after")).body, QByteArray("ok"));
    EXPECT_EQ(get(server.url() + QStringLiteral("/length")).body, QByteArray("hello"));
    server.stop();
    EXPECT_EQ(connectionsSeen(server), 2);  // one for the first 21 requests, one after the drop
}

TEST(PlainHttp, FailuresSayWhy)
{
    ServerProcess hang(QStringLiteral("python3"), {testing::faultServerScript(), QStringLiteral("hang")});
    ServerProcess close(QStringLiteral("python3"), {testing::faultServerScript(), QStringLiteral("close")});
    ASSERT_TRUE(hang.started() && close.started());
    struct Case {
        QString url;
        const char* error;
    };
    const Case cases[] = {
        {QStringLiteral("http://127.0.0.1:%1/").arg(testing::closedPort()), "Could not connect to the server."},
        {hang.url(), "The request timed out."},
        {close.url(), "The network connection was lost."},
        {QStringLiteral("http://no-such-host.invalid/"), "A server with the specified hostname could not be found."},
    };
    for (const Case& c : cases) {
        const HttpResponse response = get(c.url);
        EXPECT_FALSE(response.replied()) << c.url.toStdString();
        EXPECT_EQ(response.error.toStdString(), c.error) << c.url.toStdString();
        EXPECT_EQ(response.status, 0);
    }
}

}  // namespace
}  // namespace lexicorn
