#include "lexicorn/reader/popup/card_protection.h"

#include "lexicorn/reader/popup/popup_support.h"

#include "lexicorn/anki/ksw_ankiconnect.h"
#include "lexicorn/anki/sync/card_sync.h"
#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/render/markup.h"
#include "lexicorn/render/note_format.h"

#include "foundation/index_path.h"
#include "foundation/pasteboard.h"

#include "runtime/hook.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QPoint>

#include <functional>
#include <string>

namespace lexicorn {

namespace {

using popup::ObjectRef;
using runtime::Object;
using runtime::send;

const QString boldTagFormat = QStringLiteral("<b>%@</b>");
const QString breaksCardMessage = QStringLiteral("修改将破坏字典卡片的数据结构！");

constexpr const char* shouldChange = "textView:shouldChangeTextInRange:replacementText:";
constexpr const char* didBegin = "textViewDidBeginEditing:";
constexpr const char* didEnd = "textViewDidEndEditing:";

using ShouldChange = runtime::Hook<bool(ObjectRef, QPoint, QString)>;
using EditingHook = runtime::Hook<void(ObjectRef)>;

constinit ShouldChange titleEditShouldChange{"NoteTitleEditView", shouldChange};
constinit ShouldChange titleBackShouldChange{"NoteTitleBackView", shouldChange};
constinit EditingHook titleBackDidBegin{"NoteTitleBackView", didBegin};
constinit EditingHook titleBackDidEnd{"NoteTitleBackView", didEnd};
constinit EditingHook cardDidBegin{"NoteCardView", didBegin};
constinit EditingHook cardDidEnd{"NoteCardView", didEnd};
constinit runtime::Hook<ObjectRef(ObjectRef, IndexPath)> cardCellForRow{"NoteCardView", "tableView:cellForRowAtIndexPath:"};
constinit runtime::Hook<double(ObjectRef, IndexPath)> cardHeightForRow{"NoteCardView", "tableView:heightForRowAtIndexPath:"};
constinit runtime::Hook<void(QJsonArray, bool)> setComments{"MbBookNote", "setNotesAndUpdateMediaList:clear:"};

bool responds(const ObjectRef& object, std::string_view selector)
{
    return object && runtime::respondsTo(*object, selector);
}

// "字典卡牌格式保护", kept by the application delegate.
bool shieldOn()
{
    const ObjectRef delegate = popup::applicationDelegate();
    return responds(delegate, "shieldDictCard") && send<bool>(*delegate, "shieldDictCard");
}

bool shielded(const ObjectRef& note)
{
    return responds(note, "isDictNote") && shieldOn() && send<bool>(*note, "isDictNote");
}

ObjectRef noteOfTitleEditor(Object& backView)
{
    const ObjectRef card = send<ObjectRef>(backView, "mnote");
    return card ? send<ObjectRef>(*card, "note") : nullptr;
}

NoteRecord recordOf(Object& note)
{
    return {send<QString>(note, "noteid"), send<QString>(note, "notetitle"), send<QString>(note, "highlight_text"),
            send<QJsonArray>(note, "notes")};
}

// A card that read back before the edit and would not after it. A card that
// was broken already may be edited freely, so the user can mend it.
bool breaksCard(const NoteRecord& before, const NoteRecord& after)
{
    return parseDictNote(JsonDictNote(before)).ok() && !parseDictNote(JsonDictNote(after)).ok();
}

bool sameCard(const NoteRecord& a, const NoteRecord& b)
{
    return a.notetitle == b.notetitle && a.highlight_text == b.highlight_text && a.notes == b.notes;
}

// Replaces the text view's text by its tags shown as bold runs; only when
// there were tags, so the caret stays where the user put it otherwise.
void showTagsAsBold(const ObjectRef& textView)
{
    const StyledText text = send<StyledText>(*textView, "attributedText");
    const StyledText bold = attrTextFromBoldTagText(text);
    if (bold.string() != text.string())
        send<void>(*textView, "setAttributedText:", bold);
}

void storeBoldAsTags(const ObjectRef& textView)
{
    send<void>(*textView, "setText:", highlighTextWithFormat(send<StyledText>(*textView, "attributedText"), boldTagFormat));
}

// A single "`", "*" or "[" typed over a selection wraps it: `w`, *w*, or the
// link [w](#w). The wrapped text goes straight into the text view, caret
// after it. False when the keystroke is not such a wrap.
bool wrapSelection(const ObjectRef& textView, QPoint range, const QString& typed)
{
    if (!textView || range.y() <= 0 || typed.size() != 1)
        return false;
    StyledText text = send<StyledText>(*textView, "attributedText");
    const QString selected = text.string().mid(range.x(), range.y());
    const QChar mark = typed.front();
    QString wrapped;
    if (mark == QLatin1Char('`') || mark == QLatin1Char('*'))
        wrapped = typed + selected + typed;
    else if (mark == QLatin1Char('['))
        wrapped = QStringLiteral("[%1](#%1)").arg(selected);
    else
        return false;
    text.replace(range.x(), range.y(), StyledText(wrapped, text.attributesAt(range.x())));
    send<void>(*textView, "setAttributedText:", text);
    if (responds(textView, "setSelectedRange:"))
        send<void>(*textView, "setSelectedRange:", QPoint(range.x() + static_cast<int>(wrapped.size()), 0));
    return true;
}

// The study board's reader, whose switches say whether cards go to Anki.
ObjectRef bookReader()
{
    const ObjectRef board = popup::studyboard();
    const ObjectRef detail = responds(board, "detailController") ? send<ObjectRef>(*board, "detailController") : nullptr;
    return responds(detail, "fBookViewController") ? send<ObjectRef>(*detail, "fBookViewController") : nullptr;
}

QString bookTitleOf(Object& reader)
{
    runtime::Class* tool = runtime::Runtime::shared().classNamed("MbModelTool");
    const ObjectRef shared = tool ? runtime::sendClass<ObjectRef>(*tool, "sharedInstance") : nullptr;
    const ObjectRef book = shared ? send<ObjectRef>(*shared, "getBookFromMd5:", send<QString>(reader, "currentBookMd5")) : nullptr;
    return book ? send<QString>(*book, "bookTitle") : QString();
}

// An edited card goes to Anki again when the reader adds cards there; an
// edit that changed nothing needs no update. A failure's message is also
// put on the pasteboard, to be pasted elsewhere.
void updateAnkiAfterEdit(const ObjectRef& note, const NoteRecord& beforeEdit)
{
    const ObjectRef reader = bookReader();
    if (!note || !reader || !popup::flag(*reader, "autoAddToAnki") || sameCard(beforeEdit, recordOf(*note)))
        return;
    if (EnWordServer::shared().cacheDictNull()) {
        popup::showHUD(syncmessage::dictNotLoaded, 2.0);
        return;
    }
    send<void>(*note, "asyncUpdateToAnkiWithTitle:showHUD:", bookTitleOf(*reader),
               std::function<void(bool, QString)>([](bool success, QString message) {
                   if (!success)
                       Pasteboard::general().setString(message);
                   popup::showHUD(message, success ? 1.0 : 2.0);
               }));
}

void clearRecognizedText(Object& card)
{
    if (!send<QString>(card, "recognize_text").isEmpty()) {
        send<void>(card, "setRecognize_text:", QString());
        send<void>(card, "refresh");
    }
}

// The host's end of a title edit, done here for a protected card: bold runs
// are stored as tags from sub-index 3 on, and a title that would no longer
// read as a card is refused (the old one stays, and the user is told why).
void endTitleEdit(Object& backView, const ObjectRef& textView, const ObjectRef& note)
{
    const ObjectRef keep = backView.shared_from_this();
    const ObjectRef card = send<ObjectRef>(backView, "mnote");
    const int subIndex = send<int>(backView, "subIndexOfNote");
    if (subIndex >= 3)
        storeBoldAsTags(textView);
    QString title = send<QString>(*textView, "text");
    const NoteRecord before = recordOf(*note);
    if (subIndex == 0) {
        NoteRecord after = before;
        after.notetitle = title;
        if (breaksCard(before, after)) {
            KSWAnkiconnect::showeAlertWithMessage_(breaksCardMessage);
            title = before.notetitle;
            send<void>(*textView, "setText:", title);
        }
    }
    const ObjectRef editor = send<ObjectRef>(backView, "editor");
    send<void>(editor ? *editor : *textView, "setNoteTitle:note:subIndexOfNote:", title, note, subIndex);
    clearRecognizedText(*card);
    send<void>(backView, "removeFromSuperview");
    send<void>(*card, "setNeedsDisplay");
    send<void>(*card, "refreshPlayer");
    send<void>(*card, "setEditBackView:", ObjectRef());
    send<void>(backView, "setEditor:", ObjectRef());
    updateAnkiAfterEdit(note, before);
}

void replaceShouldChange(ShouldChange& hook)
{
    hook.install([&hook](Object& self, ObjectRef textView, QPoint range, QString typed) {
        if (wrapSelection(textView, range, typed))
            return false;
        return hook.callPrevious(self, textView, range, typed);
    });
}

void replaceTitleBackView()
{
    titleBackDidBegin.install([](Object& self, ObjectRef textView) {
        if (textView && shielded(noteOfTitleEditor(self)))
            showTagsAsBold(textView);
        titleBackDidBegin.callPrevious(self, textView);
    });
    titleBackDidEnd.install([](Object& self, ObjectRef textView) {
        const ObjectRef note = noteOfTitleEditor(self);
        if (textView && shielded(note))
            endTitleEdit(self, textView, note);
        else
            titleBackDidEnd.callPrevious(self, textView);
    });
}

void replaceCardEditing()
{
    cardDidBegin.install([](Object& self, ObjectRef textView) {
        cardDidBegin.callPrevious(self, textView);
        if (textView && shielded(send<ObjectRef>(self, "lastNote")))
            showTagsAsBold(textView);
    });
    cardDidEnd.install([](Object& self, ObjectRef textView) {
        const ObjectRef note = send<ObjectRef>(self, "lastNote");
        const IndexPath editing = send<IndexPath>(self, "_editingIndexPath");
        if (!textView || editing.section < 0 || !shielded(note)) {
            cardDidEnd.callPrevious(self, textView);
            return;
        }
        const ObjectRef keep = self.shared_from_this();  // the window may let go of the card meanwhile
        const NoteRecord before = recordOf(*note);
        storeBoldAsTags(textView);
        cardDidEnd.callPrevious(self, textView);
        clearRecognizedText(self);
        send<void>(self, "reloadData");
        send<void>(self, "refreshPlayer");
        updateAnkiAfterEdit(note, before);
    });
}

// The trims of a card's rows: the room the host leaves below each text.
double compactHeight(Object& note, int row, double height)
{
    if (row == 0)
        return height > 15 ? height - 15 : height;
    if (row == 1)
        return height > 20 ? height - 20 : height;
    const QString type = send<QJsonArray>(note, "notes").at(row - 2).toObject().value(comment::type).toString();
    const bool body = type == comment::htmlNote || type == comment::textNote || type == QStringLiteral("LinkNote");
    return body && height > 20 ? height - 20 : height;
}

// The card's rows: comments show their tags as bold, and every row is drawn
// compactly.
void replaceCardRows()
{
    cardCellForRow.install([](Object& self, ObjectRef table, IndexPath path) {
        const ObjectRef cell = cardCellForRow.callPrevious(self, table, path);
        if (!cell || path.section != 0 || path.row < 2 || !shielded(send<ObjectRef>(self, "lastNote")))
            return cell;
        const ObjectRef textView = send<ObjectRef>(*cell, "viewWithTag:", path.row);
        if (responds(textView, "attributedText"))
            showTagsAsBold(textView);
        return cell;
    });
    cardHeightForRow.install([](Object& self, ObjectRef table, IndexPath path) {
        const double height = cardHeightForRow.callPrevious(self, table, path);
        const ObjectRef note = send<ObjectRef>(self, "lastNote");
        return path.section == 0 && shielded(note) ? compactHeight(*note, path.row, height) : height;
    });
}

// The note's comment setter refuses a list that would stop the card from
// reading back (the title editor checks titles itself).
void guardComments()
{
    setComments.install([](Object& self, QJsonArray comments, bool clear) {
        if (shielded(self.shared_from_this())) {
            const NoteRecord before = recordOf(self);
            NoteRecord after = before;
            after.notes = comments;
            if (breaksCard(before, after)) {
                KSWAnkiconnect::showeAlertWithMessage_(breaksCardMessage);
                return;
            }
        }
        setComments.callPrevious(self, comments, clear);
    });
}

}  // namespace

void installCardProtection()
{
    replaceShouldChange(titleEditShouldChange);
    replaceShouldChange(titleBackShouldChange);
    replaceTitleBackView();
    replaceCardEditing();
    replaceCardRows();
    guardComments();
}

}  // namespace lexicorn
