#pragma once

// Made-up page text for the sentence cutter: lines of evenly spaced
// characters with chosen positions, so gaps and right edges are known.

#include "lexicorn/reader/sentences/char_record.h"

#include <QString>

#include <initializer_list>
#include <ostream>
#include <vector>

// Readable QStrings in test failure messages.
inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

namespace lexicorn::testing {

constexpr double lineLeft = 50.0;
constexpr double fullRight = 450.0;   // right edge of a full line
constexpr double lineHeight = 12.0;
constexpr double linePitch = 15.0;    // top to top; leaves a 3-point gap

struct PlannedLine {
    QString text;
    double top;
    double right = fullRight;
    double height = lineHeight;
};

// One line whose characters share the width from lineLeft to right.
CharLine makeLine(const PlannedLine& plan);
PageLines makePage(std::initializer_list<PlannedLine> plans);
// Full-width lines, one pitch apart.
PageLines regularPage(std::initializer_list<QString> texts);

// Also the texts of a page's lines: a line is a Sentence too.
QString textOf(const Sentence& sentence);
QStringList textsOf(const Sentences& sentences);
// Offsets of the characters that have the flag set, e.g. &CharRecord::lineEnd.
std::vector<qsizetype> flagged(const Sentence& sentence, bool CharRecord::*flag);

}  // namespace lexicorn::testing
