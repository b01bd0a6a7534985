#pragma once

// The reader's book view and its helpers as runtime objects: the book view
// controller (open and close a book, the current page, the selection), the
// page-text interface over Poppler and the book records of the notebook.

#include "host/app/book_document.h"
#include "host/app/host_classes.h"
#include "host/app/text_selection.h"
#include "host/notebook/mb_model_tool.h"
#include "host/pdf/pdf_objc_api.h"

#include "runtime/runtime.h"

#include <QPointF>
#include <QRectF>
#include <QString>

#include <memory>

namespace lexicorn::host {

inline constexpr const char* bookViewClassName = "BookViewController";
inline constexpr const char* pdfApiClassName = "PdfObjCAPI";
inline constexpr const char* modelToolClassName = "MbModelTool";
inline constexpr const char* bookClassName = "MbBook";

// What shows a book view on screen. The windowless model works without
// one; the reader's window installs itself here. The changes of the book
// (selection, highlights, notes) reach the views from its BookDocument.
class BookDisplay {
public:
    virtual ~BookDisplay() = default;
    // Scrolls so that the area of the page (the page's top when empty) shows.
    virtual void showPlace(int pageNo, const QRectF& area) = 0;
    // The reader's menu of what to do with the selection, at a page point.
    virtual void showContextMenu(int pageNo, const QPointF& point) = 0;
    // A point of the page's view (as the page image shows it) in page points.
    virtual QPointF viewToPage(int pageNo, const QPointF& point) const = 0;
};

// A tap or click on a page: "pageNo", "pagePoint" (page points),
// "locationInView:" (the book view's coordinates) and "numberOfTapsRequired".
class TapRecognizerObject : public runtime::Object {
public:
    explicit TapRecognizerObject(runtime::Class& cls) : Object(cls) {}
    int taps = 1;
    int pageNo = 0;
    QPointF pagePoint;
    QPointF viewPoint;
};

// The selection modes of "setSelectionMode:": the characters under an area,
// or the running text from the start point to the end point.
inline constexpr int areaSelectionMode = 1;
inline constexpr int textSelectionMode = 2;

// The book view. Book: "openBook:topicid:noteid:bookLocation:" (book MD5,
// topic id, note id, page number), "closeBook", "currentBookMd5",
// "currentPageNo", "setCurrentPageNo:", "pdfViewHandle" (0 while no book is
// open). Selection (book_view_methods.cpp): the start and end points, page
// and mode are set first, then "setPDFSelection:texSelMode:wholeWord:"
// applies them; "setPDFSelection:pageNo:" selects an area at once.
// Highlights and notes: "highlight:", "noteHighlight:", "pdfFocusNote",
// "setTitleHighlight:", "noteEditor".
class BookViewObject : public ViewControllerObject {
public:
    explicit BookViewObject(runtime::Class& cls) : ViewControllerObject(cls) {}
    // The open book (null while none is): its PDF, page text, selection and
    // highlights.
    std::shared_ptr<BookDocument> book;
    // A book the window has already opened for the next openBook of the
    // same file, so the PDF is not read twice.
    std::shared_ptr<BookDocument> openingBook;
    QString bookMd5;
    int currentPage = 0;

    // The selection as last set: its points (page coordinates), page and mode.
    QPointF selectionStart;
    QPointF selectionEnd;
    int selectionPage = 0;
    int selectionMode = textSelectionMode;
    // The selection as applied is the book's (BookDocument::selection).
    // The text the user last selected for a lookup; a tap inside the
    // selection afterwards stands for it.
    QString lookedUpWord;

    std::shared_ptr<runtime::Object> focusNote;  // the note last made or chosen
    int highlightMode = 0;  // 1: the highlighter is on, a selection is highlighted at once
    QPointF contextMenuPoint;
    BookDisplay* display = nullptr;
};

// "+initWithViewHandle:" makes one for an opened document;
// "textContentsForPageNo:" gives that page's lines of character records
// (empty once the document is closed).
class PdfApiObject : public runtime::Object {
public:
    PdfApiObject(runtime::Class& cls, std::int64_t viewHandle) : Object(cls), viewHandle(viewHandle) {}
    std::int64_t viewHandle;
};

// "+sharedInstance" is the reader's (absent until a notebook is open);
// "getBookFromMd5:" gives an MbBook ("bookMd5", "bookTitle", "path") or null.
class ModelToolObject : public runtime::Object {
public:
    ModelToolObject(runtime::Class& cls, std::shared_ptr<Notebook> notebook)
        : Object(cls), notebook(std::move(notebook)), tool(*this->notebook)
    {
    }
    std::shared_ptr<Notebook> notebook;
    MbModelTool tool;
};

class BookObject : public runtime::Object {
public:
    BookObject(runtime::Class& cls, MbBook book) : Object(cls), book(std::move(book)) {}
    MbBook book;
};

// The text the reader's text layer gives for a selection: the selected
// characters of each line (those whose centre lies in the rectangle), lines
// set apart by three blanks as the layer lays them out.
QString selectionTextOf(const PageLines& lines, const QRectF& selection);

// Registers the classes (after the application's own); safe to call again.
void registerReaderClasses(runtime::Runtime& runtime = runtime::Runtime::shared());

// The notebook of the shared model tool, or null.
std::shared_ptr<Notebook> sharedNotebook();

// The page text of the open book's page, or nothing.
PageLines pageLinesOf(const BookViewObject& view, int pageNo);

// Adds the selection, highlight and note methods (book_view_methods.cpp).
void registerBookViewMethods(runtime::Runtime& runtime);

std::shared_ptr<TapRecognizerObject> makeTapRecognizer(int taps, int pageNo, QPointF pagePoint, QPointF viewPoint,
                                                       runtime::Runtime& runtime = runtime::Runtime::shared());

std::shared_ptr<BookViewObject> makeBookView(runtime::Runtime& runtime = runtime::Runtime::shared());
// Makes the model tool of this open notebook the shared one; null clears it.
void setSharedModelTool(std::shared_ptr<Notebook> notebook, runtime::Runtime& runtime = runtime::Runtime::shared());

}  // namespace lexicorn::host
