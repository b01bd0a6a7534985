#pragma once

// Text selection on one page: the characters between two points in reading
// order, as a reader selects text by dragging over it.

#include "lexicorn/reader/sentences/char_record.h"

#include <QPointF>
#include <QRectF>
#include <QString>

#include <vector>

namespace lexicorn::host {

// A character of the page by its line and its place in the line.
struct CharPlace {
    int line = 0;
    int index = 0;
    friend auto operator<=>(const CharPlace&, const CharPlace&) = default;
};

struct TextSelection {
    CharPlace first;  // both ends included
    CharPlace last;
    bool isEmpty = true;
};

// The character nearest a point: on the line whose band holds the point (or
// the nearest line), the character whose horizontal extent holds it (or the
// nearest). Nothing on a page without text.
std::optional<CharPlace> charNear(const PageLines& lines, const QPointF& point);

// The characters from the one nearest `from` to the one nearest `to`, in
// reading order, whichever point comes first. With wholeWord the ends grow to
// the words they stand in (a word: a run without blanks).
TextSelection selectBetween(const PageLines& lines, const QPointF& from, const QPointF& to, bool wholeWord);

// One rectangle per line of the selection: the union of its characters.
std::vector<QRectF> lineRects(const PageLines& lines, const TextSelection& selection);

// The selected text, lines set apart by three blanks as the page's text layer
// lays them out.
QString selectedText(const PageLines& lines, const TextSelection& selection);

}  // namespace lexicorn::host
