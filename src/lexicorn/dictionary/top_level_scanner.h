#pragma once

// Finds the keys and value spans of a JSON document's top-level object without
// parsing the values. The dictionary loader uses it to index a large cache
// file and then checks each value on its own, which keeps the parser's working
// memory at the size of one record instead of the size of the file.

#include <QString>

#include <string_view>
#include <vector>

namespace lexicorn {

struct TopLevelEntry {
    std::string_view rawKey;  // the key as written, without its quotes
    bool keyHasEscapes = false;
    size_t valueOffset = 0;
    size_t valueLength = 0;
};

// Appends each member to entries in document order. Returns an empty string
// when the object is well formed at the top level, else what is wrong and
// where. Values are only delimited here (strings and brackets matched), not checked.
QString scanTopLevelObject(std::string_view json, std::vector<TopLevelEntry>& entries);

}  // namespace lexicorn
