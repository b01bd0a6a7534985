#include "host/app/scan_reader.h"

#include "host/app/book_document.h"
#include "host/pdf/ocr_cache.h"
#include "host/pdf/pdf_objc_api.h"

#include "foundation/dispatch.h"

#include <QPointer>

#include <poppler-qt6.h>

namespace lexicorn::host {

ScanReader::ScanReader(BookDocument& book) : book_(book), queue_(SerialQueue::create(QStringLiteral("lexicorn.ocr"))) {}

// A page being read is waited for, so no recognition outlives its book, nor
// the process's end: Tesseract's shared data goes with the process.
ScanReader::~ScanReader()
{
    *closing_ = true;
    queue_->sync([] {});
}

void ScanReader::pageShown(int pageNo)
{
    if (book_.bookMd5().isEmpty() || unavailable_ || pageNo < 1 || pageNo > book_.pageCount() || asked_.count(pageNo))
        return;
    asked_.insert(pageNo);
    if (book_.pdf().hasPopplerText(pageNo))
        return;
    waiting_.insert(pageNo);
    emit pageReading(pageNo);
    // The worker opens the file itself: a Poppler document is used by one
    // thread only.
    QPointer<ScanReader> self(this);
    queue_->async([self, closing = closing_, path = book_.path(), md5 = book_.bookMd5(), pageNo] {
        if (*closing)
            return;
        QString problem;
        PageLines lines;
        if (const std::unique_ptr<Poppler::Document> scan = Poppler::Document::load(path))
            lines = recognisedText(*scan, md5, pageNo, &problem);
        mainQueue().async([self, pageNo, lines = std::move(lines), problem] {
            if (self)
                self->finished(pageNo, lines, problem);
        });
    });
}

void ScanReader::finished(int pageNo, const PageLines& lines, const QString& problem)
{
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
    book_.setRecognisedText(pageNo, lines);
    emit pageRead(pageNo);
}

}  // namespace lexicorn::host
