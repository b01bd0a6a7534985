#include "host/app/book_document.h"

#include "host/app/reader_classes.h"
#include "host/app/scan_reader.h"

#include "foundation/log.h"

#include <QFileInfo>

#include <cmath>

namespace lexicorn::host {

namespace {

std::uint64_t nextRenderId()
{
    static std::uint64_t last = 0;
    return ++last;
}

QString problemOf(const QString& path, const PdfObjCAPI& pdf)
{
    if (!QFileInfo(path).isFile())
        return QStringLiteral("The file could not be found.");
    if (pdf.isLocked())
        return QStringLiteral("The document is locked with a password.");
    if (!pdf.isOpen())
        return QStringLiteral("The file is not a PDF document or it is damaged.");
    if (pdf.pageCount() <= 0)
        return QStringLiteral("The document has no pages.");
    return {};
}

QRectF unionOf(const std::vector<QRectF>& rects)
{
    QRectF all;
    for (const QRectF& rect : rects)
        all = all.united(rect);
    return all;
}

}  // namespace

BookDocument::BookDocument(const QString& path) : pdf_(path), renderId_(nextRenderId())
{
    problem_ = problemOf(path, pdf_);
    if (problem_.isEmpty()) {
        QSizeF first = pdf_.pageSize(1);
        if (first.width() < 1 || first.height() < 1)
            first = QSizeF(612, 792);
        pageSizes_.assign(std::size_t(pdf_.pageCount()), first);
    }
    GestureScope::join(*this);
}

BookDocument::~BookDocument()
{
    GestureScope::leave(*this);
    if (notebookBatch_ && notebook_)
        notebook_->endBatch();
}

PageRenderer& BookDocument::renderer()
{
    if (!renderer_) {
        renderer_ = std::make_unique<PageRenderer>();
        connect(renderer_.get(), &PageRenderer::pageSizesRead, this, &BookDocument::pageSizesRead);
        if (isOpen())
            renderer_->open(path(), renderId_);
    }
    return *renderer_;
}

void BookDocument::pageSizesRead(std::uint64_t renderId, const std::vector<QSizeF>& sizes)
{
    if (renderId != renderId_ || sizes.size() != pageSizes_.size() || sizes == pageSizes_)
        return;
    pageSizes_ = sizes;
    notify(PageSizes);
}

void BookDocument::setBook(std::shared_ptr<Notebook> notebook, const QString& md5)
{
    notebook_ = std::move(notebook);
    md5_ = md5;
    notify(Highlights | Notes);
}

ScanReader& BookDocument::scanReader()
{
    if (!scanReader_)
        scanReader_ = std::make_unique<ScanReader>(*this);
    return *scanReader_;
}

void BookDocument::setRecognisedText(int pageNo, PageLines lines)
{
    pdf_.setTextLayer(pageNo, std::move(lines));
    ++textGeneration_;
    notify(PageText);
}

void BookDocument::selectText(int pageNo, QPointF from, QPointF to, bool wholeWord)
{
    const TextKey key{pageNo, from, to, wholeWord, textGeneration_};
    if (selected_ == key && selection_.isText && selection_.pageNo == pageNo) {
        notify(Selection);
        return;
    }
    const PageLines lines = pdf_.textContentsForPageNo_(pageNo);
    AppliedSelection made;
    made.pageNo = pageNo;
    made.isText = true;
    made.characters = selectBetween(lines, from, to, wholeWord);
    made.rects = lineRects(lines, made.characters);
    made.rect = unionOf(made.rects);
    made.text = selectedText(lines, made.characters);
    if (!made.characters.isEmpty) {
        const auto centreOf = [&lines](const CharPlace& place) {
            return lines[std::size_t(place.line)][std::size_t(place.index)].rect.center();
        };
        const QPointF first = centreOf(made.characters.first);
        const QPointF last = centreOf(made.characters.last);
        if (std::isfinite(first.x()) && std::isfinite(first.y()) && std::isfinite(last.x()) && std::isfinite(last.y()))
            made.ends = std::pair(first, last);
    }
    selection_ = std::move(made);
    selected_ = key;
    notify(Selection);
}

void BookDocument::selectArea(int pageNo, const QRectF& rect)
{
    AppliedSelection made;
    made.pageNo = pageNo;
    made.rect = rect;
    if (!rect.isEmpty()) {
        made.rects = {rect};
        made.text = selectionTextOf(pdf_.textContentsForPageNo_(pageNo), rect);
    }
    selection_ = std::move(made);
    selected_.reset();
    notify(Selection);
}

void BookDocument::clearSelection()
{
    selection_ = AppliedSelection();
    selected_.reset();
    notify(Selection);
}

const std::map<int, std::vector<BookDocument::Highlight>>& BookDocument::highlights()
{
    if (!highlights_) {
        highlights_.emplace();
        if (notebook_ && !md5_.isEmpty()) {
            for (const MbBookNote& note : notebook_->notesOfBook(md5_)) {
                for (const QRectF& rect : note.highlightRects())
                    (*highlights_)[note.pageNo() - 1].push_back({rect, note.highlightStyle()});
            }
        }
    }
    return *highlights_;
}

void BookDocument::notify(Changes changes)
{
    if (changes & Highlights)
        highlights_.reset();
    if (inGesture_) {
        pending_ |= changes;
        return;
    }
    if (changes)
        emit changed(changes);
}

void BookDocument::gestureBegan()
{
    inGesture_ = true;
    pending_ = {};
    if (notebook_) {
        notebook_->beginBatch();
        notebookBatch_ = true;
    }
}

void BookDocument::gestureEnded()
{
    inGesture_ = false;
    if (std::exchange(notebookBatch_, false) && notebook_ && !notebook_->endBatch())
        logLine(QStringLiteral("reader: the notebook's changes were not saved: %1").arg(notebook_->errorString()));
    // The views read the notebook after its transaction is committed.
    notify(std::exchange(pending_, {}));
}

}  // namespace lexicorn::host
