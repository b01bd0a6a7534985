#pragma once

// Runs the lexicorn command-line tool built with the tests. A test target
// that includes this defines LEXICORN_CLI as the tool's path.

#include <QProcess>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

namespace lexicorn::testing {

struct CliRun {
    int status = -1;  // -1 when the tool crashed
    QString out;
    QString err;
};

// The tool finds settings and dictionaries through LEXICORN_HOME, which a
// TempHome of the calling test sets.
inline CliRun runLexicorn(const QStringList& arguments)
{
    QProcess process;
    process.start(QStringLiteral(LEXICORN_CLI), arguments);
    EXPECT_TRUE(process.waitForFinished(120000)) << arguments.join(u' ').toStdString();
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
}

}  // namespace lexicorn::testing
