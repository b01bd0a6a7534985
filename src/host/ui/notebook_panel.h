#pragma once

// The notebook beside the book: the notes of the open book as cards, in
// mind-map order, each editable in place. A click on a card's frame selects
// it (Ctrl adds to the selection), Delete removes the selected notes, a
// double click or Enter asks the window to show the note in the book.

#include "host/notebook/notebook.h"

#include "runtime/runtime.h"

#include <QString>
#include <QStringList>
#include <QWidget>

#include <memory>
#include <utility>
#include <vector>

class QLabel;
class QScrollArea;
class QVBoxLayout;

namespace lexicorn::host::ui {

class EditBar;
class NoteCardObject;

class NotebookPanel : public QWidget {
    Q_OBJECT
public:
    static const QString emptyHint;

    explicit NotebookPanel(QWidget* parent = nullptr);
    ~NotebookPanel() override;

    void showBook(std::shared_ptr<Notebook> notebook, const QString& bookMd5);
    // Reads the book's notes from the notebook again; the selection keeps
    // the notes that are still there.
    void reload();
    QStringList selectedNoteIds() const { return selected_; }
    // The organising edit bar above the notes, where add-ons put buttons.
    EditBar& editBar() { return *editBar_; }
    // Removes the selected notes from the notebook, then shows what is left.
    void removeSelectedNotes();
    // The card ("NoteCardView") of a note shown, or null.
    std::shared_ptr<runtime::Object> cardViewFor(const QString& noteid) const;

signals:
    void noteActivated(const QString& noteid);
    void notesChanged();
    void notesRemoved(const QStringList& noteids);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void clearCards();
    void select(const QString& noteid, bool add);
    void showSelection();

    std::shared_ptr<Notebook> notebook_;
    QString bookMd5_;
    EditBar* editBar_;
    QScrollArea* scrollArea_;
    QWidget* list_;
    QVBoxLayout* listLayout_;
    QLabel* hint_;
    std::vector<std::pair<QString, std::shared_ptr<NoteCardObject>>> cards_;
    QStringList selected_;
};

}  // namespace lexicorn::host::ui
