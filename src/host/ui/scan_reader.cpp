#include "host/ui/scan_reader.h"

#include "host/app/book_document.h"
#include "host/pdf/ocr_cache.h"
#include "host/pdf/pdf_objc_api.h"

#include "foundation/dispatch.h"

#include <QPointer>

#include <poppler-qt6.h>

namespace lexicorn::host::ui {

ScanReader::ScanReader(QObject* parent) : QObject(parent), queue_(SerialQueue::create(QStringLiteral("lexicorn.ocr"))) {}

ScanReader::~ScanReader() = default;

void ScanReader::setBook(std::shared_ptr<BookDocument> document, const QString& path, const QString& md5)
{
    ++book_;
    document_ = document;
    path_ = path;
    md5_ = md5;
    asked_.clear();
    waiting_.clear();
}

void ScanReader::pageShown(int pageNo)
{
    const std::shared_ptr<BookDocument> document = document_.lock();
    if (!document || unavailable_ || pageNo < 1 || pageNo > document->pageCount() || asked_.count(pageNo))
        return;
    asked_.insert(pageNo);
    if (document->pdf().hasPopplerText(pageNo))
        return;
    waiting_.insert(pageNo);
    emit pageReading(pageNo);
    // The worker opens the file itself: a Poppler document is used by one
    // thread only.
    QPointer<ScanReader> self(this);
    queue_->async([self, book = book_, path = path_, md5 = md5_, pageNo] {
        QString problem;
        PageLines lines;
        if (const std::unique_ptr<Poppler::Document> scan = Poppler::Document::load(path))
            lines = recognisedText(*scan, md5, pageNo, &problem);
        mainQueue().async([self, book, pageNo, lines = std::move(lines), problem] {
            if (self)
                self->finished(book, pageNo, lines, problem);
        });
    });
}

void ScanReader::finished(std::uint64_t book, int pageNo, const PageLines& lines, const QString& problem)
{
    if (book != book_)
        return;
    waiting_.erase(pageNo);
    if (!problem.isEmpty()) {
        // Said once; the pages asked for stay asked, so none is tried again.
        if (!unavailable_)
            emit unavailable(problem);
        unavailable_ = true;
        waiting_.clear();
        emit pageRead(pageNo);
        return;
    }
    if (const std::shared_ptr<BookDocument> document = document_.lock())
        document->setRecognisedText(pageNo, lines);
    emit pageRead(pageNo);
}

}  // namespace lexicorn::host::ui
