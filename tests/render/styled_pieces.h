#pragma once

// Styled text written out for comparison in tests: each stretch of equal
// attributes as «text» followed by its attributes in braces, an unstyled
// stretch as «text» alone. Two texts describe alike exactly when their text
// and the attributes of every unit are alike, and a failure shows where.

#include "lexicorn/render/styled_text.h"

#include <QString>

#include <string>
#include <utility>
#include <vector>

namespace lexicorn::testing {

std::string describe(const TextAttributes& attributes);
std::string describe(const StyledText& text);

// A styled text made of pieces, each with its attributes (none: unstyled).
using Pieces = std::vector<std::pair<QString, TextAttributes>>;
std::string describe(const Pieces& pieces);

// The table's attribute sets, written out from the colours and sizes so a
// test does not take them from the code under test.
TextAttributes colourAndSize(int red, int green, int blue, double size, double alpha = 1.0);

}  // namespace lexicorn::testing
