#pragma once

namespace lexicorn {

// Adds the card operations to the host's note class and the batch
// synchronisation to its study board, when the host has those classes.
void installCardMethods();

}  // namespace lexicorn
