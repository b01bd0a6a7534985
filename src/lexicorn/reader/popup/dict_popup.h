#pragma once

// The dictionary popup in the host's book view: lookup on selection, the
// popup's table, card making on a tap, sentence selection by double click.
// Everything reaches the host through the object runtime.

#include "runtime/runtime.h"

#include <functional>
#include <memory>

namespace lexicorn {

// Installs the popup's methods on the host's BookViewController and registers
// the popup's own classes, HookDictTableView and HookDictTableCell, under the
// host's table and cell classes. Does nothing for a host without them.
// applicationDelegate gives the host's application delegate once launched.
void installPopupMethods(std::function<std::shared_ptr<runtime::Object>()> applicationDelegate);

}  // namespace lexicorn
