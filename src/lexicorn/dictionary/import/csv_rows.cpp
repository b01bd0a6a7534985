#include "lexicorn/dictionary/import/csv_rows.h"

#include "lexicorn/dictionary/import/source_entry.h"

#include <array>
#include <cstring>

namespace lexicorn::dictimport {

namespace {

[[noreturn]] void fail(const QString& name, qint64 line, const QString& what)
{
    throw ImportError(QStringLiteral("%1:%2: %3").arg(name).arg(line).arg(what).toStdString());
}

// Bytes that end an unquoted field, or make it wrong (a quote).
constexpr std::array<bool, 256> fieldEnds = [] {
    std::array<bool, 256> ends{};
    for (unsigned char c : {',', '\n', '\r', '"'})
        ends[c] = true;
    return ends;
}();

qint64 countLineBreaks(std::string_view text)
{
    qint64 count = 0;
    const char* p = text.data();
    const char* end = p + text.size();
    while ((p = static_cast<const char*>(std::memchr(p, '\n', size_t(end - p))))) {
        ++count;
        ++p;
    }
    return count;
}

}  // namespace

std::string_view CsvField::text(std::string& scratch) const
{
    if (!doubledQuotes)
        return raw;
    scratch.clear();
    for (size_t at = 0; at < raw.size(); ++at) {
        scratch += raw[at];
        if (raw[at] == '"')
            ++at;  // the second of the pair
    }
    return scratch;
}

CsvRows::CsvRows(std::string_view bytes, QString name) : bytes_(bytes), name_(std::move(name))
{
    if (bytes_.starts_with("\xEF\xBB\xBF"))
        pos_ = 3;
}

bool CsvRows::next(std::vector<CsvField>& fields)
{
    fields.clear();
    if (pos_ >= bytes_.size())
        return false;
    rowLine_ = line_;
    for (;;) {
        const bool isQuoted = pos_ < bytes_.size() && bytes_[pos_] == '"';
        fields.push_back(isQuoted ? quoted() : unquoted(fields.size() + 1));
        if (pos_ >= bytes_.size())
            return true;
        const char c = bytes_[pos_++];
        if (c == ',')
            continue;
        if (c == '\r' && pos_ < bytes_.size() && bytes_[pos_] == '\n')
            ++pos_;
        ++line_;
        return true;
    }
}

CsvField CsvRows::quoted()
{
    const qint64 startLine = line_;
    const size_t start = ++pos_;
    bool doubled = false;
    for (;;) {
        const size_t quote = bytes_.find('"', pos_);
        if (quote == std::string_view::npos)
            fail(name_, startLine, QStringLiteral("a quoted field is never closed"));
        line_ += countLineBreaks(bytes_.substr(pos_, quote - pos_));
        pos_ = quote + 1;
        if (pos_ < bytes_.size() && bytes_[pos_] == '"') {  // "" stands for one quote
            doubled = true;
            ++pos_;
            continue;
        }
        if (pos_ < bytes_.size() && bytes_[pos_] != ',' && bytes_[pos_] != '\n' && bytes_[pos_] != '\r')
            fail(name_, line_, QStringLiteral("text after the closing quote of a field"));
        return {bytes_.substr(start, quote - start), doubled};
    }
}

CsvField CsvRows::unquoted(size_t column)
{
    const size_t start = pos_;
    const auto* p = reinterpret_cast<const unsigned char*>(bytes_.data());
    size_t end = pos_;
    while (end < bytes_.size() && !fieldEnds[p[end]])
        ++end;
    if (end < bytes_.size() && bytes_[end] == '"')
        fail(name_, line_, QStringLiteral("a quote inside an unquoted field (column %1)").arg(column));
    pos_ = end;
    return {bytes_.substr(start, end - start), false};
}

}  // namespace lexicorn::dictimport
