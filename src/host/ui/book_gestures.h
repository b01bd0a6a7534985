#pragma once

// The reader's gestures on the book: a press, a drag, a release and a double
// click on a page of the canvas, and the selection's context menu, become the
// book view controller's methods. Every one is sent through the runtime, so a
// plug-in's replacement acts on it.

#include "host/app/host_classes.h"
#include "host/app/reader_classes.h"

#include <QMenu>
#include <QObject>
#include <QPointF>
#include <QPointer>

namespace lexicorn::host::ui {

class PageCanvas;

class BookGestures : public QObject {
    Q_OBJECT
public:
    // Listens to the canvas's page gestures for as long as both live.
    BookGestures(PageCanvas& canvas, BookViewObject& book, AppDelegate& delegate, QObject* parent = nullptr);

    // Opens the menu of what to do with the selection at a page point, as a
    // child of parent; it stays reachable by contextMenu() while it is open.
    void showContextMenu(QWidget* parent, int pageNo, const QPointF& point);
    QMenu* contextMenu() const { return contextMenu_; }

private:
    void pressed(int pageIndex, QPointF point);
    void dragged(int pageIndex, QPointF point);
    void released(int pageIndex, QPointF point);
    void doubleClicked(int pageIndex, QPointF point, Qt::KeyboardModifiers modifiers);

    PageCanvas& canvas_;
    BookViewObject& book_;
    AppDelegate& delegate_;
    QPointer<QMenu> contextMenu_;
    int pressPage_ = -1;
    QPointF pressPoint_;
    bool dragged_ = false;
    bool ignoreRelease_ = false;
};

}  // namespace lexicorn::host::ui
