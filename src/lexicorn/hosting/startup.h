#pragma once

#include "runtime/hosting.h"

namespace lexicorn {

// What the plug-in keeps of the launch: the host's previous launch method,
// and the application delegate once launching finished.
runtime::HookSlot& launchSlot();
std::weak_ptr<runtime::Object>& applicationDelegate();

// The plug-in's start-up, run in place of the application delegate's
// applicationDidFinishLaunching:. It calls the host's own launch on the way.
void startUp(runtime::Object& delegate, const std::string& notification);

}  // namespace lexicorn
