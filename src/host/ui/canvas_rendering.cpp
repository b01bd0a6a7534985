// The page images the canvas wants: worked out once after a change of view
// and handed to the renderer, which sends them back as they are made.

#include "host/ui/page_canvas.h"

#include <QScrollBar>

#include <algorithm>
#include <cmath>
#include <vector>

namespace lexicorn::host::ui {

namespace {

// Above this a page is rendered in parts around the viewport instead of whole
// (a letter page at 8× and twice the pixels would be over 100 MB).
constexpr double kMaxImageBytes = 48.0 * 1024 * 1024;

}  // namespace

void PageCanvas::scheduleRequests()
{
    // Many view changes come in one go (zoom, then two scroll bars); the
    // wanted pages are worked out once after them.
    if (requestsScheduled_)
        return;
    requestsScheduled_ = true;
    QMetaObject::invokeMethod(this, [this] {
        requestsScheduled_ = false;
        updateRequests();
    }, Qt::QueuedConnection);
}

QRectF PageCanvas::visiblePart(int page) const
{
    const QRectF view(contentOffset(), QSizeF(viewport()->size()));
    const QRectF on = layout_.pageRect(page).intersected(view);
    if (on.isEmpty())
        return {};
    return {layout_.contentToPage(page, on.topLeft()), layout_.contentToPage(page, on.bottomRight())};
}

RenderRequest PageCanvas::wantedRequest(int page, double scale, double dpr) const
{
    const QSizeF size = layout_.pageSize(page);
    const QRectF whole(QPointF(0, 0), size);
    RenderRequest request{page, scale, whole, dpr};
    if (size.width() * scale * size.height() * scale * 4 <= kMaxImageBytes)
        return request;
    // Too large for one image: the viewport widened by half its size on each
    // side, snapped to a grid of half viewports so that scrolling a little
    // asks for the same part again.
    const QSizeF view = QSizeF(viewport()->size());
    const double stepY = std::max(1.0, view.height() / 2), stepX = std::max(1.0, view.width() / 2);
    const QPointF offset = contentOffset();
    const double top = std::floor((offset.y() - stepY) / stepY) * stepY;
    const double bottom = std::ceil((offset.y() + view.height() + stepY) / stepY) * stepY;
    const double left = std::floor((offset.x() - stepX) / stepX) * stepX;
    const double right = std::ceil((offset.x() + view.width() + stepX) / stepX) * stepX;
    QRectF part = QRectF(layout_.contentToPage(page, {left, top}), layout_.contentToPage(page, {right, bottom}))
                      .intersected(whole);
    if (part.isEmpty()) {
        // A neighbour off screen: the end of it that comes into view first.
        const double band = 3 * stepY / zoom_;
        const bool below = layout_.pageRect(page).top() > offset.y();
        const double x0 = std::clamp(layout_.contentToPage(page, {left, 0}).x(), 0.0, size.width());
        const double x1 = std::clamp(layout_.contentToPage(page, {right, 0}).x(), 0.0, size.width());
        part = below ? QRectF(x0, 0, x1 - x0, std::min(band, size.height()))
                     : QRectF(x0, std::max(0.0, size.height() - band), x1 - x0, std::min(band, size.height()));
    }
    request.part = part;
    return request;
}

bool PageCanvas::hasImage(int page, double scale, double dpr, const QRectF& needed) const
{
    const PageImageCache::Entry* have = cache_.use(page);
    if (!have || have->request.scale != scale || have->request.devicePixelRatio != dpr)
        return false;
    // A page that could not be drawn counts as done: asking again would not help.
    return have->image.isNull() || requestCoverage(have->request).adjusted(-0.01, -0.01, 0.01, 0.01).contains(needed);
}

bool PageCanvas::visiblePagesRendered() const
{
    if (!hasDocument())
        return true;
    const double top = contentOffset().y();
    const auto [first, last] = layout_.pagesBetween(top, top + viewport()->height());
    for (int page = first; page <= last; ++page)
        if (!pageRendered(page))
            return false;
    return true;
}

bool PageCanvas::pageRendered(int pageIndex) const
{
    const double dpr = devicePixelRatioF();
    return hasDocument() && hasImage(pageIndex, zoom_ * dpr, dpr, visiblePart(pageIndex));
}

void PageCanvas::updateRequests()
{
    if (!hasDocument() || !isVisible())
        return;
    const double dpr = devicePixelRatioF();
    const double scale = zoom_ * dpr;
    const double top = contentOffset().y();
    const auto [first, last] = layout_.pagesBetween(top, top + viewport()->height());
    if (last < first)
        return;
    // Visible pages nearest the centre first, then one page ahead and one behind.
    std::vector<int> pages;
    for (int p = first; p <= last; ++p)
        pages.push_back(p);
    const double centre = top + viewport()->height() / 2.0;
    std::stable_sort(pages.begin(), pages.end(), [&](int a, int b) {
        return std::abs(layout_.pageRect(a).center().y() - centre) < std::abs(layout_.pageRect(b).center().y() - centre);
    });
    if (last + 1 < pageCount())
        pages.push_back(last + 1);
    if (first > 0)
        pages.push_back(first - 1);

    std::vector<RenderRequest> requests;
    for (int page : pages) {
        const RenderRequest wanted = wantedRequest(page, scale, dpr);
        const QRectF visible = visiblePart(page);
        if (!hasImage(page, scale, dpr, visible.isEmpty() ? wanted.part : visible))
            requests.push_back(wanted);
    }
    document_->renderer().setRequests(documentId_, std::move(requests));
}

void PageCanvas::imageArrived(const RenderedPage& rendered)
{
    if (rendered.documentId != documentId_ || documentId_ == 0)
        return;
    const int page = rendered.request.pageIndex;
    cache_.insert({rendered.request, rendered.image});
    const double top = contentOffset().y();
    const auto [first, last] = layout_.pagesBetween(top, top + viewport()->height());
    if (page >= first && page <= last) {
        arrivedUnpainted_ = true;
        viewport()->update();
    }
}

std::size_t PageCanvas::cachedImageBytes() const
{
    return cache_.bytes();
}

}  // namespace lexicorn::host::ui
