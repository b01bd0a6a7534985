#include "host/ui/notebook_panel.h"

#include "host/ui/edit_bar.h"
#include "host/ui/note_card_view.h"

#include "foundation/log.h"

#include <QKeyEvent>
#include <QLabel>
#include <QPointer>
#include <QScrollArea>
#include <QVBoxLayout>

namespace lexicorn::host::ui {

const QString NotebookPanel::emptyHint = QStringLiteral("No notes yet — select text and make a card");

NotebookPanel::NotebookPanel(QWidget* parent) : QWidget(parent)
{
    registerNoteCardViewClass();
    setFocusPolicy(Qt::StrongFocus);
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->setSpacing(0);
    editBar_ = new EditBar(this);
    outer->addWidget(editBar_);
    scrollArea_ = new QScrollArea(this);
    scrollArea_->setWidgetResizable(true);
    scrollArea_->setFrameShape(QFrame::NoFrame);
    scrollArea_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scrollArea_->setFocusPolicy(Qt::NoFocus);
    list_ = new QWidget;
    list_->setObjectName(QStringLiteral("notebookList"));
    QPalette palette = list_->palette();
    palette.setColor(QPalette::Window, QColor(0xf3, 0xf4, 0xf6));
    list_->setPalette(palette);
    list_->setAutoFillBackground(true);
    listLayout_ = new QVBoxLayout(list_);
    listLayout_->setContentsMargins(8, 8, 8, 8);
    listLayout_->setSpacing(8);
    hint_ = new QLabel(emptyHint, list_);
    hint_->setAlignment(Qt::AlignCenter);
    hint_->setWordWrap(true);
    hint_->setStyleSheet(QStringLiteral("color: #8a8f98;"));
    hint_->hide();
    listLayout_->addWidget(hint_);
    listLayout_->addStretch(1);
    scrollArea_->setWidget(list_);
    outer->addWidget(scrollArea_);
}

NotebookPanel::~NotebookPanel()
{
    clearCards();
}

void NotebookPanel::showBook(std::shared_ptr<Notebook> notebook, const QString& bookMd5)
{
    notebook_ = std::move(notebook);
    bookMd5_ = bookMd5;
    selected_.clear();
    reload();
}

void NotebookPanel::clearCards()
{
    for (auto& [noteid, card] : cards_) {
        if (QWidget* widget = card->widget()) {
            listLayout_->removeWidget(widget);
            widget->hide();
            widget->setParent(nullptr);
        }
    }
    cards_.clear();
}

void NotebookPanel::reload()
{
    clearCards();
    std::vector<MbBookNote> notes;
    if (notebook_ && notebook_->isOpen())
        notes = notebook_->notesOfBook(bookMd5_);
    QStringList shown;
    int position = 0;
    for (MbBookNote& note : notes) {
        const QString noteid = note.noteid();
        auto card = makeNoteCardView(makeBookNote(std::move(note), notebook_.get()), list_->width());
        QPointer<NotebookPanel> panel(this);
        card->saved = [panel] {
            if (panel)
                emit panel->notesChanged();
        };
        card->frameClicked = [panel, noteid](Qt::KeyboardModifiers modifiers) {
            if (!panel)
                return;
            panel->select(noteid, modifiers & Qt::ControlModifier);
            panel->setFocus(Qt::MouseFocusReason);
        };
        card->activated = [panel, noteid] {
            if (panel)
                emit panel->noteActivated(noteid);
        };
        listLayout_->insertWidget(position++, card->widget());
        cards_.emplace_back(noteid, std::move(card));
        shown.append(noteid);
    }
    hint_->setVisible(cards_.empty());
    selected_.removeIf([&](const QString& id) { return !shown.contains(id); });
    showSelection();
}

void NotebookPanel::select(const QString& noteid, bool add)
{
    if (!add)
        selected_ = {noteid};
    else if (selected_.contains(noteid))
        selected_.removeAll(noteid);
    else
        selected_.append(noteid);
    showSelection();
}

void NotebookPanel::showSelection()
{
    for (auto& [noteid, card] : cards_)
        card->setSelected(selected_.contains(noteid));
}

void NotebookPanel::removeSelectedNotes()
{
    if (!notebook_ || selected_.isEmpty())
        return;
    QStringList removed;
    for (const QString& noteid : std::as_const(selected_)) {
        if (notebook_->remove(noteid))
            removed.append(noteid);
        else
            logLine(QStringLiteral("notebook: note %1 was not removed: %2").arg(noteid, notebook_->errorString()));
    }
    selected_.clear();
    reload();
    if (!removed.isEmpty())
        emit notesRemoved(removed);
}

std::shared_ptr<runtime::Object> NotebookPanel::cardViewFor(const QString& noteid) const
{
    for (const auto& [id, card] : cards_) {
        if (id == noteid)
            return card;
    }
    return nullptr;
}

void NotebookPanel::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        if (!selected_.isEmpty()) {
            removeSelectedNotes();
            return;
        }
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (!selected_.isEmpty()) {
            emit noteActivated(selected_.front());
            return;
        }
        break;
    default:
        break;
    }
    QWidget::keyPressEvent(event);
}

}  // namespace lexicorn::host::ui
