#pragma once

// Registers every class of the view kit with the runtime, in the one order
// they depend on: the host's own classes, "UIView", the table and its cells,
// the text view, the controls, the toggles and the images. It is the only
// caller of each kit file's register function, so no kit file registers
// another and the files do not include each other for it.

#include "runtime/runtime.h"

namespace lexicorn::host::ui {

// Safe to call more than once.
void registerViewKitClasses(runtime::Runtime& runtime = runtime::Runtime::shared());

}  // namespace lexicorn::host::ui
