#pragma once

#include "runtime/runtime.h"

#include <memory>

namespace lexicorn {

// The application delegate, once launching finished.
std::weak_ptr<runtime::Object>& applicationDelegate();

// Puts the plug-in's start-up in place of the application delegate's
// applicationDidFinishLaunching:. It calls the host's own launch on the way.
void installStartUp();

}  // namespace lexicorn
