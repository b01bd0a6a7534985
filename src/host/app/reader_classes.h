#pragma once

// The reader's book view and its helpers as runtime objects: the book view
// controller (open and close a book, the current page, the selection), the
// page-text interface over Poppler and the book records of the notebook.

#include "host/app/host_classes.h"
#include "host/notebook/mb_model_tool.h"
#include "host/pdf/pdf_objc_api.h"

#include "runtime/runtime.h"

#include <QRectF>
#include <QString>

#include <memory>

namespace lexicorn::host {

inline constexpr const char* bookViewClassName = "BookViewController";
inline constexpr const char* pdfApiClassName = "PdfObjCAPI";
inline constexpr const char* modelToolClassName = "MbModelTool";
inline constexpr const char* bookClassName = "MbBook";

// The book view: "openBook:topicid:noteid:bookLocation:" (book MD5, topic
// id, note id, page number), "closeBook", "currentBookMd5", "currentPageNo",
// "setCurrentPageNo:", "pdfViewHandle" (0 while no book is open),
// "setPDFSelection:pageNo:" (a rectangle in page coordinates; an empty one
// clears the selection), "selectionRect", "selectionPageNo" and
// "selectionText".
class BookViewObject : public ViewControllerObject {
public:
    explicit BookViewObject(runtime::Class& cls) : ViewControllerObject(cls) {}
    std::unique_ptr<PdfObjCAPI> document;
    QString bookMd5;
    int currentPage = 0;
    QRectF selectionRect;
    int selectionPage = 0;
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

std::shared_ptr<BookViewObject> makeBookView(runtime::Runtime& runtime = runtime::Runtime::shared());
// Makes the model tool of this open notebook the shared one; null clears it.
void setSharedModelTool(std::shared_ptr<Notebook> notebook, runtime::Runtime& runtime = runtime::Runtime::shared());

}  // namespace lexicorn::host
