#pragma once

#include "lexicorn/reader/sentences/char_record.h"

#include <QCache>
#include <QHash>
#include <QSizeF>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace Poppler {
class Document;
}

namespace lexicorn::host {

// An opened PDF document and its page text. Each object gets a view handle,
// a number that stands for the opened document; the object can be found
// again by it while it lives. Main thread only.
class PdfObjCAPI {
public:
    explicit PdfObjCAPI(const QString& pdfPath);
    ~PdfObjCAPI();
    PdfObjCAPI(const PdfObjCAPI&) = delete;
    PdfObjCAPI& operator=(const PdfObjCAPI&) = delete;

    // The open document with this view handle, or null.
    static PdfObjCAPI* withViewHandle(std::int64_t viewHandle);

    std::int64_t viewHandle() const { return viewHandle_; }
    const QString& path() const { return path_; }
    // False when the file could not be read as an unlocked PDF.
    bool isOpen() const { return document_ != nullptr; }
    // The file is a PDF, but locked with a password (and so not open).
    bool isLocked() const { return locked_; }
    int pageCount() const;
    // Page pageNo's size in points; empty outside the document.
    QSizeF pageSize(int pageNo) const;

    // How many files these objects have read with Poppler, for checking that
    // opening a book reads its file once.
    static int filesLoaded();

    // The text of page pageNo (counted from 1) as lines of character records
    // in reading order, one record per UTF-16 unit, with a blank record
    // between the words of a line. Empty for a page without text (unless its
    // recognised text was set) and for a page number outside the document.
    PageLines textContentsForPageNo_(int pageNo) const;

    // Whether page pageNo has text of its own. A page without (a scan) gets
    // its text from OCR, given to setTextLayer.
    bool hasPopplerText(int pageNo) const;
    // The text recognised on page pageNo, which textContentsForPageNo_ gives
    // from now on. Kept only for a page without text of its own.
    void setTextLayer(int pageNo, PageLines lines);

    // The document's table of contents, depth first (read once).
    struct OutlineEntry {
        QString title;
        int pageNo = 0;  // from 1; 0 when the entry leads nowhere
        int level = 0;   // 0 for the top entries
    };
    const std::vector<OutlineEntry>& outline() const;

private:
    PageLines readPageText(int pageNo) const;

    // The text of the last pages read: a drag over a page asks for it at
    // every mouse move.
    mutable QCache<int, PageLines> textCache_{8};
    mutable std::optional<std::vector<OutlineEntry>> outline_;
    QHash<int, PageLines> textLayers_;  // recognised text of pages without their own
    QString path_;
    std::unique_ptr<Poppler::Document> document_;
    std::int64_t viewHandle_;
    bool locked_ = false;
};

}  // namespace lexicorn::host
