#include "host/pdf/reading_order.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <tuple>

namespace lexicorn::host {

namespace {

// Rectangles beyond this many points are not from a page anyone prints.
constexpr double largestCoordinate = 1e5;
// At most this many bins across the page when looking for gaps.
constexpr int largestBinCount = 4096;

struct LineBox {
    double left = 0, right = 0, top = 0, bottom = 0;
    bool usable = false;
    double middleX() const { return (left + right) / 2; }
    double middleY() const { return (top + bottom) / 2; }
};

bool sane(double value)
{
    return std::isfinite(value) && std::fabs(value) < largestCoordinate;
}

LineBox boxOf(const CharLine& line)
{
    LineBox box;
    for (const CharRecord& record : line) {
        const QRectF& r = record.rect;
        if (!sane(r.x()) || !sane(r.y()) || !sane(r.width()) || !sane(r.height()) || r.width() < 0 || r.height() < 0)
            continue;
        if (!box.usable) {
            box = {r.left(), r.right(), r.top(), r.bottom(), true};
            continue;
        }
        box.left = std::min(box.left, r.left());
        box.right = std::max(box.right, r.right());
        box.top = std::min(box.top, r.top());
        box.bottom = std::max(box.bottom, r.bottom());
    }
    return box;
}

std::vector<LineBox> boxesOf(const PageLines& lines)
{
    std::vector<LineBox> boxes;
    boxes.reserve(lines.size());
    for (const CharLine& line : lines)
        boxes.push_back(boxOf(line));
    return boxes;
}

double medianHeight(const std::vector<LineBox>& boxes)
{
    std::vector<double> heights;
    for (const LineBox& box : boxes) {
        if (box.usable)
            heights.push_back(box.bottom - box.top);
    }
    if (heights.empty())
        return 0;
    const auto middle = heights.begin() + std::ptrdiff_t(heights.size() / 2);
    std::nth_element(heights.begin(), middle, heights.end());
    return *middle;
}

// Whether several lines stand wholly on each side of the strip, beside each other.
bool separatesColumns(const std::vector<LineBox>& boxes, double left, double right, double height)
{
    int leftCount = 0, rightCount = 0;
    double leftTop = 0, leftBottom = 0, rightTop = 0, rightBottom = 0;
    const auto extend = [](int& count, double& top, double& bottom, const LineBox& box) {
        top = count == 0 ? box.top : std::min(top, box.top);
        bottom = count == 0 ? box.bottom : std::max(bottom, box.bottom);
        ++count;
    };
    for (const LineBox& box : boxes) {
        if (!box.usable)
            continue;
        if (box.right <= left)
            extend(leftCount, leftTop, leftBottom, box);
        else if (box.left >= right)
            extend(rightCount, rightTop, rightBottom, box);
    }
    const double sideBySide = std::min(leftBottom, rightBottom) - std::max(leftTop, rightTop);
    return leftCount >= 2 && rightCount >= 2 && sideBySide >= 2 * height;
}

std::vector<Gutter> guttersOf(const std::vector<LineBox>& boxes)
{
    int usable = 0;
    double minX = 0, maxX = 0;
    for (const LineBox& box : boxes) {
        if (!box.usable)
            continue;
        minX = usable == 0 ? box.left : std::min(minX, box.left);
        maxX = usable == 0 ? box.right : std::max(maxX, box.right);
        ++usable;
    }
    const double height = medianHeight(boxes);
    if (usable < 4 || !(height > 0) || !(maxX > minX))
        return {};

    // How many lines cross each thin vertical strip of the page.
    const double binWidth = std::max(0.25, (maxX - minX) / largestBinCount);
    const int binCount = int(std::ceil((maxX - minX) / binWidth)) + 1;
    const auto binOf = [&](double x) { return std::clamp(int((x - minX) / binWidth), 0, binCount - 1); };
    std::vector<int> starts(std::size_t(binCount) + 1, 0);
    for (const LineBox& box : boxes) {
        if (!box.usable)
            continue;
        ++starts[std::size_t(binOf(box.left))];
        --starts[std::size_t(binOf(box.right)) + 1];
    }
    std::vector<int> crossing(static_cast<std::size_t>(binCount));
    std::partial_sum(starts.begin(), starts.end() - 1, crossing.begin());

    // A title or a centred page number may cross a gap between columns; a
    // column is crossed by as many lines as it has rows.
    const int rows = *std::max_element(crossing.begin(), crossing.end());
    const int allowed = std::max(1, rows / 8);
    std::vector<Gutter> gutters;
    for (int bin = 0; bin < binCount;) {
        if (crossing[std::size_t(bin)] > allowed) {
            ++bin;
            continue;
        }
        const int first = bin;
        while (bin < binCount && crossing[std::size_t(bin)] <= allowed)
            ++bin;
        const double left = minX + first * binWidth;
        const double right = minX + bin * binWidth;
        const bool inside = first > 0 && bin < binCount;
        if (inside && right - left >= columnGapInHeights * height && separatesColumns(boxes, left, right, height))
            gutters.push_back({left, right});
    }
    return gutters;
}

// Whether the second piece goes on the first one's printed line: they overlap
// vertically by at least half the smaller height, the second starts after
// the first, and no gap between columns parts them.
bool onSameRow(const LineBox& first, const LineBox& second, const std::vector<Gutter>& gutters)
{
    if (!first.usable || !second.usable)
        return false;
    const double overlap = std::min(first.bottom, second.bottom) - std::max(first.top, second.top);
    const double smaller = std::min(first.bottom - first.top, second.bottom - second.top);
    const bool parted = std::any_of(gutters.begin(), gutters.end(), [&](const Gutter& gutter) {
        const double middle = (gutter.left + gutter.right) / 2;
        return first.right <= middle && second.left >= middle;
    });
    return smaller > 0 && overlap >= smaller / 2 && second.left >= first.right - smaller / 2 && !parted;
}

PageLines joinedRows(PageLines pieces, const std::vector<Gutter>& gutters)
{
    PageLines lines;
    LineBox last;
    for (CharLine& piece : pieces) {
        const LineBox box = boxOf(piece);
        if (lines.empty() || !onSameRow(last, box, gutters)) {
            lines.push_back(std::move(piece));
            last = box;
            continue;
        }
        // A visible gap between the pieces is a space between words.
        CharLine& line = lines.back();
        const double height = std::min(last.bottom - last.top, box.bottom - box.top);
        if (box.left - last.right > height * 0.1)
            line.push_back(CharRecord{u' ', QRectF(last.right, last.top, box.left - last.right, last.bottom - last.top)});
        line.insert(line.end(), piece.begin(), piece.end());
        last = {std::min(last.left, box.left), std::max(last.right, box.right), std::min(last.top, box.top),
                std::max(last.bottom, box.bottom), true};
    }
    return lines;
}

}  // namespace

std::vector<Gutter> findGutters(const PageLines& lines)
{
    return guttersOf(boxesOf(lines));
}

PageLines inReadingOrder(PageLines pieces)
{
    const std::vector<Gutter> gutters = findGutters(pieces);
    PageLines lines = joinedRows(std::move(pieces), gutters);
    if (gutters.empty())
        return lines;
    const std::vector<LineBox> boxes = boxesOf(lines);

    const auto crossesGutter = [&gutters](const LineBox& box) {
        return std::any_of(gutters.begin(), gutters.end(), [&box](const Gutter& gutter) {
            const double middle = (gutter.left + gutter.right) / 2;
            return box.left < middle && box.right > middle;
        });
    };
    // The lines that cross a gutter, top to bottom, part the page into bands.
    std::vector<double> spanningMiddles;
    for (const LineBox& box : boxes) {
        if (box.usable && crossesGutter(box))
            spanningMiddles.push_back(box.middleY());
    }
    std::sort(spanningMiddles.begin(), spanningMiddles.end());

    // Reading position of each line: band, then column, then the order given.
    // Band 2k holds the columns below k spanning lines; band 2k + 1 the k-th
    // spanning line itself. A line without a usable box stays after the one
    // before it.
    struct Place {
        std::size_t band = 0;
        std::size_t column = 0;
        std::size_t index = 0;
    };
    std::vector<Place> places(lines.size());
    Place previous;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const LineBox& box = boxes[i];
        Place place = previous;
        place.index = i;
        if (box.usable) {
            const auto above = std::size_t(std::lower_bound(spanningMiddles.begin(), spanningMiddles.end(), box.middleY())
                                           - spanningMiddles.begin());
            if (crossesGutter(box)) {
                place.band = 2 * above + 1;
                place.column = 0;
            } else {
                place.band = 2 * above;
                place.column = std::size_t(std::count_if(gutters.begin(), gutters.end(), [&box](const Gutter& gutter) {
                    return (gutter.left + gutter.right) / 2 < box.middleX();
                }));
            }
        }
        places[i] = place;
        previous = place;
    }
    // A column of margin line numbers is read after the text beside it, so a
    // sentence runs on from one column of text into the next undisturbed.
    std::map<std::pair<std::size_t, std::size_t>, bool> numbersOnly;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        auto [entry, added] = numbersOnly.try_emplace({places[i].band, places[i].column}, true);
        entry->second = entry->second && isNumberLine(lines[i]);
    }
    for (Place& place : places) {
        if (numbersOnly[{place.band, place.column}])
            place.column += gutters.size() + 1;
    }
    std::vector<std::size_t> order(lines.size());
    std::iota(order.begin(), order.end(), std::size_t(0));
    std::stable_sort(order.begin(), order.end(), [&places](std::size_t a, std::size_t b) {
        const Place& x = places[a];
        const Place& y = places[b];
        return std::tie(x.band, x.column, x.index) < std::tie(y.band, y.column, y.index);
    });
    PageLines ordered;
    ordered.reserve(lines.size());
    for (std::size_t i : order)
        ordered.push_back(std::move(lines[i]));
    return ordered;
}

}  // namespace lexicorn::host
