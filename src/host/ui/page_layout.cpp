#include "host/ui/page_layout.h"

#include <algorithm>
#include <cmath>

namespace lexicorn::host::ui {

void PageLayout::setPageSizes(std::vector<QSizeF> sizes)
{
    sizes_ = std::move(sizes);
    maxWidth_ = 0.0;
    for (const QSizeF& s : sizes_)
        maxWidth_ = std::max(maxWidth_, s.width());
    relayout();
}

void PageLayout::setGeometry(double zoom, double viewportWidth)
{
    zoom_ = zoom;
    viewportWidth_ = viewportWidth;
    relayout();
}

void PageLayout::relayout()
{
    rects_.resize(sizes_.size());
    double widest = 0.0;
    for (const QSizeF& s : sizes_)
        widest = std::max(widest, std::max(1.0, std::round(s.width() * zoom_)));
    const double width = std::max(viewportWidth_, widest + 2 * kMargin);
    double y = kMargin;
    for (std::size_t i = 0; i < sizes_.size(); ++i) {
        const double w = std::max(1.0, std::round(sizes_[i].width() * zoom_));
        const double h = std::max(1.0, std::round(sizes_[i].height() * zoom_));
        rects_[i] = QRectF(std::floor((width - w) / 2), y, w, h);
        y += h + kGap;
    }
    content_ = sizes_.empty() ? QSizeF(0, 0) : QSizeF(width, y - kGap + kMargin);
}

int PageLayout::pageAtY(double y) const
{
    if (rects_.empty())
        return -1;
    // The first page whose slot ends below y.
    auto it = std::lower_bound(rects_.begin(), rects_.end(), y,
                               [](const QRectF& r, double v) { return r.bottom() + kGap / 2 <= v; });
    if (it == rects_.end())
        return pageCount() - 1;
    return int(it - rects_.begin());
}

std::pair<int, int> PageLayout::pagesBetween(double top, double bottom) const
{
    auto first = std::lower_bound(rects_.begin(), rects_.end(), top,
                                  [](const QRectF& r, double v) { return r.bottom() <= v; });
    auto last = std::lower_bound(rects_.begin(), rects_.end(), bottom,
                                 [](const QRectF& r, double v) { return r.top() < v; });
    if (first >= last)
        return {0, -1};
    return {int(first - rects_.begin()), int(last - rects_.begin()) - 1};
}

double PageLayout::fitWidthZoom(double viewportWidth) const
{
    if (maxWidth_ <= 0.0)
        return 1.0;
    return std::max(1.0, viewportWidth - 2 * kMargin) / maxWidth_;
}

double PageLayout::fitPageZoom(QSizeF viewport, int page) const
{
    if (sizes_.empty() || maxWidth_ <= 0.0)
        return 1.0;
    const double height = sizes_[std::size_t(std::clamp(page, 0, pageCount() - 1))].height();
    const double byHeight = std::max(1.0, viewport.height() - 2 * kMargin) / std::max(1.0, height);
    return std::min(fitWidthZoom(viewport.width()), byHeight);
}

QPointF PageLayout::pageToContent(int page, QPointF point) const
{
    const QRectF r = pageRect(page);
    const QSizeF s = pageSize(page);
    return {r.x() + point.x() * r.width() / s.width(), r.y() + point.y() * r.height() / s.height()};
}

QPointF PageLayout::contentToPage(int page, QPointF content) const
{
    const QRectF r = pageRect(page);
    const QSizeF s = pageSize(page);
    return {(content.x() - r.x()) * s.width() / r.width(), (content.y() - r.y()) * s.height() / r.height()};
}

}  // namespace lexicorn::host::ui
