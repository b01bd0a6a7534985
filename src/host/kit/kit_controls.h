#pragma once

// The kit's controls: views the user presses, types in or toggles, which
// tell their targets through runtime::send.
//
//   "UIControl"   the base: addTarget:action:forControlEvents: (ObjectRef
//                 target held weakly, QString action, int events);
//                 sendActionsForControlEvents: (int); isEnabled / setEnabled:;
//                 isSelected / setSelected: (bool). An action is sent with the
//                 control as its only argument (ObjectRef); a target that
//                 does not answer the action is skipped.
//   "UIButton"    +buttonWithType: (int); setTitle:forState: (QString, int),
//                 titleForState: (int), currentTitle; setTitleColor:forState:
//                 (QColor, int); setImage:forState: (ObjectRef "UIImage", int;
//                 one image serves every state); setFontSize: (double
//                 points). A click sends touch-up-inside. A selected button
//                 shows a tinted background.
//   "UILabel"     text / setText: (QString); setTextColor: (QColor);
//                 setFontSize: (double); setTextAlignment: (int 0 left,
//                 1 centre, 2 right).
//   "UITextField" text / setText: (QString); setFontSize: (double);
//                 setPlaceholder: (QString). Typing sends editing-changed.
//
// The switch and the segmented control are in kit_toggles.h, images in
// kit_images.h. Every control is made with +viewWithFrame: of its class too.

#include "host/kit/view_kit.h"

#include <QColor>
#include <QIcon>
#include <QString>

#include <map>
#include <vector>

class QAbstractButton;
class QLabel;
class QLineEdit;

namespace lexicorn::host::ui {

inline constexpr const char* controlClassName = "UIControl";
inline constexpr const char* buttonClassName = "UIButton";
inline constexpr const char* labelClassName = "UILabel";
inline constexpr const char* textFieldClassName = "UITextField";

// Control events, as bits of forControlEvents:.
enum ControlEvent : int {
    touchUpInside = 1 << 6,
    valueChanged = 1 << 12,
    editingChanged = 1 << 17,
};

// Control states of setTitle:forState: and friends.
enum ControlState : int {
    stateNormal = 0,
    stateDisabled = 1 << 1,
    stateSelected = 1 << 2,
};

class ControlObject : public ViewObject {
public:
    explicit ControlObject(runtime::Class& cls) : ViewObject(cls) {}

    void addTarget_action_forControlEvents_(const ObjectRef& target, const QString& action, int events);
    // Sends each action registered for any of the events to its living target.
    void sendActionsForControlEvents_(int events);
    bool isEnabled() const;
    void setEnabled_(bool enabled);
    bool isSelected() const { return selected_; }
    void setSelected_(bool selected);

private:
    struct Binding {
        std::weak_ptr<runtime::Object> target;
        QString action;
        int events = 0;
    };
    std::vector<Binding> bindings_;
    bool selected_ = false;
};

class ButtonObject : public ControlObject {
public:
    explicit ButtonObject(runtime::Class& cls) : ControlObject(cls) {}
    // Makes the button widget and attaches it; called once by the factory.
    void setUp();

    void setTitle_forState_(const QString& title, int state);
    // The title set for the state, else the normal one.
    QString titleForState_(int state) const;
    // The title the button shows now.
    QString currentTitle() const;
    void setTitleColor_forState_(const QColor& colour, int state);
    QColor titleColor() const;
    void setImage_forState_(const ObjectRef& image, int state);
    QIcon image() const { return image_; }
    void setFontSize_(double points);

protected:
    void applyBackground(const QColor& color) override;

private:
    void updateAccessibleName();

    std::map<int, QString> titles_;
    std::map<int, QColor> titleColours_;
    QIcon image_;
    QString imageName_;
};

class LabelObject : public ViewObject {
public:
    explicit LabelObject(runtime::Class& cls) : ViewObject(cls) {}
    void setUp();
    QLabel* label() const;
};

class TextFieldObject : public ControlObject {
public:
    explicit TextFieldObject(runtime::Class& cls) : ControlObject(cls) {}
    void setUp();
    QLineEdit* lineEdit() const;
};

// A font of the given size, in the kit's points: one point is one pixel at
// normal resolution, as for "UITextView".
QFont kitFont(const QFont& base, double points);

// Registers "UIControl", "UIButton", "UILabel" and "UITextField", after
// "UIView" (kit_classes.h keeps the order).
void registerControlClasses(runtime::Runtime& runtime);

}  // namespace lexicorn::host::ui
