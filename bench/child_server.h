#pragma once

// A local server run as a child process while a benchmark runs. The server
// prints one line "listening on HOST:PORT" when it is ready, and ends when
// this object goes away (or when the benchmark dies, as its stdin closes).

#include <QProcess>
#include <QString>
#include <QStringList>

class ChildServer {
public:
    ChildServer(const QString& program, const QStringList& arguments)
    {
        process_.start(program, arguments);
        process_.waitForStarted(10000);
        for (int waited = 0; waited < 60000 && !process_.canReadLine() && process_.state() == QProcess::Running; waited += 100)
            process_.waitForReadyRead(100);
        const QString line = QString::fromUtf8(process_.readLine()).trimmed();
        if (line.startsWith(QStringLiteral("listening on ")))
            address = line.mid(13);
    }
    ~ChildServer()
    {
        process_.closeWriteChannel();
        process_.terminate();
        process_.waitForFinished(10000);
    }
    ChildServer(const ChildServer&) = delete;
    ChildServer& operator=(const ChildServer&) = delete;

    // "127.0.0.1:PORT"; empty when the server did not start.
    QString address;

private:
    QProcess process_;
};
