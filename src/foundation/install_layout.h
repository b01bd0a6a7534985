#pragma once

// Where a program finds what is installed with it. An installed program finds
// its plug-in and its sample data relative to its own executable, so the
// install works under any prefix; a program run from the build folder takes
// the plug-in built beside it and the sample data in the sources.

#include <QString>

namespace lexicorn {

// True when the running program is an installed one: its data folder
// (<prefix>/share/lexicorn) stands where the install puts it.
bool runsInstalled();

// The sample book and dictionaries: <prefix>/share/lexicorn/sample when
// installed, data/sample in the sources otherwise.
QString sampleDirectory();

// The folder an installed program's plug-in is in: <prefix>/<libdir>/lexicorn.
QString installedPluginDirectory();

// Copies the sample dictionary files of sampleDir/Dict into the Dict folder,
// keeping files already there. Returns what went wrong, or nothing.
QString copySampleDictionaries(const QString& sampleDir = sampleDirectory());

}  // namespace lexicorn
