#pragma once

// The study board's Anki button: sends every selected dictionary card to
// Anki (`dictUpdateToAnki:`), placed in the host's organising edit bar.

#include "runtime/runtime.h"

namespace lexicorn {

// Makes the board's `updateToAnki` button and sets `isUpdating` to false;
// called when the study board's view loads.
void placeBatchButton(runtime::Object& board);

}  // namespace lexicorn
