#pragma once

#include "runtime/runtime.h"

namespace lexicorn {

// When the host offers mouse events, turns the middle button into panning
// while the delegate's enableMouse3 is on: a middle-button press, drag and
// release arrive as a left-button press, drag and release with the space
// key held, which the host treats as panning. The monitor holds the
// delegate weakly.
void installMiddleButtonMonitor(runtime::Object& delegate);

}  // namespace lexicorn
