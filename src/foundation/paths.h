#pragma once

#include <QString>

namespace lexicorn {

// The user's home directory. LEXICORN_HOME, when set and not empty, stands in
// for it everywhere, so tests and the demo never touch a user's real files.
QString homeDirectory();

// The folder that holds the dictionary files: "Dict" directly under the home directory.
QString dictDirectory();

}  // namespace lexicorn
