#include "host/app/text_selection.h"

#include "host/pdf/reading_order.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace lexicorn::host {

namespace {

QRectF lineBand(const CharLine& line)
{
    QRectF band;
    for (const CharRecord& record : line)
        band = band.united(record.rect);
    return band;
}

double distanceOutside(double value, double low, double high)
{
    return value < low ? low - value : (value > high ? value - high : 0.0);
}

bool isBlank(const CharRecord& record)
{
    return QChar(record.ch).isSpace();
}

// Calls visit(line, index) for every character of the selection in order.
template <class Visit>
void forEachSelected(const PageLines& lines, const TextSelection& selection, Visit visit)
{
    if (selection.isEmpty)
        return;
    for (int line = selection.first.line; line <= selection.last.line; ++line) {
        const int size = static_cast<int>(lines[line].size());
        const int begin = line == selection.first.line ? selection.first.index : 0;
        const int end = line == selection.last.line ? selection.last.index : size - 1;
        for (int index = begin; index <= end && index < size; ++index)
            visit(line, index);
    }
}

}  // namespace

std::optional<CharPlace> charNear(const PageLines& lines, const QPointF& point)
{
    // On a page set in columns, only the lines of the point's column (and
    // those across the columns) count: the line beside it in the next column
    // sits at the same height.
    const std::vector<Gutter> gutters = findGutters(lines);
    const auto columnOf = [&gutters](double x) {
        return std::count_if(gutters.begin(), gutters.end(), [x](const Gutter& g) { return (g.left + g.right) / 2 < x; });
    };
    const auto pointColumn = columnOf(point.x());
    int bestLine = -1;
    double bestDistance = std::numeric_limits<double>::max();
    for (int i = 0; i < static_cast<int>(lines.size()); ++i) {
        if (lines[i].empty())
            continue;
        const QRectF band = lineBand(lines[i]);
        if (!gutters.empty() && (columnOf(band.left()) > pointColumn || columnOf(band.right()) < pointColumn))
            continue;
        const double distance = distanceOutside(point.y(), band.top(), band.bottom());
        if (distance < bestDistance) {
            bestDistance = distance;
            bestLine = i;
        }
    }
    if (bestLine < 0)
        return std::nullopt;
    const CharLine& line = lines[bestLine];
    int bestIndex = 0;
    bestDistance = std::numeric_limits<double>::max();
    for (int i = 0; i < static_cast<int>(line.size()); ++i) {
        const double distance = distanceOutside(point.x(), line[i].rect.left(), line[i].rect.right());
        if (distance < bestDistance) {
            bestDistance = distance;
            bestIndex = i;
        }
    }
    return CharPlace{bestLine, bestIndex};
}

TextSelection selectBetween(const PageLines& lines, const QPointF& from, const QPointF& to, bool wholeWord)
{
    const std::optional<CharPlace> a = charNear(lines, from);
    const std::optional<CharPlace> b = charNear(lines, to);
    if (!a || !b)
        return {};
    TextSelection selection{std::min(*a, *b), std::max(*a, *b), false};
    if (wholeWord) {
        const CharLine& firstLine = lines[selection.first.line];
        while (selection.first.index > 0 && !isBlank(firstLine[selection.first.index - 1]))
            --selection.first.index;
        const CharLine& lastLine = lines[selection.last.line];
        while (selection.last.index + 1 < static_cast<int>(lastLine.size()) && !isBlank(lastLine[selection.last.index + 1]))
            ++selection.last.index;
    }
    return selection;
}

std::vector<QRectF> lineRects(const PageLines& lines, const TextSelection& selection)
{
    std::vector<QRectF> rects;
    int currentLine = -1;
    forEachSelected(lines, selection, [&](int line, int index) {
        if (line != currentLine) {
            rects.emplace_back();
            currentLine = line;
        }
        rects.back() = rects.back().united(lines[line][index].rect);
    });
    return rects;
}

QString selectedText(const PageLines& lines, const TextSelection& selection)
{
    QString text;
    int currentLine = -1;
    forEachSelected(lines, selection, [&](int line, int index) {
        if (currentLine >= 0 && line != currentLine)
            text.append(QStringLiteral("   "));
        currentLine = line;
        text.append(QChar(lines[line][index].ch));
    });
    return text;
}

}  // namespace lexicorn::host
