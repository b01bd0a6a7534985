#pragma once

// Adds imported word forms to the user's word-form map without losing any of
// the user's own entries: a form the map already has keeps its headword.

#include <QString>

#include <string_view>
#include <utility>
#include <vector>

namespace lexicorn::dictimport {

struct WordFormsMerge {
    size_t kept = 0;   // entries of the existing map
    size_t added = 0;  // imported forms the map did not have
};

// Writes the merged map to outPath. existingPath may name no file (an empty
// map). An existing map that does not decode is an ImportError: replacing it
// would lose what the user wrote.
// The imported forms (UTF-8) come without repeats among themselves.
WordFormsMerge mergeWordForms(const QString& existingPath, const std::vector<std::pair<std::string_view, std::string_view>>& forms,
                              const QString& outPath);

}  // namespace lexicorn::dictimport
