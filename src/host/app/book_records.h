#pragma once

// What the reader keeps of its books and notes in the notebook, as its
// window asks for it: a book's record when it opens and its page when it is
// left, the notes the study board works on, and where a note is.

#include "host/app/note_classes.h"
#include "host/notebook/notebook.h"

#include <QRectF>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

namespace lexicorn::host {

// The book at the path goes into the notebook under its MD5 (its title the
// file's name, unless it had one): the page to open it at (where it was
// left, else the first) and its title. One transaction.
struct BookRecord {
    int page = 1;
    QString title;
};
BookRecord recordOpenedBook(Notebook& notebook, const QString& md5, const QString& path);

// Where the reader left the book (pages from 1).
void rememberPage(Notebook& notebook, const QString& md5, int pageNo);

// The notes the study board works on: those selected in the notebook, in the
// order they were selected; with none selected, every dictionary card of the
// open book (as the add-on tells them apart).
StudyboardObject::NoteList studyboardNotes(const std::shared_ptr<Notebook>& notebook, const QString& bookMd5,
                                           const QStringList& selected);

// Where a note is: its page (from 1) and the area its highlight covers
// (empty without one). None for a note that is gone or has no page.
struct NotePlace {
    int pageNo = 0;
    QRectF area;
};
std::optional<NotePlace> placeOfNote(Notebook& notebook, const QString& noteid);

}  // namespace lexicorn::host
