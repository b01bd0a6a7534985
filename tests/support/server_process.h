#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

namespace lexicorn::testing {

// A local test server run as a child process. The server prints one line
// "listening on HOST:PORT" when it is ready; it is stopped when this object
// goes away (and exits by itself if the test process dies, as its standard
// input closes).
class ServerProcess {
public:
    ServerProcess(const QString& program, const QStringList& arguments);
    ~ServerProcess();
    ServerProcess(const ServerProcess&) = delete;
    ServerProcess& operator=(const ServerProcess&) = delete;

    bool started() const { return !address_.isEmpty(); }
    // "127.0.0.1:PORT"
    QString address() const { return address_; }
    QString url() const { return QStringLiteral("http://") + address_; }
    // What the server wrote to standard error so far.
    QString errors();
    void stop();

private:
    QProcess process_;
    QString address_;
};

// A Python fault server (see tests/support/fault_server.py) in one of its
// modes: hang, garbage, slow, close, array, echo.
QString faultServerScript();
// A port on 127.0.0.1 where nothing listens.
int closedPort();

}  // namespace lexicorn::testing
