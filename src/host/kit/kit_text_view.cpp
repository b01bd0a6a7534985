#include "host/kit/kit_text_view.h"

#include "host/kit/styled_document.h"

#include <QFocusEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QPalette>
#include <QScrollBar>
#include <QTextCursor>
#include <QTextEdit>

#include <algorithm>

namespace lexicorn::host::ui {

using runtime::makeImp;

namespace {

class KitTextEdit final : public QTextEdit {
public:
    KitTextEdit()
    {
        setFrameShape(QFrame::NoFrame);
        setAcceptRichText(false);
    }

private:
    std::shared_ptr<TextViewObject> object() const
    {
        return std::dynamic_pointer_cast<TextViewObject>(viewObjectOf(this));
    }

    // The selected range, or the caret as an empty range.
    QPoint selectedRange() const
    {
        const QTextCursor cursor = textCursor();
        return {cursor.selectionStart(), cursor.selectionEnd() - cursor.selectionStart()};
    }

    bool allowed(QPoint range, const QString& replacement)
    {
        auto view = object();
        return !view || view->shouldChangeText(range.x(), range.y(), replacement);
    }

protected:
    void focusInEvent(QFocusEvent* event) override
    {
        QTextEdit::focusInEvent(event);
        if (auto view = object())
            view->focusEntered();
    }
    void focusOutEvent(QFocusEvent* event) override
    {
        QTextEdit::focusOutEvent(event);
        if (event->reason() == Qt::PopupFocusReason)
            return;
        if (auto view = object())
            view->focusLeft();
    }
    void keyPressEvent(QKeyEvent* event) override
    {
        if (!isReadOnly()) {
            QPoint range = selectedRange();
            std::optional<QString> replacement;
            const bool plain = !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
            if (event->key() == Qt::Key_Backspace || event->key() == Qt::Key_Delete) {
                if (range.y() == 0) {
                    const int end = document()->characterCount() - 1;
                    if (event->key() == Qt::Key_Backspace && range.x() > 0)
                        range = {range.x() - 1, 1};
                    else if (event->key() == Qt::Key_Delete && range.x() < end)
                        range = {range.x(), 1};
                }
                if (range.y() > 0)
                    replacement = QString();
            } else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
                replacement = QStringLiteral("\n");
            } else if (plain && !event->text().isEmpty() && event->text().front().isPrint()) {
                replacement = event->text();
            }
            if (replacement && !allowed(range, *replacement)) {
                event->accept();
                return;
            }
        }
        QTextEdit::keyPressEvent(event);
    }
    void inputMethodEvent(QInputMethodEvent* event) override
    {
        if (!isReadOnly() && !event->commitString().isEmpty() && !allowed(selectedRange(), event->commitString())) {
            event->accept();
            return;
        }
        QTextEdit::inputMethodEvent(event);
    }
    // A view the user cannot edit lets clicks go on to the view below.
    void mousePressEvent(QMouseEvent* event) override
    {
        QTextEdit::mousePressEvent(event);
        if (isReadOnly())
            event->ignore();
    }
    void mouseReleaseEvent(QMouseEvent* event) override
    {
        QTextEdit::mouseReleaseEvent(event);
        if (isReadOnly())
            event->ignore();
    }
};

bool responds(const ObjectRef& object, std::string_view selector)
{
    return object && runtime::respondsTo(*object, selector);
}

}  // namespace

void TextViewObject::setUp()
{
    attach(new KitTextEdit, true);
}

QTextEdit* TextViewObject::textEdit() const
{
    return static_cast<QTextEdit*>(widget());
}

StyledText TextViewObject::attributedText() const
{
    return textEdit() ? styledTextOf(*textEdit()->document()) : StyledText();
}

void TextViewObject::setAttributedText_(const StyledText& text)
{
    QTextEdit* edit = textEdit();
    if (!edit)
        return;
    setStyledText(*edit->document(), text);
    // A view that does not scroll shows its text from the top, however tall:
    // the caret goes to the start, so that keeping it visible keeps the top.
    if (!scrollEnabled_) {
        edit->moveCursor(QTextCursor::Start);
        edit->verticalScrollBar()->setValue(0);
    }
}

QString TextViewObject::text() const
{
    return attributedText().string();
}

void TextViewObject::setText_(const QString& text)
{
    setAttributedText_(StyledText(text));
}

bool TextViewObject::isEditable() const
{
    return textEdit() && !textEdit()->isReadOnly();
}

void TextViewObject::setEditable_(bool editable)
{
    if (QTextEdit* edit = textEdit()) {
        edit->setReadOnly(!editable);
        // Read-only text stays selectable with the mouse.
        edit->setTextInteractionFlags(editable ? Qt::TextEditorInteraction
                                               : Qt::TextSelectableByMouse | Qt::LinksAccessibleByMouse);
    }
}

void TextViewObject::setScrollEnabled_(bool enabled)
{
    scrollEnabled_ = enabled;
    if (QTextEdit* edit = textEdit()) {
        const Qt::ScrollBarPolicy policy = enabled ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff;
        edit->setVerticalScrollBarPolicy(policy);
        edit->setHorizontalScrollBarPolicy(policy);
    }
}

void TextViewObject::setTextColor_(const QColor& colour)
{
    if (QTextEdit* edit = textEdit()) {
        QPalette palette = edit->palette();
        palette.setColor(QPalette::Text, colour);
        edit->setPalette(palette);
    }
}

// A point of the views' own platform is a logical pixel (see styled_document).
void TextViewObject::setFontSize_(double points)
{
    if (QTextEdit* edit = textEdit(); edit && points > 0) {
        QFont font = edit->font();
        font.setPixelSize(std::max(1, qRound(points)));
        edit->setFont(font);
    }
}

bool TextViewObject::allowsEditingTextAttributes() const
{
    return textEdit() && textEdit()->acceptRichText();
}

void TextViewObject::setAllowsEditingTextAttributes_(bool allows)
{
    if (QTextEdit* edit = textEdit())
        edit->setAcceptRichText(allows);
}

void TextViewObject::applyBackground(const QColor& color)
{
    if (QTextEdit* edit = textEdit()) {
        QPalette palette = edit->palette();
        palette.setColor(QPalette::Base, color);
        palette.setColor(QPalette::Window, color);
        edit->setPalette(palette);
    }
}

void TextViewObject::focusEntered()
{
    if (!isEditable() || editing_)
        return;
    editing_ = true;
    const ObjectRef delegate = this->delegate();
    if (responds(delegate, "textViewDidBeginEditing:"))
        runtime::send<void>(*delegate, "textViewDidBeginEditing:", shared_from_this());
}

void TextViewObject::focusLeft()
{
    if (!editing_)
        return;
    editing_ = false;
    const ObjectRef delegate = this->delegate();
    if (responds(delegate, "textViewDidEndEditing:"))
        runtime::send<void>(*delegate, "textViewDidEndEditing:", shared_from_this());
}

bool TextViewObject::shouldChangeText(int location, int length, const QString& replacement)
{
    const ObjectRef delegate = this->delegate();
    if (!responds(delegate, "textView:shouldChangeTextInRange:replacementText:"))
        return true;
    return runtime::send<bool>(*delegate, "textView:shouldChangeTextInRange:replacementText:", shared_from_this(),
                               QPoint(location, length), replacement);
}

void registerTextViewClass(runtime::Runtime& runtime)
{
    runtime::Class& text = runtime.registerClass(textViewClassName, viewClassName);
    registerViewFactory(text, [](runtime::Class& cls) {
        auto object = std::make_shared<TextViewObject>(cls);
        object->setUp();
        return object;
    });
    runtime.addClassMethod(text, "textViewWithFrame:", makeImp([](runtime::Class& cls, QRectF frame) -> ObjectRef {
        auto object = makeViewOfClass(cls);
        object->setFrame_(frame);
        return object;
    }));
    runtime.addMethod(text, "attributedText", makeImp([](TextViewObject& self) { return self.attributedText(); }));
    runtime.addMethod(text, "setAttributedText:", makeImp([](TextViewObject& self, StyledText value) {
        self.setAttributedText_(value);
    }));
    runtime.addMethod(text, "text", makeImp([](TextViewObject& self) { return self.text(); }));
    runtime.addMethod(text, "setText:", makeImp([](TextViewObject& self, QString value) { self.setText_(value); }));
    runtime.addMethod(text, "isEditable", makeImp([](TextViewObject& self) { return self.isEditable(); }));
    runtime.addMethod(text, "setEditable:", makeImp([](TextViewObject& self, bool editable) { self.setEditable_(editable); }));
    runtime.addMethod(text, "isScrollEnabled", makeImp([](TextViewObject& self) { return self.isScrollEnabled(); }));
    runtime.addMethod(text, "setScrollEnabled:", makeImp([](TextViewObject& self, bool enabled) { self.setScrollEnabled_(enabled); }));
    runtime.addMethod(text, "setTextColor:", makeImp([](TextViewObject& self, QColor colour) { self.setTextColor_(colour); }));
    runtime.addMethod(text, "setFontSize:", makeImp([](TextViewObject& self, double points) { self.setFontSize_(points); }));
    runtime.addMethod(text, "delegate", makeImp([](TextViewObject& self) { return self.delegate(); }));
    runtime.addMethod(text, "setDelegate:", makeImp([](TextViewObject& self, ObjectRef delegate) { self.setDelegate_(delegate); }));
    runtime.addMethod(text, "isContinuousSpellCheckingEnabled",
                      makeImp([](TextViewObject& self) { return self.continuousSpellChecking; }));
    runtime.addMethod(text, "setContinuousSpellCheckingEnabled:",
                      makeImp([](TextViewObject& self, bool enabled) { self.continuousSpellChecking = enabled; }));
    runtime.addMethod(text, "allowsEditingTextAttributes",
                      makeImp([](TextViewObject& self) { return self.allowsEditingTextAttributes(); }));
    runtime.addMethod(text, "setAllowsEditingTextAttributes:",
                      makeImp([](TextViewObject& self, bool allows) { self.setAllowsEditingTextAttributes_(allows); }));
}

}  // namespace lexicorn::host::ui
