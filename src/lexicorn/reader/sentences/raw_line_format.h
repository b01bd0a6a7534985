#pragma once

#include "lexicorn/reader/sentences/char_record.h"

#include <QRectF>
#include <QString>
#include <QStringList>

namespace lexicorn {

// The selected characters of each line, as text, for the lines that have
// any. A character is selected when the centre of its rectangle lies in the
// selection.
QStringList selectedLineTexts(const PageLines& lines, const QRectF& selection);

// The text of a selection spanning several lines, rebuilt as running text.
// Each line's selected characters are trimmed and their runs of
// blanks made single; the lines are then joined with one blank, except
// that a word broken with a hyphen at a line end ("vocab-" then "ulary") is
// joined again without the hyphen, and Chinese text runs on without a blank.
QString rawLineFormat(const PageLines& lines, const QRectF& selection);

}  // namespace lexicorn
