#pragma once

// Reads the scanned pages of a book by OCR, when each is first shown: one
// page at a time on a background thread, from the disk cache when the page
// was read before. The text goes into the book as the page's text layer, and
// from then on selection, lookup, sentences and highlights work on the page
// as on any other. Each BookDocument has one (BookDocument::scanReader).

#include "lexicorn/reader/sentences/char_record.h"

#include <QObject>
#include <QString>

#include <atomic>
#include <memory>
#include <set>

namespace lexicorn {
class SerialQueue;
}

namespace lexicorn::host {

class BookDocument;

class ScanReader : public QObject {
    Q_OBJECT
public:
    explicit ScanReader(BookDocument& book);
    ~ScanReader() override;

    // A page (counted from 1) is shown: it is read when it has no text. Pages
    // are read once the book is in the notebook (the disk cache is kept by its MD5).
    void pageShown(int pageNo);
    // The pages asked for and not yet read.
    int pagesWaiting() const { return int(waiting_.size()); }

signals:
    void pageReading(int pageNo);
    void pageRead(int pageNo);
    // OCR cannot run here (no language data): said once, then pages are left as they are.
    void unavailable(const QString& problem);

private:
    void finished(int pageNo, const PageLines& lines, const QString& problem);

    BookDocument& book_;
    std::shared_ptr<SerialQueue> queue_;
    // Set when the reader goes: pages not started yet are skipped.
    std::shared_ptr<std::atomic<bool>> closing_ = std::make_shared<std::atomic<bool>>(false);
    std::set<int> asked_;    // pages sent to be read, or read
    std::set<int> waiting_;  // of those, the ones not back yet
    bool unavailable_ = false;
};

}  // namespace lexicorn::host
