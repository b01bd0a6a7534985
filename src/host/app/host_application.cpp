#include "host/app/host_application.h"

#include "host/app/note_classes.h"

#include "foundation/log.h"

namespace lexicorn::host {

HostApplication launchHost(const QString& path)
{
    HostApplication application;
    registerHostClasses();
    registerNoteClasses();
    application.plugin = loadPlugin(path);
    if (!application.plugin.problem.isEmpty())
        logLine(QStringLiteral("lexicorn-host: the plug-in %1 did not load: %2").arg(path, application.plugin.problem));
    application.delegate = makeAppDelegate();
    runtime::send<void>(*application.delegate, "applicationDidFinishLaunching:", std::string("launch"));
    return application;
}

}  // namespace lexicorn::host
