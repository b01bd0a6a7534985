#include "host/kit/kit_controls.h"

#include "host/kit/kit_images.h"

#include <QAbstractButton>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPalette>

#include <algorithm>

namespace lexicorn::host::ui {

using runtime::makeImp;

namespace {

std::shared_ptr<ButtonObject> buttonOf(const QWidget* widget)
{
    return std::dynamic_pointer_cast<ButtonObject>(viewObjectOf(widget));
}

// Dark colours get white text, light ones black.
bool isDark(const QColor& colour)
{
    return colour.isValid() && colour.alpha() > 0 && colour.lightnessF() < 0.6;
}

// The button paints itself from its object: background, image and title,
// so a title or colour change shows at once.
class KitButton final : public QAbstractButton {
public:
    KitButton() { setFocusPolicy(Qt::StrongFocus); }

    QSize sizeHint() const override
    {
        auto object = buttonOf(this);
        const int textWidth = object ? fontMetrics().horizontalAdvance(object->currentTitle()) : 0;
        const int imageWidth = object && !object->image().isNull() ? 22 : 0;
        const int gap = textWidth && imageWidth ? 6 : 0;
        return {std::max(28, textWidth + imageWidth + gap + 12), std::max(28, fontMetrics().height() + 8)};
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        auto object = buttonOf(this);
        if (!object)
            return;
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        if (!isEnabled())
            painter.setOpacity(0.45);
        const QRectF area = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
        QColor fill = object->backgroundColor();
        const bool filled = fill.isValid() && fill.alpha() > 0;
        if (object->isSelected())
            fill = filled ? fill.darker(125) : QColor(defaultTintColor().red(), defaultTintColor().green(), defaultTintColor().blue(), 60);
        if (isDown())
            fill = fill.isValid() && fill.alpha() > 0 ? fill.darker(120) : QColor(0, 0, 0, 30);
        if (fill.isValid() && fill.alpha() > 0) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(fill);
            painter.drawRoundedRect(area, 4, 4);
        }
        if (hasFocus()) {
            painter.setPen(QPen(defaultTintColor(), 1.5));
            painter.setBrush(Qt::NoBrush);
            painter.drawRoundedRect(area.adjusted(1, 1, -1, -1), 4, 4);
        }

        const QString title = object->currentTitle();
        QRect textArea = rect().adjusted(6, 0, -6, 0);
        if (!object->image().isNull()) {
            const int side = std::min(22, height() - 6);
            const QRect imageArea = title.isEmpty() ? QRect(QPoint(0, 0), QSize(side, side)).translated(rect().center() - QPoint(side / 2, side / 2))
                                                    : QRect(6, (height() - side) / 2, side, side);
            object->image().paint(&painter, imageArea);
            textArea.setLeft(imageArea.right() + 6);
        }
        if (!title.isEmpty()) {
            painter.setPen(object->titleColor());
            painter.setFont(font());
            painter.drawText(textArea, Qt::AlignCenter, fontMetrics().elidedText(title, Qt::ElideRight, textArea.width()));
        }
    }
};

}  // namespace

void ControlObject::addTarget_action_forControlEvents_(const ObjectRef& target, const QString& action, int events)
{
    bindings_.push_back({target, action, events});
}

void ControlObject::sendActionsForControlEvents_(int events)
{
    const ObjectRef self = shared_from_this();
    // A copy: an action may add or remove bindings.
    const std::vector<Binding> bindings = bindings_;
    for (const Binding& binding : bindings) {
        const ObjectRef target = binding.target.lock();
        const std::string action = binding.action.toStdString();
        if ((binding.events & events) && target && runtime::respondsTo(*target, action))
            runtime::send<void>(*target, action, self);
    }
}

bool ControlObject::isEnabled() const
{
    return widget() && widget()->isEnabled();
}

void ControlObject::setEnabled_(bool enabled)
{
    if (widget())
        widget()->setEnabled(enabled);
}

void ControlObject::setSelected_(bool selected)
{
    selected_ = selected;
    if (widget())
        widget()->update();
}

void ButtonObject::setUp()
{
    auto* button = new KitButton;
    attach(button, true);
    std::weak_ptr<runtime::Object> weakSelf = weak_from_this();
    QObject::connect(button, &QAbstractButton::clicked, button, [weakSelf] {
        if (auto self = std::dynamic_pointer_cast<ControlObject>(weakSelf.lock()))
            self->sendActionsForControlEvents_(touchUpInside);
    });
}

void ButtonObject::setTitle_forState_(const QString& title, int state)
{
    titles_[state] = title;
    if (auto* button = static_cast<QAbstractButton*>(widget())) {
        button->setText(currentTitle());
        updateAccessibleName();
        button->update();
    }
}

void ButtonObject::updateAccessibleName()
{
    // Screen readers and window-system test drivers read the title; a
    // button with only an image goes by the image's name.
    widget()->setAccessibleName(currentTitle().isEmpty() ? imageName_ : QString());
}

QString ButtonObject::titleForState_(int state) const
{
    auto found = titles_.find(state);
    if (found == titles_.end())
        found = titles_.find(stateNormal);
    return found == titles_.end() ? QString() : found->second;
}

QString ButtonObject::currentTitle() const
{
    if (!isEnabled() && titles_.count(stateDisabled))
        return titles_.at(stateDisabled);
    return titleForState_(isSelected() ? stateSelected : stateNormal);
}

void ButtonObject::setTitleColor_forState_(const QColor& colour, int state)
{
    titleColours_[state] = colour;
    if (widget())
        widget()->update();
}

QColor ButtonObject::titleColor() const
{
    auto found = titleColours_.find(isSelected() ? stateSelected : stateNormal);
    if (found == titleColours_.end())
        found = titleColours_.find(stateNormal);
    if (found != titleColours_.end())
        return found->second;
    if (isDark(backgroundColor()))
        return Qt::white;
    return widget() ? widget()->palette().color(QPalette::ButtonText) : QColor(Qt::black);
}

void ButtonObject::setImage_forState_(const ObjectRef& image, int /*state*/)
{
    auto* kitImage = dynamic_cast<ImageObject*>(image.get());
    image_ = kitImage ? QIcon(kitImage->pixmap()) : QIcon();
    imageName_ = kitImage ? kitImage->name() : QString();
    if (widget()) {
        updateAccessibleName();
        widget()->update();
    }
}

void ButtonObject::setFontSize_(double points)
{
    if (widget())
        widget()->setFont(kitFont(widget()->font(), points));
}

void ButtonObject::applyBackground(const QColor& /*color*/)
{
    // The button paints its own rounded background.
    if (widget())
        widget()->update();
}

void LabelObject::setUp()
{
    auto* label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    attach(label, true);
}

QLabel* LabelObject::label() const
{
    return static_cast<QLabel*>(widget());
}

void TextFieldObject::setUp()
{
    auto* field = new QLineEdit;
    attach(field, true);
    std::weak_ptr<runtime::Object> weakSelf = weak_from_this();
    QObject::connect(field, &QLineEdit::textEdited, field, [weakSelf] {
        if (auto self = std::dynamic_pointer_cast<ControlObject>(weakSelf.lock()))
            self->sendActionsForControlEvents_(editingChanged);
    });
}

QLineEdit* TextFieldObject::lineEdit() const
{
    return static_cast<QLineEdit*>(widget());
}

QFont kitFont(const QFont& base, double points)
{
    QFont font(base);
    font.setPixelSize(std::max(1, qRound(points)));
    return font;
}

namespace {

template <class T>
void registerFactory(runtime::Class& cls)
{
    registerViewFactory(cls, [](runtime::Class& made) {
        auto object = std::make_shared<T>(made);
        object->setUp();
        return object;
    });
}

void registerControl(runtime::Runtime& runtime)
{
    runtime::Class& control = runtime.registerClass(controlClassName, viewClassName);
    registerViewFactory(control, [](runtime::Class& cls) {
        auto object = std::make_shared<ControlObject>(cls);
        object->attach(new QWidget, true);
        return object;
    });
    runtime.addMethod(control, "addTarget:action:forControlEvents:",
                      makeImp([](ControlObject& self, ObjectRef target, QString action, int events) {
                          self.addTarget_action_forControlEvents_(target, action, events);
                      }));
    runtime.addMethod(control, "sendActionsForControlEvents:",
                      makeImp([](ControlObject& self, int events) { self.sendActionsForControlEvents_(events); }));
    runtime.addMethod(control, "isEnabled", makeImp([](ControlObject& self) { return self.isEnabled(); }));
    runtime.addMethod(control, "setEnabled:", makeImp([](ControlObject& self, bool enabled) { self.setEnabled_(enabled); }));
    runtime.addMethod(control, "isSelected", makeImp([](ControlObject& self) { return self.isSelected(); }));
    runtime.addMethod(control, "setSelected:", makeImp([](ControlObject& self, bool selected) { self.setSelected_(selected); }));
}

void registerButton(runtime::Runtime& runtime)
{
    runtime::Class& button = runtime.registerClass(buttonClassName, controlClassName);
    registerFactory<ButtonObject>(button);
    runtime.addClassMethod(button, "buttonWithType:", makeImp([](runtime::Class& cls, int /*type*/) -> ObjectRef {
        return makeViewOfClass(cls);
    }));
    runtime.addMethod(button, "setTitle:forState:", makeImp([](ButtonObject& self, QString title, int state) {
        self.setTitle_forState_(title, state);
    }));
    runtime.addMethod(button, "titleForState:", makeImp([](ButtonObject& self, int state) { return self.titleForState_(state); }));
    runtime.addMethod(button, "currentTitle", makeImp([](ButtonObject& self) { return self.currentTitle(); }));
    runtime.addMethod(button, "setTitleColor:forState:", makeImp([](ButtonObject& self, QColor colour, int state) {
        self.setTitleColor_forState_(colour, state);
    }));
    runtime.addMethod(button, "setImage:forState:", makeImp([](ButtonObject& self, ObjectRef image, int state) {
        self.setImage_forState_(image, state);
    }));
    runtime.addMethod(button, "setFontSize:", makeImp([](ButtonObject& self, double points) { self.setFontSize_(points); }));
}

void registerLabel(runtime::Runtime& runtime)
{
    runtime::Class& label = runtime.registerClass(labelClassName, viewClassName);
    registerFactory<LabelObject>(label);
    runtime.addMethod(label, "text", makeImp([](LabelObject& self) { return self.label()->text(); }));
    runtime.addMethod(label, "setText:", makeImp([](LabelObject& self, QString text) { self.label()->setText(text); }));
    runtime.addMethod(label, "setTextColor:", makeImp([](LabelObject& self, QColor colour) {
        QPalette palette = self.label()->palette();
        palette.setColor(QPalette::WindowText, colour);
        self.label()->setPalette(palette);
    }));
    runtime.addMethod(label, "setFontSize:", makeImp([](LabelObject& self, double points) {
        self.label()->setFont(kitFont(self.label()->font(), points));
    }));
    runtime.addMethod(label, "setTextAlignment:", makeImp([](LabelObject& self, int alignment) {
        const Qt::Alignment horizontal = alignment == 1 ? Qt::AlignHCenter : alignment == 2 ? Qt::AlignRight : Qt::AlignLeft;
        self.label()->setAlignment(horizontal | Qt::AlignVCenter);
    }));
}

void registerTextField(runtime::Runtime& runtime)
{
    runtime::Class& field = runtime.registerClass(textFieldClassName, controlClassName);
    registerFactory<TextFieldObject>(field);
    runtime.addMethod(field, "text", makeImp([](TextFieldObject& self) { return self.lineEdit()->text(); }));
    runtime.addMethod(field, "setText:", makeImp([](TextFieldObject& self, QString text) { self.lineEdit()->setText(text); }));
    runtime.addMethod(field, "setPlaceholder:", makeImp([](TextFieldObject& self, QString text) {
        self.lineEdit()->setPlaceholderText(text);
    }));
    runtime.addMethod(field, "setFontSize:", makeImp([](TextFieldObject& self, double points) {
        self.lineEdit()->setFont(kitFont(self.lineEdit()->font(), points));
    }));
}

}  // namespace

void registerControlClasses(runtime::Runtime& runtime)
{
    registerControl(runtime);
    registerButton(runtime);
    registerLabel(runtime);
    registerTextField(runtime);
}

}  // namespace lexicorn::host::ui
