#pragma once

// "UITextView": a QTextEdit showing styled text.
//
// +textViewWithFrame: (QRectF); attributedText / setAttributedText:
// (StyledText); text / setText: (QString); isEditable / setEditable: (bool);
// isScrollEnabled / setScrollEnabled: (bool); setTextColor: (QColor, the
// colour of text that has none of its own); setFontSize: (double points, the
// size of text that has none of its own); delegate / setDelegate: (held
// weakly); isContinuousSpellCheckingEnabled /
// setContinuousSpellCheckingEnabled: (bool, kept only: there is no spell
// checker); allowsEditingTextAttributes / setAllowsEditingTextAttributes:
// (bool: pasted rich text keeps its styles).
//
// The delegate hears, when it implements them: textViewDidBeginEditing:
// (ObjectRef) when an editable view gets the focus, textViewDidEndEditing:
// (ObjectRef) when it loses it again, and, before text the user types
// replaces a range, textView:shouldChangeTextInRange:replacementText:
// (ObjectRef, QPoint(location, length) in UTF-16 units, QString) -> bool,
// where false drops the keystroke. Pastes and drops are not asked about.
//
// A click on a view that is not editable also reaches the view below it,
// so a table row holding one is selected by the click.

#include "host/kit/view_kit.h"

#include "lexicorn/render/styled_text.h"

class QTextEdit;

namespace lexicorn::host::ui {

inline constexpr const char* textViewClassName = "UITextView";

class TextViewObject : public ViewObject {
public:
    explicit TextViewObject(runtime::Class& cls) : ViewObject(cls) {}
    // Makes the text edit and attaches it; called once by the class's factory.
    void setUp();
    QTextEdit* textEdit() const;

    StyledText attributedText() const;
    void setAttributedText_(const StyledText& text);
    QString text() const;
    void setText_(const QString& text);
    bool isEditable() const;
    void setEditable_(bool editable);
    bool isScrollEnabled() const { return scrollEnabled_; }
    void setScrollEnabled_(bool enabled);
    void setTextColor_(const QColor& colour);
    void setFontSize_(double points);
    ObjectRef delegate() const { return delegate_.lock(); }
    void setDelegate_(const ObjectRef& delegate) { delegate_ = delegate; }

    bool continuousSpellChecking = false;
    bool allowsEditingTextAttributes() const;
    void setAllowsEditingTextAttributes_(bool allows);

    // From the widget: focus changes and the user's typing.
    void focusEntered();
    void focusLeft();
    bool shouldChangeText(int location, int length, const QString& replacement);

protected:
    void applyBackground(const QColor& color) override;

private:
    std::weak_ptr<runtime::Object> delegate_;
    bool scrollEnabled_ = true;
    bool editing_ = false;
};

// Called by registerViewKitClasses (kit_classes.h), after "UIView".
void registerTextViewClass(runtime::Runtime& runtime);

}  // namespace lexicorn::host::ui
