#include "foundation/paths.h"

#include <QDir>

namespace lexicorn {

QString homeDirectory()
{
    const QString overridden = qEnvironmentVariable("LEXICORN_HOME");
    return overridden.isEmpty() ? QDir::homePath() : overridden;
}

QString dictDirectory()
{
    return homeDirectory() + QStringLiteral("/Dict");
}

}  // namespace lexicorn
