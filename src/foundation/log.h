#pragma once

#include <QString>

namespace lexicorn {

// Writes one line to the diagnostic console (standard error). Safe from any thread.
void logLine(const QString& line);

}  // namespace lexicorn
