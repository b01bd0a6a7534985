#pragma once

// A note's title edited in place on its card. Two runtime classes share the
// work, so a plug-in can change how titles are typed and stored:
//
// "NoteTitleEditView" (a "UITextView"): the editor, the text view the title is
// typed in. setNoteTitle:note:subIndexOfNote: (QString, ObjectRef note, int)
// stores a text as one of the note's texts, numbered as the card lists them
// (0 the title, 1 the excerpt, 2 + k comment k); the title editor holds the
// title, 0. It answers textView:shouldChangeTextInRange:replacementText: for
// itself: a title is one line, so Return ends the edit instead of breaking
// it. selectedRange / setSelectedRange: (QPoint(location, length)) read and
// set the selection.
//
// "NoteTitleBackView" (a "UIView"): the frame drawn around a title while it
// is edited, and the delegate of the title's text view. mnote (the card, a
// "NoteCardView", whose note is the "MbBookNote"), editor (the text view of
// the edit in progress) and subIndexOfNote. textViewDidBeginEditing: puts the
// frame around the title and records the edit on the card;
// textViewDidEndEditing: stores the title through the editor, takes the frame
// away and clears the records; textView:shouldChangeTextInRange:replacementText:
// asks the text view itself.

#include "host/kit/kit_text_view.h"

#include <QPoint>

#include <functional>
#include <memory>

namespace lexicorn::host::ui {

inline constexpr const char* noteTitleEditViewClassName = "NoteTitleEditView";
inline constexpr const char* noteTitleBackViewClassName = "NoteTitleBackView";

class TitleEditObject : public TextViewObject {
public:
    explicit TitleEditObject(runtime::Class& cls) : TextViewObject(cls) {}
    // Called after setNoteTitle:note:subIndexOfNote: changed the note.
    std::function<void()> stored;

    QPoint selectedRange() const;
    void setSelectedRange_(QPoint range);
};

class TitleBackObject : public ViewObject {
public:
    explicit TitleBackObject(runtime::Class& cls) : ViewObject(cls) {}
    // Makes the frame's widget; called once by the class's factory.
    void setUp();

    // The card is held weakly: it keeps its back view.
    ObjectRef mnote() const { return card_.lock(); }
    void setMnote_(const ObjectRef& card) { card_ = card; }
    ObjectRef editor() const { return editor_.lock(); }
    void setEditor_(const ObjectRef& editor) { editor_ = editor; }
    int subIndexOfNote = 0;

    void textViewDidBeginEditing_(const ObjectRef& textView);
    void textViewDidEndEditing_(const ObjectRef& textView);

private:
    std::weak_ptr<runtime::Object> card_;
    std::weak_ptr<runtime::Object> editor_;
};

// Writes text into the note's text at subIndex (see setNoteTitle:note:subIndexOfNote:)
// through the note's own setters, which save it to the notebook. False when
// the note already held that text or has no text there.
bool setNoteText(runtime::Object& note, int subIndex, const QString& text);

// Registers both classes (after the view kit); safe to call again.
void registerNoteTitleEditorClasses(runtime::Runtime& runtime = runtime::Runtime::shared());

}  // namespace lexicorn::host::ui
