#include "lexicorn/render/styled_text.h"

#include <algorithm>
#include <iterator>

namespace lexicorn {

namespace {

// The part of a range that lies in a text of the given size: [start, end).
struct Span {
    qsizetype start;
    qsizetype end;
};

Span clamped(qsizetype size, qsizetype start, qsizetype length)
{
    const qsizetype from = std::clamp<qsizetype>(start, 0, size);
    const qsizetype to = std::clamp<qsizetype>(start + std::max<qsizetype>(length, 0), from, size);
    return {from, to};
}

}  // namespace

void TextAttributes::merge(const TextAttributes& other)
{
    if (other.foreground)
        foreground = other.foreground;
    if (other.fontSize)
        fontSize = other.fontSize;
    if (other.fontName)
        fontName = other.fontName;
    if (other.bold)
        bold = true;
    if (other.background)
        background = other.background;
    if (other.italic)
        italic = true;
}

StyledText::StyledText(QString text, const TextAttributes& attributes) : text_(std::move(text))
{
    if (!text_.isEmpty())
        segments_.push_back({0, text_.size(), attributes});
}

void StyledText::reserve(qsizetype units, std::size_t runs)
{
    text_.reserve(units);
    segments_.reserve(runs);
}

void StyledText::append(const QString& text, const TextAttributes& attributes)
{
    if (text.isEmpty())
        return;
    const qsizetype start = text_.size();
    text_.append(text);
    if (!segments_.empty() && segments_.back().attributes == attributes)
        segments_.back().length += text.size();
    else
        segments_.push_back({start, text.size(), attributes});
}

void StyledText::append(const StyledText& other)
{
    if (other.isEmpty())
        return;
    const qsizetype offset = text_.size();
    text_.append(other.text_);
    auto segment = other.segments_.begin();
    if (!segments_.empty() && segments_.back().attributes == segment->attributes) {
        segments_.back().length += segment->length;
        ++segment;
    }
    for (; segment != other.segments_.end(); ++segment)
        segments_.push_back({segment->start + offset, segment->length, segment->attributes});
}

std::size_t StyledText::splitAt(qsizetype position)
{
    // The first segment starting after position; the one before holds it.
    const auto after = std::upper_bound(segments_.begin(), segments_.end(), position,
                                        [](qsizetype at, const Run& segment) { return at < segment.start; });
    if (after == segments_.begin())
        return 0;
    const auto holder = std::prev(after);
    const qsizetype holderEnd = holder->start + holder->length;
    if (holder->start == position)
        return std::size_t(holder - segments_.begin());
    if (position >= holderEnd)
        return std::size_t(after - segments_.begin());
    const std::size_t tailIndex = std::size_t(after - segments_.begin());
    Run tail{position, holderEnd - position, holder->attributes};
    holder->length = position - holder->start;
    segments_.insert(after, std::move(tail));
    return tailIndex;
}

void StyledText::normalize()
{
    std::vector<Run> joined;
    joined.reserve(segments_.size());
    for (Run& segment : segments_) {
        if (segment.length <= 0)
            continue;
        if (!joined.empty() && joined.back().attributes == segment.attributes)
            joined.back().length += segment.length;
        else
            joined.push_back(std::move(segment));
    }
    segments_ = std::move(joined);
}

void StyledText::addAttributes(qsizetype start, qsizetype length, const TextAttributes& attributes)
{
    const Span span = clamped(text_.size(), start, length);
    if (span.start == span.end || attributes.isEmpty())
        return;
    const std::size_t first = splitAt(span.start);
    const std::size_t end = splitAt(span.end);
    for (std::size_t index = first; index < end; ++index)
        segments_[index].attributes.merge(attributes);
    normalize();
}

void StyledText::replace(qsizetype start, qsizetype length, const StyledText& with)
{
    const Span span = clamped(text_.size(), start, length);
    const std::size_t first = splitAt(span.start);
    const std::size_t end = splitAt(span.end);
    const qsizetype shift = with.length() - (span.end - span.start);
    for (std::size_t index = end; index < segments_.size(); ++index)
        segments_[index].start += shift;
    const auto erasedAt = segments_.erase(segments_.begin() + std::ptrdiff_t(first), segments_.begin() + std::ptrdiff_t(end));
    std::vector<Run> inserted;
    inserted.reserve(with.segments_.size());
    for (const Run& segment : with.segments_)
        inserted.push_back({segment.start + span.start, segment.length, segment.attributes});
    segments_.insert(erasedAt, inserted.begin(), inserted.end());
    text_.replace(span.start, span.end - span.start, with.text_);
    normalize();
}

StyledText StyledText::mid(qsizetype start, qsizetype length) const
{
    const Span span = clamped(text_.size(), start, length);
    StyledText part;
    part.text_ = text_.mid(span.start, span.end - span.start);
    for (const Run& segment : segments_) {
        const qsizetype from = std::max(segment.start, span.start);
        const qsizetype to = std::min(segment.start + segment.length, span.end);
        if (from < to)
            part.segments_.push_back({from - span.start, to - from, segment.attributes});
    }
    return part;
}

TextAttributes StyledText::attributesAt(qsizetype index) const
{
    if (index < 0 || index >= text_.size())
        return {};
    const auto after = std::upper_bound(segments_.begin(), segments_.end(), index,
                                        [](qsizetype at, const Run& segment) { return at < segment.start; });
    return std::prev(after)->attributes;
}

std::vector<StyledText::Run> StyledText::runs() const
{
    std::vector<Run> styled;
    styled.reserve(segments_.size());
    for (const Run& segment : segments_) {
        if (!segment.attributes.isEmpty())
            styled.push_back(segment);
    }
    return styled;
}

}  // namespace lexicorn
