#include "host/ui/note_card_view.h"

#include "host/ui/kit_table_view.h"
#include "host/ui/kit_text_view.h"
#include "host/ui/styled_document.h"

#include "foundation/log.h"

#include <QJsonObject>
#include <QMouseEvent>
#include <QPainter>
#include <QTextDocument>

#include <cmath>

namespace lexicorn::host::ui {

using runtime::makeImp;
using runtime::send;

namespace {

constexpr int margin = 6;         // between the card's border and its table
constexpr int headerHeight = 20;  // the strip above the rows, showing the page
constexpr double rowPadding = 4;  // added to each row's text height
const QString rowIdentifier = QStringLiteral("NoteCardRow");

// The card's surface: a white rounded box with a light border (blue when
// selected) and a small header; clicks on the frame and header select it.
class CardWidget final : public QWidget {
public:
    CardWidget() { setAttribute(Qt::WA_StyledBackground, false); }

private:
    std::shared_ptr<NoteCardObject> card() const
    {
        return std::dynamic_pointer_cast<NoteCardObject>(viewObjectOf(this));
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        auto card = this->card();
        const bool selected = card && card->isSelected();
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(selected ? QColor(0x2f, 0x7c, 0xf6) : QColor(0xd6, 0xd9, 0xde), selected ? 2.0 : 1.0));
        painter.setBrush(Qt::white);
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 6, 6);
        if (card && card->note()) {
            const int page = card->note()->note.pageNo();
            QFont font = this->font();
            font.setPointSizeF(font.pointSizeF() * 0.8);
            painter.setFont(font);
            painter.setPen(QColor(0x8a, 0x8f, 0x98));
            painter.drawText(QRect(margin + 4, 2, width() - 2 * margin, headerHeight - 2), Qt::AlignVCenter | Qt::AlignLeft,
                             page > 0 ? QStringLiteral("p. %1").arg(page) : QStringLiteral("Note"));
        }
    }
    void mousePressEvent(QMouseEvent* event) override
    {
        auto card = this->card();
        if (event->button() == Qt::LeftButton && card && card->frameClicked) {
            card->frameClicked(event->modifiers());
            event->accept();
            return;
        }
        QWidget::mousePressEvent(event);
    }
    void mouseDoubleClickEvent(QMouseEvent* event) override
    {
        auto card = this->card();
        if (event->button() == Qt::LeftButton && card && card->activated) {
            card->activated();
            event->accept();
            return;
        }
        QWidget::mouseDoubleClickEvent(event);
    }
};

QString commentText(const QJsonValue& value, bool* editable)
{
    *editable = true;
    if (value.isString())
        return value.toString();
    const QJsonObject record = value.toObject();
    const QString text = record.value(QStringLiteral("text")).toString();
    if (!text.isEmpty())
        return text;
    *editable = false;
    return record.value(QStringLiteral("noteid")).toString();
}

}  // namespace

void NoteCardObject::setUp()
{
    auto* widget = new CardWidget;
    widget->resize(360, 120);
    attach(widget, true);
    runtime::Runtime& runtime = objectClass().runtime();
    table_ = runtime::sendClass<ObjectRef>(*runtime.classNamed(tableViewClassName), "tableViewWithFrame:style:",
                             QRectF(margin, headerHeight, 360 - 2 * margin, 120 - headerHeight - margin), 0);
    addSubview_(table_);
    auto* table = static_cast<TableViewObject*>(table_.get());
    table->setAutoresizingMask_(flexibleWidth | flexibleHeight);
    table->setBackgroundColor_(Qt::white);
    std::weak_ptr<NoteCardObject> weak = std::static_pointer_cast<NoteCardObject>(shared_from_this());
    table->contentHeightChanged = [weak](double height) {
        if (auto card = weak.lock())
            card->sizeToContent(height);
    };
    send<void>(*table_, "setDataSource:", shared_from_this());
    send<void>(*table_, "setDelegate:", shared_from_this());
}

void NoteCardObject::sizeToContent(double contentHeight)
{
    if (QWidget* card = widget())
        card->setFixedHeight(headerHeight + int(std::ceil(contentHeight)) + margin);
}

void NoteCardObject::setNote_(const ObjectRef& note)
{
    note_ = std::dynamic_pointer_cast<BookNoteObject>(note);
    reloadData();
}

void NoteCardObject::reloadData()
{
    collectRows();
    if (table_)
        send<void>(*table_, "reloadData");
    if (QWidget* card = widget())
        card->update();
}

void NoteCardObject::setSelected(bool selected)
{
    if (selected_ == selected)
        return;
    selected_ = selected;
    if (QWidget* card = widget())
        card->update();
}

void NoteCardObject::collectRows()
{
    rows_.clear();
    if (!note_)
        return;
    const QString title = send<QString>(*note_, "notetitle");
    if (!title.isEmpty())
        rows_.push_back({Row::title, -1, title, true});
    const QString excerpt = send<QString>(*note_, "highlight_text");
    if (!excerpt.isEmpty())
        rows_.push_back({Row::excerpt, -1, excerpt, true});
    const QJsonArray comments = send<QJsonArray>(*note_, "notes");
    for (int i = 0; i < comments.size(); ++i) {
        bool editable = true;
        const QString text = commentText(comments[i], &editable);
        if (!text.isEmpty())
            rows_.push_back({Row::comment, i, text, editable});
    }
}

StyledText NoteCardObject::styledRow(const Row& row) const
{
    TextAttributes attributes;
    switch (row.kind) {
    case Row::title:
        attributes.bold = true;
        attributes.fontSize = 14;
        attributes.foreground = Rgba{0x1d, 0x1f, 0x23};
        break;
    case Row::excerpt:
        attributes.foreground = Rgba{0x2b, 0x2e, 0x33};
        attributes.background = Rgba{0xff, 0xf3, 0xb0, 0.7};
        break;
    case Row::comment:
        attributes.foreground = Rgba{0x4a, 0x4f, 0x57};
        break;
    }
    return StyledText(row.text, attributes);
}

int NoteCardObject::tableView_numberOfRowsInSection_(int section) const
{
    return section == 0 ? static_cast<int>(rows_.size()) : 0;
}

double NoteCardObject::tableView_heightForRowAtIndexPath_(IndexPath path) const
{
    if (path.row < 0 || path.row >= static_cast<int>(rows_.size()) || !table_)
        return 0;
    const double width = send<QRectF>(*table_, "bounds").width();
    return boundingHeightForWidth_withAttributedString_(width, styledRow(rows_[path.row])) + rowPadding;
}

ObjectRef NoteCardObject::tableView_cellForRowAtIndexPath_(const ObjectRef& table, IndexPath path)
{
    runtime::Runtime& runtime = objectClass().runtime();
    const double width = table ? send<QRectF>(*table, "bounds").width() : 320;
    ObjectRef cell = runtime::sendClass<ObjectRef>(*runtime.classNamed(tableViewCellClassName), "newWithStyle:reuseIdentifier:", 0,
                                     rowIdentifier);
    send<void>(*cell, "setFrame:", QRectF(0, 0, width, tableView_heightForRowAtIndexPath_(path)));
    ObjectRef content = send<ObjectRef>(*cell, "contentView");
    ObjectRef text = runtime::sendClass<ObjectRef>(*runtime.classNamed(textViewClassName), "textViewWithFrame:",
                                     send<QRectF>(*content, "bounds"));
    send<void>(*text, "setAutoresizingMask:", int(flexibleWidth | flexibleHeight));
    send<void>(*text, "setScrollEnabled:", false);
    send<void>(*text, "setTag:", path.row);
    if (path.row >= 0 && path.row < static_cast<int>(rows_.size())) {
        const Row& row = rows_[path.row];
        send<void>(*text, "setAttributedText:", styledRow(row));
        send<void>(*text, "setEditable:", row.editable);
    }
    send<void>(*text, "setDelegate:", shared_from_this());
    send<void>(*content, "addSubview:", text);
    return cell;
}

void NoteCardObject::textViewDidEndEditing_(const ObjectRef& textView)
{
    const int index = send<int>(*textView, "tag");
    if (!note_ || index < 0 || index >= static_cast<int>(rows_.size()))
        return;
    Row& row = rows_[index];
    const QString text = send<QString>(*textView, "text");
    if (text == row.text || !row.editable)
        return;
    row.text = text;
    Notebook* notebook = note_->notebook;
    bool stored = true;
    switch (row.kind) {
    case Row::title:
    case Row::excerpt:
        if (row.kind == Row::title)
            note_->note.setNotetitle(text);
        else
            note_->note.setHighlight_text(text);
        stored = !notebook || notebook->update(note_->note);
        if (!stored)
            logLine(QStringLiteral("card: note %1 was not saved: %2").arg(note_->note.noteid(), notebook->errorString()));
        break;
    case Row::comment: {
        QJsonArray comments = send<QJsonArray>(*note_, "notes");
        if (row.commentIndex >= comments.size())
            return;
        if (comments[row.commentIndex].isObject()) {
            QJsonObject record = comments[row.commentIndex].toObject();
            record.insert(QStringLiteral("text"), text);
            comments[row.commentIndex] = record;
        } else {
            comments[row.commentIndex] = text;
        }
        send<void>(*note_, "setNotesAndUpdateMediaList:clear:", comments, false);
        break;
    }
    }
    // The row may now need another height; the cells (one may have the focus
    // by now) stay as they are.
    if (table_) {
        send<void>(*table_, "beginUpdates");
        send<void>(*table_, "endUpdates");
    }
    if (stored && saved)
        saved();
}

double NoteCardObject::boundingHeightForWidth_withAttributedString_(double width, const StyledText& text)
{
    QTextDocument document;
    setStyledText(document, text);
    document.setTextWidth(std::max(1.0, width));
    return std::ceil(document.size().height());
}

std::shared_ptr<NoteCardObject> makeNoteCardView(const std::shared_ptr<BookNoteObject>& note, double width,
                                                 runtime::Runtime& runtime)
{
    registerNoteCardViewClass(runtime);
    auto card = std::static_pointer_cast<NoteCardObject>(makeViewOfClass(*runtime.classNamed(noteCardViewClassName)));
    card->setFrame_(QRectF(0, 0, width, 120));
    send<void>(*card, "setNote:", ObjectRef(note));
    return card;
}

void registerNoteCardViewClass(runtime::Runtime& runtime)
{
    registerViewKitClasses(runtime);
    registerNoteClasses(runtime);
    if (runtime.classNamed(noteCardViewClassName))
        return;
    runtime::Class& card = runtime.registerClass(noteCardViewClassName, viewClassName);
    registerViewFactory(card, [](runtime::Class& cls) {
        auto object = std::make_shared<NoteCardObject>(cls);
        object->setUp();
        return object;
    });
    runtime.addClassMethod(card, "boundingHeightForWidth:withAttributedString:",
                           makeImp([](runtime::Class&, double width, StyledText text) {
                               return NoteCardObject::boundingHeightForWidth_withAttributedString_(width, text);
                           }));
    runtime.addMethod(card, "note", makeImp([](NoteCardObject& self) -> ObjectRef { return self.note(); }));
    runtime.addMethod(card, "setNote:", makeImp([](NoteCardObject& self, ObjectRef note) { self.setNote_(note); }));
    runtime.addMethod(card, "tableView", makeImp([](NoteCardObject& self) { return self.tableView(); }));
    runtime.addMethod(card, "reloadData", makeImp([](NoteCardObject& self) { self.reloadData(); }));
    runtime.addMethod(card, "tableView:numberOfRowsInSection:", makeImp([](NoteCardObject& self, ObjectRef, int section) {
        return self.tableView_numberOfRowsInSection_(section);
    }));
    runtime.addMethod(card, "tableView:heightForRowAtIndexPath:", makeImp([](NoteCardObject& self, ObjectRef, IndexPath path) {
        return self.tableView_heightForRowAtIndexPath_(path);
    }));
    runtime.addMethod(card, "tableView:cellForRowAtIndexPath:", makeImp([](NoteCardObject& self, ObjectRef table, IndexPath path) {
        return self.tableView_cellForRowAtIndexPath_(table, path);
    }));
    // Nothing to do when editing starts; the method is here for a plug-in to
    // replace (edit protection) and for the text view to find.
    runtime.addMethod(card, "textViewDidBeginEditing:", makeImp([](NoteCardObject&, ObjectRef) {}));
    runtime.addMethod(card, "textViewDidEndEditing:", makeImp([](NoteCardObject& self, ObjectRef textView) {
        self.textViewDidEndEditing_(textView);
    }));
}

}  // namespace lexicorn::host::ui
