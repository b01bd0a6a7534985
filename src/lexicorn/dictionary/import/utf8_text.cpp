#include "lexicorn/dictionary/import/utf8_text.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace lexicorn::dictimport::utf8 {

namespace {

unsigned char byteAt(std::string_view text, size_t at)
{
    return at < text.size() ? static_cast<unsigned char>(text[at]) : 0;
}

bool isContinuation(unsigned char c)
{
    return (c & 0xC0) == 0x80;
}

// Bytes of the blank starting at text[at]; with controlsBlank, every
// control character counts as one (withoutCardMarkers makes them spaces).
size_t blankLength(std::string_view text, size_t at, bool controlsBlank)
{
    const unsigned char c = static_cast<unsigned char>(text[at]);
    if (c <= 0x20)
        return c == 0x20 || (c >= 0x09 && c <= 0x0D) || controlsBlank ? 1 : 0;
    if (c < 0xC2 || (c > 0xC2 && c < 0xE1) || c > 0xE3)
        return 0;  // most text: no blank starts with this byte
    const unsigned char c1 = byteAt(text, at + 1);
    const unsigned char c2 = byteAt(text, at + 2);
    switch (c) {
    case 0xC2:  // U+0085, U+00A0
        return c1 == 0x85 || c1 == 0xA0 ? 2 : 0;
    case 0xE1:  // U+1680
        return c1 == 0x9A && c2 == 0x80 ? 3 : 0;
    case 0xE2:  // U+2000..U+200A, U+2028, U+2029, U+202F, U+205F
        if (c1 == 0x80)
            return (c2 >= 0x80 && c2 <= 0x8A) || c2 == 0xA8 || c2 == 0xA9 || c2 == 0xAF ? 3 : 0;
        return c1 == 0x81 && c2 == 0x9F ? 3 : 0;
    case 0xE3:  // U+3000
        return c1 == 0x80 && c2 == 0x80 ? 3 : 0;
    default:
        return 0;
    }
}

// Bytes of the blank that ends the text; 0 for none.
size_t blankBefore(std::string_view text)
{
    const size_t n = text.size();
    for (size_t length = 1; length <= 3 && length <= n; ++length) {
        if (blankLength(text, n - length, false) == length)
            return length;
    }
    return 0;
}

void appendEscapedControl(std::string& out, unsigned char c)
{
    static const char hex[] = "0123456789abcdef";
    switch (c) {
    case '\n': out += "\\n"; return;
    case '\r': out += "\\r"; return;
    case '\t': out += "\\t"; return;
    case '\b': out += "\\b"; return;
    case '\f': out += "\\f"; return;
    default:
        out += "\\u00";
        out += hex[c >> 4];
        out += hex[c & 0xF];
    }
}

// What a byte may be, for the loops that copy text a run of ordinary bytes at a time.
enum ByteKind : unsigned char {
    Ordinary,
    Blank,        // '\t' '\n' '\v' '\f' '\r' ' '
    Control,      // the other control characters
    Escaped,      // '"' '\\'
    MaybeBlank,   // the first byte of a blank beyond ASCII (U+0085 ... U+3000), or of another character
};

constexpr std::array<ByteKind, 256> byteKinds = [] {
    std::array<ByteKind, 256> kinds{};
    for (int c = 0; c < 0x20; ++c)
        kinds[size_t(c)] = Control;
    for (unsigned char c : {'\t', '\n', '\v', '\f', '\r', ' '})
        kinds[c] = Blank;
    kinds['"'] = Escaped;
    kinds['\\'] = Escaped;
    for (unsigned char c : {0xC2, 0xE1, 0xE2, 0xE3})
        kinds[c] = MaybeBlank;
    return kinds;
}();

// Copies text into out, escaped for a JSON string when `json`, with its
// blanks as QString::simplified leaves them: runs of them one space, none at
// the ends. With controlsBlank, control characters count as blanks.
template <bool json, bool controlsBlank>
void appendSimplifiedText(std::string& out, std::string_view text)
{
    const auto* p = reinterpret_cast<const unsigned char*>(text.data());
    const auto* end = p + text.size();
    bool started = false;
    bool gap = false;
    while (p < end) {
        const auto* run = p;
        while (p < end && byteKinds[*p] == Ordinary)
            ++p;
        if (p > run) {
            if (started && gap)
                out += ' ';
            out.append(reinterpret_cast<const char*>(run), size_t(p - run));
            started = true;
            gap = false;
            continue;
        }
        const ByteKind kind = byteKinds[*p];
        size_t blank = 0;
        if (kind == Blank || (kind == Control && controlsBlank))
            blank = 1;
        else if (kind == MaybeBlank)
            blank = blankLength(text, size_t(p - reinterpret_cast<const unsigned char*>(text.data())), controlsBlank);
        if (blank) {
            gap = true;
            p += blank;
            continue;
        }
        if (started && gap)
            out += ' ';
        started = true;
        gap = false;
        if (json && kind == Escaped)
            (out += '\\') += char(*p);
        else if (json && kind == Control)
            appendEscapedControl(out, *p);
        else
            out += char(*p);
        ++p;
    }
}

// The text inside a JSON string: '"', '\\' and control characters escaped.
void appendEscaped(std::string& out, std::string_view text)
{
    const auto* p = reinterpret_cast<const unsigned char*>(text.data());
    const auto* end = p + text.size();
    while (p < end) {
        const auto* run = p;
        while (p < end && *p >= 0x20 && *p != '"' && *p != '\\')
            ++p;
        out.append(reinterpret_cast<const char*>(run), size_t(p - run));
        if (p == end)
            return;
        if (*p < 0x20)
            appendEscapedControl(out, *p);
        else
            (out += '\\') += char(*p);
        ++p;
    }
}

}  // namespace

bool isPlain(std::string_view text)
{
    const auto* p = reinterpret_cast<const unsigned char*>(text.data());
    const auto* end = p + text.size();
    while (p < end) {
        // Eight ASCII bytes at a time: most of a dictionary's markup and English.
        if (end - p >= 8) {
            uint64_t word;
            std::memcpy(&word, p, 8);
            if (!(word & 0x8080808080808080ull)) {
                p += 8;
                continue;
            }
        }
        const unsigned char c = *p;
        if (c < 0x80) {
            ++p;
            continue;
        }
        if (c >= 0xC2 && c <= 0xDF) {
            if (end - p < 2 || !isContinuation(p[1]))
                return false;
            p += 2;
            continue;
        }
        if (c < 0xE0 || c > 0xEF || end - p < 3 || !isContinuation(p[1]) || !isContinuation(p[2]))
            return false;  // not well-formed, or a character above the plane
        if ((c == 0xE0 && p[1] < 0xA0) || (c == 0xED && p[1] > 0x9F))
            return false;  // overlong, or a surrogate
        if ((c == 0xEF && p[1] == 0xBB && p[2] == 0xBF) || (c == 0xE0 && p[1] == 0xBC && p[2] == 0x92)
            || (c == 0xE2 && p[1] == 0x84 && p[2] == 0xAA))
            return false;  // U+FEFF, U+0F12, U+212A
        p += 3;
    }
    return true;
}

size_t blankAt(std::string_view text, size_t at)
{
    return at < text.size() ? blankLength(text, at, false) : 0;
}

std::string_view trimmed(std::string_view text)
{
    while (const size_t blank = blankAt(text, 0))
        text.remove_prefix(blank);
    while (const size_t blank = blankBefore(text))
        text.remove_suffix(blank);
    return text;
}

void appendSimplified(std::string& out, std::string_view text)
{
    appendSimplifiedText<false, false>(out, text);
}

void appendClean(std::string& out, std::string_view text)
{
    appendSimplifiedText<false, true>(out, text);
}

bool cleansToNothing(std::string_view text)
{
    for (size_t i = 0; i < text.size();) {
        const size_t blank = blankLength(text, i, true);
        if (!blank)
            return false;
        i += blank;
    }
    return true;
}

void appendJsonString(std::string& out, std::string_view text)
{
    out += '"';
    appendEscaped(out, text);
    out += '"';
}

void appendCleanJsonString(std::string& out, std::string_view text)
{
    out += '"';
    appendSimplifiedText<true, true>(out, text);
    out += '"';
}

}  // namespace lexicorn::dictimport::utf8
