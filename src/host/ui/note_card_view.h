#pragma once

// "NoteCardView": one mind-map note shown as a table whose rows are the
// note's title, its excerpt and its comments, each editable in place. The
// card is the data source and delegate of its own "UITableView", and its
// table methods are reached through runtime::send, so a plug-in that replaces
// them changes what every card shows.
//
// Instance methods: note and lastNote (ObjectRef, the "MbBookNote"), setNote:
// (ObjectRef, shows it), tableView (ObjectRef), reloadData,
// tableView:numberOfRowsInSection:, tableView:heightForRowAtIndexPath:,
// tableView:cellForRowAtIndexPath: (a "UITableViewCell" holding an editable
// text view tagged with the row: the title in a "NoteTitleEditView" whose
// delegate is the card's "NoteTitleBackView", see note_title_editor.h; the
// other rows in a "UITextView" whose delegate is the card),
// textViewDidBeginEditing: (the row becomes _editingIndexPath),
// textViewDidEndEditing: (writes the row back into the note and the notebook
// at once), _editingIndexPath (IndexPath, section -1 while no row is edited).
//
// What the title editor uses: recognize_text / setRecognize_text: (QString, a
// text proposed for the note and shown in the card's header until the note
// is edited), refresh (repaints the header), setNeedsDisplay (repaints the
// card), refreshPlayer (lays the rows out again at their heights and sizes
// the card to them), editBackView / setEditBackView: (the frame of the title
// edit in progress, nil when none).
//
// Class method boundingHeightForWidth:withAttributedString: (double,
// StyledText) -> double.

#include "host/kit/view_kit.h"

#include "host/app/note_classes.h"

#include "foundation/index_path.h"
#include "lexicorn/render/styled_text.h"

#include <QString>

#include <functional>
#include <vector>

namespace lexicorn::host::ui {

inline constexpr const char* noteCardViewClassName = "NoteCardView";

class NoteCardObject : public ViewObject {
public:
    explicit NoteCardObject(runtime::Class& cls) : ViewObject(cls) {}
    // Makes the card widget and its table; called once by the class's factory.
    void setUp();

    std::shared_ptr<BookNoteObject> note() const { return note_; }
    void setNote_(const ObjectRef& note);
    ObjectRef tableView() const { return table_; }
    void reloadData();
    void refreshPlayer();

    IndexPath editingIndexPath() const { return editingIndexPath_; }
    QString recognizeText;
    ObjectRef editBackView;

    bool isSelected() const { return selected_; }
    void setSelected(bool selected);

    // Hooks for the window holding the card.
    std::function<void()> saved;                              // an edit reached the notebook
    std::function<void(Qt::KeyboardModifiers)> frameClicked;  // a click on the frame or header
    std::function<void()> activated;                          // a double click

    // What one row shows and where an edit of it goes.
    struct Row {
        enum Kind { title, excerpt, comment } kind = title;
        int commentIndex = -1;  // into the note's comments
        QString text;
        bool editable = true;
        // Which of the note's texts the row shows, as setNoteText numbers them.
        int subIndex() const { return kind == title ? 0 : kind == excerpt ? 1 : 2 + commentIndex; }
    };
    const std::vector<Row>& rows() const { return rows_; }
    // The styled text of a row as the card shows it.
    StyledText styledRow(const Row& row) const;

    int tableView_numberOfRowsInSection_(int section) const;
    double tableView_heightForRowAtIndexPath_(IndexPath path) const;
    ObjectRef tableView_cellForRowAtIndexPath_(const ObjectRef& table, IndexPath path);
    void textViewDidBeginEditing_(const ObjectRef& textView);
    void textViewDidEndEditing_(const ObjectRef& textView);

    static double boundingHeightForWidth_withAttributedString_(double width, const StyledText& text);

private:
    void collectRows();
    void sizeToContent(double contentHeight);
    ObjectRef makeRowTextView(const Row& row, const QRectF& frame);
    StyledText shownText(IndexPath path) const;

    std::shared_ptr<BookNoteObject> note_;
    ObjectRef table_;
    ObjectRef titleBackView_;  // the delegate of the title row's editor
    IndexPath editingIndexPath_{-1, -1};
    std::vector<Row> rows_;
    bool selected_ = false;
};

// A card showing the note, width as given (the height follows its rows).
std::shared_ptr<NoteCardObject> makeNoteCardView(const std::shared_ptr<BookNoteObject>& note, double width = 360,
                                                 runtime::Runtime& runtime = runtime::Runtime::shared());

// Registers "NoteCardView" (and the kit and note classes); safe to call again.
void registerNoteCardViewClass(runtime::Runtime& runtime = runtime::Runtime::shared());

}  // namespace lexicorn::host::ui
