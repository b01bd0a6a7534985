// The canvas's keys and mouse: scrolling and zoom keys, the left button's
// press, drag and release on a page (as signals in page points), panning
// with the space key held and scrolling while a drag is outside the view.

#include "host/ui/page_canvas.h"

#include "foundation/event_types.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>

#include <algorithm>
#include <utility>

namespace lexicorn::host::ui {

namespace {

// What routedType gives for an event a router dropped, and for one of no
// button the router sees.
constexpr int kDroppedEvent = 0;
constexpr int kNotRouted = -1;

}  // namespace

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
