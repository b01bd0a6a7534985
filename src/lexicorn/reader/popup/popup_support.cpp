#include "lexicorn/reader/popup/popup_support.h"

#include "lexicorn/reader/sentences/hook_pdf_page_text_tool.h"

#include <string>

namespace lexicorn::popup {

using runtime::send;

namespace {

std::function<ObjectRef()>& delegateSource()
{
    static std::function<ObjectRef()> source;
    return source;
}

}  // namespace

ObjectRef applicationDelegate()
{
    return delegateSource() ? delegateSource()() : nullptr;
}

void setApplicationDelegateSource(std::function<ObjectRef()> source)
{
    delegateSource() = std::move(source);
}

ObjectRef studyboard()
{
    const ObjectRef delegate = applicationDelegate();
    return delegate && runtime::respondsTo(*delegate, "studyboardController") ? send<ObjectRef>(*delegate, "studyboardController")
                                                                               : nullptr;
}

void showHUD(const QString& text, double seconds)
{
    if (const ObjectRef delegate = applicationDelegate())
        send<void>(*delegate, "showHUD:onView:withDuration:", text.toStdString(), std::string(), seconds);
}

bool flag(runtime::Object& controller, const char* name)
{
    return runtime::respondsTo(controller, name) && send<bool>(controller, name);
}

void setFlag(runtime::Object& controller, const char* name, bool value)
{
    const std::string setter = runtime::setterName(name);
    if (runtime::respondsTo(controller, setter))
        send<void>(controller, setter, value);
}

ObjectRef popupContainer(runtime::Object& controller)
{
    return send<ObjectRef>(controller, "enDictContainer");
}

ObjectRef popupTable(runtime::Object& controller)
{
    const ObjectRef container = popupContainer(controller);
    if (!container)
        return nullptr;
    const auto subviews = send<std::vector<ObjectRef>>(*container, "subviews");
    return subviews.empty() ? nullptr : subviews.front();
}

bool isPopupTable(const ObjectRef& table)
{
    const runtime::Class* popupClass = runtime::Runtime::shared().classNamed(tableClassName);
    return table && popupClass && table->objectClass().isSubclassOf(*popupClass);
}

StyledSections textsOf(runtime::Object& table)
{
    return send<StyledSections>(table, "texts");
}

void setTexts(runtime::Object& table, StyledSections texts)
{
    send<void>(table, "setTexts:", std::move(texts));
}

DictDataPtr dictDataOf(runtime::Object& table)
{
    return send<DictDataPtr>(table, "dictData");
}

namespace {

QPointF superviewOriginInWindow(runtime::Object& view)
{
    const ObjectRef superview = send<ObjectRef>(view, "superview");
    return superview ? send<QPointF>(*superview, "convertPoint:toView:", QPointF(0, 0), ObjectRef()) : QPointF(0, 0);
}

}  // namespace

QRectF frameInWindow(runtime::Object& container)
{
    return send<QRectF>(container, "frame").translated(superviewOriginInWindow(container));
}

void setFrameInWindow(runtime::Object& container, const QRectF& frame)
{
    send<void>(container, "setFrame:", frame.translated(-superviewOriginInWindow(container)));
}

QPointF selectionAnchor(runtime::Object& controller)
{
    const QPointF start = send<QPointF>(controller, "selectionStartPoint");
    const QPointF end = send<QPointF>(controller, "selectionEndPoint");
    return QPointF((start.x() + end.x()) * 0.5, (start.y() + end.y()) * 0.5);
}

QPointF anchorInWindow(runtime::Object& controller, const QPointF& anchor)
{
    const ObjectRef pageView = send<ObjectRef>(controller, "currPageView");
    const ObjectRef imageView = pageView ? send<ObjectRef>(*pageView, "imageView") : nullptr;
    if (!imageView)
        return anchor;
    const QPointF inImage = send<QPointF>(*imageView, "cvtToView:", anchor);
    return send<QPointF>(*imageView, "convertPoint:toView:", inImage, ObjectRef());
}

int selectionPage(runtime::Object& controller)
{
    const int page = send<int>(controller, "selectionPageNo");
    return page > 0 ? page : send<int>(controller, "currentPageNo");
}

Sentences pageSentences(runtime::Object& controller, int pageNo, bool sections)
{
    const std::int64_t viewHandle = send<std::int64_t>(controller, "pdfViewHandle");
    const QString md5 = send<QString>(controller, "currentBookMd5");
    return sections ? HookPDFPageTextTool::sectionWithViewHandle_pageNo_bookMD5_(viewHandle, pageNo, md5)
                    : HookPDFPageTextTool::sentenceWithViewHandle_pageNo_bookMD5_(viewHandle, pageNo, md5);
}

std::optional<Sentence> sentenceAt(const Sentences& sentences, const QPointF& point)
{
    for (const Sentence& sentence : sentences) {
        for (const CharRecord& record : sentence) {
            if (record.rect.contains(point))
                return sentence;
        }
    }
    return std::nullopt;
}

QString sentenceText(const Sentence& sentence)
{
    QString text;
    for (const CharRecord& record : sentence) {
        text.append(QChar(record.ch));
        if (record.lineEnd)
            text.append(u' ');
    }
    return text;
}

std::vector<QRectF> sentenceLineRects(const Sentence& sentence)
{
    std::vector<QRectF> lines;
    QRectF line;
    for (const CharRecord& record : sentence) {
        line = line.united(record.rect);
        if (record.lineEnd) {
            lines.push_back(line);
            line = QRectF();
        }
    }
    return lines;
}

void selectLines(runtime::Object& controller, const std::vector<QRectF>& lines, int pageNo)
{
    if (lines.empty())
        return;
    const QRectF& first = lines.front();
    const QRectF& last = lines.back();
    send<void>(controller, "setSelectionStartPoint:", QPointF(first.x() + 2.0, first.center().y()));
    send<void>(controller, "setSelectionEndPoint:", QPointF(last.right() - 3.0, last.center().y()));
    send<void>(controller, "setSelectionPageNo:", pageNo);
    send<void>(controller, "setSelectionMode:", 2);
    send<void>(controller, "setPDFSelection:texSelMode:wholeWord:", true, true, true);
}

}  // namespace lexicorn::popup
