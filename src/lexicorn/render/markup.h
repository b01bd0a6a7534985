#pragma once

// Small conversions between bold text runs and tag markup, and tests that
// tell Chinese text from English. They hold no state.

#include "lexicorn/render/styled_text.h"

#include <QString>

#include <vector>

namespace lexicorn {

// Repairs words that PDF text extraction split after a narrow letter: every
// "i" followed by two blanks loses the blanks, then every "l" followed by two.
QString pdfRepair(const QString& text);

// True when the text is one or more characters, all of them in U+4E00 (一)
// to U+9FA5 (龥); any blank or line break makes it false.
bool isChinese(const QString& text);

// True as soon as one UTF-16 unit lies in U+4E01 to U+9FFE; full-width
// punctuation such as "，" does not count.
bool includeChinese(const QString& text);

struct TextRange {
    qsizetype start = 0;  // UTF-16 units
    qsizetype length = 0;
    bool operator==(const TextRange&) const = default;
};

// The ranges of bold-like text. A run counts when its font name contains
// "Medium" or its font's traits share a bit with mask (boldTrait is 2).
// Counted runs that touch, or that have only white space and line breaks
// between them, form one range; the range starts at its first counted run
// and ends with its last, so white space at either end of a bold stretch is
// inside only when it is itself counted.
std::vector<TextRange> rangesOfTextTrait(const StyledText& text, unsigned mask);

// The plain text with every bold range (rangesOfTextTrait with boldTrait)
// replaced by format applied to the range's text: "%@" stands for the text
// and "%%" for a percent sign, as in "<b>%@</b>" or "**%@**".
QString highlighTextWithFormat(const StyledText& text, const QString& format);

// Turns "<b>" ... "</b>" pairs into bold runs drawn red (255, 0, 0): the font
// at the start of each pair's text, with the bold trait added at the same
// size. An opening tag pairs with a closing tag only when no other tag stands
// between them; an opening tag without one makes no bold run. Every tag found
// is removed, paired or not.
StyledText attrTextFromBoldTagText(const StyledText& text);

}  // namespace lexicorn
