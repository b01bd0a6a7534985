#pragma once

#include <QString>

namespace lexicorn {

// Ends the process for a state the data files must never produce. The message
// names what was wrong (the file, the record, the key); nothing is written to
// disk on the way out, so nothing the user made is touched.
[[noreturn]] void fatalError(const QString& message);

}  // namespace lexicorn
