#include "host/app/note_classes.h"

#include "host/app/host_classes.h"

#include "foundation/log.h"

namespace lexicorn::host {

using runtime::makeImp;

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
    runtime.addMethod(note, "setNotes:", makeImp([](BookNoteObject& self, QJsonArray notes) { self.note.setNotes(notes); }));

    runtime::Class& board = runtime.registerClass(studyboardClassName, responderClassName);
    runtime.addMethod(board, "selectionNotes", makeImp([](StudyboardObject& self) { return self.selection; }));
    runtime.addMethod(board, "currentBookTitle", makeImp([](StudyboardObject& self) { return self.bookTitle; }));
    runtime.addMethod(board, "showHUD:withDuration:", makeImp([](StudyboardObject& self, QString text, double seconds) {
        self.headsUps.append(text);
        logLine(QStringLiteral("heads-up (%1 s): %2").arg(seconds).arg(text));
    }));
    runtime.addMethod(board, "viewDidLoad", makeImp([](StudyboardObject&) {}));
}

std::shared_ptr<BookNoteObject> makeBookNote(MbBookNote note, runtime::Runtime& runtime)
{
    registerNoteClasses(runtime);
    return std::make_shared<BookNoteObject>(*runtime.classNamed(bookNoteClassName), std::move(note));
}

std::shared_ptr<StudyboardObject> makeStudyboard(runtime::Runtime& runtime)
{
    registerNoteClasses(runtime);
    return std::make_shared<StudyboardObject>(*runtime.classNamed(studyboardClassName));
}

}  // namespace lexicorn::host
