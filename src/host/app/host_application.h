#pragma once

#include "host/app/host_classes.h"
#include "host/app/plugin_loader.h"

namespace lexicorn::host {

// The reader's start: classes registered, the plug-in loaded, the launch
// finished through the runtime (so a plug-in's replacement runs).
struct HostApplication {
    PluginLoad plugin;
    std::shared_ptr<AppDelegate> delegate;
};

HostApplication launchHost(const QString& pluginPath = host::pluginPath());

}  // namespace lexicorn::host
