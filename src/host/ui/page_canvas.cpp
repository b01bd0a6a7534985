#include "host/ui/page_canvas.h"

#include "foundation/event_types.h"

#include <poppler-qt6.h>

#include <QFileInfo>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace lexicorn::host::ui {

namespace {

constexpr double kMinZoom = 0.1;
constexpr double kMaxZoom = 8.0;
constexpr double kZoomStep = 1.25;
constexpr int kLineStep = 20;                               // pixels per arrow key
constexpr std::size_t kCacheBytes = 160u * 1024 * 1024;     // page images kept
// Above this a page is rendered in parts around the viewport instead of whole
// (a letter page at 8× and twice the pixels would be over 100 MB).
constexpr double kMaxImageBytes = 48.0 * 1024 * 1024;
const QColor kBackground(0x80, 0x80, 0x80);
const QColor kPageBorder(0, 0, 0, 70);
const QColor kSelection(0, 120, 215, 80);

// What routedType gives for an event a router dropped, and for one of no
// button the router sees.
constexpr int kDroppedEvent = 0;
constexpr int kNotRouted = -1;

const char* const kMissingFile = "The file could not be found.";
const char* const kNotPdf = "The file is not a PDF document or it is damaged.";
const char* const kLocked = "The document is locked with a password.";
const char* const kNoPages = "The document has no pages.";

bool fail(QString* error, const char* message)
{
    if (error)
        *error = QString::fromLatin1(message);
    return false;
}

}  // namespace

PageCanvas::PageCanvas(QWidget* parent)
    : QAbstractScrollArea(parent), renderer_(std::make_unique<PageRenderer>()), cache_(kCacheBytes)
{
    // Always showing the vertical bar keeps the viewport width steady, so
    // fitting the width cannot flip the bar on and off.
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setFocusPolicy(Qt::StrongFocus);
    setFrameShape(QFrame::NoFrame);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    verticalScrollBar()->setSingleStep(kLineStep);
    horizontalScrollBar()->setSingleStep(kLineStep);
    connect(renderer_.get(), &PageRenderer::pageRendered, this, &PageCanvas::imageArrived);
    connect(renderer_.get(), &PageRenderer::pageSizesRead, this, &PageCanvas::pageSizesArrived);
    autoScroll_.setInterval(30);
    connect(&autoScroll_, &QTimer::timeout, this, &PageCanvas::autoScrollStep);
}

PageCanvas::~PageCanvas() = default;

bool PageCanvas::openDocument(const QString& path, QString* error)
{
    closeDocument();
    if (!QFileInfo(path).isFile())
        return fail(error, kMissingFile);
    std::unique_ptr<Poppler::Document> document = Poppler::Document::load(path);
    if (!document)
        return fail(error, kNotPdf);
    if (document->isLocked())
        return fail(error, kLocked);
    const int count = document->numPages();
    if (count <= 0)
        return fail(error, kNoPages);
    // Until the renderer has read every page's size on its thread, every
    // page is taken to be as large as the first: the first page shows at
    // once, however many pages the book has.
    QSizeF first(612, 792);
    if (std::unique_ptr<Poppler::Page> page = document->page(0)) {
        const QSizeF size = page->pageSizeF();
        if (size.width() >= 1 && size.height() >= 1)
            first = size;
    }
    std::vector<QSizeF> sizes(std::size_t(count), first);
    document.reset();

    static std::uint64_t lastId = 0;
    documentId_ = ++lastId;
    renderer_->open(path, documentId_);
    layout_.setPageSizes(std::move(sizes));
    zoom_ = mode_ == ZoomMode::Free ? zoom_ : fitZoom(mode_);
    layout_.setGeometry(zoom_, viewport()->width());
    updateScrollBars();
    verticalScrollBar()->setValue(0);
    horizontalScrollBar()->setValue((horizontalScrollBar()->maximum()) / 2);
    updateCurrentPage();
    scheduleRequests();
    viewport()->update();
    return true;
}

void PageCanvas::pageSizesArrived(std::uint64_t documentId, const std::vector<QSizeF>& sizes)
{
    if (documentId != documentId_ || sizes.size() != std::size_t(pageCount()))
        return;
    bool same = true;
    for (std::size_t i = 0; i < sizes.size() && same; ++i)
        same = sizes[i] == pageSize(int(i));
    if (same)
        return;
    // Images drawn at the guessed sizes are drawn again; the same place of
    // the same page stays at the top of the view.
    cache_.clear();
    const double position = pagePosition();
    layout_.setPageSizes(sizes);
    zoom_ = mode_ == ZoomMode::Free ? zoom_ : fitZoom(mode_);
    layout_.setGeometry(zoom_, viewport()->width());
    updateScrollBars();
    setPagePosition(position);
    scheduleRequests();
    viewport()->update();
}

void PageCanvas::closeDocument()
{
    if (!hasDocument())
        return;
    renderer_->close();
    documentId_ = 0;
    cache_.clear();
    layout_.setPageSizes({});
    selectionPage_ = -1;
    selection_.clear();
    highlights_.clear();
    pressPage_ = -1;
    autoScroll_.stop();
    currentPage_ = -1;
    updateScrollBars();
    viewport()->update();
}

bool PageCanvas::hasDocument() const
{
    return layout_.pageCount() > 0;
}

int PageCanvas::pageCount() const
{
    return layout_.pageCount();
}

QSizeF PageCanvas::pageSize(int pageIndex) const
{
    if (pageIndex < 0 || pageIndex >= pageCount())
        return {};
    return layout_.pageSize(pageIndex);
}

// ---- zoom

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

QPointF PageCanvas::contentOffset() const
{
    return {double(horizontalScrollBar()->value()), double(verticalScrollBar()->value())};
}

// ---- position

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

// ---- coordinates

std::optional<PageCanvas::PagePoint> PageCanvas::pageAt(const QPoint& viewportPos) const
{
    if (!hasDocument())
        return std::nullopt;
    const QPointF content = QPointF(viewportPos) + contentOffset();
    const int page = layout_.pageAtY(content.y());
    if (!layout_.pageRect(page).contains(content))
        return std::nullopt;
    return PagePoint{page, layout_.contentToPage(page, content)};
}

PageCanvas::PagePoint PageCanvas::nearestPageAt(const QPoint& viewportPos) const
{
    if (!hasDocument())
        return {-1, {}};
    const int page = layout_.pageAtY(viewportPos.y() + contentOffset().y());
    return {page, clampedPagePoint(page, viewportPos)};
}

QPointF PageCanvas::clampedPagePoint(int page, QPoint viewportPos) const
{
    const QPointF p = layout_.contentToPage(page, QPointF(viewportPos) + contentOffset());
    const QSizeF size = layout_.pageSize(page);
    return {std::clamp(p.x(), 0.0, size.width()), std::clamp(p.y(), 0.0, size.height())};
}

QPointF PageCanvas::pageToViewport(int pageIndex, const QPointF& pagePoint) const
{
    if (pageIndex < 0 || pageIndex >= pageCount())
        return {};
    return layout_.pageToContent(pageIndex, pagePoint) - contentOffset();
}

QRectF PageCanvas::pageRectToViewport(int pageIndex, const QRectF& pageRect) const
{
    return {pageToViewport(pageIndex, pageRect.topLeft()), pageToViewport(pageIndex, pageRect.bottomRight())};
}

// ---- marks

void PageCanvas::setSelectionMarks(int pageIndex, std::vector<QRectF> rects)
{
    selectionPage_ = rects.empty() ? -1 : pageIndex;
    selection_ = std::move(rects);
    viewport()->update();
}

void PageCanvas::clearSelectionMarks()
{
    setSelectionMarks(-1, {});
}

void PageCanvas::setHighlights(std::map<int, std::vector<Mark>> marksByPage)
{
    highlights_ = std::move(marksByPage);
    viewport()->update();
}

std::size_t PageCanvas::cachedImageBytes() const
{
    return cache_.bytes();
}

// ---- rendering

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
    renderer_->setRequests(documentId_, std::move(requests));
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

void PageCanvas::paintEvent(QPaintEvent* event)
{
    QPainter painter(viewport());
    painter.fillRect(event->rect(), kBackground);
    if (!hasDocument())
        return;
    const double dpr = devicePixelRatioF();
    if (dpr != paintedDpr_) {
        // Moved to a screen of another pixel ratio: the images are re-made.
        paintedDpr_ = dpr;
        scheduleRequests();
    }
    const double scale = zoom_ * dpr;
    const QPointF offset = contentOffset();
    const QRectF area = QRectF(event->rect()).translated(offset);
    const auto [first, last] = layout_.pagesBetween(area.top(), area.bottom());
    for (int page = first; page <= last; ++page) {
        const QRectF rect = layout_.pageRect(page).translated(-offset);
        painter.fillRect(rect, Qt::white);
        painter.setPen(kPageBorder);
        painter.drawRect(rect.adjusted(-0.5, -0.5, 0.5, 0.5));
        if (const PageImageCache::Entry* entry = cache_.use(page); entry && !entry->image.isNull()) {
            const bool exact = entry->request.scale == scale;
            const bool whole = entry->request.part == QRectF(QPointF(0, 0), layout_.pageSize(page));
            if (exact && whole) {
                painter.drawImage(rect.topLeft(), entry->image);
            } else {
                // Another zoom's image stands in until the new one arrives.
                painter.setRenderHint(QPainter::SmoothPixmapTransform, !exact);
                const QRectF target = whole ? rect : pageRectToViewport(page, requestCoverage(entry->request));
                painter.drawImage(target, entry->image);
            }
        }
        if (auto it = highlights_.find(page); it != highlights_.end()) {
            for (const Mark& mark : it->second)
                painter.fillRect(pageRectToViewport(page, mark.rect), mark.color);
        }
        if (page == selectionPage_) {
            for (const QRectF& r : selection_)
                painter.fillRect(pageRectToViewport(page, r), kSelection);
        }
    }
    if (arrivedUnpainted_) {
        arrivedUnpainted_ = false;
        QMetaObject::invokeMethod(this, &PageCanvas::pagesRendered, Qt::QueuedConnection);
    }
}

// ---- view events

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

void PageCanvas::showEvent(QShowEvent* event)
{
    QAbstractScrollArea::showEvent(event);
    scheduleRequests();
}

void PageCanvas::scrollContentsBy(int, int)
{
    viewport()->update();
    updateCurrentPage();
    scheduleRequests();
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

void PageCanvas::keyPressEvent(QKeyEvent* event)
{
    QScrollBar* v = verticalScrollBar();
    QScrollBar* h = horizontalScrollBar();
    const bool ctrl = event->modifiers() & Qt::ControlModifier;
    const bool shift = event->modifiers() & Qt::ShiftModifier;
    switch (event->key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        if (!ctrl)
            break;
        zoomIn();
        return;
    case Qt::Key_Minus:
        if (!ctrl)
            break;
        zoomOut();
        return;
    case Qt::Key_0:
        if (!ctrl)
            break;
        setZoomMode(ZoomMode::FitWidth);
        return;
    case Qt::Key_PageDown:
        v->triggerAction(QAbstractSlider::SliderPageStepAdd);
        return;
    case Qt::Key_PageUp:
        v->triggerAction(QAbstractSlider::SliderPageStepSub);
        return;
    case Qt::Key_Space:
        v->triggerAction(shift ? QAbstractSlider::SliderPageStepSub : QAbstractSlider::SliderPageStepAdd);
        return;
    case Qt::Key_Home:
        v->setValue(v->minimum());
        return;
    case Qt::Key_End:
        v->setValue(v->maximum());
        return;
    case Qt::Key_Down:
        v->triggerAction(QAbstractSlider::SliderSingleStepAdd);
        return;
    case Qt::Key_Up:
        v->triggerAction(QAbstractSlider::SliderSingleStepSub);
        return;
    case Qt::Key_Right:
        h->triggerAction(QAbstractSlider::SliderSingleStepAdd);
        return;
    case Qt::Key_Left:
        h->triggerAction(QAbstractSlider::SliderSingleStepSub);
        return;
    default:
        break;
    }
    QAbstractScrollArea::keyPressEvent(event);
}

// ---- mouse

std::optional<PageCanvas::PagePoint> PageCanvas::startDrag(const QPoint& pos)
{
    const std::optional<PagePoint> hit = pageAt(pos);
    pressPage_ = hit ? hit->pageIndex : -1;
    dragPos_ = pos;
    return hit;
}

int PageCanvas::routedType(const QMouseEvent& event) const
{
    // The button this event is about: for a move, the one held.
    const Qt::MouseButton button = event.type() == QEvent::MouseMove
                                       ? (event.buttons() & Qt::LeftButton     ? Qt::LeftButton
                                          : event.buttons() & Qt::MiddleButton ? Qt::MiddleButton
                                                                               : Qt::NoButton)
                                       : event.button();
    if (button != Qt::LeftButton && button != Qt::MiddleButton)
        return kNotRouted;
    const bool left = button == Qt::LeftButton;
    int type = kNotRouted;
    switch (event.type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        type = left ? leftMouseDown : otherMouseDown;
        break;
    case QEvent::MouseMove:
        type = left ? leftMouseDragged : otherMouseDragged;
        break;
    case QEvent::MouseButtonRelease:
        type = left ? leftMouseUp : otherMouseUp;
        break;
    default:
        return kNotRouted;
    }
    return router_ ? router_(type) : type;
}

void PageCanvas::mousePressEvent(QMouseEvent* event)
{
    const int type = routedType(*event);
    if (type == leftMouseDown)
        leftPressed(event, false);
    else if (type == kDroppedEvent)
        event->accept();
    else
        QAbstractScrollArea::mousePressEvent(event);
}

void PageCanvas::mouseDoubleClickEvent(QMouseEvent* event)
{
    const int type = routedType(*event);
    if (type == leftMouseDown)
        leftPressed(event, true);
    else if (type == kDroppedEvent)
        event->accept();
    else
        QAbstractScrollArea::mouseDoubleClickEvent(event);
}

void PageCanvas::mouseMoveEvent(QMouseEvent* event)
{
    const int type = routedType(*event);
    if (type == leftMouseDragged)
        leftDragged(event);
    else if (type == kDroppedEvent)
        event->accept();
    else
        QAbstractScrollArea::mouseMoveEvent(event);
}

void PageCanvas::mouseReleaseEvent(QMouseEvent* event)
{
    const int type = routedType(*event);
    if (type == leftMouseUp)
        leftReleased(event);
    else if (type == kDroppedEvent)
        event->accept();
    else
        QAbstractScrollArea::mouseReleaseEvent(event);
}

void PageCanvas::leftPressed(QMouseEvent* event, bool secondClick)
{
    event->accept();
    if (panCondition_ && panCondition_()) {
        // Space held: the page follows the pointer and nothing is selected.
        panning_ = true;
        panFrom_ = event->position().toPoint();
        panScrollStart_ = QPoint(horizontalScrollBar()->value(), verticalScrollBar()->value());
        viewport()->setCursor(Qt::ClosedHandCursor);
        return;
    }
    const std::optional<PagePoint> hit = startDrag(event->position().toPoint());
    if (!hit)
        return;
    // The second press of a double click starts a drag like a press does.
    if (secondClick)
        emit pageDoubleClicked(hit->pageIndex, hit->point, event->modifiers());
    else
        emit pagePressed(hit->pageIndex, hit->point, event->modifiers());
}

void PageCanvas::leftDragged(QMouseEvent* event)
{
    if (panning_) {
        const QPoint moved = event->position().toPoint() - panFrom_;
        horizontalScrollBar()->setValue(panScrollStart_.x() - moved.x());
        verticalScrollBar()->setValue(panScrollStart_.y() - moved.y());
        event->accept();
        return;
    }
    if (pressPage_ < 0) {
        QAbstractScrollArea::mouseMoveEvent(event);
        return;
    }
    event->accept();
    dragPos_ = event->position().toPoint();
    emit pageDragged(pressPage_, clampedPagePoint(pressPage_, dragPos_));
    // Dragging above or below the view scrolls it, so a selection can grow
    // past what is on screen.
    const bool outside = dragPos_.y() < 0 || dragPos_.y() >= viewport()->height();
    if (outside && !autoScroll_.isActive())
        autoScroll_.start();
    else if (!outside)
        autoScroll_.stop();
}

void PageCanvas::autoScrollStep()
{
    if (pressPage_ < 0) {
        autoScroll_.stop();
        return;
    }
    const int y = dragPos_.y();
    const int distance = y < 0 ? y : y >= viewport()->height() ? y - viewport()->height() + 1 : 0;
    if (distance == 0) {
        autoScroll_.stop();
        return;
    }
    QScrollBar* v = verticalScrollBar();
    v->setValue(v->value() + std::clamp(distance, -60, 60));
    emit pageDragged(pressPage_, clampedPagePoint(pressPage_, dragPos_));
}

void PageCanvas::leftReleased(QMouseEvent* event)
{
    event->accept();
    if (panning_) {
        panning_ = false;
        viewport()->unsetCursor();
        return;
    }
    autoScroll_.stop();
    if (pressPage_ >= 0) {
        const int page = std::exchange(pressPage_, -1);
        emit pageReleased(page, clampedPagePoint(page, event->position().toPoint()));
    }
}

}  // namespace lexicorn::host::ui
