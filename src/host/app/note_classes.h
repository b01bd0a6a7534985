#pragma once

// The notebook's notes and the study board as runtime objects, so the
// plug-in reaches them by class and selector names only.

#include "host/app/host_classes.h"
#include "host/notebook/mb_book_note.h"
#include "host/notebook/notebook.h"

#include "runtime/runtime.h"

#include <functional>
#include <memory>
#include <vector>

namespace lexicorn::host {

inline constexpr const char* bookNoteClassName = "MbBookNote";
inline constexpr const char* studyboardClassName = "MbUIStudyboardController";

// One mind-map note: "noteid", "notetitle", "highlight_text", "notes" and
// "highlight_style" read the note it holds. Every write is also saved to the
// notebook when the note came from one: "setNotes:",
// "setNotesAndUpdateMediaList:clear:" (the comments), "setNotetitle:",
// "highlightTextFromAttributedText:" (the excerpt, bold as <b>),
// "setHighlight_style:" and "setMindsizeBySize:".
class BookNoteObject : public runtime::Object {
public:
    BookNoteObject(runtime::Class& cls, MbBookNote note, Notebook* notebook = nullptr)
        : Object(cls), note(std::move(note)), notebook(notebook)
    {
    }
    MbBookNote note;
    Notebook* notebook;
};

// The study board: the notes selected in its search view ("selectionNotes"),
// the title of the open book ("currentBookTitle") and its heads-up display
// ("showHUD:withDuration:", shown on its window).
class StudyboardObject : public ViewControllerObject {
public:
    using NoteList = std::vector<std::shared_ptr<runtime::Object>>;
    explicit StudyboardObject(runtime::Class& cls) : ViewControllerObject(cls) {}
    // The reader's window answers the selection from its notebook when it
    // sets selectionSource; without one the board answers `selection`.
    NoteList selection;
    std::function<NoteList()> selectionSource;
    QString bookTitle;
    QStringList headsUps;
    std::function<void(const QString& text, double seconds)> presentHUD;  // set by the reader's window
    bool bookLeftShown = true;  // "toggleBookLeft:" shows or hides the book beside the map
};

// Registers both classes (after the application's own); safe to call again.
void registerNoteClasses(runtime::Runtime& runtime = runtime::Runtime::shared());

std::shared_ptr<BookNoteObject> makeBookNote(MbBookNote note, Notebook* notebook = nullptr,
                                             runtime::Runtime& runtime = runtime::Runtime::shared());
std::shared_ptr<StudyboardObject> makeStudyboard(runtime::Runtime& runtime = runtime::Runtime::shared());

}  // namespace lexicorn::host
