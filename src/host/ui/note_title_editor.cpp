#include "host/ui/note_title_editor.h"

#include "host/kit/kit_classes.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QPainter>
#include <QTextCursor>
#include <QTextEdit>

#include <algorithm>

namespace lexicorn::host::ui {

using runtime::makeImp;
using runtime::send;

namespace {

// How far the frame stands out around the title, and its colour.
constexpr double frameOutset = 3;
const QColor frameColour(0x2f, 0x7c, 0xf6);

// The back view's surface: a rounded outline that lets clicks through to the
// title it surrounds.
class TitleFrame final : public QWidget {
public:
    TitleFrame() { setAttribute(Qt::WA_TransparentForMouseEvents); }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(frameColour, 1.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 4, 4);
    }
};

bool responds(const ObjectRef& object, std::string_view selector)
{
    return object && runtime::respondsTo(*object, selector);
}

}  // namespace

bool setNoteText(runtime::Object& note, int subIndex, const QString& text)
{
    switch (subIndex) {
    case 0:
        if (send<QString>(note, "notetitle") == text)
            return false;
        send<void>(note, "setNotetitle:", text);
        return true;
    case 1:
        if (send<QString>(note, "highlight_text") == text)
            return false;
        send<void>(note, "highlightTextFromAttributedText:", text);
        return true;
    default:
        break;
    }
    QJsonArray comments = send<QJsonArray>(note, "notes");
    const int index = subIndex - 2;
    if (index < 0 || index >= comments.size())
        return false;
    if (comments[index].isObject()) {
        QJsonObject record = comments[index].toObject();
        if (record.value(QStringLiteral("text")) == text)
            return false;
        record.insert(QStringLiteral("text"), text);
        comments[index] = record;
    } else {
        if (comments[index] == text)
            return false;
        comments[index] = text;
    }
    send<void>(note, "setNotesAndUpdateMediaList:clear:", comments, false);
    return true;
}

QPoint TitleEditObject::selectedRange() const
{
    if (!textEdit())
        return {};
    const QTextCursor cursor = textEdit()->textCursor();
    return {cursor.selectionStart(), cursor.selectionEnd() - cursor.selectionStart()};
}

void TitleEditObject::setSelectedRange_(QPoint range)
{
    QTextEdit* edit = textEdit();
    if (!edit)
        return;
    const int end = edit->document()->characterCount() - 1;
    QTextCursor cursor(edit->document());
    cursor.setPosition(std::clamp(range.x(), 0, end));
    cursor.setPosition(std::clamp(range.x() + range.y(), 0, end), QTextCursor::KeepAnchor);
    edit->setTextCursor(cursor);
}

void TitleBackObject::setUp()
{
    attach(new TitleFrame, true);
}

void TitleBackObject::textViewDidBeginEditing_(const ObjectRef& textView)
{
    setEditor_(textView);
    const ObjectRef card = mnote();
    if (!card || !textView)
        return;
    // The frame goes around the text view, in the card's coordinates.
    const QPointF origin = send<QPointF>(*textView, "convertPoint:toView:", QPointF(0, 0), card);
    const QRectF bounds = send<QRectF>(*textView, "bounds");
    send<void>(*card, "addSubview:", shared_from_this());
    setFrame_(QRectF(origin, bounds.size()).adjusted(-frameOutset, -frameOutset, frameOutset, frameOutset));
    send<void>(*card, "setEditBackView:", shared_from_this());
}

void TitleBackObject::textViewDidEndEditing_(const ObjectRef& textView)
{
    const auto self = shared_from_this();  // the card may let go of it meanwhile
    const ObjectRef editor = this->editor() ? this->editor() : textView;
    const ObjectRef card = mnote();
    const ObjectRef note = card ? send<ObjectRef>(*card, "note") : nullptr;
    if (editor && note && textView)
        send<void>(*editor, "setNoteTitle:note:subIndexOfNote:", send<QString>(*textView, "text"), note, subIndexOfNote);
    if (card && !send<QString>(*card, "recognize_text").isEmpty()) {
        send<void>(*card, "setRecognize_text:", QString());
        send<void>(*card, "refresh");
    }
    removeFromSuperview();
    if (card) {
        send<void>(*card, "setNeedsDisplay");
        send<void>(*card, "refreshPlayer");
        send<void>(*card, "setEditBackView:", ObjectRef());
    }
    setEditor_(nullptr);
}

void registerNoteTitleEditorClasses(runtime::Runtime& runtime)
{
    registerViewKitClasses(runtime);
    if (runtime.classNamed(noteTitleEditViewClassName))
        return;

    runtime::Class& edit = runtime.registerClass(noteTitleEditViewClassName, textViewClassName);
    registerViewFactory(edit, [](runtime::Class& cls) {
        auto object = std::make_shared<TitleEditObject>(cls);
        object->setUp();
        return object;
    });
    runtime.addMethod(edit, "setNoteTitle:note:subIndexOfNote:",
                      makeImp([](TitleEditObject& self, QString title, ObjectRef note, int subIndex) {
                          if (note && setNoteText(*note, subIndex, title) && self.stored)
                              self.stored();
                      }));
    runtime.addMethod(edit, "textView:shouldChangeTextInRange:replacementText:",
                      makeImp([](TitleEditObject& self, ObjectRef, QPoint, QString replacement) {
                          if (!replacement.contains(QLatin1Char('\n')))
                              return true;
                          // Return ends the edit; the title stays on one line.
                          if (QTextEdit* widget = self.textEdit())
                              widget->clearFocus();
                          return false;
                      }));
    runtime.addMethod(edit, "selectedRange", makeImp([](TitleEditObject& self) { return self.selectedRange(); }));
    runtime.addMethod(edit, "setSelectedRange:", makeImp([](TitleEditObject& self, QPoint range) { self.setSelectedRange_(range); }));

    runtime::Class& back = runtime.registerClass(noteTitleBackViewClassName, viewClassName);
    registerViewFactory(back, [](runtime::Class& cls) {
        auto object = std::make_shared<TitleBackObject>(cls);
        object->setUp();
        return object;
    });
    runtime.addMethod(back, "mnote", makeImp([](TitleBackObject& self) { return self.mnote(); }));
    runtime.addMethod(back, "setMnote:", makeImp([](TitleBackObject& self, ObjectRef card) { self.setMnote_(card); }));
    runtime.addMethod(back, "editor", makeImp([](TitleBackObject& self) { return self.editor(); }));
    runtime.addMethod(back, "setEditor:", makeImp([](TitleBackObject& self, ObjectRef editor) { self.setEditor_(editor); }));
    runtime.addMethod(back, "subIndexOfNote", makeImp([](TitleBackObject& self) { return self.subIndexOfNote; }));
    runtime.addMethod(back, "setSubIndexOfNote:", makeImp([](TitleBackObject& self, int index) { self.subIndexOfNote = index; }));
    runtime.addMethod(back, "textViewDidBeginEditing:",
                      makeImp([](TitleBackObject& self, ObjectRef textView) { self.textViewDidBeginEditing_(textView); }));
    runtime.addMethod(back, "textViewDidEndEditing:",
                      makeImp([](TitleBackObject& self, ObjectRef textView) { self.textViewDidEndEditing_(textView); }));
    runtime.addMethod(back, "textView:shouldChangeTextInRange:replacementText:",
                      makeImp([](TitleBackObject&, ObjectRef textView, QPoint range, QString replacement) {
                          if (!responds(textView, "textView:shouldChangeTextInRange:replacementText:"))
                              return true;
                          return send<bool>(*textView, "textView:shouldChangeTextInRange:replacementText:", textView, range,
                                            replacement);
                      }));
}

}  // namespace lexicorn::host::ui
