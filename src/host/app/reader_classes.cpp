#include "host/app/reader_classes.h"

#include "host/app/host_classes.h"

#include "lexicorn/reader/sentences/raw_line_format.h"

#include "foundation/log.h"

#include <algorithm>

namespace lexicorn::host {

namespace {

using runtime::makeImp;
using runtime::Object;
using ObjectRef = std::shared_ptr<Object>;

// A page of the open book; a document without pages still has page 1.
int pageWithin(const BookDocument& book, int pageNo)
{
    return std::clamp(pageNo, 1, std::max(1, book.pageCount()));
}

std::shared_ptr<ModelToolObject>& sharedModelTool()
{
    static std::shared_ptr<ModelToolObject> tool;
    return tool;
}

void openBook(BookViewObject& self, const QString& md5, int pageNo)
{
    runtime::send<void>(self, "closeBook");
    const std::shared_ptr<ModelToolObject>& tool = sharedModelTool();
    const std::optional<MbBook> book = tool ? tool->tool.getBookFromMd5_(md5) : std::nullopt;
    if (!book) {
        logLine(QStringLiteral("reader: no book with MD5 %1").arg(md5));
        return;
    }
    std::shared_ptr<BookDocument> document = std::move(self.openingBook);
    if (!document || document->path() != book->path)
        document = std::make_shared<BookDocument>(book->path);
    if (!document->isOpen()) {
        logLine(QStringLiteral("reader: %1 does not open as a PDF").arg(book->path));
        return;
    }
    document->setBook(tool->notebook, md5);
    self.book = std::move(document);
    self.bookMd5 = md5;
    self.currentPage = pageWithin(*self.book, pageNo);
}

void registerBookView(runtime::Runtime& runtime)
{
    runtime::Class& view = runtime.registerClass(bookViewClassName, viewControllerClassName);
    runtime.addMethod(view, "openBook:topicid:noteid:bookLocation:",
                      makeImp([](BookViewObject& self, QString md5, QString /*topicid*/, QString /*noteid*/, int pageNo) {
                          openBook(self, md5, pageNo);
                      }));
    runtime.addMethod(view, "closeBook", makeImp([](BookViewObject& self) {
        self.book.reset();
        self.bookMd5.clear();
        self.currentPage = 0;
        self.selectionPage = 0;
        self.focusNote.reset();
    }));
    runtime.addMethod(view, "currentBookMd5", makeImp([](BookViewObject& self) { return self.bookMd5; }));
    runtime.addMethod(view, "currentPageNo", makeImp([](BookViewObject& self) { return self.currentPage; }));
    runtime.addMethod(view, "setCurrentPageNo:", makeImp([](BookViewObject& self, int pageNo) {
        if (self.book)
            self.currentPage = pageWithin(*self.book, pageNo);
    }));
    runtime.addMethod(view, "pdfViewHandle",
                      makeImp([](BookViewObject& self) { return self.book ? self.book->pdf().viewHandle() : std::int64_t(0); }));
    registerBookViewMethods(runtime);
}

void registerPageText(runtime::Runtime& runtime)
{
    runtime::Class& api = runtime.registerClass(pdfApiClassName, rootClassName);
    runtime.addClassMethod(api, "initWithViewHandle:", makeImp([](runtime::Class& cls, std::int64_t viewHandle) -> ObjectRef {
                               return std::make_shared<PdfApiObject>(cls, viewHandle);
                           }));
    runtime.addMethod(api, "textContentsForPageNo:", makeImp([](PdfApiObject& self, int pageNo) {
        const PdfObjCAPI* document = PdfObjCAPI::withViewHandle(self.viewHandle);
        return document ? document->textContentsForPageNo_(pageNo) : PageLines();
    }));
}

void registerBooks(runtime::Runtime& runtime)
{
    runtime::Class& tool = runtime.registerClass(modelToolClassName, rootClassName);
    runtime::Class& book = runtime.registerClass(bookClassName, rootClassName);
    runtime.addClassMethod(tool, "sharedInstance", makeImp([](runtime::Class&) -> ObjectRef { return sharedModelTool(); }));
    runtime.addMethod(tool, "getBookFromMd5:", makeImp([bookClass = &book](ModelToolObject& self, QString md5) -> ObjectRef {
                          std::optional<MbBook> found = self.tool.getBookFromMd5_(md5);
                          if (!found)
                              return nullptr;
                          return std::make_shared<BookObject>(*bookClass, std::move(*found));
                      }));
    runtime.addMethod(book, "bookMd5", makeImp([](BookObject& self) { return self.book.bookMd5; }));
    runtime.addMethod(book, "bookTitle", makeImp([](BookObject& self) { return self.book.bookTitle; }));
    runtime.addMethod(book, "path", makeImp([](BookObject& self) { return self.book.path; }));
}

}  // namespace

std::shared_ptr<Notebook> sharedNotebook()
{
    return sharedModelTool() ? sharedModelTool()->notebook : nullptr;
}

PageLines pageLinesOf(const BookViewObject& view, int pageNo)
{
    return view.book ? view.book->pdf().textContentsForPageNo_(pageNo) : PageLines();
}

QString selectionTextOf(const PageLines& lines, const QRectF& selection)
{
    return selectedLineTexts(lines, selection).join(QStringLiteral("   "));
}

void registerReaderClasses(runtime::Runtime& runtime)
{
    registerHostClasses(runtime);
    if (runtime.classNamed(bookViewClassName))
        return;
    registerBookView(runtime);
    registerPageText(runtime);
    registerBooks(runtime);
}

std::shared_ptr<BookViewObject> makeBookView(runtime::Runtime& runtime)
{
    registerReaderClasses(runtime);
    return std::make_shared<BookViewObject>(*runtime.classNamed(bookViewClassName));
}

void setSharedModelTool(std::shared_ptr<Notebook> notebook, runtime::Runtime& runtime)
{
    registerReaderClasses(runtime);
    sharedModelTool() = notebook ? std::make_shared<ModelToolObject>(*runtime.classNamed(modelToolClassName), std::move(notebook))
                                 : nullptr;
}

}  // namespace lexicorn::host
