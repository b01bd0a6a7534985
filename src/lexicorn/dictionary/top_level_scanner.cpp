#include "lexicorn/dictionary/top_level_scanner.h"

#include <array>
#include <cstring>

namespace lexicorn {

namespace {

constexpr std::array<bool, 256> makeTable(std::string_view members)
{
    std::array<bool, 256> table{};
    for (char c : members)
        table[static_cast<unsigned char>(c)] = true;
    return table;
}

constexpr auto isWhitespace = makeTable(" \t\n\r");
constexpr auto isBracketOrQuote = makeTable("\"[]{}");
constexpr auto endsScalar = makeTable(" \t\n\r,]}");

class Scanner {
public:
    explicit Scanner(std::string_view json) : json_(json) {}

    size_t pos = 0;

    bool atEnd() const { return pos >= json_.size(); }
    char peek() const { return json_[pos]; }

    void skipWhitespace()
    {
        while (pos < json_.size() && isWhitespace[static_cast<unsigned char>(json_[pos])])
            ++pos;
    }

    // pos is at an opening quote; moves past the closing one.
    bool skipString(bool* hadEscapes = nullptr)
    {
        const char* data = json_.data();
        size_t at = pos + 1;
        for (;;) {
            const void* found = std::memchr(data + at, '"', json_.size() - at);
            if (!found)
                return false;
            const size_t quote = size_t(static_cast<const char*>(found) - data);
            size_t backslashes = 0;
            while (quote - backslashes > pos + 1 && data[quote - backslashes - 1] == '\\')
                ++backslashes;
            if (backslashes % 2 == 0) {  // an even run of backslashes escapes only itself
                if (hadEscapes)
                    *hadEscapes = std::memchr(data + pos + 1, '\\', quote - pos - 1) != nullptr;
                pos = quote + 1;
                return true;
            }
            at = quote + 1;
        }
    }

    // Moves past one value: a string, a bracketed value with everything in
    // it, or a scalar token.
    bool skipValue()
    {
        const char first = json_[pos];
        if (first == '"')
            return skipString();
        if (first != '[' && first != '{') {
            const size_t start = pos;
            while (pos < json_.size() && !endsScalar[static_cast<unsigned char>(json_[pos])])
                ++pos;
            return pos > start;
        }
        size_t depth = 0;
        const size_t size = json_.size();
        while (pos < size) {
            const char c = json_[pos];
            if (!isBracketOrQuote[static_cast<unsigned char>(c)]) {
                ++pos;
                continue;
            }
            if (c == '"') {
                if (!skipString())
                    return false;
                continue;
            }
            ++pos;
            if (c == '[' || c == '{') {
                ++depth;
            } else if (--depth == 0) {
                return true;
            }
        }
        return false;
    }

private:
    std::string_view json_;
};

QString at(const char* what, size_t offset)
{
    return QStringLiteral("%1 at byte %2").arg(QLatin1StringView(what)).arg(offset);
}

}  // namespace

QString scanTopLevelObject(std::string_view json, std::vector<TopLevelEntry>& entries)
{
    Scanner scanner(json);
    if (json.starts_with("\xEF\xBB\xBF"))
        scanner.pos = 3;  // a UTF-8 byte-order mark
    scanner.skipWhitespace();
    if (scanner.atEnd() || scanner.peek() != '{')
        return at("the top level is not an object", scanner.pos);
    ++scanner.pos;
    scanner.skipWhitespace();
    if (!scanner.atEnd() && scanner.peek() == '}') {
        ++scanner.pos;
    } else {
        for (;;) {
            if (scanner.atEnd() || scanner.peek() != '"')
                return at("expected a key", scanner.pos);
            TopLevelEntry entry;
            const size_t keyStart = scanner.pos;
            if (!scanner.skipString(&entry.keyHasEscapes))
                return at("unterminated key", keyStart);
            entry.rawKey = json.substr(keyStart + 1, scanner.pos - keyStart - 2);
            scanner.skipWhitespace();
            if (scanner.atEnd() || scanner.peek() != ':')
                return at("expected ':'", scanner.pos);
            ++scanner.pos;
            scanner.skipWhitespace();
            if (scanner.atEnd())
                return at("expected a value", scanner.pos);
            entry.valueOffset = scanner.pos;
            if (!scanner.skipValue())
                return at("unterminated value", entry.valueOffset);
            entry.valueLength = scanner.pos - entry.valueOffset;
            entries.push_back(entry);
            scanner.skipWhitespace();
            if (scanner.atEnd())
                return at("unterminated object", scanner.pos);
            if (scanner.peek() == '}') {
                ++scanner.pos;
                break;
            }
            if (scanner.peek() != ',')
                return at("expected ',' or '}'", scanner.pos);
            ++scanner.pos;
            scanner.skipWhitespace();
        }
    }
    scanner.skipWhitespace();
    if (!scanner.atEnd())
        return at("unexpected content after the object", scanner.pos);
    return {};
}

}  // namespace lexicorn
