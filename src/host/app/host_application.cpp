#include "host/app/host_application.h"

#include "host/app/event_classes.h"
#include "host/app/note_classes.h"

#include "foundation/log.h"

namespace lexicorn::host {

HostApplication launchHost(const QString& path)
{
    HostApplication application;
    registerHostClasses();
    registerNoteClasses();
    registerReaderClasses();
    registerEventClasses();
    application.notebook = std::make_shared<Notebook>();
    if (!application.notebook->open()) {
        logLine(QStringLiteral("lexicorn-host: the notebook %1 did not open: %2")
                    .arg(application.notebook->path(), application.notebook->errorString()));
        application.notebook.reset();
    }
    setSharedModelTool(application.notebook);
    application.plugin = loadPlugin(path);
    if (!application.plugin.problem.isEmpty())
        logLine(QStringLiteral("lexicorn-host: the plug-in %1 did not load: %2").arg(path, application.plugin.problem));
    application.delegate = makeAppDelegate();
    runtime::send<void>(*application.delegate, "applicationDidFinishLaunching:", std::string("launch"));
    application.bookView = makeBookView();
    return application;
}

}  // namespace lexicorn::host
