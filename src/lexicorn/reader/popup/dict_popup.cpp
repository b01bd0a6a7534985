// The popup's classes, its table's data source and delegate methods on the
// book view controller, its frame, and the book's opening and closing.

#include "lexicorn/reader/popup/dict_popup.h"

#include "lexicorn/reader/popup/popup_methods.h"
#include "lexicorn/reader/popup/popup_support.h"

#include "lexicorn/clipboard/ksw_hdebug.h"
#include "lexicorn/dictionary/en_word_server.h"

#include "foundation/notification_center.h"
#include "foundation/pasteboard.h"
#include "foundation/paths.h"

#include "lexicorn/render/styled_text.h"

#include <QFileInfo>

namespace lexicorn {

namespace {

using namespace popup;
using runtime::makeImp;
using runtime::Object;
using runtime::send;

void registerPopupClasses(runtime::Runtime& runtime)
{
    runtime::Class* hostTable = runtime.classNamed("UITableView");
    runtime::Class* hostCell = runtime.classNamed("UITableViewCell");
    if (!hostTable || !hostCell || runtime.classNamed(tableClassName))
        return;
    runtime::Class& table = runtime.registerClass(tableClassName, "UITableView");
    runtime::addProperty<ObjectRef>(table, "enWordData");
    runtime::addProperty<QString>(table, "word");
    runtime::addProperty<QString>(table, "reading");
    runtime::addProperty<StyledSections>(table, "texts");
    runtime::addProperty<DictDataPtr>(table, "dictData");
    // The table is the delegate of every cell's text view: an edit of the
    // translation row goes into the rows.
    runtime.addMethod(table, "textViewDidEndEditing:", makeImp([](Object& self, ObjectRef textView) {
        const StyledText edited = send<StyledText>(*textView, "attributedText");
        setTexts(self, modify(textsOf(self), edited, send<int>(*textView, "tag")));
    }));

    runtime::Class& cell = runtime.registerClass(cellClassName, "UITableViewCell");
    runtime::addProperty<ObjectRef>(cell, "textView");
    runtime::addProperty<ObjectRef>(cell, "add");
    runtime::Class* cellSuperclass = hostCell;
    runtime.addMethod(cell, "initWithStyle:reuseIdentifier:", makeImp([cellSuperclass](Object& self, int style, QString identifier) {
        const ObjectRef made = runtime::callPrevious<ObjectRef>(runtime::Imp(), cellSuperclass, self, "initWithStyle:reuseIdentifier:",
                                                                style, identifier);
        runtime::Class& textViewClass = *runtime::Runtime::shared().classNamed("UITextView");
        const ObjectRef textView = runtime::sendClass<ObjectRef>(textViewClass, "textViewWithFrame:", send<QRectF>(self, "bounds"));
        send<void>(*textView, "setAutoresizingMask:", 18);
        send<void>(*textView, "setContinuousSpellCheckingEnabled:", false);
        send<void>(*textView, "setUserInteractionEnabled:", false);
        send<void>(*textView, "setAllowsEditingTextAttributes:", true);
        send<void>(*textView, "setBackgroundColor:", popupGrey);
        send<void>(*textView, "setTextColor:", QColor(Qt::white));
        send<void>(*textView, "setFontSize:", 16.0);
        send<void>(*send<ObjectRef>(self, "contentView"), "addSubview:", textView);
        send<void>(self, "setTextView:", textView);
        return made;
    }));
}

// The popup's frame (window coordinates): a band 40 points from the top or
// the bottom, away from the selection, on the side away from the mind map.
QRectF popupFrame(Object& self, bool mapOnRight, QPointF point)
{
    const ObjectRef view = send<ObjectRef>(self, "view");
    const QRectF viewFrame = send<QRectF>(*view, "frame");
    const QRectF window = send<QRectF>(*send<ObjectRef>(*view, "window"), "frame");
    const double height = window.height() / 2.5;
    const double width = viewFrame.width() - 40;
    double y = 40;
    if (point == QPointF(0, 0)) {
        const ObjectRef container = popupContainer(self);
        y = container ? frameInWindow(*container).y() : 0;
    } else if (point.y() < window.height() * 0.5) {
        y = window.height() - height - 40;
    }
    const double x = mapOnRight ? 20 : window.width() - width - 20;
    return QRectF(x, y, width, height);
}

// The controller is the data source and delegate of the host's own tables
// too: for those, these methods hand the call to the host's own.
constinit runtime::Hook<int(ObjectRef)> numberOfSections{controllerClass, "numberOfSectionsInTableView:"};
constinit runtime::Hook<int(ObjectRef, int)> numberOfRows{controllerClass, "tableView:numberOfRowsInSection:"};
constinit runtime::Hook<double(ObjectRef, IndexPath)> rowHeight{controllerClass, "tableView:heightForRowAtIndexPath:"};
constinit runtime::Hook<ObjectRef(ObjectRef, IndexPath)> rowCell{controllerClass, "tableView:cellForRowAtIndexPath:"};
constinit runtime::Hook<void(ObjectRef, IndexPath)> rowSelected{controllerClass, "tableView:didSelectRowAtIndexPath:"};

void installTableMethods()
{
    install(numberOfSections, [](Object& self, ObjectRef table) {
        if (!isPopupTable(table))
            return numberOfSections.callPrevious(self, table);
        return static_cast<int>(textsOf(*table).size());
    });
    install(numberOfRows, [](Object& self, ObjectRef table, int section) {
        if (!isPopupTable(table))
            return numberOfRows.callPrevious(self, table, section);
        const StyledSections texts = textsOf(*table);
        return section < static_cast<int>(texts.size()) ? static_cast<int>(texts[section].size()) - 1 : 0;
    });
    // The host's own tables have no section headers; only the popup's get one.
    install<double(ObjectRef, int)>("tableView:heightForHeaderInSection:", [](Object&, ObjectRef table, int) {
        return isPopupTable(table) ? 30.0 : 0.0;
    });
    install<ObjectRef(ObjectRef, int)>("tableView:viewForHeaderInSection:", [](Object&, ObjectRef table, int section) -> ObjectRef {
        if (!isPopupTable(table))
            return nullptr;
        runtime::Runtime& rt = runtime::Runtime::shared();
        const QRectF frame(0, 0, send<QRectF>(*table, "bounds").width(), 30);
        const ObjectRef header = runtime::sendClass<ObjectRef>(*rt.classNamed("UIView"), "viewWithFrame:", frame);
        const ObjectRef text = runtime::sendClass<ObjectRef>(*rt.classNamed("UITextView"), "textViewWithFrame:", frame);
        send<void>(*text, "setEditable:", false);
        send<void>(*text, "setScrollEnabled:", false);
        send<void>(*text, "setBackgroundColor:", QColor(128, 0, 128));
        const StyledSections texts = textsOf(*table);
        if (section < static_cast<int>(texts.size()) && !texts[section].empty())
            send<void>(*text, "setAttributedText:", texts[section][0]);
        if (runtime::respondsTo(*text, "setContinuousSpellCheckingEnabled:"))
            send<void>(*text, "setContinuousSpellCheckingEnabled:", false);
        send<void>(*text, "setAutoresizingMask:", 18);
        send<void>(*header, "addSubview:", text);
        return header;
    });
    install(rowHeight, [](Object& self, ObjectRef table, IndexPath path) {
        if (!isPopupTable(table))
            return rowHeight.callPrevious(self, table, path);
        const StyledSections texts = textsOf(*table);
        const StyledText& line = texts.at(path.section).at(path.row + 1);
        if (line.isEmpty())
            return 40.0;
        runtime::Class& cardView = *runtime::Runtime::shared().classNamed("NoteCardView");
        const double width = send<QRectF>(*table, "bounds").width();
        return runtime::sendClass<double>(cardView, "boundingHeightForWidth:withAttributedString:", width, line) + 2.0;
    });
    install(rowCell, [](Object& self, ObjectRef table, IndexPath path) -> ObjectRef {
        if (!isPopupTable(table))
            return rowCell.callPrevious(self, table, path);
        const QString identifier = QString::fromLatin1(cellIdentifier);
        ObjectRef cell = send<ObjectRef>(*table, "dequeueReusableCellWithIdentifier:", identifier);
        if (!cell)
            cell = runtime::sendClass<ObjectRef>(*runtime::Runtime::shared().classNamed(cellClassName), "newWithStyle:reuseIdentifier:", 0,
                                                 identifier);
        const ObjectRef textView = send<ObjectRef>(*cell, "textView");
        const bool translationRow = path.section == 0 && path.row == 1;
        send<void>(*textView, "setUserInteractionEnabled:", translationRow);
        send<void>(*textView, "setEditable:", translationRow);
        send<void>(*textView, "setAttributedText:", textsOf(*table).at(path.section).at(path.row + 1));
        send<void>(*textView, "setDelegate:", table);
        send<void>(*textView, "setTag:", path.section * 1000 + path.row);
        const bool correcting = path.section == 0 && path.row == 0 && flag(self, "isCorrecting");
        send<void>(*textView, "setBackgroundColor:", correcting ? QColor(Qt::red) : QColor(Qt::black));
        return cell;
    });
    install(rowSelected, [](Object& self, ObjectRef table, IndexPath path) {
        if (!isPopupTable(table))
            return rowSelected.callPrevious(self, table, path);
        tapOnRow(self, *table, path);
    });
}

void installFrameMethods()
{
    install<QRectF(bool, QPointF)>("enDictFrameWithMap:withPoint:", popupFrame);
    install<void(bool, QPointF)>("moveEnDictPositionWithMap:withPoint:", [](Object& self, bool map, QPointF point) {
        if (const ObjectRef container = popupContainer(self))
            setFrameInWindow(*container, send<QRectF>(self, "enDictFrameWithMap:withPoint:", map, point));
    });
    install<QString(Sentence)>("sentenceWithDict:", [](Object&, Sentence sentence) { return sentenceText(sentence); });
}

// Per controller: the observers of its open book.
const char observersKey = 0;

void removeObservers(Object& self)
{
    const std::any stored = self.associatedObject(&observersKey);
    if (const auto* tokens = std::any_cast<std::vector<NotificationCenter::Token>>(&stored)) {
        for (NotificationCenter::Token token : *tokens)
            NotificationCenter::defaultCenter().removeObserver(token);
    }
    self.setAssociatedObject(&observersKey, std::any());
}

void observe(Object& self)
{
    removeObservers(self);
    std::weak_ptr<Object> weakSelf = self.weak_from_this();
    auto forward = [weakSelf](const char* selector) {
        return [weakSelf, selector](const Notification& notification) {
            if (const ObjectRef alive = weakSelf.lock())
                send<void>(*alive, selector, notification);
        };
    };
    NotificationCenter& center = NotificationCenter::defaultCenter();
    self.setAssociatedObject(&observersKey, std::vector<NotificationCenter::Token>{
                                                center.addObserverForName(QStringLiteral("PopupMenuOnSelection"), forward("popDict:")),
                                                center.addObserverForName(QStringLiteral("OpenHotword"), forward("openHotWord:"))});
}

void hideAnkiSelectionTable()
{
    const ObjectRef board = studyboard();
    if (!board || !runtime::respondsTo(*board, "ankiconnectSettingView"))
        return;
    const ObjectRef panel = send<ObjectRef>(*board, "ankiconnectSettingView");
    if (panel && runtime::respondsTo(*panel, "selectionTableView")) {
        if (const ObjectRef table = send<ObjectRef>(*panel, "selectionTableView"))
            send<void>(*table, "setHidden:", true);
    }
}

void dropPopup(Object& self)
{
    if (const ObjectRef container = popupContainer(self)) {
        send<void>(*container, "setHidden:", true);
        send<void>(*container, "removeFromSuperview");
    }
    send<void>(self, "setEnDictContainer:", ObjectRef());
}

// The selected dictionary's file must be in Dict; when it is not, the user
// is told where it belongs and gets the path on the pasteboard.
void checkDictionaryFile()
{
    const QString fileName = EnWordServer::shared().dictFileName();
    QString path = QStringLiteral("%1/Dict/%2").arg(homeDirectory(), fileName);
    if (!QFileInfo::exists(path) && fileName == QStringLiteral("collins_html.json"))
        path = QStringLiteral("%1/Dict/%2").arg(homeDirectory(), QStringLiteral("collins.json"));
    if (QFileInfo::exists(path))
        return;
    showHUD(QStringLiteral("%1 文件未找到，正确路径已复制到剪切板！").arg(path), 5.0);
    Pasteboard::general().setString(path);
}

constinit runtime::Hook<void(QString, QString, QString, int)> openBook{controllerClass, "openBook:topicid:noteid:bookLocation:"};
constinit runtime::Hook<void()> closeBook{controllerClass, "closeBook"};

void installBookMethods()
{
    install(openBook, [](Object& self, QString md5, QString topic, QString note, int location) {
        dropPopup(self);
        hideAnkiSelectionTable();
        openBook.callPrevious(self, md5, topic, note, location);
        observe(self);
        checkDictionaryFile();
        KSWHDebug::pasteboardChangedStop_(self.weak_from_this());
        setFlag(self, "isCorrecting", false);
    });
    install(closeBook, [](Object& self) {
        dropPopup(self);
        hideAnkiSelectionTable();
        removeObservers(self);
        KSWHDebug::pasteboardChangedStop_(self.weak_from_this());
        closeBook.callPrevious(self);
    });
}

}  // namespace

void installPopupMethods(std::function<std::shared_ptr<runtime::Object>()> applicationDelegate)
{
    runtime::Runtime& runtime = runtime::Runtime::shared();
    runtime::Class* view = runtime.classNamed("BookViewController");
    if (!view)
        return;
    setApplicationDelegateSource(std::move(applicationDelegate));
    registerPopupClasses(runtime);
    installTableMethods();
    installFrameMethods();
    installBookMethods();
    installLookupMethods();
    installSentenceSelection();
}

}  // namespace lexicorn
