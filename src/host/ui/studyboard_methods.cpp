#include "host/ui/studyboard_methods.h"

#include "host/app/note_classes.h"
#include "host/app/reader_classes.h"
#include "host/kit/kit_images.h"
#include "host/kit/view_kit.h"
#include "host/ui/command_menu.h"
#include "host/ui/reader_window.h"

#include <QToolBar>

namespace lexicorn::host::ui {

namespace {

using runtime::makeImp;

inline constexpr const char* clipBarClassName = "MbClipBar";
inline constexpr const char* detailControllerClassName = "MbUIDetailViewController";

ObjectRef clipBarOf(QToolBar& bar, runtime::Runtime& runtime)
{
    if (ObjectRef existing = viewObjectOf(&bar))
        return existing;
    auto object = std::make_shared<ViewObject>(*runtime.classNamed(clipBarClassName));
    object->attach(&bar, false);
    return object;
}

void registerClipBar(runtime::Runtime& runtime)
{
    runtime::Class& bar = runtime.registerClass(clipBarClassName, viewClassName);
    // A tool bar lays its items out itself: a view added goes at its end.
    runtime.addMethod(bar, "addSubview:", makeImp([](ViewObject& self, ObjectRef child) {
        auto* toolBar = qobject_cast<QToolBar*>(self.widget());
        QWidget* item = widgetOf(child);
        if (toolBar && item && item->parentWidget() != toolBar)
            toolBar->addWidget(item);
    }));
}

// The board's detail controller, made on first use and kept with the board.
const char detailKey = 0;

ObjectRef detailControllerOf(StudyboardObject& board)
{
    const std::any stored = board.associatedObject(&detailKey);
    if (const auto* detail = std::any_cast<ObjectRef>(&stored))
        return *detail;
    runtime::Class& cls = *board.objectClass().runtime().classNamed(detailControllerClassName);
    ObjectRef detail = std::make_shared<ViewControllerObject>(cls);
    board.setAssociatedObject(&detailKey, detail);
    return detail;
}

void registerDetailController(runtime::Runtime& runtime)
{
    runtime::Class* detail = runtime.classNamed(detailControllerClassName);
    if (!detail)
        detail = &runtime.registerClass(detailControllerClassName, viewControllerClassName);
    runtime.addMethod(*detail, "fBookViewController", makeImp([](ViewControllerObject&) -> ObjectRef {
        ReaderWindow* window = ReaderWindow::current();
        return window ? window->bookView().shared_from_this() : nullptr;
    }));
}

}  // namespace

void registerStudyboardAddonMethods(runtime::Runtime& runtime)
{
    registerClipBar(runtime);
    registerDetailController(runtime);
    registerCommandTableClass(runtime);

    runtime::Class& board = *runtime.classNamed(studyboardClassName);
    runtime.addMethod(board, "clipBar", makeImp([](StudyboardObject& self) -> ObjectRef {
        ReaderWindow* window = ReaderWindow::current();
        return window ? clipBarOf(window->clipBar(), self.objectClass().runtime()) : nullptr;
    }));
    runtime.addMethod(board, "detailController", makeImp([](StudyboardObject& self) { return detailControllerOf(self); }));
    runtime.addMethod(board, "defaultTintColor", makeImp([](StudyboardObject&) { return defaultTintColor(); }));
    runtime.addMethod(board, "presentPopover:fromView:preferredSize:",
                      makeImp([](StudyboardObject&, ObjectRef controller, ObjectRef anchor, QSizeF size) {
                          presentPopover(widgetOf(anchor), ReaderWindow::current(),
                                         std::dynamic_pointer_cast<CommandTableObject>(controller), size);
                      }));
    runtime.addMethod(board, "dismissPopover", makeImp([](StudyboardObject&) { dismissPopover(ReaderWindow::current()); }));
    runtime.addMethod(board, "popover", makeImp([](StudyboardObject&) -> ObjectRef {
        CommandPopover* open = openPopover(ReaderWindow::current());
        return open ? open->table() : nullptr;
    }));
}

}  // namespace lexicorn::host::ui
