#include "foundation/plain_http.h"

#include <QByteArray>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <optional>
#include <poll.h>
#include <sys/socket.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

namespace lexicorn {

namespace {

using Clock = std::chrono::steady_clock;

// The texts a user sees for the common failures.
const QString timedOut = QStringLiteral("The request timed out.");
const QString cannotConnect = QStringLiteral("Could not connect to the server.");
const QString connectionLost = QStringLiteral("The network connection was lost.");
const QString hostNotFound = QStringLiteral("A server with the specified hostname could not be found.");
const QString notHttp = QStringLiteral("The server sent a reply that is not HTTP.");
const QString tooLarge = QStringLiteral("The reply is too large.");

// The status line and headers of a reply (its trailers included) may not be
// longer than this together, so a server that never ends a header cannot
// fill memory. Real replies use a few hundred bytes.
constexpr qsizetype maxHeaderBytes = 64 * 1024;

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

// An idle connection has nothing to read. When it is readable the server has
// closed it (or sent bytes nobody asked for), and a request written to it
// would be lost.
bool stillOpen(int fd)
{
    pollfd entry{fd, POLLIN, 0};
    return ::poll(&entry, 1, 0) == 0;
}

// An idle connection to key that still looks open; dead ones are closed on the way.
std::optional<int> takeOpenConnection(const QByteArray& key)
{
    while (const std::optional<int> fd = pool().take(key)) {
        if (stillOpen(*fd))
            return fd;
        ::close(*fd);
    }
    return std::nullopt;
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

using AddressList = std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)>;

struct Lookup {
    int status = EAI_NONAME;
    addrinfo* found = nullptr;
};

Lookup lookUp(const QByteArray& host, const QByteArray& service, int flags)
{
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = flags;
    Lookup lookup;
    lookup.status = ::getaddrinfo(host.constData(), service.constData(), &hints, &lookup.found);
    return lookup;
}

// What a caller and the helper thread resolving its name share. The helper
// may outlive the caller's wait, so it owns a share of this and never
// touches the caller's stack.
struct PendingLookup {
    std::mutex mutex;
    std::condition_variable done;
    std::optional<Lookup> lookup;
    bool abandoned = false;  // the caller stopped waiting: the helper frees what it found
};

// getaddrinfo has no time-out of its own and may block for long on a bad
// resolver, so the name is looked up on a helper thread and waited for only
// until the deadline. A helper that finishes late cleans up after itself.
Lookup lookUpBefore(const QByteArray& host, const QByteArray& service, Clock::time_point deadline)
{
    auto pending = std::make_shared<PendingLookup>();
    try {
        std::thread([pending, host, service] {
            const Lookup lookup = lookUp(host, service, 0);
            std::lock_guard lock(pending->mutex);
            if (pending->abandoned) {
                if (lookup.found)
                    ::freeaddrinfo(lookup.found);
                return;
            }
            pending->lookup = lookup;
            pending->done.notify_one();
        }).detach();
    } catch (const std::system_error&) {
        return lookUp(host, service, 0);  // no thread to be had: wait without a limit
    }
    std::unique_lock lock(pending->mutex);
    if (!pending->done.wait_until(lock, deadline, [&] { return pending->lookup.has_value(); })) {
        pending->abandoned = true;
        throw Failure(timedOut);
    }
    return *pending->lookup;
}

// Numeric addresses, the usual 127.0.0.1 among them, need no lookup and no thread.
AddressList resolve(const QByteArray& host, int port, Clock::time_point deadline)
{
    const QByteArray service = QByteArray::number(port);
    Lookup lookup = lookUp(host, service, AI_NUMERICHOST);
    if (lookup.status != 0)
        lookup = lookUpBefore(host, service, deadline);
    AddressList addresses(lookup.found, ::freeaddrinfo);
    if (lookup.status != 0 || !addresses)
        throw Failure(hostNotFound);
    return addresses;
}

int connectTo(const QByteArray& host, int port, Clock::time_point deadline)
{
    const AddressList addresses = resolve(host, port, deadline);
    for (addrinfo* address = addresses.get(); address; address = address->ai_next) {
        const int fd = ::socket(address->ai_family, address->ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, address->ai_protocol);
        if (fd < 0)
            continue;
        if (::connect(fd, address->ai_addr, address->ai_addrlen) != 0 && errno != EINPROGRESS) {
            ::close(fd);
            continue;
        }
        try {
            waitFor(fd, POLLOUT, deadline);
        } catch (const Failure&) {
            ::close(fd);
            throw;
        }
        int error = 0;
        socklen_t length = sizeof error;
        ::getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &length);
        if (error == 0) {
            const int on = 1;
            ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
            return fd;
        }
        ::close(fd);
    }
    throw Failure(cannotConnect);
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

constexpr qsizetype readSize = 16384;

// Reads what the server sends, on demand.
class Reader {
public:
    Reader(int fd, Clock::time_point deadline) : fd_(fd), deadline_(deadline) {}

    // Reads at most `most` more bytes; false at the end of the stream.
    bool fill(qsizetype most = readSize)
    {
        // Checked here as well as when waiting: a server that sends without
        // pause never makes us wait, and must not outlast the time-out.
        if (Clock::now() >= deadline_)
            throw Failure(timedOut);
        char chunk[readSize];
        for (;;) {
            const ssize_t got = ::recv(fd_, chunk, size_t(std::min(most, readSize)), 0);
            if (got > 0) {
                buffer.append(chunk, got);
                receivedAny_ = true;
                return true;
            }
            if (got == 0)
                return false;
            if (errno == EAGAIN || errno == EINTR) {
                waitFor(fd_, POLLIN, deadline_);
                continue;
            }
            throw Failure(connectionLost, !receivedAny_);
        }
    }

    // Takes one line ending in CRLF, without it; a line longer than limit is too large.
    QByteArray line(qsizetype limit)
    {
        for (;;) {
            const qsizetype end = buffer.indexOf("\r\n");
            if (end > limit || (end < 0 && buffer.size() > limit + 1))
                throw Failure(tooLarge);
            if (end >= 0) {
                QByteArray text = buffer.left(end);
                buffer.remove(0, end + 2);
                return text;
            }
            if (!fill())
                throw Failure(connectionLost, !receivedAny_);
        }
    }

    // Takes one line of the status line, headers or trailers, which share maxHeaderBytes.
    QByteArray headerLine()
    {
        QByteArray text = line(headerBytesLeft_);
        headerBytesLeft_ -= text.size() + 2;
        return text;
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

    // Everything until the server closes the connection, if that is at most
    // limit bytes; one byte more is all it reads to know that it is not.
    QByteArray rest(qsizetype limit)
    {
        for (;;) {
            const qsizetype room = limit - buffer.size();
            if (room < 0)
                throw Failure(tooLarge);
            if (!fill(std::min(room, readSize - 1) + 1))
                return std::exchange(buffer, {});
        }
    }

    QByteArray buffer;

private:
    int fd_;
    Clock::time_point deadline_;
    bool receivedAny_ = false;  // when nothing came, a stale kept-alive connection may be why
    qsizetype headerBytesLeft_ = maxHeaderBytes;
};

struct Head {
    int status = 0;
    bool keepAlive = false;
    qsizetype length = -1;  // the Content-Length; -1 when there is none
    bool chunked = false;
};

Head readHead(Reader& reader)
{
    const QList<QByteArray> status = reader.headerLine().split(' ');
    if (status.size() < 2 || !status[0].startsWith("HTTP/1."))
        throw Failure(notHttp);
    Head head;
    head.status = status[1].toInt();
    head.keepAlive = status[0] == "HTTP/1.1";
    for (QByteArray header = reader.headerLine(); !header.isEmpty(); header = reader.headerLine()) {
        const qsizetype colon = header.indexOf(':');
        if (colon < 0)
            continue;
        const QByteArray name = header.left(colon).trimmed().toLower();
        const QByteArray value = header.mid(colon + 1).trimmed().toLower();
        if (name == "content-length") {
            bool ok = false;
            head.length = value.toLongLong(&ok);
            if (!ok || head.length < 0)
                throw Failure(notHttp);
        } else if (name == "transfer-encoding" && value.contains("chunked")) {
            head.chunked = true;
        } else if (name == "connection") {
            head.keepAlive = value != "close" && (head.keepAlive || value == "keep-alive");
        }
    }
    return head;
}

// The size from a chunk's first line, "SIZE[;extension...]".
qsizetype chunkSize(const QByteArray& line)
{
    bool ok = false;
    const qsizetype size = line.split(';').front().trimmed().toLongLong(&ok, 16);
    if (!ok || size < 0)
        throw Failure(notHttp);
    return size;
}

QByteArray readChunkedBody(Reader& reader, qsizetype limit)
{
    QByteArray body;
    for (qsizetype size = chunkSize(reader.line(maxHeaderBytes)); size > 0; size = chunkSize(reader.line(maxHeaderBytes))) {
        if (size > limit - body.size())
            throw Failure(tooLarge);
        body += reader.take(size);
        reader.line(maxHeaderBytes);  // the CRLF after the chunk
    }
    for (QByteArray trailer = reader.headerLine(); !trailer.isEmpty(); trailer = reader.headerLine()) {
    }
    return body;
}

struct Exchange {
    HttpResponse response;
    bool keepAlive = false;
};

Exchange readReply(int fd, bool isHead, qsizetype limit, Clock::time_point deadline)
{
    Reader reader(fd, deadline);
    Head head;
    do {  // informational replies (100 Continue) come before the real one
        head = readHead(reader);
    } while (head.status >= 100 && head.status < 200);

    Exchange result;
    result.response.status = head.status;
    const bool hasBody = !isHead && head.status != 204 && head.status != 304;
    const bool untilClose = hasBody && !head.chunked && head.length < 0;
    if (!hasBody) {
        // nothing more to read
    } else if (head.chunked) {
        result.response.body = readChunkedBody(reader, limit);
    } else if (head.length >= 0) {
        if (head.length > limit)
            throw Failure(tooLarge);  // before reading any of it
        result.response.body = reader.take(head.length);
    } else {
        result.response.body = reader.rest(limit);
    }
    // Bytes beyond one reply mean the connection cannot be trusted for the next.
    result.keepAlive = head.keepAlive && !untilClose && reader.buffer.isEmpty();
    return result;
}

QByteArray requestMessage(const HttpRequest& request, const QByteArray& hostAndPort)
{
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
        message += "Host: " + hostAndPort + "\r\n";
    if (!request.body.isEmpty() || request.method == "POST" || request.method == "PUT")
        message += "Content-Length: " + QByteArray::number(request.body.size()) + "\r\n";
    message += "Connection: keep-alive\r\n\r\n" + request.body;
    return message;
}

}  // namespace

HttpResponse readPlainHttpReply(int fd, bool isHead, qsizetype maxReplyBytes, std::chrono::milliseconds timeout)
{
    try {
        return readReply(fd, isHead, maxReplyBytes, Clock::now() + timeout).response;
    } catch (const Failure& failure) {
        HttpResponse response;
        response.error = failure.why;
        return response;
    }
}

HttpResponse sendPlainHttp(const HttpRequest& request)
{
    const Clock::time_point deadline = Clock::now() + request.timeout;
    const QByteArray host = request.url.host().toUtf8();
    const int port = request.url.port(80);
    const QByteArray key = host + ':' + QByteArray::number(port);
    const QByteArray message = requestMessage(request, key);
    const bool isHead = request.method == "HEAD";

    // A kept-alive connection that looked open may still have been closed by
    // the server just now; then the request goes once more, on a new
    // connection, and never a third time.
    int sends = 0;
    std::optional<int> reused = takeOpenConnection(key);
    for (;;) {
        int fd = -1;
        try {
            fd = reused ? *reused : connectTo(host, port, deadline);
            ++sends;  // counted before writing: a write that fails halfway may still have arrived
            sendAll(fd, message, deadline);
            Exchange result = readReply(fd, isHead, request.maxReplyBytes, deadline);
            if (result.keepAlive)
                pool().give(key, fd);
            else
                ::close(fd);
            result.response.sends = sends;
            return result.response;
        } catch (const Failure& failure) {
            if (fd >= 0)
                ::close(fd);
            if (!reused || !failure.beforeReply) {
                HttpResponse response;
                response.error = failure.why;
                response.sends = sends;
                return response;
            }
            reused.reset();
        }
    }
}

}  // namespace lexicorn
