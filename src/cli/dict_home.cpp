#include "cli/dict_home.h"

#include "cli/arguments.h"

#include "lexicorn/dictionary/en_word_server.h"

#include "foundation/paths.h"

#include <QFileInfo>

namespace lexicorn::cli {

int dictNumberFromName(const QString& name)
{
    for (int number : {0, 1}) {
        if (SelectDictType::fromRawValue(number)->name() == name)
            return number;
    }
    throw UsageError(QStringLiteral("unknown dictionary \"%1\" (use collins or LDOCE5)").arg(name));
}

void loadDictionary(EnWordServer& server, int number)
{
    const QString folder = dictDirectory();
    if (!QFileInfo(folder).isDir())
        throw CommandError(QStringLiteral("no Dict folder at %1").arg(folder));
    server.setDictTypeWithNumber(number);
    server.waitForLoadJobs();
    if (server.isCaching()) {
        throw CommandError(QStringLiteral("the collins dictionary could not be loaded: neither %1/collins_html.json nor %1/collins.json exists")
                               .arg(folder));
    }
    if (server.cacheDictNull()) {
        throw CommandError(QStringLiteral("the %1 dictionary could not be loaded from %2/%3")
                               .arg(server.dictName(), folder, server.dictFileName()));
    }
}

}  // namespace lexicorn::cli
