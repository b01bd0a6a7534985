#include "host/ui/book_gestures.h"

#include "host/app/gesture_scope.h"
#include "host/ui/page_canvas.h"

#include "foundation/notification_center.h"

#include <QLineF>

#include <string>

namespace lexicorn::host::ui {

namespace {

using runtime::send;
using ObjectRef = std::shared_ptr<runtime::Object>;

// Drags shorter than this (in page points) are clicks.
constexpr double clickSlop = 2.0;

}  // namespace

BookGestures::BookGestures(PageCanvas& canvas, BookViewObject& book, AppDelegate& delegate, QObject* parent)
    : QObject(parent), canvas_(canvas), book_(book), delegate_(delegate)
{
    connect(&canvas, &PageCanvas::pagePressed, this, [this](int page, QPointF point, Qt::KeyboardModifiers) { pressed(page, point); });
    connect(&canvas, &PageCanvas::pageDragged, this, &BookGestures::dragged);
    connect(&canvas, &PageCanvas::pageReleased, this, &BookGestures::released);
    connect(&canvas, &PageCanvas::pageDoubleClicked, this, &BookGestures::doubleClicked);
}

void BookGestures::pressed(int pageIndex, QPointF point)
{
    pressPage_ = pageIndex;
    pressPoint_ = point;
    dragged_ = false;
}

void BookGestures::dragged(int pageIndex, QPointF point)
{
    if (pageIndex != pressPage_ || QLineF(point, pressPoint_).length() < clickSlop)
        return;
    dragged_ = true;
    send<void>(book_, "setCurrentPageNo:", pageIndex + 1);
    send<void>(book_, "setSelectionStartPoint:", pressPoint_);
    send<void>(book_, "setSelectionEndPoint:", point);
    send<void>(book_, "setSelectionPageNo:", pageIndex + 1);
    send<void>(book_, "setSelectionMode:", textSelectionMode);
    send<void>(book_, "setPDFSelection:texSelMode:wholeWord:", true, true, false);
}

void BookGestures::released(int pageIndex, QPointF point)
{
    const GestureScope gesture;
    if (ignoreRelease_) {
        ignoreRelease_ = false;
        return;
    }
    if (!dragged_) {
        const QPointF inView = canvas_.pageToViewport(pageIndex, point);
        send<void>(book_, "handleDTapGesture:", ObjectRef(makeTapRecognizer(1, pageIndex + 1, point, inView)));
        return;
    }
    // The selection the last drag applied ends here; applying it again with
    // the same points finds it already worked out.
    dragged(pageIndex, point);
    dragged_ = false;
    const QString selected = send<QString>(book_, "selectionText");
    if (selected.isEmpty())
        return;
    book_.lookedUpWord = selected.trimmed();
    if (send<int>(book_, "highlightMode") == 1) {
        send<void>(book_, "highlight:", std::string("highlighter"));
        return;
    }
    NotificationCenter::defaultCenter().postNotificationName(QStringLiteral("PopupMenuOnSelection"), book_.shared_from_this());
}

void BookGestures::doubleClicked(int pageIndex, QPointF point, Qt::KeyboardModifiers modifiers)
{
    const GestureScope gesture;
    ignoreRelease_ = true;
    send<void>(book_, "setCurrentPageNo:", pageIndex + 1);
    const ObjectRef recognizer = makeTapRecognizer(2, pageIndex + 1, point, canvas_.pageToViewport(pageIndex, point));
    send<void>(book_, "setOneFingerDoubleClickGestureRecognizer:", recognizer);
    send<void>(book_, "setBookTapGesture:", recognizer);
    if (!send<bool>(book_, "gestureRecognizerShouldBegin:", recognizer))
        return;
    // Ctrl stands for the command key.
    delegate_.commandHeld = modifiers.testFlag(Qt::ControlModifier);
    send<void>(book_, "handleOneFingerDoubleClick:", recognizer);
    delegate_.commandHeld = false;
}

void BookGestures::showContextMenu(QWidget* parent, int pageNo, const QPointF& point)
{
    auto* menu = new QMenu(parent);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(QStringLiteral("Highlight"), this, [this] {
        const GestureScope gesture;
        send<void>(book_, "highlight:", std::string("menu"));
        send<void>(book_, "noteHighlight:", std::string("menu"));
    });
    menu->addAction(QStringLiteral("Copy"), this, [this] { send<void>(book_, "copy:", std::string("menu")); });
    contextMenu_ = menu;
    menu->popup(canvas_.viewport()->mapToGlobal(canvas_.pageToViewport(pageNo - 1, point).toPoint()));
}

}  // namespace lexicorn::host::ui
