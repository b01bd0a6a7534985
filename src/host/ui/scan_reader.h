#pragma once

// Reads the scanned pages of the open book by OCR, when each is first shown:
// one page at a time on a background thread, from the disk cache when the
// page was read before. The text goes into the book's document as the page's
// text layer, and from then on selection, lookup, sentences and highlights
// work on the page as on any other.

#include "lexicorn/reader/char_record.h"

#include <QObject>
#include <QString>

#include <cstdint>
#include <memory>
#include <set>

namespace lexicorn {
class SerialQueue;
}

namespace lexicorn::host {
class BookDocument;
}

namespace lexicorn::host::ui {

class ScanReader : public QObject {
    Q_OBJECT
public:
    explicit ScanReader(QObject* parent = nullptr);
    ~ScanReader() override;

    // The book now open (null: none). Pages still being read for the book
    // before are dropped when they arrive.
    void setBook(std::shared_ptr<BookDocument> document, const QString& path, const QString& md5);
    // A page (counted from 1) is shown: it is read when it has no text.
    void pageShown(int pageNo);
    // The pages asked for and not yet read.
    int pagesWaiting() const { return int(waiting_.size()); }

signals:
    void pageReading(int pageNo);
    void pageRead(int pageNo);
    // OCR cannot run here (no language data): said once, then pages are left as they are.
    void unavailable(const QString& problem);

private:
    void finished(std::uint64_t book, int pageNo, const PageLines& lines, const QString& problem);

    std::shared_ptr<SerialQueue> queue_;
    std::weak_ptr<BookDocument> document_;
    QString path_;
    QString md5_;
    std::uint64_t book_ = 0;
    std::set<int> asked_;    // pages of this book sent to be read, or read
    std::set<int> waiting_;  // of those, the ones not back yet
    bool unavailable_ = false;
};

}  // namespace lexicorn::host::ui
