// The canvas's pages, their coordinates and their painting. Zoom and scroll
// position are in canvas_zoom.cpp, page images wanted from the renderer in
// canvas_rendering.cpp, keys and the mouse in canvas_input.cpp.

#include "host/ui/page_canvas.h"

#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>

#include <algorithm>
#include <cmath>

namespace lexicorn::host::ui {

namespace {

constexpr int kLineStep = 20;                               // pixels per arrow key
constexpr std::size_t kCacheBytes = 160u * 1024 * 1024;     // page images kept
const QColor kBackground(0x80, 0x80, 0x80);
const QColor kPageBorder(0, 0, 0, 70);
const QColor kSelection(0, 120, 215, 80);

}  // namespace

PageCanvas::PageCanvas(QWidget* parent)
    : QAbstractScrollArea(parent), cache_(kCacheBytes)
{
    // Always showing the vertical bar keeps the viewport width steady, so
    // fitting the width cannot flip the bar on and off.
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setFocusPolicy(Qt::StrongFocus);
    setFrameShape(QFrame::NoFrame);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    verticalScrollBar()->setSingleStep(kLineStep);
    horizontalScrollBar()->setSingleStep(kLineStep);
    autoScroll_.setInterval(30);
    connect(&autoScroll_, &QTimer::timeout, this, &PageCanvas::autoScrollStep);
}

PageCanvas::~PageCanvas() = default;

bool PageCanvas::openDocument(const QString& path, QString* error)
{
    closeDocument();
    auto document = std::make_shared<BookDocument>(path);
    if (!document->isOpen()) {
        if (error)
            *error = document->problem();
        return false;
    }
    setDocument(std::move(document));
    return true;
}

void PageCanvas::setDocument(std::shared_ptr<BookDocument> document)
{
    closeDocument();
    if (!document || !document->isOpen())
        return;
    document_ = std::move(document);
    documentId_ = document_->renderId();
    connect(document_.get(), &BookDocument::changed, this, &PageCanvas::documentChanged);
    connect(&document_->renderer(), &PageRenderer::pageRendered, this, &PageCanvas::imageArrived);
    layout_.setPageSizes(document_->pageSizes());
    zoom_ = mode_ == ZoomMode::Free ? zoom_ : fitZoom(mode_);
    layout_.setGeometry(zoom_, viewport()->width());
    updateScrollBars();
    verticalScrollBar()->setValue(0);
    horizontalScrollBar()->setValue((horizontalScrollBar()->maximum()) / 2);
    updateCurrentPage();
    // What the book shows already.
    documentChanged(BookDocument::Selection | BookDocument::Highlights);
    scheduleRequests();
    viewport()->update();
}

void PageCanvas::documentChanged(BookDocument::Changes changes)
{
    if (changes & BookDocument::PageSizes)
        pageSizesChanged();
    if (changes & BookDocument::Selection) {
        const BookDocument::AppliedSelection& selection = document_->selection();
        setSelectionMarks(selection.pageNo - 1, selection.rects);
    }
    if (changes & BookDocument::Highlights) {
        std::map<int, std::vector<Mark>> marks;
        for (const auto& [page, highlights] : document_->highlights()) {
            for (const BookDocument::Highlight& highlight : highlights)
                marks[page].push_back({highlight.rect, highlightColour(highlight.style)});
        }
        setHighlights(std::move(marks));
    }
    if (changes & BookDocument::PageText)
        viewport()->update();
}

void PageCanvas::pageSizesChanged()
{
    const std::vector<QSizeF>& sizes = document_->pageSizes();
    if (sizes.size() != std::size_t(pageCount()))
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
    if (document_) {
        // Whatever was still wanted of it is not made.
        document_->renderer().setRequests(documentId_, {});
        document_->renderer().disconnect(this);
        document_->disconnect(this);
        document_.reset();
    }
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

QPointF PageCanvas::contentOffset() const
{
    return {double(horizontalScrollBar()->value()), double(verticalScrollBar()->value())};
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

QColor PageCanvas::highlightColour(const QString& style)
{
    // The translation style blue, headings red, the rest the reader's yellow.
    if (style == QStringLiteral("mbooks-annotation10"))
        return QColor(80, 160, 255, 90);
    if (style == QStringLiteral("annotation18"))
        return QColor(255, 120, 120, 90);
    return QColor(255, 220, 0, 100);
}

void PageCanvas::setHighlights(std::map<int, std::vector<Mark>> marksByPage)
{
    highlights_ = std::move(marksByPage);
    viewport()->update();
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

}  // namespace lexicorn::host::ui
