#pragma once

#include "host/app/host_classes.h"
#include "host/app/plugin_loader.h"
#include "host/app/reader_classes.h"

namespace lexicorn::host {

// The reader's start: classes registered, the plug-in loaded, the notebook
// opened (the reader runs without one when it does not open), the launch
// finished through the runtime (so a plug-in's replacement runs).
struct HostApplication {
    PluginLoad plugin;
    std::shared_ptr<AppDelegate> delegate;
    std::shared_ptr<Notebook> notebook;  // null when it did not open
    std::shared_ptr<BookViewObject> bookView;
};

HostApplication launchHost(const QString& pluginPath = host::pluginPath());

}  // namespace lexicorn::host
