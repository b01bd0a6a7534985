// The book view's selection, highlights and notes, as runtime methods. The
// reader's windows turn mouse gestures into these calls; a plug-in may
// replace any of them.

#include "host/app/note_classes.h"
#include "host/app/reader_classes.h"

#include "foundation/notification_center.h"
#include "foundation/pasteboard.h"
#include "foundation/user_defaults.h"

#include "foundation/log.h"

#include <QJsonArray>
#include <QSizeF>

#include <algorithm>
#include <cmath>
#include <string>

namespace lexicorn::host {

namespace {

using runtime::makeImp;
using runtime::Object;
using ObjectRef = std::shared_ptr<Object>;

inline constexpr const char* noteEditorClassName = "MbNoteEditor";
inline constexpr const char* tapRecognizerClassName = "UITapGestureRecognizer";
// The style of a new highlight when the user chose none.
const QString defaultHighlightStyle = QStringLiteral("mbooks-annotation1");

// The book's selection as applied; none while no book is open.
const BookDocument::AppliedSelection& selectionOf(const BookViewObject& self)
{
    static const BookDocument::AppliedSelection none;
    return self.book ? self.book->selection() : none;
}

// Tells the book's views what changed (nothing while no book is open).
void notify(BookViewObject& self, BookDocument::Changes changes)
{
    if (self.book)
        self.book->notify(changes);
}

void clearSelection(BookViewObject& self)
{
    if (self.book)
        self.book->clearSelection();
}

QString selectionText(const BookViewObject& self)
{
    return selectionOf(self).text;
}

std::vector<QRectF> selectionRects(const BookViewObject& self)
{
    return selectionOf(self).rects;
}

// The selection's two points move onto its first and last characters, so
// whatever asks where the selection is (the quote's anchor, a card's
// highlight) finds its characters, not the margin the drag started in.
void snapToSelectedCharacters(BookViewObject& self)
{
    if (const auto& ends = selectionOf(self).ends) {
        self.selectionStart = ends->first;
        self.selectionEnd = ends->second;
    }
}

// A note of the selection, stored at once: the excerpt, its page and the
// rectangles of its highlight. Null without a selection or a notebook.
ObjectRef makeHighlightNote(BookViewObject& self)
{
    const std::shared_ptr<Notebook> notebook = sharedNotebook();
    const std::vector<QRectF> rects = selectionRects(self);
    if (!notebook || rects.empty())
        return nullptr;
    MbBookNote note;
    note.setHighlight_text(selectionText(self).replace(QStringLiteral("   "), QStringLiteral(" ")).simplified());
    note.setBookMd5(self.bookMd5);
    note.setPageNo(self.selectionPage);
    note.setHighlightRects(rects);
    const QString style = UserDefaults::standard().string(QStringLiteral("default_highlightStyle"));
    note.setHighlightStyle(style.isEmpty() ? defaultHighlightStyle : style);
    if (!notebook->add(note)) {
        logLine(QStringLiteral("reader: the highlight was not saved: %1").arg(notebook->errorString()));
        return nullptr;
    }
    ObjectRef object = makeBookNote(note, notebook.get());
    runtime::send<void>(self, "initMindmapPosition:", object);
    return object;
}

BookNoteObject* focusNoteOf(BookViewObject& self)
{
    return static_cast<BookNoteObject*>(self.focusNote.get());
}

void saveFocusNote(BookViewObject& self)
{
    BookNoteObject* note = focusNoteOf(self);
    if (note && note->notebook && !note->notebook->update(note->note))
        logLine(QStringLiteral("reader: note %1 was not saved: %2").arg(note->note.noteid(), note->notebook->errorString()));
    notify(self, BookDocument::Highlights | BookDocument::Notes);
}

// The word under a page point: the run without blanks around the nearest character.
QString wordAt(const PageLines& lines, const QPointF& point)
{
    const TextSelection word = selectBetween(lines, point, point, true);
    return selectedText(lines, word).trimmed();
}

void registerSelection(runtime::Runtime& runtime, runtime::Class& view)
{
    runtime.addMethod(view, "selectionStartPoint", makeImp([](BookViewObject& self) { return self.selectionStart; }));
    runtime.addMethod(view, "setSelectionStartPoint:", makeImp([](BookViewObject& self, QPointF point) { self.selectionStart = point; }));
    runtime.addMethod(view, "selectionEndPoint", makeImp([](BookViewObject& self) { return self.selectionEnd; }));
    runtime.addMethod(view, "setSelectionEndPoint:", makeImp([](BookViewObject& self, QPointF point) { self.selectionEnd = point; }));
    runtime.addMethod(view, "selectionPageNo", makeImp([](BookViewObject& self) { return self.selectionPage; }));
    runtime.addMethod(view, "setSelectionPageNo:", makeImp([](BookViewObject& self, int pageNo) { self.selectionPage = pageNo; }));
    runtime.addMethod(view, "selectionMode", makeImp([](BookViewObject& self) { return self.selectionMode; }));
    runtime.addMethod(view, "setSelectionMode:", makeImp([](BookViewObject& self, int mode) { self.selectionMode = mode; }));

    // Applies the selection as last set (select false clears it): the running
    // text between the two points in text mode, else the area they span;
    // wholeWord extends running text to whole words.
    runtime.addMethod(view, "setPDFSelection:texSelMode:wholeWord:",
                      makeImp([](BookViewObject& self, bool select, bool textMode, bool wholeWord) {
                          if (!select || !self.book) {
                              clearSelection(self);
                              return;
                          }
                          if (textMode && self.selectionMode == textSelectionMode) {
                              self.book->selectText(self.selectionPage, self.selectionStart, self.selectionEnd, wholeWord);
                              snapToSelectedCharacters(self);
                          } else {
                              self.book->selectArea(self.selectionPage,
                                                    QRectF(self.selectionStart, self.selectionEnd).normalized());
                          }
                      }));
    // Selects the characters under an area of a page at once; an empty area clears.
    runtime.addMethod(view, "setPDFSelection:pageNo:", makeImp([](BookViewObject& self, QRectF rect, int pageNo) {
        if (!self.book || rect.isEmpty()) {
            self.selectionPage = 0;
            clearSelection(self);
            return;
        }
        self.selectionMode = areaSelectionMode;
        self.selectionStart = rect.topLeft();
        self.selectionEnd = rect.bottomRight();
        self.selectionPage = pageNo;
        self.book->selectArea(pageNo, rect);
    }));
    runtime.addMethod(view, "selectionRect", makeImp([](BookViewObject& self) { return selectionOf(self).rect; }));
    runtime.addMethod(view, "selectionText", makeImp([](BookViewObject& self) { return selectionText(self); }));
    runtime.addMethod(view, "pdfSelectionLst", makeImp([](BookViewObject& self) { return selectionRects(self); }));
    runtime.addMethod(view, "refreshSelection", makeImp([](BookViewObject& self) { notify(self, BookDocument::Selection); }));
    runtime.addMethod(view, "cancelLasso", makeImp([](BookViewObject& self) {
        if (!selectionOf(self).isText)
            clearSelection(self);
    }));
    runtime.addMethod(view, "copy:", makeImp([](BookViewObject& self, std::string /*sender*/) {
        const QString text = selectionText(self);
        if (!text.isEmpty())
            Pasteboard::general().setString(text);
    }));
    // A selection taller than the page's body text stands in a heading.
    runtime.addMethod(view, "isHeadlineForSelection", makeImp([](BookViewObject& self) {
        const std::vector<QRectF> rects = selectionRects(self);
        std::vector<double> lineHeights;
        for (const CharLine& line : pageLinesOf(self, self.selectionPage)) {
            if (!line.empty())
                lineHeights.push_back(line.front().rect.height());
        }
        if (rects.empty() || lineHeights.empty())
            return false;
        std::nth_element(lineHeights.begin(), lineHeights.begin() + lineHeights.size() / 2, lineHeights.end());
        return rects.front().height() > lineHeights[lineHeights.size() / 2] * 1.3;
    }));
}

void registerNotes(runtime::Runtime& runtime, runtime::Class& view)
{
    runtime.addMethod(view, "highlightMode", makeImp([](BookViewObject& self) { return self.highlightMode; }));
    runtime.addMethod(view, "setHighlightMode:", makeImp([](BookViewObject& self, int mode) { self.highlightMode = mode; }));
    // Turns the selection into a highlight note, which becomes the focus note.
    runtime.addMethod(view, "highlight:", makeImp([](BookViewObject& self, std::string /*sender*/) {
        if (ObjectRef note = makeHighlightNote(self)) {
            self.focusNote = note;
            clearSelection(self);
            notify(self, BookDocument::Highlights | BookDocument::Notes);
        }
    }));
    // Opens the focus note for editing: the notebook panel shows it.
    runtime.addMethod(view, "noteHighlight:", makeImp([](BookViewObject& self, std::string /*sender*/) {
        if (focusNoteOf(self))
            notify(self, BookDocument::Notes);
    }));
    // A note made by dragging the selection onto the notebook.
    runtime.addMethod(view, "dragToNote:", makeImp([](BookViewObject& self, std::string sender) {
        runtime::send<void>(self, "highlight:", sender);
        runtime::send<void>(self, "noteHighlight:", sender);
    }));
    runtime.addMethod(view, "initMindmapPosition:", makeImp([](BookViewObject&, ObjectRef note) {
        if (auto* bookNote = dynamic_cast<BookNoteObject*>(note.get()); bookNote && bookNote->note.mindSize().width <= 0)
            runtime::send<void>(*note, "setMindsizeBySize:", QSizeF(400, 1));
    }));
    runtime.addMethod(view, "pdfFocusNote", makeImp([](BookViewObject& self) { return self.focusNote; }));
    runtime.addMethod(view, "setLastFocusNote:", makeImp([](BookViewObject& self, ObjectRef note) { self.focusNote = note; }));
    runtime.addMethod(view, "setTitleHighlight:", makeImp([](BookViewObject& self, QString title) {
        if (BookNoteObject* note = focusNoteOf(self)) {
            note->note.setNotetitle(title);
            saveFocusNote(self);
        }
    }));
    runtime.addMethod(view, "RefreshHighlights:", makeImp([](BookViewObject& self, std::string /*sender*/) {
        notify(self, BookDocument::Highlights | BookDocument::Notes);
    }));

    runtime::Class& editor = runtime.registerClass(noteEditorClassName, rootClassName);
    // The note editor edits the focus note; its sections are the note's parts.
    runtime.addMethod(view, "noteEditor", makeImp([editorClass = &editor](BookViewObject& self) -> ObjectRef {
        auto object = std::make_shared<Object>(*editorClass);
        object->setAssociatedObject(editorClass, std::weak_ptr<Object>(self.focusNote));
        return object;
    }));
    runtime.addMethod(editor, "noteForSection:", makeImp([editorClass = &editor](Object& self, int /*section*/) -> ObjectRef {
        const std::any stored = self.associatedObject(editorClass);
        const auto* note = std::any_cast<std::weak_ptr<Object>>(&stored);
        return note ? note->lock() : nullptr;
    }));
}

void registerNavigation(runtime::Runtime& runtime, runtime::Class& view)
{
    runtime.addMethod(view, "openLinkWithPdfPageNo:rect:", makeImp([](BookViewObject& self, int pageNo, QRectF rect) {
        runtime::send<void>(self, "setCurrentPageNo:", pageNo);
        if (self.display)
            self.display->showPlace(self.currentPage, rect.normalized());
    }));
    // A tap on a word of the page: "OpenHotword" carries the word.
    // A tap inside the selection stands for the word the user looked up, which
    // the selection may since have grown around (a card selects its sentence).
    runtime.addMethod(view, "tapHotWord:", makeImp([](BookViewObject& self, QPointF point) {
        const QPointF onPage = self.display ? self.display->viewToPage(self.currentPage, point) : point;
        const bool inSelection = self.selectionPage > 0 && selectionOf(self).rect.contains(onPage);
        const QString word = inSelection && !self.lookedUpWord.isEmpty()
            ? self.lookedUpWord
            : wordAt(pageLinesOf(self, self.selectionPage > 0 ? self.selectionPage : self.currentPage), onPage);
        if (!word.isEmpty())
            NotificationCenter::defaultCenter().postNotificationName(
                QStringLiteral("OpenHotword"), self.shared_from_this(), {{QStringLiteral("string"), word}});
    }));
    runtime.addMethod(view, "checkNotifyObject:", makeImp([](BookViewObject& self, std::shared_ptr<void> object) {
        return object.get() == static_cast<void*>(&self);
    }));
    runtime.addMethod(view, "getContextPoint:isStartOrEnd:", makeImp([](BookViewObject&, std::vector<QRectF> rects, bool atStart) {
        if (rects.empty())
            return QPointF();
        return atStart ? rects.front().topLeft() : rects.back().bottomRight();
    }));
    runtime.addMethod(view, "openContextualMenuAt:atTop:", makeImp([](BookViewObject& self, QPointF point, bool /*atTop*/) {
        self.contextMenuPoint = point;
    }));
    runtime.addMethod(view, "showContextMenu:", makeImp([](BookViewObject& self, std::string /*sender*/) {
        if (self.display)
            self.display->showContextMenu(self.selectionPage, self.contextMenuPoint);
    }));
    // The reader's add-on commands and whether each is checked: none here.
    runtime.addMethod(view, "queryAddonCommandStatus", makeImp([](BookViewObject&) { return QJsonArray(); }));
}

// Taps on the page: a double click selects the word under it; a single tap
// clears the selection. The windows make a recognizer object per gesture.
void registerGestures(runtime::Runtime& runtime, runtime::Class& view)
{
    runtime::Class& tap = runtime.registerClass(tapRecognizerClassName, rootClassName);
    runtime.addMethod(tap, "pageNo", makeImp([](TapRecognizerObject& self) { return self.pageNo; }));
    runtime.addMethod(tap, "pagePoint", makeImp([](TapRecognizerObject& self) { return self.pagePoint; }));
    runtime.addMethod(tap, "locationInView:", makeImp([](TapRecognizerObject& self, ObjectRef /*view*/) { return self.viewPoint; }));
    runtime.addMethod(tap, "numberOfTapsRequired", makeImp([](TapRecognizerObject& self) { return self.taps; }));

    runtime.addMethod(view, "gestureRecognizerShouldBegin:", makeImp([](BookViewObject&, ObjectRef) { return true; }));
    runtime.addMethod(view, "handleOneFingerDoubleClick:", makeImp([](BookViewObject& self, ObjectRef recognizer) {
        auto* tapObject = dynamic_cast<TapRecognizerObject*>(recognizer.get());
        if (!tapObject || !self.book)
            return;
        runtime::send<void>(self, "setSelectionStartPoint:", tapObject->pagePoint);
        runtime::send<void>(self, "setSelectionEndPoint:", tapObject->pagePoint);
        runtime::send<void>(self, "setSelectionPageNo:", tapObject->pageNo);
        runtime::send<void>(self, "setSelectionMode:", textSelectionMode);
        runtime::send<void>(self, "setPDFSelection:texSelMode:wholeWord:", true, true, true);
        NotificationCenter::defaultCenter().postNotificationName(QStringLiteral("PopupMenuOnSelection"), self.shared_from_this());
    }));
    runtime.addMethod(view, "handleDTapGesture:", makeImp([](BookViewObject& self, ObjectRef /*recognizer*/) { clearSelection(self); }));
}

}  // namespace

std::shared_ptr<TapRecognizerObject> makeTapRecognizer(int taps, int pageNo, QPointF pagePoint, QPointF viewPoint,
                                                       runtime::Runtime& runtime)
{
    registerReaderClasses(runtime);
    auto recognizer = std::make_shared<TapRecognizerObject>(*runtime.classNamed(tapRecognizerClassName));
    recognizer->taps = taps;
    recognizer->pageNo = pageNo;
    recognizer->pagePoint = pagePoint;
    recognizer->viewPoint = viewPoint;
    return recognizer;
}

void registerBookViewMethods(runtime::Runtime& runtime)
{
    runtime::Class& view = *runtime.classNamed(bookViewClassName);
    registerSelection(runtime, view);
    registerNotes(runtime, view);
    registerNavigation(runtime, view);
    registerGestures(runtime, view);
}

}  // namespace lexicorn::host
