// Page text of any PDF to the reading order (columns), the sentence cutter, the section grouping and the
// reader's mouse selection (the characters between two points). The
// characters and their rectangles come from the file, so nothing about them
// can be trusted: lines may be empty, rectangles may be NaN, infinite, huge
// or negative. Whatever the page, the cutter must end, lose no character,
// invent none, and give sentences and sections that the popup can rely on.
//
// Input: a stream of steps, each starting with one control byte.
//   0        a new line; the next byte b (when there is one), below 128,
//            moves the line's top by (b - 64) / 4 points from the usual
//            spacing, so lines may overlap or leave wide gaps; from 128 on,
//            the line stands beside the one before, b - 128 points to its
//            right, as in a second column or after a margin number.
//   other    one character: the low four bits pick it from `characters`, the
//            high four bits pick its rectangle:
//              0 to 9    laid out after the previous character, 8 + mode high
//              10 to 13  x, y, width, height from `oddValues`, one nibble
//                        each of the next two bytes
//              14, 15    x, y, width, height as raw doubles from the next
//                        32 bytes
// Missing payload bytes read as zero.

#include "host/app/text_selection.h"
#include "host/pdf/reading_order.h"
#include "lexicorn/reader/sentences/hook_pdf_page_text_tool.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <vector>

namespace {

using lexicorn::CharLine;
using lexicorn::CharRecord;
using lexicorn::HookPDFPageTextTool;
using lexicorn::PageLines;
using lexicorn::Sentence;
using lexicorn::Sentences;

constexpr char16_t characters[16] = {
    u'.', u'!', u'?', u';', u')', u' ', u'\u3002', u'\uFF01', u'\uFF1B', u'\uFF1F',  // 。！；？
    u'a', u'B', u'(', u'-', u'\u4E2D', u'\xA0',
};

constexpr double inf = std::numeric_limits<double>::infinity();
const double oddValues[16] = {
    std::numeric_limits<double>::quiet_NaN(),
    inf,
    -inf,
    0.0,
    -0.0,
    -1.0,
    1e300,
    -1e300,
    std::numeric_limits<double>::max(),
    std::numeric_limits<double>::denorm_min(),
    5.0,
    10.0,
    12.0,
    100.0,
    700.0,
    -70.0,
};

class Reader {
public:
    Reader(const uint8_t* data, size_t size) : data_(data), size_(size) {}
    bool done() const { return at_ >= size_; }
    uint8_t byte() { return at_ < size_ ? data_[at_++] : 0; }
    double rawDouble()
    {
        unsigned char bytes[sizeof(double)];
        for (unsigned char& b : bytes)
            b = byte();
        double value;
        std::memcpy(&value, bytes, sizeof value);
        return value;
    }

private:
    const uint8_t* data_;
    size_t size_;
    size_t at_ = 0;
};

PageLines pageOf(const uint8_t* data, size_t size)
{
    PageLines lines(1);
    Reader in(data, size);
    double top = 50.0;
    double x = 40.0;
    while (!in.done()) {
        const uint8_t control = in.byte();
        if (control == 0) {
            const uint8_t move = in.byte();
            if (move < 128) {
                top += 14.0 + (double(move) - 64.0) / 4.0;
                x = 40.0;
            } else {
                x += double(move - 128);
            }
            lines.emplace_back();
            continue;
        }
        CharRecord record;
        record.ch = characters[control & 0x0F];
        const int mode = control >> 4;
        if (mode < 10) {
            const double height = 8.0 + mode;
            record.rect = QRectF(x, top, height / 2, height);
            x += height / 2;
        } else if (mode < 14) {
            const uint8_t a = in.byte();
            const uint8_t b = in.byte();
            record.rect = QRectF(oddValues[a & 0x0F], oddValues[a >> 4], oddValues[b & 0x0F], oddValues[b >> 4]);
        } else {
            const double rx = in.rawDouble();
            const double ry = in.rawDouble();
            const double rw = in.rawDouble();
            const double rh = in.rawDouble();
            record.rect = QRectF(rx, ry, rw, rh);
        }
        lines.back().push_back(record);
    }
    return lines;
}

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "page text invariant broken: %s\n", what);
    std::abort();
}

void check(bool holds, const char* what)
{
    if (!holds)
        fail(what);
}

// Bit-for-bit equality, so that NaN rectangles compare equal to themselves.
bool sameBits(double a, double b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

bool sameCharacter(const CharRecord& a, const CharRecord& b)
{
    return a.ch == b.ch && sameBits(a.rect.x(), b.rect.x()) && sameBits(a.rect.y(), b.rect.y())
        && sameBits(a.rect.width(), b.rect.width()) && sameBits(a.rect.height(), b.rect.height());
}

bool sameRecord(const CharRecord& a, const CharRecord& b)
{
    return sameCharacter(a, b) && a.lineEnd == b.lineEnd && a.sectionEnd == b.sectionEnd;
}

bool endsAnywhere(char16_t c)
{
    return c == u'\u3002' || c == u'\uFF01' || c == u'\uFF1B' || c == u'\uFF1F';
}

// The sentences against the page they were cut from.
void checkSentences(const PageLines& lines, const Sentences& sentences)
{
    // Where each sentence starts in the run of all their records.
    std::vector<const CharRecord*> out;
    std::vector<bool> startsSentence;
    std::vector<bool> lastOfSentence;
    for (const Sentence& sentence : sentences) {
        check(!sentence.empty(), "an empty sentence");
        check(sentence.front().ch != u' ', "a sentence starts with a blank");
        check(sentence.back().lineEnd, "a sentence's last character has no line end");
        for (std::size_t i = 0; i < sentence.size(); ++i) {
            out.push_back(&sentence[i]);
            startsSentence.push_back(i == 0);
            lastOfSentence.push_back(i + 1 == sentence.size());
            if (i + 1 < sentence.size()) {
                check(!sentence[i].sectionEnd, "a section end inside a sentence");
                check(!endsAnywhere(sentence[i].ch), "a full-width stop inside a sentence");
            }
        }
    }

    // Walk the page and the sentences together: every character appears once,
    // in order, except blanks that would have started a sentence.
    std::size_t next = 0;
    for (const CharLine& line : lines) {
        for (std::size_t i = 0; i < line.size(); ++i) {
            const CharRecord& in = line[i];
            if (next < out.size() && sameCharacter(in, *out[next])) {
                const bool lastOfLine = i + 1 == line.size();
                check(out[next]->lineEnd == (lastOfLine || lastOfSentence[next]),
                      "line end set on a character that ends neither its line nor its sentence, or missing");
                ++next;
                continue;
            }
            check(in.ch == u' ', "a character other than a blank was lost or reordered");
            check(next == out.size() || startsSentence[next], "a blank inside a sentence was dropped");
        }
    }
    check(next == out.size(), "the sentences hold characters the page does not have");
}

void checkSections(const Sentences& sentences, const Sentences& sections)
{
    std::vector<CharRecord> fromSentences;
    for (const Sentence& sentence : sentences)
        fromSentences.insert(fromSentences.end(), sentence.begin(), sentence.end());
    std::vector<CharRecord> fromSections;
    for (std::size_t s = 0; s < sections.size(); ++s) {
        const Sentence& section = sections[s];
        check(!section.empty(), "an empty section");
        for (std::size_t i = 0; i + 1 < section.size(); ++i)
            check(!section[i].sectionEnd, "a section goes on past a section end");
        if (s + 1 < sections.size())
            check(section.back().sectionEnd, "a section other than the last stops without a section end");
        fromSections.insert(fromSections.end(), section.begin(), section.end());
    }
    check(fromSections.size() == fromSentences.size(), "sections and sentences hold different numbers of characters");
    for (std::size_t i = 0; i < fromSections.size(); ++i)
        check(sameRecord(fromSections[i], fromSentences[i]), "sections differ from the sentences they group");
}

// Orders doubles by their bits, NaN included, to compare two arrays as multisets.
std::vector<uint64_t> bitsSorted(const std::vector<double>& values)
{
    std::vector<uint64_t> bits(values.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        std::memcpy(&bits[i], &values[i], sizeof(double));
    std::sort(bits.begin(), bits.end());
    return bits;
}

void checkMedian(const std::vector<double>& values)
{
    std::vector<double> work = values;
    const double median = HookPDFPageTextTool::findMedian(work.data(), int(work.size()));
    check(bitsSorted(work) == bitsSorted(values), "findMedian lost or duplicated elements");
    if (values.empty()) {
        check(median == 0.0, "findMedian of nothing is not 0");
        return;
    }
    check(std::any_of(values.begin(), values.end(), [&](double v) { return sameBits(v, median); }),
          "findMedian returned a value not in its input");
    if (std::none_of(values.begin(), values.end(), [](double v) { return std::isnan(v); })) {
        std::vector<double> sorted = values;
        std::nth_element(sorted.begin(), sorted.begin() + std::ptrdiff_t((sorted.size() - 1) / 2), sorted.end());
        check(median == sorted[(sorted.size() - 1) / 2], "findMedian is not the lower middle element");
    }
}

// The reading order moves lines and joins pieces of one printed line: every
// character stays, once, and only blanks between joined pieces are new.
void checkReadingOrder(const PageLines& lines, const PageLines& ordered)
{
    const auto characters = [](const PageLines& page) {
        std::vector<std::vector<unsigned char>> all;
        for (const CharLine& line : page) {
            for (const CharRecord& record : line) {
                if (record.ch == u' ')
                    continue;
                std::vector<unsigned char> bytes(sizeof record.ch + 4 * sizeof(double));
                const double edges[4] = {record.rect.x(), record.rect.y(), record.rect.width(), record.rect.height()};
                std::memcpy(bytes.data(), &record.ch, sizeof record.ch);
                std::memcpy(bytes.data() + sizeof record.ch, edges, sizeof edges);
                all.push_back(std::move(bytes));
            }
        }
        std::sort(all.begin(), all.end());
        return all;
    };
    check(characters(lines) == characters(ordered), "the reading order lost, doubled or changed a character");
    check(ordered.size() <= lines.size(), "the reading order made more lines than it was given");
}

bool validPlace(const PageLines& lines, const lexicorn::host::CharPlace& place)
{
    return place.line >= 0 && place.line < int(lines.size()) && place.index >= 0
        && place.index < int(lines[std::size_t(place.line)].size());
}

// A drag between two points, in either direction, with and without whole
// words: the ends are characters of the page in reading order, the same
// whichever point came first, and every selected line has its rectangle.
void checkSelection(const PageLines& lines, const QPointF& from, const QPointF& to)
{
    using namespace lexicorn::host;
    const bool anyText = std::any_of(lines.begin(), lines.end(), [](const CharLine& line) { return !line.empty(); });
    // Rectangles of sane numbers: then some character is always nearest.
    const auto sane = [](double v) { return std::isfinite(v) && std::fabs(v) < 1e100; };
    const bool saneRects = std::all_of(lines.begin(), lines.end(), [&](const CharLine& line) {
        return std::all_of(line.begin(), line.end(), [&](const CharRecord& r) {
            return sane(r.rect.x()) && sane(r.rect.y()) && sane(r.rect.width()) && sane(r.rect.height());
        });
    });
    for (const bool wholeWord : {false, true}) {
        const TextSelection forward = selectBetween(lines, from, to, wholeWord);
        const TextSelection backward = selectBetween(lines, to, from, wholeWord);
        check(anyText || forward.isEmpty, "a selection on a page without text");
        check(!anyText || !saneRects || !forward.isEmpty, "nothing selected on a page with text");
        if (forward.isEmpty)
            continue;
        check(validPlace(lines, forward.first) && validPlace(lines, forward.last), "a selection end outside the page's text");
        check(forward.first <= forward.last, "a selection ends before it starts");
        check(forward.first == backward.first && forward.last == backward.last, "a selection depends on the drag's direction");
        check(lineRects(lines, forward).size() <= std::size_t(forward.last.line - forward.first.line + 1),
              "more selection rectangles than selected lines");
        (void)selectedText(lines, forward);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const PageLines lines = pageOf(data, size);

    double bodyHeight = -12345.0;
    const Sentences sentences = HookPDFPageTextTool::cutSentences(lines, &bodyHeight);
    checkSentences(lines, sentences);
    checkSections(sentences, HookPDFPageTextTool::sectionsOfSentences(sentences));

    // The same page as the reader gives it: in reading order, then cut.
    const PageLines ordered = lexicorn::host::inReadingOrder(lines);
    checkReadingOrder(lines, ordered);
    checkSentences(ordered, HookPDFPageTextTool::cutSentences(ordered, nullptr));

    // The body height is the median of the lines' median heights, and an
    // empty line's median is 0: it is 0 or some character's height.
    bool known = sameBits(bodyHeight, 0.0);
    std::vector<double> heights;
    std::vector<double> lefts;
    for (const CharLine& line : lines) {
        for (const CharRecord& record : line) {
            heights.push_back(record.rect.height());
            lefts.push_back(record.rect.x());
            known = known || sameBits(bodyHeight, record.rect.height());
        }
    }
    check(known, "the body height is no character's height");

    checkMedian(heights);
    checkMedian(lefts);

    // Drag points from the first and last bytes, across the usual page area.
    if (size > 0)
        checkSelection(lines, QPointF(data[0] * 3.0, data[size - 1] * 3.0), QPointF(data[size / 2] * 3.0, data[0] * 2.0));
    return 0;
}
