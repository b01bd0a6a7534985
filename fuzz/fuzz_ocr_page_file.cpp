// The file a recognised page is kept in (the OCR disk cache), as read back
// from disk: any bytes, since the file may be cut short or damaged. What the
// reader accepts must be page text the reader can use (every line a
// well-formed text with one ordered, bounded rectangle per unit), and must
// survive being written and read again unchanged, since a page is answered
// from its file from then on.

#include "host/pdf/ocr_page_file.h"

#include <QByteArray>
#include <QStringView>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

using lexicorn::CharLine;
using lexicorn::CharRecord;
using lexicorn::PageLines;
using namespace lexicorn::host;

void check(bool holds, const char* what)
{
    if (!holds) {
        std::fprintf(stderr, "OCR page file: %s\n", what);
        std::abort();
    }
}

bool sameBits(double a, double b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

bool sameLines(const PageLines& a, const PageLines& b)
{
    if (a.size() != b.size())
        return false;
    for (std::size_t l = 0; l < a.size(); ++l) {
        if (a[l].size() != b[l].size())
            return false;
        for (std::size_t i = 0; i < a[l].size(); ++i) {
            const CharRecord& p = a[l][i];
            const CharRecord& q = b[l][i];
            if (p.ch != q.ch || !sameBits(p.rect.left(), q.rect.left()) || !sameBits(p.rect.top(), q.rect.top())
                || !sameBits(p.rect.right(), q.rect.right()) || !sameBits(p.rect.bottom(), q.rect.bottom()))
                return false;
        }
    }
    return true;
}

void checkUsable(const PageLines& lines)
{
    for (const CharLine& line : lines) {
        check(!line.empty(), "an empty line was accepted");
        std::u16string text;
        for (const CharRecord& record : line) {
            text.push_back(record.ch);
            const QRectF& r = record.rect;
            for (const double edge : {r.left(), r.top(), r.right(), r.bottom()})
                check(std::isfinite(edge) && std::fabs(edge) <= 1e7, "an edge out of bounds was accepted");
            check(r.right() >= r.left() && r.bottom() >= r.top(), "an inverted rectangle was accepted");
        }
        check(QStringView(text).isValidUtf16(), "a broken UTF-16 text was accepted");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size));
    for (int pageNo = 1; pageNo <= 3; ++pageNo) {
        const std::optional<PageLines> read = decodeOcrPage(bytes, pageNo);
        if (!read)
            continue;
        checkUsable(*read);
        check(!decodeOcrPage(bytes, pageNo + 3), "a file was accepted for another page");

        // Written again, the page is the one read, to a hundredth of a point,
        // and from then on it stays exactly the same.
        const QByteArray written = encodeOcrPage(pageNo, *read);
        const std::optional<PageLines> again = decodeOcrPage(written, pageNo);
        check(again.has_value(), "a page read could not be read back once written");
        check(again->size() == read->size(), "writing changed the number of lines");
        for (std::size_t l = 0; l < read->size(); ++l) {
            check((*again)[l].size() == (*read)[l].size(), "writing changed a line's length");
            for (std::size_t i = 0; i < (*read)[l].size(); ++i) {
                const QRectF& a = (*read)[l][i].rect;
                const QRectF& b = (*again)[l][i].rect;
                check((*read)[l][i].ch == (*again)[l][i].ch, "writing changed a character");
                check(std::fabs(a.left() - b.left()) <= 0.0051 && std::fabs(a.top() - b.top()) <= 0.0051
                          && std::fabs(a.right() - b.right()) <= 0.0051 && std::fabs(a.bottom() - b.bottom()) <= 0.0051,
                      "writing moved a rectangle by more than rounding");
            }
        }
        const std::optional<PageLines> third = decodeOcrPage(encodeOcrPage(pageNo, *again), pageNo);
        check(third && sameLines(*third, *again), "a page written twice changed the second time");
    }
    return 0;
}
