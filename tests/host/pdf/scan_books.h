#pragma once

// Books for the OCR tests, made the way a scanned book comes about: groff
// typesets English prose into a PDF with a text layer, pdftoppm turns each
// page into a 300 dpi grey picture, img2pdf binds the pictures into a PDF without
// text, and qpdf turns every page a quarter clockwise (its /Rotate), for both.
// The text PDF is what the OCR is held against.
//
// Pages: 1 three paragraphs, 2 blank, 3 one short paragraph.

#include "lexicorn/reader/sentences/char_record.h"

#include <QRectF>
#include <QString>
#include <QStringList>

#include <vector>

namespace lexicorn::testing {

struct ScanBooks {
    QString text;       // typeset, with a text layer
    QString scan;       // the same pages as pictures only
    QString turnedText; // both turned a quarter clockwise
    QString turnedScan;
};

// Made on first use and shared by the tests of the program; a failure to
// make them fails the calling test.
const ScanBooks& scanBooks();

inline constexpr int prosePage = 1;
inline constexpr int blankPage = 2;
inline constexpr int shortPage = 3;

// A word of a page's lines: the characters between blanks, with the
// rectangle that holds them.
struct PageWord {
    QString text;
    QRectF box;
};
std::vector<PageWord> wordsOf(const PageLines& lines);

// The letters and digits of a text in lower case, for comparing OCR with
// typeset text without its punctuation, quotes and ligatures.
QString lettersOf(const QString& text);

// Pairs of indexes (into a, into b) of words whose letters agree, in order:
// the longest such sequence.
std::vector<std::pair<std::size_t, std::size_t>> matchWords(const std::vector<PageWord>& a, const std::vector<PageWord>& b);

QString textOf(const CharLine& line);
bool sameLines(const PageLines& a, const PageLines& b);

// The MD5 of a file's bytes in lower-case hexadecimal, as books are keyed.
QString md5Of(const QString& path);

// Sets an environment variable for the guard's lifetime (unset for a null
// value) and puts the old value back.
class ScopedEnvironment {
public:
    ScopedEnvironment(const char* name, const QString& value);
    ~ScopedEnvironment();
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    const char* name_;
    QByteArray previous_;
    bool had_;
};

}  // namespace lexicorn::testing
