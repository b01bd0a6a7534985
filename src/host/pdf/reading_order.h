#pragma once

// Puts a page's text lines in reading order when the page is set in columns:
// each column is read to its end before the next, left to right, and a line
// that crosses the gap between columns (a title, a running head, a centred
// page number) is read where it stands, between the bands of columns above
// and below it. Margin line numbers are a narrow column of their own.
//
// Poppler now and then splits one printed line into two of its lines (a
// change of font, a wide gap); pieces that stand on one row with no gap
// between columns between them are joined again first.
//
// A page with no gap between columns keeps its lines in the order given, so
// one-column pages are read exactly as their text came.

#include "lexicorn/reader/sentences/char_record.h"

#include <vector>

namespace lexicorn::host {

// A vertical strip of the page, [left, right] in points, that separates columns.
struct Gutter {
    double left = 0;
    double right = 0;
};

// The strips between columns: wide enough (a fraction of the text height),
// crossed by few lines, with several lines side by side on either hand.
std::vector<Gutter> findGutters(const PageLines& lines);

// The lines joined and in reading order (see above).
PageLines inReadingOrder(PageLines lines);

// The narrowest strip, in text heights, that parts two columns. A word gap is
// as wide now and then, but not on every line down the page; a line may be
// split in pieces at gaps this wide, as it is joined again when no column
// edge runs through the gap.
inline constexpr double columnGapInHeights = 0.4;

}  // namespace lexicorn::host
