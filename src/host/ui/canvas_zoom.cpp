// The canvas's zoom and where it is scrolled to: the fit modes, zooming about
// a point, the current page and the reading position.

#include "host/ui/page_canvas.h"

#include <QResizeEvent>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace lexicorn::host::ui {

namespace {

constexpr double kMinZoom = 0.1;
constexpr double kMaxZoom = 8.0;
constexpr double kZoomStep = 1.25;

}  // namespace

void PageCanvas::setZoomMode(ZoomMode mode)
{
    mode_ = mode;
    if (mode != ZoomMode::Free && hasDocument())
        applyZoomKeepingTop(fitZoom(mode));
}

PageCanvas::ZoomMode PageCanvas::zoomMode() const
{
    return mode_;
}

void PageCanvas::setZoom(double factor)
{
    mode_ = ZoomMode::Free;
    zoomAround(factor, QPointF(viewport()->width() / 2.0, viewport()->height() / 2.0));
}

double PageCanvas::zoom() const
{
    return zoom_;
}

void PageCanvas::zoomIn()
{
    setZoom(zoom_ * kZoomStep);
}

void PageCanvas::zoomOut()
{
    setZoom(zoom_ / kZoomStep);
}

double PageCanvas::fitZoom(ZoomMode mode) const
{
    const QSize size = viewport()->size();
    const double z = mode == ZoomMode::FitPage ? layout_.fitPageZoom(size, std::max(0, currentPage_))
                                               : layout_.fitWidthZoom(size.width());
    return std::clamp(z, kMinZoom, kMaxZoom);
}

void PageCanvas::zoomAround(double zoom, QPointF viewportPos)
{
    zoom = std::clamp(zoom, kMinZoom, kMaxZoom);
    if (!hasDocument()) {
        zoom_ = zoom;
        return;
    }
    applyZoom(zoom, nearestPageAt(viewportPos.toPoint()), viewportPos);
}

void PageCanvas::applyZoom(double zoom, const PagePoint& anchor, QPointF anchorViewport)
{
    zoom_ = zoom;
    layout_.setGeometry(zoom_, viewport()->width());
    updateScrollBars();
    const QPointF content = layout_.pageToContent(anchor.pageIndex, anchor.point);
    horizontalScrollBar()->setValue(int(std::lround(content.x() - anchorViewport.x())));
    verticalScrollBar()->setValue(int(std::lround(content.y() - anchorViewport.y())));
    updateCurrentPage();
    scheduleRequests();
    viewport()->update();
}

void PageCanvas::applyZoomKeepingTop(double zoom)
{
    const double position = pagePosition();
    zoom_ = zoom;
    layout_.setGeometry(zoom_, viewport()->width());
    updateScrollBars();
    horizontalScrollBar()->setValue(horizontalScrollBar()->maximum() / 2);
    setPagePosition(position);
    updateCurrentPage();
    scheduleRequests();
    viewport()->update();
}

void PageCanvas::updateScrollBars()
{
    const QSize view = viewport()->size();
    const QSizeF content = layout_.contentSize();
    verticalScrollBar()->setRange(0, std::max(0, int(std::ceil(content.height())) - view.height()));
    verticalScrollBar()->setPageStep(view.height());
    horizontalScrollBar()->setRange(0, std::max(0, int(std::ceil(content.width())) - view.width()));
    horizontalScrollBar()->setPageStep(view.width());
}

int PageCanvas::currentPage() const
{
    return currentPage_;
}

void PageCanvas::updateCurrentPage()
{
    int page = -1;
    if (hasDocument()) {
        const QScrollBar* bar = verticalScrollBar();
        if (bar->maximum() > 0 && bar->value() >= bar->maximum())
            page = pageCount() - 1;
        else if (bar->value() <= 0)
            page = 0;
        else
            page = layout_.pageAtY(bar->value() + viewport()->height() / 2.0);
    }
    if (page != currentPage_) {
        currentPage_ = page;
        if (page >= 0)
            emit currentPageChanged(page);
    }
}

void PageCanvas::goToPage(int pageIndex)
{
    if (!hasDocument())
        return;
    pageIndex = std::clamp(pageIndex, 0, pageCount() - 1);
    verticalScrollBar()->setValue(int(layout_.pageRect(pageIndex).top()));
}

void PageCanvas::scrollToPageRect(int pageIndex, const QRectF& pageRect)
{
    if (!hasDocument() || pageIndex < 0 || pageIndex >= pageCount())
        return;
    const QRectF target(layout_.pageToContent(pageIndex, pageRect.topLeft()),
                        layout_.pageToContent(pageIndex, pageRect.bottomRight()));
    const QRectF view(contentOffset(), QSizeF(viewport()->size()));
    const auto centre = [](double start, double length, double viewLength) {
        // Centre it, or show its start when it is longer than the view.
        return length > viewLength ? start : start + length / 2 - viewLength / 2;
    };
    if (target.top() < view.top() || target.bottom() > view.bottom())
        verticalScrollBar()->setValue(int(std::lround(centre(target.top(), target.height(), view.height()))));
    if (target.left() < view.left() || target.right() > view.right())
        horizontalScrollBar()->setValue(int(std::lround(centre(target.left(), target.width(), view.width()))));
}

double PageCanvas::pagePosition() const
{
    if (!hasDocument())
        return 0.0;
    const double y = verticalScrollBar()->value();
    const int page = layout_.pageAtY(y);
    const QRectF rect = layout_.pageRect(page);
    return page + std::clamp((y - rect.top()) / rect.height(), 0.0, 0.999999);
}

void PageCanvas::setPagePosition(double position)
{
    if (!hasDocument())
        return;
    const int page = std::clamp(int(std::floor(position)), 0, pageCount() - 1);
    const QRectF rect = layout_.pageRect(page);
    const double fraction = std::clamp(position - page, 0.0, 1.0);
    verticalScrollBar()->setValue(int(std::lround(rect.top() + fraction * rect.height())));
}

void PageCanvas::resizeEvent(QResizeEvent* event)
{
    QAbstractScrollArea::resizeEvent(event);
    if (!hasDocument())
        return;
    if (mode_ == ZoomMode::Free) {
        const double position = pagePosition();
        layout_.setGeometry(zoom_, viewport()->width());
        updateScrollBars();
        setPagePosition(position);
        updateCurrentPage();
        scheduleRequests();
    } else {
        applyZoomKeepingTop(fitZoom(mode_));
    }
}

void PageCanvas::wheelEvent(QWheelEvent* event)
{
    if (!(event->modifiers() & Qt::ControlModifier)) {
        QAbstractScrollArea::wheelEvent(event);
        return;
    }
    const int delta = event->angleDelta().y();
    if (delta != 0 && hasDocument()) {
        mode_ = ZoomMode::Free;
        zoomAround(zoom_ * std::pow(kZoomStep, delta / 120.0), event->position());
    }
    event->accept();
}

}  // namespace lexicorn::host::ui
