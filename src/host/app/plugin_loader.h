#pragma once

#include <QString>

namespace lexicorn::host {

// Where the plug-in is taken from: $LEXICORN_PLUGIN when set (empty: run
// without one), else liblexicorn installed with the reader, or for a reader in
// the build folder the one built beside it.
QString pluginPath();

struct PluginLoad {
    bool loaded = false;
    QString path;
    QString problem;  // why it did not load; empty when it did or none was asked for
};

// Loads the plug-in into the process. Its load-time initialisers install its
// replacements in the host's classes before this returns.
PluginLoad loadPlugin(const QString& path = pluginPath());

}  // namespace lexicorn::host
