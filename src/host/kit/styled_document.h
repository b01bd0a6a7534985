#pragma once

// Styled text in a QTextDocument and back. Foreground, background, font size
// (points), font name, bold and italic come back exactly as they went in.
// Line breaks go in as line separators inside one paragraph, so a break keeps
// the attributes of its run; paragraphs made by typing Enter read back as "\n"
// too (a U+2028 in the text itself reads back as "\n").

#include "lexicorn/render/styled_text.h"

#include <QColor>
#include <QTextCharFormat>

class QTextDocument;

namespace lexicorn::host::ui {

QColor toQColor(const Rgba& colour);
Rgba toRgba(const QColor& colour);

QTextCharFormat charFormatOf(const TextAttributes& attributes);
TextAttributes attributesOf(const QTextCharFormat& format);

// Replaces the document's content.
void setStyledText(QTextDocument& document, const StyledText& text);
StyledText styledTextOf(const QTextDocument& document);

}  // namespace lexicorn::host::ui
