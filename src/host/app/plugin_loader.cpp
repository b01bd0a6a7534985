#include "host/app/plugin_loader.h"

#include "foundation/install_layout.h"

#include <QLibrary>

#include <memory>
#include <vector>

namespace lexicorn::host {

QString pluginPath()
{
    if (qEnvironmentVariableIsSet("LEXICORN_PLUGIN"))
        return qEnvironmentVariable("LEXICORN_PLUGIN");
    // An installed reader takes only the plug-in installed with it, never one
    // left in a build folder.
    if (runsInstalled())
        return installedPluginDirectory() + QStringLiteral("/" LEXICORN_PLUGIN_FILE_NAME);
    return QStringLiteral(LEXICORN_PLUGIN_BUILD_PATH);
}

PluginLoad loadPlugin(const QString& path)
{
    PluginLoad result{false, path, {}};
    if (path.isEmpty())
        return result;
    // Never unloaded: its replacements stay installed for the whole process.
    static std::vector<std::unique_ptr<QLibrary>> loaded;
    auto library = std::make_unique<QLibrary>(path);
    library->setLoadHints(QLibrary::ExportExternalSymbolsHint);
    result.loaded = library->load();
    if (result.loaded)
        loaded.push_back(std::move(library));  // a QLibrary going away does not unload its library
    else
        result.problem = library->errorString();
    return result;
}

}  // namespace lexicorn::host
