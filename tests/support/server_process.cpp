#include "support/server_process.h"

#include <QTcpServer>

#include <gtest/gtest.h>

namespace lexicorn::testing {

ServerProcess::ServerProcess(const QString& program, const QStringList& arguments)
{
    process_.setProcessChannelMode(QProcess::SeparateChannels);
    process_.start(program, arguments);
    if (!process_.waitForStarted(10000)) {
        ADD_FAILURE() << "cannot start " << program.toStdString();
        return;
    }
    // Servers with a heavy start (the Anki peer) may take a few seconds.
    for (int waited = 0; waited < 60000 && !process_.canReadLine(); waited += 100) {
        if (process_.state() != QProcess::Running)
            break;
        process_.waitForReadyRead(100);
    }
    const QString line = QString::fromUtf8(process_.readLine()).trimmed();
    if (!line.startsWith(QStringLiteral("listening on "))) {
        ADD_FAILURE() << program.toStdString() << " did not start: " << line.toStdString() << "\n"
                      << process_.readAllStandardError().toStdString();
        return;
    }
    address_ = line.mid(13);
}

ServerProcess::~ServerProcess()
{
    stop();
}

QString ServerProcess::errors()
{
    return QString::fromUtf8(process_.readAllStandardError());
}

void ServerProcess::stop()
{
    if (process_.state() == QProcess::NotRunning)
        return;
    process_.closeWriteChannel();
    process_.terminate();
    if (!process_.waitForFinished(10000)) {
        process_.kill();
        process_.waitForFinished(5000);
    }
}

QString faultServerScript()
{
    return QStringLiteral(LEXICORN_TESTS_DIR "/support/fault_server.py");
}

int closedPort()
{
    // Bind a free port, then let it go: nothing listens there afterwards.
    QTcpServer server;
    server.listen(QHostAddress::LocalHost, 0);
    const int port = server.serverPort();
    server.close();
    return port;
}

}  // namespace lexicorn::testing
