#include "host/ui/note_card_view.h"

#include "host/kit/kit_classes.h"
#include "host/kit/kit_table_view.h"
#include "host/kit/kit_text_view.h"
#include "host/kit/styled_document.h"
#include "host/ui/note_title_editor.h"

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
// Added to each row's text height: room below the text for the caret and the
// title's edit frame.
constexpr double titlePadding = 16;
constexpr double rowPadding = 20;
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
            QString header = page > 0 ? QStringLiteral("p. %1").arg(page) : QStringLiteral("Note");
            if (!card->recognizeText.isEmpty())
                header += QStringLiteral(" · ") + card->recognizeText;
            const QRect strip(margin + 4, 2, width() - 2 * margin - 8, headerHeight - 2);
            painter.drawText(strip, Qt::AlignVCenter | Qt::AlignLeft, QFontMetrics(font).elidedText(header, Qt::ElideRight, strip.width()));
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
    titleBackView_ = makeViewOfClass(*runtime.classNamed(noteTitleBackViewClassName));
    send<void>(*titleBackView_, "setMnote:", shared_from_this());
    send<void>(*titleBackView_, "setSubIndexOfNote:", 0);
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

void NoteCardObject::refreshPlayer()
{
    if (table_) {
        send<void>(*table_, "beginUpdates");
        send<void>(*table_, "endUpdates");
    }
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
    const Row& row = rows_[path.row];
    const double width = send<QRectF>(*table_, "bounds").width();
    return boundingHeightForWidth_withAttributedString_(width, shownText(path)) + (row.kind == Row::title ? titlePadding : rowPadding);
}

// What the row's cell shows, once it has one (a replaced cell may show the
// row otherwise than the card would); the row's own text before that.
StyledText NoteCardObject::shownText(IndexPath path) const
{
    const ObjectRef cell = send<ObjectRef>(*table_, "cellForRowAtIndexPath:", path);
    const ObjectRef content = cell ? send<ObjectRef>(*cell, "contentView") : nullptr;
    const auto views = content ? send<std::vector<ObjectRef>>(*content, "subviews") : std::vector<ObjectRef>();
    if (auto* text = views.empty() ? nullptr : dynamic_cast<TextViewObject*>(views.front().get()))
        return text->attributedText();
    return styledRow(rows_[path.row]);
}

ObjectRef NoteCardObject::tableView_cellForRowAtIndexPath_(const ObjectRef& table, IndexPath path)
{
    runtime::Runtime& runtime = objectClass().runtime();
    const double width = table ? send<QRectF>(*table, "bounds").width() : 320;
    ObjectRef cell = runtime::sendClass<ObjectRef>(*runtime.classNamed(tableViewCellClassName), "newWithStyle:reuseIdentifier:", 0,
                                     rowIdentifier);
    send<void>(*cell, "setFrame:", QRectF(0, 0, width, tableView_heightForRowAtIndexPath_(path)));
    ObjectRef content = send<ObjectRef>(*cell, "contentView");
    if (path.row < 0 || path.row >= static_cast<int>(rows_.size()))
        return cell;
    ObjectRef text = makeRowTextView(rows_[path.row], send<QRectF>(*content, "bounds"));
    send<void>(*text, "setTag:", path.row);
    send<void>(*content, "addSubview:", text);
    return cell;
}

// The title is typed in the title editor, whose back view stores it; the
// other rows report to the card.
ObjectRef NoteCardObject::makeRowTextView(const Row& row, const QRectF& frame)
{
    runtime::Runtime& runtime = objectClass().runtime();
    const bool title = row.kind == Row::title;
    ObjectRef text = runtime::sendClass<ObjectRef>(*runtime.classNamed(title ? noteTitleEditViewClassName : textViewClassName),
                                                   "textViewWithFrame:", frame);
    send<void>(*text, "setAutoresizingMask:", int(flexibleWidth | flexibleHeight));
    send<void>(*text, "setScrollEnabled:", false);
    send<void>(*text, "setAttributedText:", styledRow(row));
    send<void>(*text, "setEditable:", row.editable);
    if (auto* editor = dynamic_cast<TitleEditObject*>(text.get())) {
        std::weak_ptr<NoteCardObject> weak = std::static_pointer_cast<NoteCardObject>(shared_from_this());
        editor->stored = [weak] {
            auto card = weak.lock();
            if (!card || !card->note_)
                return;
            for (Row& shown : card->rows_) {
                if (shown.kind == Row::title)
                    shown.text = card->note_->note.notetitle();
            }
            if (card->saved)
                card->saved();
        };
    }
    send<void>(*text, "setDelegate:", title ? titleBackView_ : shared_from_this());
    return text;
}

void NoteCardObject::textViewDidBeginEditing_(const ObjectRef& textView)
{
    editingIndexPath_ = {0, send<int>(*textView, "tag")};
}

void NoteCardObject::textViewDidEndEditing_(const ObjectRef& textView)
{
    editingIndexPath_ = {-1, -1};
    const int index = send<int>(*textView, "tag");
    if (!note_ || index < 0 || index >= static_cast<int>(rows_.size()))
        return;
    Row& row = rows_[index];
    const QString text = send<QString>(*textView, "text");
    if (text == row.text || !row.editable)
        return;
    row.text = text;
    if (!setNoteText(*note_, row.subIndex(), text))
        return;
    recognizeText.clear();
    // The row may now need another height; the cells (one may have the focus
    // by now) stay as they are.
    refreshPlayer();
    if (saved)
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
    registerNoteTitleEditorClasses(runtime);
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
    runtime.addMethod(card, "lastNote", makeImp([](NoteCardObject& self) -> ObjectRef { return self.note(); }));
    runtime.addMethod(card, "setNote:", makeImp([](NoteCardObject& self, ObjectRef note) { self.setNote_(note); }));
    runtime.addMethod(card, "tableView", makeImp([](NoteCardObject& self) { return self.tableView(); }));
    runtime.addMethod(card, "reloadData", makeImp([](NoteCardObject& self) { self.reloadData(); }));
    runtime.addMethod(card, "refreshPlayer", makeImp([](NoteCardObject& self) { self.refreshPlayer(); }));
    runtime.addMethod(card, "_editingIndexPath", makeImp([](NoteCardObject& self) { return self.editingIndexPath(); }));
    runtime.addMethod(card, "recognize_text", makeImp([](NoteCardObject& self) { return self.recognizeText; }));
    runtime.addMethod(card, "setRecognize_text:", makeImp([](NoteCardObject& self, QString text) { self.recognizeText = text; }));
    runtime.addMethod(card, "refresh", makeImp([](NoteCardObject& self) {
        if (QWidget* widget = self.widget())
            widget->update(0, 0, widget->width(), headerHeight);
    }));
    runtime.addMethod(card, "setNeedsDisplay", makeImp([](NoteCardObject& self) {
        if (QWidget* widget = self.widget())
            widget->update();
    }));
    runtime.addMethod(card, "editBackView", makeImp([](NoteCardObject& self) { return self.editBackView; }));
    runtime.addMethod(card, "setEditBackView:", makeImp([](NoteCardObject& self, ObjectRef view) { self.editBackView = view; }));
    runtime.addMethod(card, "tableView:numberOfRowsInSection:", makeImp([](NoteCardObject& self, ObjectRef, int section) {
        return self.tableView_numberOfRowsInSection_(section);
    }));
    runtime.addMethod(card, "tableView:heightForRowAtIndexPath:", makeImp([](NoteCardObject& self, ObjectRef, IndexPath path) {
        return self.tableView_heightForRowAtIndexPath_(path);
    }));
    runtime.addMethod(card, "tableView:cellForRowAtIndexPath:", makeImp([](NoteCardObject& self, ObjectRef table, IndexPath path) {
        return self.tableView_cellForRowAtIndexPath_(table, path);
    }));
    runtime.addMethod(card, "textViewDidBeginEditing:", makeImp([](NoteCardObject& self, ObjectRef textView) {
        self.textViewDidBeginEditing_(textView);
    }));
    runtime.addMethod(card, "textViewDidEndEditing:", makeImp([](NoteCardObject& self, ObjectRef textView) {
        self.textViewDidEndEditing_(textView);
    }));
}

}  // namespace lexicorn::host::ui
