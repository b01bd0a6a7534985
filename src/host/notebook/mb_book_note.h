#pragma once

// A mind-map note of the reader's notebook.

#include "lexicorn/render/dict_note.h"

#include <QJsonArray>
#include <QRectF>
#include <QJsonObject>
#include <QString>

#include <vector>

namespace lexicorn::host {

// The size of a note's frame on the mind-map canvas, in canvas points.
struct MindSize {
    double width = 0;
    double height = 0;
    friend bool operator==(const MindSize&, const MindSize&) = default;
};

// A note as the notebook keeps it: the card fields the plug-in reads (id,
// title, excerpt, comments) plus what only the reader uses (frame size,
// highlight style, the book it was taken from).
class MbBookNote final : public DictNote {
public:
    MbBookNote() = default;
    explicit MbBookNote(NoteRecord record) : record_(std::move(record)) {}

    QString noteid() const override { return record_.noteid; }
    QString notetitle() const override { return record_.notetitle; }
    QString highlight_text() const override { return record_.highlight_text; }
    QJsonArray notes() const override { return record_.notes; }

    void setNoteid(const QString& noteid) { record_.noteid = noteid; }
    void setNotetitle(const QString& title) { record_.notetitle = title; }
    void setHighlight_text(const QString& excerpt) { record_.highlight_text = excerpt; }
    // The comment records, kept exactly as given (a record may lack keys or
    // not be an object at all; the card code decides what it makes of it).
    void setNotes(const QJsonArray& comments) { record_.notes = comments; }

    MindSize mindSize() const { return mindSize_; }
    void setMindSize(MindSize size) { mindSize_ = size; }
    QString highlightStyle() const { return highlightStyle_; }
    void setHighlightStyle(const QString& style) { highlightStyle_ = style; }
    // The MD5 of the PDF the excerpt comes from; empty for a note of no book.
    QString bookMd5() const { return bookMd5_; }
    void setBookMd5(const QString& md5) { bookMd5_ = md5; }

    // Where the excerpt stands: its page (from 1; 0 for none) and the
    // rectangles of its highlight on that page, in page points.
    int pageNo() const { return pageNo_; }
    void setPageNo(int pageNo) { pageNo_ = pageNo; }
    const std::vector<QRectF>& highlightRects() const { return highlightRects_; }
    void setHighlightRects(std::vector<QRectF> rects) { highlightRects_ = std::move(rects); }

    const NoteRecord& record() const { return record_; }

    // {"noteid", "notetitle", "highlight_text", "notes", "bookMd5",
    //  "mindSize": {"width", "height"}, "highlightStyle", "pageNo",
    //  "highlightRects": [[x, y, width, height], ...]}.
    QJsonObject toJson() const;
    // The card members as NoteRecord::fromJson reads them; the reader's own
    // members are optional and read as empty or 0 when missing or of another kind.
    static MbBookNote fromJson(const QJsonObject& object);

    friend bool operator==(const MbBookNote& a, const MbBookNote& b)
    {
        return a.record_.noteid == b.record_.noteid && a.record_.notetitle == b.record_.notetitle
            && a.record_.highlight_text == b.record_.highlight_text && a.record_.notes == b.record_.notes
            && a.mindSize_ == b.mindSize_ && a.highlightStyle_ == b.highlightStyle_ && a.bookMd5_ == b.bookMd5_
            && a.pageNo_ == b.pageNo_ && a.highlightRects_ == b.highlightRects_;
    }

private:
    NoteRecord record_;
    MindSize mindSize_;
    QString highlightStyle_;
    QString bookMd5_;
    int pageNo_ = 0;
    std::vector<QRectF> highlightRects_;
};

// Rectangles as [[x, y, width, height], ...] and back; entries of another
// shape are left out.
QJsonArray rectsJson(const std::vector<QRectF>& rects);
std::vector<QRectF> rectsOfJson(const QJsonArray& array);

}  // namespace lexicorn::host
