#pragma once

#include <QRectF>

#include <vector>

namespace lexicorn {

// One UTF-16 unit of a page's text with its rectangle on the page, in points.
// The reader's page text gives these per line; the sentence cutter copies
// them and sets the two flags on the copies.
struct CharRecord {
    char16_t ch = 0;
    QRectF rect;
    bool lineEnd = false;     // last character of a text line, or of a sentence
    bool sectionEnd = false;  // last character of a sentence that closes a section
};

using CharLine = std::vector<CharRecord>;     // one text line, left to right
using PageLines = std::vector<CharLine>;      // a page's lines in reading order
using Sentence = std::vector<CharRecord>;     // also used for a section
using Sentences = std::vector<Sentence>;

// A line of digits alone: a margin line number or a page number, a line of
// its own that is never part of a body sentence.
inline bool isNumberLine(const CharLine& line)
{
    bool digits = false;
    for (const CharRecord& record : line) {
        if (record.ch >= u'0' && record.ch <= u'9')
            digits = true;
        else if (record.ch != u' ')
            return false;
    }
    return digits;
}

}  // namespace lexicorn
