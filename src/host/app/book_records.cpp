#include "host/app/book_records.h"

#include "host/notebook/mb_model_tool.h"

#include <QFileInfo>

namespace lexicorn::host {

namespace {

// A dictionary card by the add-on's test, when an add-on gives notes one.
bool isDictionaryCard(runtime::Object& note)
{
    for (const char* test : {"isDictNote", "isDictTitle"}) {
        if (runtime::respondsTo(note, test) && runtime::send<bool>(note, test))
            return true;
    }
    return false;
}

}  // namespace

BookRecord recordOpenedBook(Notebook& notebook, const QString& md5, const QString& path)
{
    MbModelTool books(notebook);
    notebook.beginBatch();
    const std::optional<MbBook> known = books.getBookFromMd5_(md5);
    BookRecord record;
    record.page = known && known->lastPage > 0 ? known->lastPage : 1;
    books.addBook(md5, QFileInfo(path).completeBaseName(), path);
    record.title = books.getBookFromMd5_(md5).value_or(MbBook{}).bookTitle;
    books.setLastPage(md5, record.page);
    notebook.endBatch();
    return record;
}

void rememberPage(Notebook& notebook, const QString& md5, int pageNo)
{
    if (!md5.isEmpty())
        MbModelTool(notebook).setLastPage(md5, pageNo);
}

StudyboardObject::NoteList studyboardNotes(const std::shared_ptr<Notebook>& notebook, const QString& bookMd5,
                                           const QStringList& selected)
{
    StudyboardObject::NoteList notes;
    if (!notebook || bookMd5.isEmpty())
        return notes;
    for (const QString& noteid : selected) {
        if (std::optional<MbBookNote> note = notebook->note(noteid))
            notes.push_back(makeBookNote(std::move(*note), notebook.get()));
    }
    if (!selected.isEmpty())
        return notes;
    for (MbBookNote& note : notebook->notesOfBook(bookMd5)) {
        std::shared_ptr<BookNoteObject> object = makeBookNote(std::move(note), notebook.get());
        if (isDictionaryCard(*object))
            notes.push_back(std::move(object));
    }
    return notes;
}

std::optional<NotePlace> placeOfNote(Notebook& notebook, const QString& noteid)
{
    const std::optional<MbBookNote> note = notebook.note(noteid);
    if (!note || note->pageNo() < 1)
        return std::nullopt;
    NotePlace place{note->pageNo(), {}};
    for (const QRectF& rect : note->highlightRects())
        place.area = place.area.united(rect);
    return place;
}

}  // namespace lexicorn::host
