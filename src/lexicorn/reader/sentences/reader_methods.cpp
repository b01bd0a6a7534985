#include "lexicorn/reader/sentences/reader_methods.h"

#include "lexicorn/reader/sentences/hook_pdf_page_text_tool.h"
#include "lexicorn/reader/sentences/raw_line_format.h"

#include "runtime/runtime.h"

#include <QRectF>
#include <QString>

namespace lexicorn {

namespace {

using runtime::makeImp;
using runtime::Object;
using ObjectRef = std::shared_ptr<Object>;

// The page text of an opened document, asked of the host's PdfObjCAPI; a
// host without one gives pages without text.
PageLines pageTextThroughHost(std::int64_t viewHandle, int pageNo)
{
    runtime::Class* api = runtime::Runtime::shared().classNamed("PdfObjCAPI");
    if (!api)
        return {};
    const ObjectRef document = runtime::sendClass<ObjectRef>(*api, "initWithViewHandle:", viewHandle);
    return document ? runtime::send<PageLines>(*document, "textContentsForPageNo:", pageNo) : PageLines();
}

// The running text of the selection rectangle on a page of the view's book.
const auto rawLineFormatOnPage = [](Object& self, QRectF selection, int pageNo) {
    const std::int64_t viewHandle = runtime::send<std::int64_t>(self, "pdfViewHandle");
    return rawLineFormat(pageTextThroughHost(viewHandle, pageNo), selection);
};

}  // namespace

void installReaderMethods()
{
    HookPDFPageTextTool::setPageTextSource(pageTextThroughHost);
    runtime::Runtime& runtime = runtime::Runtime::shared();
    if (runtime::Class* view = runtime.classNamed("BookViewController")) {
        runtime.addMethod(*view, "rawLineFormatForSelected:pageNo:", makeImp(rawLineFormatOnPage));
        runtime.addMethod(*view, "rawLineFormatForSelected", makeImp([](Object& self) {
            return runtime::send<QString>(self, "rawLineFormatForSelected:pageNo:", runtime::send<QRectF>(self, "selectionRect"),
                                          runtime::send<int>(self, "selectionPageNo"));
        }));
    }
    if (runtime::Class* detail = runtime.classNamed("MbUIDetailViewController"))
        runtime.addMethod(*detail, "rawLineFormatForSelected:pageNo:", makeImp(rawLineFormatOnPage));
}

}  // namespace lexicorn
