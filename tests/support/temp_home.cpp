#include "support/temp_home.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

namespace lexicorn::testing {

TempHome::TempHome() : previous_(qgetenv("LEXICORN_HOME")), hadPrevious_(qEnvironmentVariableIsSet("LEXICORN_HOME"))
{
    EXPECT_TRUE(dir_.isValid());
    QDir(dir_.path()).mkpath(QStringLiteral("Dict"));
    qputenv("LEXICORN_HOME", dir_.path().toUtf8());
}

TempHome::~TempHome()
{
    if (hadPrevious_)
        qputenv("LEXICORN_HOME", previous_);
    else
        qunsetenv("LEXICORN_HOME");
}

void TempHome::writeDict(const QString& name, const QByteArray& content) const
{
    QFile file(dictPath(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << name.toStdString();
    file.write(content);
}

void TempHome::copySampleDictionaries() const
{
    const QDir sample(QStringLiteral(LEXICORN_SAMPLE_DIR "/Dict"));
    const QStringList names = sample.entryList(QDir::Files);
    ASSERT_FALSE(names.isEmpty()) << sample.path().toStdString();
    for (const QString& name : names)
        ASSERT_TRUE(QFile::copy(sample.filePath(name), dictPath(name))) << name.toStdString();
}

QByteArray TempHome::readDict(const QString& name) const
{
    QFile file(dictPath(name));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

}  // namespace lexicorn::testing
