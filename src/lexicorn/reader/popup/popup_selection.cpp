// Sentence and section selection by double click, the taps that close the
// popup, and the width of new cards.

#include "lexicorn/reader/popup/popup_methods.h"
#include "lexicorn/reader/popup/popup_support.h"

#include "lexicorn/clipboard/ksw_hdebug.h"

#include "foundation/user_defaults.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QSizeF>

#include <string>

namespace lexicorn::popup {

namespace {

using runtime::makeImp;
using runtime::Object;
using runtime::send;

bool addonChecked(Object& self, const QString& name)
{
    for (const QJsonValue& command : send<QJsonArray>(self, "queryAddonCommandStatus")) {
        const QJsonObject status = command.toObject();
        if (status.value(QStringLiteral("description")).toString().contains(name))
            return status.value(QStringLiteral("checked")).toBool();
    }
    return false;
}

// Selects the sentence (or section) under a point of a page view, then
// highlights it or offers the reader's menu.
void selectAtPoint(Object& self, QPointF point, const ObjectRef& pageView, bool section)
{
    send<void>(self, "setLastFocusNote:", ObjectRef());
    send<void>(self, "cancelLasso");
    const ObjectRef scroller = pageView ? send<ObjectRef>(*pageView, "superview") : nullptr;
    const std::string& kind = scroller ? scroller->objectClass().name() : std::string();
    if (kind != "PDFPageScrollView" && kind != "UIScrollView")
        return;
    const QPointF onPage = send<QPointF>(*pageView, "viewToCvt:", point);
    const int page = send<int>(*pageView, "pageNo");
    send<void>(self, "setCurrentPageNo:", page);
    const std::optional<Sentence> found = sentenceAt(pageSentences(self, page, section), onPage);
    if (!found)
        return;
    selectLines(self, sentenceLineRects(*found), page);

    if (send<int>(self, "highlightMode") == 1) {
        send<void>(self, "highlight:", std::string());
    } else if (send<bool>(self, "isOnAddon:", QStringLiteral("LockColor"))) {
        UserDefaults& defaults = UserDefaults::standard();
        const QString key = QStringLiteral("default_highlightStyle");
        const std::optional<QString> remembered = defaults.stringIfSet(key);
        if (send<bool>(self, "isHeadlineForSelection"))
            defaults.set(key, QStringLiteral("annotation18"));
        send<void>(self, "highlight:", std::string());
        if (remembered)
            defaults.set(key, *remembered);
        else
            defaults.remove(key);
    } else {
        send<void>(self, "refreshSelection");
        const auto rects = send<std::vector<QRectF>>(self, "pdfSelectionLst");
        const QPointF menuPoint = send<QPointF>(self, "getContextPoint:isStartOrEnd:", rects, false);
        send<void>(self, "openContextualMenuAt:atTop:", menuPoint, false);
        send<void>(self, "showContextMenu:", std::string());
    }
}

constinit runtime::Hook<bool(ObjectRef)> shouldBegin{controllerClass, "gestureRecognizerShouldBegin:"};
constinit runtime::Hook<void(ObjectRef)> doubleTap{controllerClass, "handleDTapGesture:"};
constinit runtime::Hook<void(ObjectRef)> initMindmapPosition{controllerClass, "initMindmapPosition:"};
constinit runtime::Hook<void(std::string)> dragToNote{controllerClass, "dragToNote:"};

}  // namespace

void installSentenceSelection()
{
    install<void(QPointF, ObjectRef, bool)>("selectAtPoint:fromView:isSectionNotSentence:", selectAtPoint);
    // The host's double click selects a word; with the plug-in it selects the
    // sentence (a section with the command key held).
    install<void(ObjectRef)>("handleOneFingerDoubleClick:", [](Object& self, ObjectRef recognizer) {
        const QPointF point = send<QPointF>(*recognizer, "locationInView:", ObjectRef());
        const ObjectRef pageView = send<ObjectRef>(self, "pageViewAtPoint:", point);
        const ObjectRef delegate = applicationDelegate();
        const bool section = delegate && send<bool>(*delegate, "cmdPressed");
        if (pageView) {
            send<void>(self, "selectAtPoint:fromView:isSectionNotSentence:", send<QPointF>(*pageView, "convertFromBookView:", point),
                       pageView, section);
        } else if (const ObjectRef board = studyboard(); board && runtime::respondsTo(*board, "emphasisHighlight:")) {
            send<void>(*board, "emphasisHighlight:", point);
        }
    });
    install(shouldBegin, [](Object& self, ObjectRef recognizer) {
        if (recognizer && recognizer == send<ObjectRef>(self, "oneFingerDoubleClickGestureRecognizer"))
            return true;
        return shouldBegin.callPrevious(self, recognizer);
    });
    install(doubleTap, [](Object& self, ObjectRef recognizer) {
        if (const ObjectRef container = popupContainer(self))
            send<void>(*container, "setHidden:", true);
        KSWHDebug::pasteboardChangedStop_(self.weak_from_this());
        doubleTap.callPrevious(self, recognizer);
    });
    install(initMindmapPosition, [](Object& self, ObjectRef note) {
        initMindmapPosition.callPrevious(self, note);
        if (note)
            send<void>(*note, "setMindsizeBySize:", QSizeF(send<double>(self, "cardWidth"), 1.0));
    });
    install(dragToNote, [](Object& self, std::string sender) {
        dragToNote.callPrevious(self, sender);
        if (const ObjectRef note = send<ObjectRef>(self, "pdfFocusNote"))
            send<void>(*note, "setMindsizeBySize:", QSizeF(send<double>(self, "cardWidth"), 1.0));
    });
    install<bool(QString)>("isOnAddon:", addonChecked);
}

}  // namespace lexicorn::popup
