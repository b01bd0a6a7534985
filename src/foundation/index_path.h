#pragma once

namespace lexicorn {

// The place of a row in a table of sections: section, then row within it.
struct IndexPath {
    int section = 0;
    int row = 0;
    friend bool operator==(const IndexPath&, const IndexPath&) = default;
};

}  // namespace lexicorn
