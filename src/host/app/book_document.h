#pragma once

// The open book as the reader shows it: the PDF read once, its page sizes and
// page text (its own, or recognised by OCR for a scanned page: ScanReader),
// the page images made by a renderer on its own thread, the selection and the
// highlights of the book's notes. It knows no window: views subscribe to
// changed() and repaint only what a change names. The changes of one gesture
// (GestureScope) are told once, when it ends, and the notebook's writes of
// that gesture go to the file in one transaction.

#include "host/app/gesture_scope.h"
#include "host/app/text_selection.h"
#include "host/notebook/notebook.h"
#include "host/pdf/page_renderer.h"
#include "host/pdf/pdf_objc_api.h"

#include <QObject>
#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace lexicorn::host {

class ScanReader;

class BookDocument : public QObject, public GestureScope::Participant {
    Q_OBJECT
public:
    enum Change : unsigned {
        PageSizes = 0x1,   // every page's size is read (they were taken to be the first's)
        PageText = 0x2,    // a scanned page got its text
        Selection = 0x4,
        Highlights = 0x8,
        Notes = 0x10,      // the book's notes as the notebook lists them
    };
    Q_DECLARE_FLAGS(Changes, Change)

    // Reads the file with Poppler; problem() says why when it is no readable PDF.
    explicit BookDocument(const QString& path);
    ~BookDocument() override;

    bool isOpen() const { return pdf_.isOpen() && pageCount() > 0; }
    // A short English sentence: missing, damaged, locked or empty; empty when open.
    const QString& problem() const { return problem_; }
    const QString& path() const { return pdf_.path(); }
    PdfObjCAPI& pdf() { return pdf_; }
    const PdfObjCAPI& pdf() const { return pdf_; }
    int pageCount() const { return int(pageSizes_.size()); }
    // In points, pages counted from 0. Until the renderer has read every
    // page's size on its thread, each page is taken to be as large as the
    // first: the first page shows at once, however many pages the book has.
    const std::vector<QSizeF>& pageSizes() const { return pageSizes_; }

    // Makes the page images, from a Poppler document of its own on its own
    // thread; started by the first view that asks. Its requests and images
    // name this document by renderId().
    PageRenderer& renderer();
    std::uint64_t renderId() const { return renderId_; }

    // The book's notes are in this notebook under this MD5; their highlights
    // show on the pages.
    void setBook(std::shared_ptr<Notebook> notebook, const QString& md5);
    const QString& bookMd5() const { return md5_; }
    const std::shared_ptr<Notebook>& notebook() const { return notebook_; }

    // Reads the scanned pages by OCR as they are shown, once the book is in
    // the notebook; made on first use.
    ScanReader& scanReader();
    // Text recognised on a scanned page (counted from 1).
    void setRecognisedText(int pageNo, PageLines lines);

    // The selection as applied: the running text between two points, or
    // the characters under an area. Its rectangles and text are worked out
    // once, when it is applied.
    struct AppliedSelection {
        int pageNo = 0;
        bool isText = false;
        QRectF rect;                 // all of it
        TextSelection characters;    // running text only
        std::vector<QRectF> rects;   // one per line for running text
        QString text;
        // The centres of the first and last characters (running text only).
        std::optional<std::pair<QPointF, QPointF>> ends;
    };
    const AppliedSelection& selection() const { return selection_; }
    // Selecting the same points of the same page text again finds it done.
    void selectText(int pageNo, QPointF from, QPointF to, bool wholeWord);
    void selectArea(int pageNo, const QRectF& rect);
    void clearSelection();

    // The notes' highlights by page (counted from 0), read from the notebook
    // once after each Highlights change.
    struct Highlight {
        QRectF rect;
        QString style;
    };
    const std::map<int, std::vector<Highlight>>& highlights();

    // Tells the views; inside a gesture the changes wait for its end.
    void notify(Changes changes);

signals:
    void changed(lexicorn::host::BookDocument::Changes changes);

private:
    void gestureBegan() override;
    void gestureEnded() override;
    void pageSizesRead(std::uint64_t renderId, const std::vector<QSizeF>& sizes);

    PdfObjCAPI pdf_;
    QString problem_;
    std::vector<QSizeF> pageSizes_;
    std::unique_ptr<PageRenderer> renderer_;
    std::uint64_t renderId_ = 0;
    std::unique_ptr<ScanReader> scanReader_;
    std::shared_ptr<Notebook> notebook_;
    QString md5_;
    int textGeneration_ = 0;  // one more for each page text recognised

    AppliedSelection selection_;
    struct TextKey {
        int pageNo;
        QPointF from;
        QPointF to;
        bool wholeWord;
        int textGeneration;
        bool operator==(const TextKey&) const = default;
    };
    std::optional<TextKey> selected_;  // what selection_ was worked out from

    std::optional<std::map<int, std::vector<Highlight>>> highlights_;

    bool inGesture_ = false;
    bool notebookBatch_ = false;
    Changes pending_;
};

}  // namespace lexicorn::host

Q_DECLARE_OPERATORS_FOR_FLAGS(lexicorn::host::BookDocument::Changes)
