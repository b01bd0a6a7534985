#pragma once

#include <QString>

namespace lexicorn {
class EnWordServer;
}

namespace lexicorn::cli {

// "collins" -> 1, "LDOCE5" -> 0; anything else is a usage error.
int dictNumberFromName(const QString& name);

// Selects the dictionary, waits for its load job and checks the result.
// Throws CommandError, naming the files looked for, when it cannot be loaded.
void loadDictionary(EnWordServer& server, int number);

}  // namespace lexicorn::cli
