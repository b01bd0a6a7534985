#include "foundation/install_layout.h"

#include "foundation/paths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace lexicorn {

namespace {

// LEXICORN_BIN_TO_DATA and LEXICORN_BIN_TO_PLUGINS are the install's folders
// relative to its bin folder; the build works them out from the install dirs.
QString besideExecutable(const char* relative)
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + u'/' + QString::fromUtf8(relative));
}

}  // namespace

bool runsInstalled()
{
    return QFileInfo(besideExecutable(LEXICORN_BIN_TO_DATA)).isDir();
}

QString sampleDirectory()
{
    return runsInstalled() ? besideExecutable(LEXICORN_BIN_TO_DATA) + QStringLiteral("/sample")
                           : QStringLiteral(LEXICORN_SOURCE_SAMPLE_DIR);
}

QString installedPluginDirectory()
{
    return besideExecutable(LEXICORN_BIN_TO_PLUGINS);
}

QString copySampleDictionaries(const QString& sampleDir)
{
    const QDir source(sampleDir + QStringLiteral("/Dict"));
    if (!source.exists())
        return QStringLiteral("no sample dictionaries at %1").arg(source.path());
    QDir().mkpath(dictDirectory());
    for (const QString& name : source.entryList({QStringLiteral("*.json")}, QDir::Files)) {
        const QString target = dictDirectory() + u'/' + name;
        if (!QFile::exists(target) && !QFile::copy(source.filePath(name), target))
            return QStringLiteral("cannot copy %1 into %2").arg(name, dictDirectory());
    }
    return {};
}

}  // namespace lexicorn
