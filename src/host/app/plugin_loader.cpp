#include "host/app/plugin_loader.h"

#include <QLibrary>

namespace lexicorn::host {

QString pluginPath()
{
    if (qEnvironmentVariableIsSet("LEXICORN_PLUGIN"))
        return qEnvironmentVariable("LEXICORN_PLUGIN");
    return QStringLiteral(LEXICORN_PLUGIN_BUILD_PATH);
}

PluginLoad loadPlugin(const QString& path)
{
    PluginLoad result{false, path, {}};
    if (path.isEmpty())
        return result;
    // Never unloaded: its replacements stay installed for the whole process.
    auto* library = new QLibrary(path);
    library->setLoadHints(QLibrary::ExportExternalSymbolsHint);
    result.loaded = library->load();
    if (!result.loaded)
        result.problem = library->errorString();
    return result;
}

}  // namespace lexicorn::host
