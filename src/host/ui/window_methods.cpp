// The reader window's part of the runtime: the views of the study board and
// of the book, the page views a plug-in converts points with, and the
// selection's popup menu.

#include "host/ui/reader_window.h"

#include "host/app/note_classes.h"
#include "host/kit/kit_classes.h"
#include "host/kit/view_kit.h"
#include "host/ui/edit_bar.h"
#include "host/ui/note_card_view.h"
#include "host/ui/notebook_panel.h"
#include "host/ui/outline_methods.h"
#include "host/ui/research_pane.h"
#include "host/ui/studyboard_methods.h"
#include "host/ui/task_progress.h"

#include "runtime/hosting.h"

#include <QMenu>
#include <QSplitter>

namespace lexicorn::host::ui {

namespace {

using runtime::makeImp;
using runtime::Object;
using ObjectRef = std::shared_ptr<Object>;

inline constexpr const char* pageViewClassName = "PDFPageView";
inline constexpr const char* pageScrollViewClassName = "PDFPageScrollView";
inline constexpr const char* popupMenuClassName = "QBPopupMenu";

// One page as the book shows it; its image view is itself. Points of the
// page view are the book canvas's viewport coordinates.
class PageViewObject : public Object {
public:
    PageViewObject(runtime::Class& cls, int pageNo) : Object(cls), pageNo(pageNo) {}
    int pageNo;
};

ObjectRef makePageView(int pageNo)
{
    return std::make_shared<PageViewObject>(*runtime::Runtime::shared().classNamed(pageViewClassName), pageNo);
}

ObjectRef objectOf(QWidget* widget)
{
    return widget ? wrapWidget(widget) : nullptr;
}

void registerPageViews(runtime::Runtime& runtime)
{
    runtime::Class& scroller = runtime.registerClass(pageScrollViewClassName, "UIResponder");
    runtime::Class& page = runtime.registerClass(pageViewClassName, "UIResponder");
    runtime.addMethod(page, "pageNo", makeImp([](PageViewObject& self) { return self.pageNo; }));
    runtime.addMethod(page, "imageView", makeImp([](PageViewObject& self) { return self.shared_from_this(); }));
    runtime.addMethod(page, "superview", makeImp([scroller = &scroller](PageViewObject&) -> ObjectRef {
        static const ObjectRef shared = std::make_shared<Object>(*scroller);
        return shared;
    }));
    runtime.addMethod(page, "cvtToView:", makeImp([](PageViewObject& self, QPointF point) {
        ReaderWindow* window = ReaderWindow::current();
        return window ? window->pageToViewport(self.pageNo, point) : point;
    }));
    runtime.addMethod(page, "cvtRectToView:", makeImp([](PageViewObject& self, QRectF rect) {
        ReaderWindow* window = ReaderWindow::current();
        return window ? window->canvas().pageRectToViewport(self.pageNo - 1, rect) : rect;
    }));
    runtime.addMethod(page, "viewToCvt:", makeImp([](PageViewObject& self, QPointF point) {
        ReaderWindow* window = ReaderWindow::current();
        return window ? window->viewToPage(self.pageNo, point) : point;
    }));
    runtime.addMethod(page, "convertFromBookView:", makeImp([](PageViewObject&, QPointF point) { return point; }));
    // Null stands for the window.
    runtime.addMethod(page, "convertPoint:toView:", makeImp([](PageViewObject&, QPointF point, ObjectRef /*view*/) {
        ReaderWindow* window = ReaderWindow::current();
        return window ? window->viewportToWindow(point) : point;
    }));
}

void registerBookViewMethods(runtime::Runtime& runtime)
{
    runtime::Class& book = *runtime.classNamed(bookViewClassName);
    runtime.addMethod(book, "view", makeImp([](BookViewObject&) -> ObjectRef {
        ReaderWindow* window = ReaderWindow::current();
        return window ? objectOf(&window->canvas()) : nullptr;
    }));
    runtime.addMethod(book, "currPageView", makeImp([](BookViewObject& self) -> ObjectRef {
        return self.book ? makePageView(self.currentPage) : nullptr;
    }));
    // The page under a point of the book's view, or null between pages.
    runtime.addMethod(book, "pageViewAtPoint:", makeImp([](BookViewObject&, QPointF point) -> ObjectRef {
        ReaderWindow* window = ReaderWindow::current();
        if (!window)
            return nullptr;
        const auto page = window->canvas().pageAt(point.toPoint());
        return page ? makePageView(page->pageIndex + 1) : nullptr;
    }));
    runtime.addMethod(book, "webDownloadController", makeImp([](BookViewObject&) -> ObjectRef {
        ReaderWindow* window = ReaderWindow::current();
        return window && window->researchPane() ? objectOf(window->researchPane()) : nullptr;
    }));
    runtime::addProperty<ObjectRef>(book, "oneFingerDoubleClickGestureRecognizer");
    runtime::addProperty<ObjectRef>(book, "bookTapGesture");
}

void registerStudyboardMethods(runtime::Runtime& runtime)
{
    runtime::Class& board = *runtime.classNamed(studyboardClassName);
    runtime.addMethod(board, "view", makeImp([](StudyboardObject&) -> ObjectRef {
        ReaderWindow* window = ReaderWindow::current();
        return window ? objectOf(&window->boardView()) : nullptr;
    }));
    // The notebook stands right of the book; the board shows book and map.
    runtime.addMethod(board, "rightMapMode", makeImp([](StudyboardObject&) { return true; }));
    runtime.addMethod(board, "studyMode", makeImp([](StudyboardObject&) { return 1; }));
    runtime.addMethod(board, "toolBarBorderLine", makeImp([](StudyboardObject&) -> ObjectRef {
        ReaderWindow* window = ReaderWindow::current();
        return window ? objectOf(window->boardView().findChild<QWidget*>(QStringLiteral("toolBarBorderLine"))) : nullptr;
    }));
    runtime.addMethod(board, "resizeBtn", makeImp([](StudyboardObject&) -> ObjectRef {
        ReaderWindow* window = ReaderWindow::current();
        auto* splitter = window ? window->boardView().findChild<QSplitter*>() : nullptr;
        return splitter ? objectOf(splitter->handle(1)) : nullptr;
    }));
    runtime.addMethod(board, "emphasisHighlight:", makeImp([](StudyboardObject&, QPointF) {}));
}

// The organising edit bar above the notebook, and a long task's progress in
// the status line: the text, items done and items in all.
void registerStudyboardBarMethods(runtime::Runtime& runtime)
{
    runtime::Class& board = *runtime.classNamed(studyboardClassName);
    runtime.addMethod(board, "organizingEditBar", makeImp([](StudyboardObject&) -> ObjectRef {
        ReaderWindow* window = ReaderWindow::current();
        return window ? objectOf(&window->notebookPanel().editBar()) : nullptr;
    }));
    runtime.addMethod(board, "showProgressWithText:done:total:", makeImp([](StudyboardObject&, QString text, int done, int total) {
        if (ReaderWindow* window = ReaderWindow::current())
            window->taskProgress().report(text, done, total);
    }));
    runtime.addMethod(board, "hideProgress", makeImp([](StudyboardObject&) {
        if (ReaderWindow* window = ReaderWindow::current())
            window->taskProgress().finish();
    }));
}

void registerPopupMenu(runtime::Runtime& runtime)
{
    runtime::Class& menu = runtime.registerClass(popupMenuClassName, "UIResponder");
    runtime.addClassMethod(menu, "currentMenu", makeImp([](runtime::Class& cls) -> ObjectRef {
        ReaderWindow* window = ReaderWindow::current();
        return window && window->contextMenu() ? std::make_shared<Object>(cls) : nullptr;
    }));
    runtime.addMethod(menu, "dismissAnimated:", makeImp([](Object&, bool) {
        if (ReaderWindow* window = ReaderWindow::current(); window && window->contextMenu())
            window->contextMenu()->close();
    }));
}

}  // namespace

void registerWindowClasses(runtime::Runtime& runtime)
{
    registerHostClasses(runtime);
    registerNoteClasses(runtime);
    registerReaderClasses(runtime);
    registerViewKitClasses(runtime);
    registerNoteCardViewClass(runtime);
    if (runtime.classNamed(pageViewClassName))
        return;
    registerPageViews(runtime);
    registerBookViewMethods(runtime);
    registerOutlineMethods(runtime);
    registerStudyboardMethods(runtime);
    registerStudyboardBarMethods(runtime);
    registerStudyboardAddonMethods(runtime);
    registerPopupMenu(runtime);
    runtime.addMethod(*runtime.classNamed(appDelegateClassName), "studyboardController", makeImp([](AppDelegate&) -> ObjectRef {
        ReaderWindow* window = ReaderWindow::current();
        return window ? window->studyboard() : nullptr;
    }));
}

HostApplication launchReader(const QString& pluginPath)
{
    registerWindowClasses();
    return launchHost(pluginPath);
}

}  // namespace lexicorn::host::ui
