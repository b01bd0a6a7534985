#include "host/app/note_classes.h"

#include "host/app/host_classes.h"

#include "foundation/log.h"

#include <QSizeF>

namespace lexicorn::host {

using runtime::makeImp;

namespace {

// Writes the reader's edit of a note to the notebook it came from.
void save(BookNoteObject& self)
{
    if (self.notebook && !self.notebook->update(self.note))
        logLine(QStringLiteral("reader: note %1 was not saved: %2").arg(self.note.noteid(), self.notebook->errorString()));
}

}  // namespace

void registerNoteClasses(runtime::Runtime& runtime)
{
    registerHostClasses(runtime);
    if (runtime.classNamed(bookNoteClassName))
        return;
    runtime::Class& note = runtime.registerClass(bookNoteClassName, rootClassName);
    runtime.addMethod(note, "noteid", makeImp([](BookNoteObject& self) { return self.note.noteid(); }));
    runtime.addMethod(note, "notetitle", makeImp([](BookNoteObject& self) { return self.note.notetitle(); }));
    runtime.addMethod(note, "highlight_text", makeImp([](BookNoteObject& self) { return self.note.highlight_text(); }));
    runtime.addMethod(note, "notes", makeImp([](BookNoteObject& self) { return self.note.notes(); }));
    runtime.addMethod(note, "setNotes:", makeImp([](BookNoteObject& self, QJsonArray notes) {
        self.note.setNotes(notes);
        save(self);
    }));
    runtime.addMethod(note, "setNotetitle:", makeImp([](BookNoteObject& self, QString title) {
        self.note.setNotetitle(title);
        save(self);
    }));
    runtime.addMethod(note, "highlight_style", makeImp([](BookNoteObject& self) { return self.note.highlightStyle(); }));
    runtime.addMethod(note, "setHighlight_style:", makeImp([](BookNoteObject& self, QString style) {
        self.note.setHighlightStyle(style);
        save(self);
    }));
    runtime.addMethod(note, "setMindsizeBySize:", makeImp([](BookNoteObject& self, QSizeF size) {
        self.note.setMindSize({size.width(), size.height()});
        save(self);
    }));
    runtime.addMethod(note, "highlightTextFromAttributedText:", makeImp([](BookNoteObject& self, QString excerpt) {
        self.note.setHighlight_text(excerpt);
        save(self);
    }));
    runtime.addMethod(note, "setNotesAndUpdateMediaList:clear:", makeImp([](BookNoteObject& self, QJsonArray notes, bool /*clear*/) {
        self.note.setNotes(notes);
        save(self);
    }));

    runtime::Class& board = runtime.registerClass(studyboardClassName, viewControllerClassName);
    runtime.addMethod(board, "selectionNotes", makeImp([](StudyboardObject& self) {
        return self.selectionSource ? self.selectionSource() : self.selection;
    }));
    runtime.addMethod(board, "currentBookTitle", makeImp([](StudyboardObject& self) { return self.bookTitle; }));
    runtime.addMethod(board, "showHUD:withDuration:", makeImp([](StudyboardObject& self, QString text, double seconds) {
        self.headsUps.append(text);
        logLine(QStringLiteral("heads-up (%1 s): %2").arg(seconds).arg(text));
        if (self.presentHUD)
            self.presentHUD(text, seconds);
    }));
    runtime.addMethod(board, "toggleBookLeft:", makeImp([](StudyboardObject& self, std::string /*sender*/) {
        self.bookLeftShown = !self.bookLeftShown;
    }));
}

std::shared_ptr<BookNoteObject> makeBookNote(MbBookNote note, Notebook* notebook, runtime::Runtime& runtime)
{
    registerNoteClasses(runtime);
    return std::make_shared<BookNoteObject>(*runtime.classNamed(bookNoteClassName), std::move(note), notebook);
}

std::shared_ptr<StudyboardObject> makeStudyboard(runtime::Runtime& runtime)
{
    registerNoteClasses(runtime);
    return std::make_shared<StudyboardObject>(*runtime.classNamed(studyboardClassName));
}

}  // namespace lexicorn::host
