#pragma once

#include "host/ui/page_layout.h"
#include "host/app/book_document.h"
#include "host/pdf/page_renderer.h"

#include <QAbstractScrollArea>
#include <QColor>
#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QTimer>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace lexicorn::host::ui {

// Shows a book (BookDocument) as a continuous vertical strip of pages. It
// keeps only what it needs to draw: page images come from the book's renderer
// on a worker thread and are cached here; the book's highlights and selection
// are drawn over them when the book says they changed; mouse gestures on a
// page leave as signals in page coordinates.
class PageCanvas : public QAbstractScrollArea {
    Q_OBJECT
public:
    explicit PageCanvas(QWidget* parent = nullptr);
    ~PageCanvas() override;

    // Opens the file for display. False with *error set to a short English
    // sentence for a missing, damaged, locked or non-PDF file; the canvas is
    // then empty and usable.
    bool openDocument(const QString& path, QString* error = nullptr);
    // Shows a book already open (none: the canvas is empty).
    void setDocument(std::shared_ptr<BookDocument> document);
    const std::shared_ptr<BookDocument>& document() const { return document_; }
    void closeDocument();
    bool hasDocument() const;
    int pageCount() const;
    QSizeF pageSize(int pageIndex) const;  // in points; pages counted from 0

    enum class ZoomMode { FitWidth, FitPage, Free };
    void setZoomMode(ZoomMode mode);  // default FitWidth; keeps the page position at the top
    ZoomMode zoomMode() const;
    // 1.0 = one point per device-independent pixel; sets Free; clamped to 0.1..8.
    // Keeps the point under the viewport centre in place.
    void setZoom(double factor);
    double zoom() const;  // the factor in effect, also in the fit modes
    void zoomIn();        // × 1.25
    void zoomOut();       // ÷ 1.25

    // The page under the viewport's centre line (or the nearest); the first
    // page when scrolled to the very top and the last when at the very bottom.
    int currentPage() const;
    void goToPage(int pageIndex);  // top of that page at the top of the viewport
    // Makes the area visible, centring it when the view has to move.
    void scrollToPageRect(int pageIndex, const QRectF& pageRect);
    // The position of the viewport's top edge as page index plus the fraction
    // of that page above it (12.25 = a quarter into page 12), to save and
    // restore a reading position independent of zoom and window size.
    double pagePosition() const;
    void setPagePosition(double position);

    // Page points (origin at the page's top-left, y down) <-> viewport pixels.
    struct PagePoint {
        int pageIndex;
        QPointF point;
    };
    std::optional<PagePoint> pageAt(const QPoint& viewportPos) const;  // empty between and outside pages
    PagePoint nearestPageAt(const QPoint& viewportPos) const;          // clamped into the nearest page; -1 without document
    QPointF pageToViewport(int pageIndex, const QPointF& pagePoint) const;
    QRectF pageRectToViewport(int pageIndex, const QRectF& pageRect) const;

    // What is drawn over the pages: a rectangle in page points and its fill.
    struct Mark {
        QRectF rect;
        QColor color;
    };
    void setSelectionMarks(int pageIndex, std::vector<QRectF> rects);  // translucent blue; empty = none
    void clearSelectionMarks();
    void setHighlights(std::map<int, std::vector<Mark>> marksByPage);  // replaces all highlights
    // A highlight's fill by its style name.
    static QColor highlightColour(const QString& style);

    // Mouse button events pass through the router before the canvas acts on
    // them, as event types numbered like the platform's (event_types.h): the
    // left button as left-mouse, the middle as other-mouse. The router
    // returns the type to act on (it may turn one button into another), or 0
    // to drop the event. Without a router every event is acted on as it came.
    using EventRouter = std::function<int(int eventType)>;
    void setEventRouter(EventRouter router) { router_ = std::move(router); }
    // Asked when a left press starts: true makes the drag pan the page
    // instead of selecting (the space key is held).
    void setPanCondition(std::function<bool()> condition) { panCondition_ = std::move(condition); }

    // True when every page in the viewport shows its image at the current
    // zoom (none is waiting for the renderer); for tests and measurements.
    bool visiblePagesRendered() const;
    // True when the page shows its image at the current zoom.
    bool pageRendered(int pageIndex) const;
    // Bytes of page images held (for memory measurements).
    std::size_t cachedImageBytes() const;

signals:
    void pagePressed(int pageIndex, QPointF point, Qt::KeyboardModifiers modifiers);  // left button
    // Left button held; the point is clamped into the page the press was on.
    void pageDragged(int pageIndex, QPointF point);
    void pageReleased(int pageIndex, QPointF point);
    void pageDoubleClicked(int pageIndex, QPointF point, Qt::KeyboardModifiers modifiers);
    void currentPageChanged(int pageIndex);
    // A page image arrived and has been painted (only a shown canvas paints).
    void pagesRendered();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    QPointF contentOffset() const;
    double fitZoom(ZoomMode mode) const;
    // Lays the pages out at the zoom and moves the view so the page point
    // lands on the viewport position.
    void applyZoom(double zoom, const PagePoint& anchor, QPointF anchorViewport);
    void applyZoomKeepingTop(double zoom);
    void zoomAround(double zoom, QPointF viewportPos);
    void updateScrollBars();
    void scheduleRequests();
    void updateRequests();
    RenderRequest wantedRequest(int page, double scale, double dpr) const;
    QRectF visiblePart(int page) const;  // in points; empty when off screen
    // Whether the cached image of the page is at the scale and covers the part.
    bool hasImage(int page, double scale, double dpr, const QRectF& needed) const;
    void imageArrived(const RenderedPage& page);
    // Repaints what the book says changed.
    void documentChanged(BookDocument::Changes changes);
    void pageSizesChanged();
    void updateCurrentPage();
    QPointF clampedPagePoint(int page, QPoint viewportPos) const;
    void autoScrollStep();
    // A left press at the position: the drag starts on the page under it.
    std::optional<PagePoint> startDrag(const QPoint& pos);
    // The event's type after the router: 0 when it dropped the event, -1 for
    // an event of another button.
    int routedType(const QMouseEvent& event) const;
    // The left button's gestures, whichever button made them.
    void leftPressed(QMouseEvent* event, bool secondClick);
    void leftDragged(QMouseEvent* event);
    void leftReleased(QMouseEvent* event);

    PageLayout layout_;
    std::shared_ptr<BookDocument> document_;
    mutable PageImageCache cache_;  // looking an image up marks it as used
    std::uint64_t documentId_ = 0;
    ZoomMode mode_ = ZoomMode::FitWidth;
    double zoom_ = 1.0;
    int currentPage_ = -1;
    bool requestsScheduled_ = false;
    bool arrivedUnpainted_ = false;
    double paintedDpr_ = 0.0;

    int selectionPage_ = -1;
    std::vector<QRectF> selection_;
    std::map<int, std::vector<Mark>> highlights_;

    int pressPage_ = -1;  // page of the left-button press being dragged, or -1
    QPoint dragPos_;
    QTimer autoScroll_;

    EventRouter router_;
    std::function<bool()> panCondition_;
    bool panning_ = false;
    QPoint panFrom_;         // where the panning press was, in viewport pixels
    QPoint panScrollStart_;  // the scroll bars' values at that press
};

}  // namespace lexicorn::host::ui
