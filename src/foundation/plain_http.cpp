#include "foundation/plain_http.h"

#include <QByteArray>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <map>
#include <mutex>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <optional>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace lexicorn {

namespace {

using Clock = std::chrono::steady_clock;

// The texts a user sees for the common failures.
const QString timedOut = QStringLiteral("The request timed out.");
const QString cannotConnect = QStringLiteral("Could not connect to the server.");
const QString connectionLost = QStringLiteral("The network connection was lost.");

// Idle keep-alive connections, by "host:port".
class ConnectionPool {
public:
    std::optional<int> take(const QByteArray& key)
    {
        std::lock_guard lock(mutex_);
        std::vector<int>& idle = idle_[key];
        if (idle.empty())
            return std::nullopt;
        const int fd = idle.back();
        idle.pop_back();
        return fd;
    }
    void give(const QByteArray& key, int fd)
    {
        std::lock_guard lock(mutex_);
        idle_[key].push_back(fd);
    }

private:
    std::mutex mutex_;
    std::map<QByteArray, std::vector<int>> idle_;
};

ConnectionPool& pool()
{
    static ConnectionPool* connections = new ConnectionPool;
    return *connections;
}

class Failure {
public:
    explicit Failure(QString why, bool beforeReply = false) : why(std::move(why)), beforeReply(beforeReply) {}
    QString why;
    bool beforeReply;  // nothing of a reply had arrived: a stale kept-alive connection may be why
};

int remainingMs(Clock::time_point deadline)
{
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return left > 0 ? int(left) : 0;
}

// Waits until fd is ready for events; throws when the deadline passes first.
void waitFor(int fd, short events, Clock::time_point deadline)
{
    for (;;) {
        pollfd entry{fd, events, 0};
        const int ready = ::poll(&entry, 1, remainingMs(deadline));
        if (ready > 0)
            return;
        if (ready == 0)
            throw Failure(timedOut);
        if (errno != EINTR)
            throw Failure(QString::fromLocal8Bit(std::strerror(errno)));
    }
}

int connectTo(const QByteArray& host, int port, Clock::time_point deadline)
{
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (::getaddrinfo(host.constData(), QByteArray::number(port).constData(), &hints, &found) != 0 || !found)
        throw Failure(QStringLiteral("A server with the specified hostname could not be found."));
    QString lastError = cannotConnect;
    for (addrinfo* address = found; address; address = address->ai_next) {
        const int fd = ::socket(address->ai_family, address->ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, address->ai_protocol);
        if (fd < 0)
            continue;
        if (::connect(fd, address->ai_addr, address->ai_addrlen) != 0 && errno != EINPROGRESS) {
            ::close(fd);
            continue;
        }
        try {
            waitFor(fd, POLLOUT, deadline);
        } catch (const Failure& failure) {
            ::close(fd);
            ::freeaddrinfo(found);
            throw;
        }
        int error = 0;
        socklen_t length = sizeof error;
        ::getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &length);
        if (error == 0) {
            const int on = 1;
            ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
            ::freeaddrinfo(found);
            return fd;
        }
        ::close(fd);
    }
    ::freeaddrinfo(found);
    throw Failure(lastError);
}

void sendAll(int fd, const QByteArray& bytes, Clock::time_point deadline)
{
    qsizetype sent = 0;
    while (sent < bytes.size()) {
        const ssize_t wrote = ::send(fd, bytes.constData() + sent, size_t(bytes.size() - sent), MSG_NOSIGNAL);
        if (wrote > 0) {
            sent += wrote;
        } else if (wrote < 0 && (errno == EAGAIN || errno == EINTR)) {
            waitFor(fd, POLLOUT, deadline);
        } else {
            throw Failure(connectionLost, true);
        }
    }
}

// Reads what the server sends, on demand.
class Reader {
public:
    Reader(int fd, Clock::time_point deadline) : fd_(fd), deadline_(deadline) {}

    // Reads more bytes; false at the end of the stream.
    bool fill()
    {
        char chunk[16384];
        for (;;) {
            const ssize_t got = ::recv(fd_, chunk, sizeof chunk, 0);
            if (got > 0) {
                buffer.append(chunk, got);
                return true;
            }
            if (got == 0)
                return false;
            if (errno == EAGAIN || errno == EINTR) {
                waitFor(fd_, POLLIN, deadline_);
                continue;
            }
            throw Failure(connectionLost, buffer.isEmpty());
        }
    }

    // Takes one line ending in CRLF, without it.
    QByteArray line()
    {
        for (;;) {
            const qsizetype end = buffer.indexOf("\r\n");
            if (end >= 0) {
                QByteArray text = buffer.left(end);
                buffer.remove(0, end + 2);
                return text;
            }
            if (!fill())
                throw Failure(connectionLost, buffer.isEmpty());
        }
    }

    QByteArray take(qsizetype count)
    {
        while (buffer.size() < count) {
            if (!fill())
                throw Failure(connectionLost);
        }
        QByteArray bytes = buffer.left(count);
        buffer.remove(0, count);
        return bytes;
    }

    QByteArray rest()
    {
        while (fill()) {
        }
        return std::exchange(buffer, {});
    }

    QByteArray buffer;

private:
    int fd_;
    Clock::time_point deadline_;
};

struct Exchange {
    HttpResponse response;
    bool keepAlive = false;
};

Exchange exchange(int fd, const QByteArray& message, bool isHead, Clock::time_point deadline)
{
    sendAll(fd, message, deadline);
    Reader reader(fd, deadline);
    Exchange result;
    QList<QByteArray> status;
    do {  // informational replies (100 Continue) come before the real one
        status = reader.line().split(' ');
        if (status.size() < 2 || !status[0].startsWith("HTTP/1."))
            throw Failure(QStringLiteral("The server sent a reply that is not HTTP."));
        result.response.status = status[1].toInt();
        result.keepAlive = status[0] == "HTTP/1.1";
        qsizetype length = -1;
        bool chunked = false;
        for (QByteArray header = reader.line(); !header.isEmpty(); header = reader.line()) {
            const qsizetype colon = header.indexOf(':');
            if (colon < 0)
                continue;
            const QByteArray name = header.left(colon).trimmed().toLower();
            const QByteArray value = header.mid(colon + 1).trimmed().toLower();
            if (name == "content-length")
                length = value.toLongLong();
            else if (name == "transfer-encoding" && value.contains("chunked"))
                chunked = true;
            else if (name == "connection")
                result.keepAlive = value != "close" && (result.keepAlive || value == "keep-alive");
        }
        if (result.response.status >= 100 && result.response.status < 200)
            continue;
        if (isHead || result.response.status == 204 || result.response.status == 304) {
            // no body
        } else if (chunked) {
            for (qsizetype size = reader.line().split(';').front().trimmed().toLongLong(nullptr, 16); size > 0;
                 size = reader.line().split(';').front().trimmed().toLongLong(nullptr, 16)) {
                result.response.body += reader.take(size);
                reader.line();
            }
            for (QByteArray trailer = reader.line(); !trailer.isEmpty(); trailer = reader.line()) {
            }
        } else if (length >= 0) {
            result.response.body = reader.take(length);
        } else {
            result.response.body = reader.rest();
            result.keepAlive = false;
        }
    } while (result.response.status >= 100 && result.response.status < 200);
    if (!reader.buffer.isEmpty())
        result.keepAlive = false;  // more than one reply's worth: do not trust the connection
    return result;
}

}  // namespace

HttpResponse sendPlainHttp(const HttpRequest& request)
{
    const Clock::time_point deadline = Clock::now() + request.timeout;
    const QByteArray host = request.url.host().toUtf8();
    const int port = request.url.port(80);
    const QByteArray key = host + ':' + QByteArray::number(port);

    QByteArray message = request.method + ' ' + request.url.toEncoded(QUrl::RemoveScheme | QUrl::RemoveAuthority | QUrl::RemoveFragment);
    if (message.endsWith(' '))
        message += '/';
    message += " HTTP/1.1\r\n";
    bool hasHost = false;
    for (const auto& [name, value] : request.headers) {
        hasHost = hasHost || name.compare("host", Qt::CaseInsensitive) == 0;
        if (name.compare("content-length", Qt::CaseInsensitive) != 0)
            message += name + ": " + value + "\r\n";
    }
    if (!hasHost)
        message += "Host: " + key + "\r\n";
    if (!request.body.isEmpty() || request.method == "POST" || request.method == "PUT")
        message += "Content-Length: " + QByteArray::number(request.body.size()) + "\r\n";
    message += "Connection: keep-alive\r\n\r\n" + request.body;
    const bool isHead = request.method == "HEAD";

    // A kept-alive connection may have been closed by the server meanwhile;
    // then the request goes once more on a new connection.
    std::optional<int> reused = pool().take(key);
    for (;;) {
        const bool fresh = !reused;
        int fd = -1;
        try {
            fd = reused ? *reused : connectTo(host, port, deadline);
            Exchange result = exchange(fd, message, isHead, deadline);
            if (result.keepAlive)
                pool().give(key, fd);
            else
                ::close(fd);
            return result.response;
        } catch (const Failure& failure) {
            if (fd >= 0)
                ::close(fd);
            if (fresh || !failure.beforeReply) {
                HttpResponse response;
                response.error = failure.why;
                return response;
            }
            reused = pool().take(key);
        }
    }
}

}  // namespace lexicorn
