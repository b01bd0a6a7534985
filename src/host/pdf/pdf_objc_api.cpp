#include "host/pdf/pdf_objc_api.h"

#include "host/pdf/reading_order.h"

#include <QHash>

#include <poppler-qt6.h>

#include <algorithm>

namespace lexicorn::host {

namespace {

QHash<std::int64_t, PdfObjCAPI*>& openDocuments()
{
    static QHash<std::int64_t, PdfObjCAPI*> documents;
    return documents;
}

int& loads()
{
    static int count = 0;
    return count;
}

std::int64_t nextViewHandle()
{
    static std::int64_t last = 0;
    return ++last;
}

// Poppler sometimes chains a margin line number, or the next column, to the
// printed line beside it. Its lines are cut at every gap that could part
// columns; the reading order joins the pieces of one column again.
bool farApart(const QRectF& before, const QRectF& after)
{
    return after.left() - before.right() >= std::min(before.height(), after.height()) * columnGapInHeights;
}

// Appends the characters of one word, one record per UTF-16 unit. Poppler
// gives one box per code point, so both halves of a surrogate pair share it.
void appendWord(const Poppler::TextBox& word, CharLine& line)
{
    const QString text = word.text();
    int box = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        QRectF rect = word.charBoundingBox(box);
        if (rect.isNull())
            rect = word.boundingBox();
        line.push_back(CharRecord{char16_t(text[i].unicode()), rect});
        if (!(text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()))
            ++box;
    }
}

}  // namespace

PdfObjCAPI::PdfObjCAPI(const QString& pdfPath)
    : path_(pdfPath), document_(Poppler::Document::load(pdfPath)), viewHandle_(nextViewHandle())
{
    ++loads();
    if (document_ && document_->isLocked()) {
        locked_ = true;
        document_.reset();
    }
    openDocuments().insert(viewHandle_, this);
}

int PdfObjCAPI::filesLoaded()
{
    return loads();
}

QSizeF PdfObjCAPI::pageSize(int pageNo) const
{
    if (!document_ || pageNo < 1 || pageNo > document_->numPages())
        return {};
    const std::unique_ptr<Poppler::Page> page = document_->page(pageNo - 1);
    return page ? page->pageSizeF() : QSizeF();
}

PdfObjCAPI::~PdfObjCAPI()
{
    openDocuments().remove(viewHandle_);
}

PdfObjCAPI* PdfObjCAPI::withViewHandle(std::int64_t viewHandle)
{
    return openDocuments().value(viewHandle, nullptr);
}

int PdfObjCAPI::pageCount() const
{
    return document_ ? document_->numPages() : 0;
}

PageLines PdfObjCAPI::textContentsForPageNo_(int pageNo) const
{
    if (!document_ || pageNo < 1 || pageNo > document_->numPages())
        return {};
    if (const PageLines* known = textCache_.object(pageNo))
        return *known;
    PageLines lines = readPageText(pageNo);
    if (lines.empty())
        lines = textLayers_.value(pageNo);
    textCache_.insert(pageNo, new PageLines(lines));
    return lines;
}

bool PdfObjCAPI::hasPopplerText(int pageNo) const
{
    return !textLayers_.contains(pageNo) && !textContentsForPageNo_(pageNo).empty();
}

void PdfObjCAPI::setTextLayer(int pageNo, PageLines lines)
{
    if (pageNo < 1 || pageNo > pageCount() || hasPopplerText(pageNo))
        return;
    textLayers_.insert(pageNo, std::move(lines));
    textCache_.remove(pageNo);
}

const std::vector<PdfObjCAPI::OutlineEntry>& PdfObjCAPI::outline() const
{
    if (outline_)
        return *outline_;
    outline_.emplace();
    if (!document_)
        return *outline_;
    std::vector<OutlineEntry>& entries = *outline_;
    const auto walk = [&entries](const auto& self, const QList<Poppler::OutlineItem>& items, int level) -> void {
        for (const Poppler::OutlineItem& item : items) {
            const QSharedPointer<const Poppler::LinkDestination> destination = item.destination();
            entries.push_back({item.name(), destination ? destination->pageNumber() : 0, level});
            self(self, item.children(), level + 1);
        }
    };
    walk(walk, document_->outline(), 0);
    return entries;
}

PageLines PdfObjCAPI::readPageText(int pageNo) const
{
    const std::unique_ptr<Poppler::Page> page = document_->page(pageNo - 1);
    if (!page)
        return {};
    const std::vector<std::unique_ptr<Poppler::TextBox>> words = page->textList();

    PageLines lines;
    CharLine line;
    const Poppler::TextBox* previous = nullptr;
    for (const std::unique_ptr<Poppler::TextBox>& word : words) {
        if (word->text().isEmpty())
            continue;
        if (previous) {
            const QRectF before = previous->boundingBox();
            const QRectF here = word->boundingBox();
            if (previous->nextWord() == word.get() && !farApart(before, here)) {
                // Poppler says whether a space follows a word of its line.
                if (previous->hasSpaceAfter()) {
                    const QRectF blank(before.right(), before.top(), std::max(0.0, here.left() - before.right()),
                                       before.height());
                    line.push_back(CharRecord{u' ', blank});
                }
            } else {
                lines.push_back(std::move(line));
                line = CharLine();
            }
        }
        appendWord(*word, line);
        previous = word.get();
    }
    if (!line.empty())
        lines.push_back(std::move(line));
    return inReadingOrder(std::move(lines));
}

}  // namespace lexicorn::host
