#pragma once

#include <QRectF>
#include <QSizeF>

#include <utility>
#include <vector>

namespace lexicorn::host::ui {

// Where each page of a document sits in a continuous vertical strip: pages
// stacked top to bottom, centred horizontally, a margin around the strip and a
// gap between pages. Content coordinates are device-independent pixels with
// the origin at the strip's top-left. Page rectangles are whole pixels so a
// page image rendered at the same scale is drawn without resampling.
class PageLayout {
public:
    static constexpr double kMargin = 8.0;  // around the strip
    static constexpr double kGap = 8.0;     // between two pages

    // Page sizes in points; recomputes the strip.
    void setPageSizes(std::vector<QSizeF> sizes);
    // Changes the scale (pixels per point) and the width the strip is centred in.
    void setGeometry(double zoom, double viewportWidth);

    int pageCount() const { return int(sizes_.size()); }
    QSizeF pageSize(int page) const { return sizes_[std::size_t(page)]; }
    QRectF pageRect(int page) const { return rects_[std::size_t(page)]; }
    QSizeF contentSize() const { return content_; }
    double zoom() const { return zoom_; }

    // The page whose slot (its rectangle plus half the gap above and below)
    // holds content y; clamps to the first or last page. -1 without pages.
    int pageAtY(double y) const;
    // First and last page that intersect the band [top, bottom]; {0, -1} when none.
    std::pair<int, int> pagesBetween(double top, double bottom) const;

    // The zoom at which the widest page fills the width less the margins.
    double fitWidthZoom(double viewportWidth) const;
    // The zoom at which the widest page and the given page's height both fit.
    double fitPageZoom(QSizeF viewport, int page) const;

    // Page points <-> content pixels, using the page's rounded rectangle so the
    // two directions agree exactly.
    QPointF pageToContent(int page, QPointF point) const;
    QPointF contentToPage(int page, QPointF content) const;

private:
    void relayout();

    std::vector<QSizeF> sizes_;
    std::vector<QRectF> rects_;
    QSizeF content_;
    double zoom_ = 1.0;
    double viewportWidth_ = 0.0;
    double maxWidth_ = 0.0;
};

}  // namespace lexicorn::host::ui
