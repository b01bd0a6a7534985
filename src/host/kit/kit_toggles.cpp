#include "host/kit/kit_toggles.h"

#include "host/kit/kit_images.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace lexicorn::host::ui {

using runtime::makeImp;

FlatSwitchWidget::FlatSwitchWidget()
{
    setCheckable(true);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize FlatSwitchWidget::sizeHint() const
{
    return {44, 26};
}

void FlatSwitchWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!isEnabled())
        painter.setOpacity(0.45);
    const QRectF track = QRectF(rect()).adjusted(1, 1, -1, -1);
    const double radius = track.height() / 2;
    painter.setPen(hasFocus() ? QPen(defaultTintColor().darker(130), 2) : QPen(QColor(0, 0, 0, 40), 1));
    painter.setBrush(isChecked() ? defaultTintColor() : QColor(214, 214, 218));
    painter.drawRoundedRect(track, radius, radius);
    const double knob = track.height() - 4;
    const double x = isChecked() ? track.right() - 2 - knob : track.left() + 2;
    painter.setPen(QPen(QColor(0, 0, 0, 50), 0.5));
    painter.setBrush(Qt::white);
    painter.drawEllipse(QRectF(x, track.top() + 2, knob, knob));
}

SegmentsWidget::SegmentsWidget()
{
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void SegmentsWidget::setItems(const QStringList& items)
{
    items_ = items;
    if (selected_ >= items_.size())
        selected_ = -1;
    updateGeometry();
    update();
}

void SegmentsWidget::setSelectedIndex(int index)
{
    selected_ = index >= 0 && index < items_.size() ? index : -1;
    update();
}

void SegmentsWidget::choose(int index)
{
    if (index < 0 || index >= items_.size() || index == selected_)
        return;
    selected_ = index;
    update();
    if (userChose)
        userChose(index);
}

void SegmentsWidget::step(int direction)
{
    if (items_.isEmpty())
        return;
    const int from = selected_ < 0 ? (direction > 0 ? -1 : static_cast<int>(items_.size())) : selected_;
    choose(std::clamp(from + direction, 0, static_cast<int>(items_.size()) - 1));
}

int SegmentsWidget::lines() const
{
    const int count = static_cast<int>(items_.size());
    return std::max(1, (count + segmentsPerLine - 1) / segmentsPerLine);
}

QRect SegmentsWidget::segmentRect(int index) const
{
    const int count = static_cast<int>(items_.size());
    if (index < 0 || index >= count)
        return {};
    // Lines share the segments evenly: twelve make two lines of six.
    const int perLine = (count + lines() - 1) / lines();
    const int line = index / perLine;
    const int column = index % perLine;
    const int left = column * width() / perLine;
    const int right = (column + 1) * width() / perLine;
    return QRect(left, line * lineHeight, right - left, lineHeight);
}

QSize SegmentsWidget::sizeHint() const
{
    int widest = 0;
    for (const QString& item : items_)
        widest = std::max(widest, fontMetrics().horizontalAdvance(item));
    const int perLine = std::max(1, (static_cast<int>(items_.size()) + lines() - 1) / lines());
    return {perLine * (widest + 14), lines() * lineHeight};
}

void SegmentsWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!isEnabled())
        painter.setOpacity(0.45);
    const QColor tint = defaultTintColor();
    for (int i = 0; i < items_.size(); ++i) {
        const QRectF cell = QRectF(segmentRect(i)).adjusted(1, 1, -1, -1);
        painter.setPen(QPen(tint, i == selected_ && hasFocus() ? 2.0 : 1.0));
        painter.setBrush(i == selected_ ? tint : QColor(Qt::transparent));
        painter.drawRoundedRect(cell, 4, 4);
        painter.setPen(i == selected_ ? QColor(Qt::white) : tint);
        painter.drawText(cell, Qt::AlignCenter, fontMetrics().elidedText(items_[i], Qt::ElideRight, int(cell.width()) - 2));
    }
    if (hasFocus() && selected_ < 0) {
        painter.setPen(QPen(tint, 2.0, Qt::DotLine));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(QRectF(rect()).adjusted(1, 1, -1, -1));
    }
}

void SegmentsWidget::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    for (int i = 0; i < items_.size(); ++i) {
        if (segmentRect(i).contains(event->position().toPoint())) {
            choose(i);
            break;
        }
    }
    event->accept();
}

void SegmentsWidget::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Left)
        step(-1);
    else if (event->key() == Qt::Key_Right)
        step(+1);
    else
        QWidget::keyPressEvent(event);
}

void FlatSwitchObject::setUp()
{
    auto* widget = new FlatSwitchWidget;
    attach(widget, true);
    std::weak_ptr<runtime::Object> weakSelf = weak_from_this();
    QObject::connect(widget, &QAbstractButton::clicked, widget, [weakSelf] {
        if (auto self = std::dynamic_pointer_cast<ControlObject>(weakSelf.lock()))
            self->sendActionsForControlEvents_(valueChanged);
    });
}

bool FlatSwitchObject::isOn() const
{
    return switchWidget() && switchWidget()->isChecked();
}

void FlatSwitchObject::setOn_(bool on)
{
    if (switchWidget())
        switchWidget()->setChecked(on);
}

void SegmentedObject::setUp()
{
    auto* widget = new SegmentsWidget;
    attach(widget, true);
    std::weak_ptr<runtime::Object> weakSelf = weak_from_this();
    widget->userChose = [weakSelf](int) {
        if (auto self = std::dynamic_pointer_cast<ControlObject>(weakSelf.lock()))
            self->sendActionsForControlEvents_(valueChanged);
    };
}

void registerToggleClasses(runtime::Runtime& runtime)
{
    runtime::Class& flatSwitch = runtime.registerClass(flatSwitchClassName, controlClassName);
    registerViewFactory(flatSwitch, [](runtime::Class& cls) {
        auto object = std::make_shared<FlatSwitchObject>(cls);
        object->setUp();
        return object;
    });
    runtime.addMethod(flatSwitch, "isOn", makeImp([](FlatSwitchObject& self) { return self.isOn(); }));
    runtime.addMethod(flatSwitch, "setOn:", makeImp([](FlatSwitchObject& self, bool on) { self.setOn_(on); }));

    runtime::Class& segmented = runtime.registerClass(segmentedControlClassName, controlClassName);
    registerViewFactory(segmented, [](runtime::Class& cls) {
        auto object = std::make_shared<SegmentedObject>(cls);
        object->setUp();
        return object;
    });
    runtime.addClassMethod(segmented, "segmentedControlWithItems:", makeImp([](runtime::Class& cls, QStringList items) -> ObjectRef {
        auto object = std::static_pointer_cast<SegmentedObject>(makeViewOfClass(cls));
        object->segments()->setItems(items);
        object->segments()->resize(object->segments()->sizeHint());
        return object;
    }));
    runtime.addMethod(segmented, "selectedSegmentIndex", makeImp([](SegmentedObject& self) { return self.segments()->selectedIndex(); }));
    runtime.addMethod(segmented, "setSelectedSegmentIndex:",
                      makeImp([](SegmentedObject& self, int index) { self.segments()->setSelectedIndex(index); }));
    runtime.addMethod(segmented, "numberOfSegments",
                      makeImp([](SegmentedObject& self) { return static_cast<int>(self.segments()->items().size()); }));
    runtime.addMethod(segmented, "titleForSegmentAtIndex:",
                      makeImp([](SegmentedObject& self, int index) { return self.segments()->items().value(index); }));
}

}  // namespace lexicorn::host::ui
