#pragma once

// The kit's two value controls.
//
//   "ABFlatSwitch"        the reader's flat on/off switch: isOn / setOn:
//                         (bool). A click, or Space while it has the focus,
//                         flips it and sends value-changed.
//   "UISegmentedControl"  +segmentedControlWithItems: (QStringList);
//                         selectedSegmentIndex / setSelectedSegmentIndex:
//                         (int, -1 none); numberOfSegments;
//                         titleForSegmentAtIndex: (int). A click on a segment,
//                         or Left / Right while it has the focus, chooses and
//                         sends value-changed. Long lists wrap onto more lines.
//
// Only the user's gestures send actions; the setters never do.

#include "host/kit/kit_controls.h"

#include <QAbstractButton>
#include <QStringList>
#include <QWidget>

#include <functional>

namespace lexicorn::host::ui {

inline constexpr const char* flatSwitchClassName = "ABFlatSwitch";
inline constexpr const char* segmentedControlClassName = "UISegmentedControl";

// The switch's widget: a checkable button painted as a pill with a knob.
class FlatSwitchWidget final : public QAbstractButton {
public:
    FlatSwitchWidget();
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};

// The segmented control's widget.
class SegmentsWidget final : public QWidget {
public:
    SegmentsWidget();

    void setItems(const QStringList& items);
    const QStringList& items() const { return items_; }
    int selectedIndex() const { return selected_; }
    void setSelectedIndex(int index);
    // Chooses the neighbour segment as the user would (-1 left, +1 right).
    void step(int direction);
    // Where segment i is drawn, in the widget's coordinates.
    QRect segmentRect(int index) const;
    QSize sizeHint() const override;

    // Called when the user chose a segment (not for setSelectedIndex).
    std::function<void(int)> userChose;

    static constexpr int segmentsPerLine = 6;
    static constexpr int lineHeight = 26;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void choose(int index);
    int lines() const;

    QStringList items_;
    int selected_ = -1;
};

class FlatSwitchObject : public ControlObject {
public:
    explicit FlatSwitchObject(runtime::Class& cls) : ControlObject(cls) {}
    void setUp();
    FlatSwitchWidget* switchWidget() const { return static_cast<FlatSwitchWidget*>(widget()); }
    bool isOn() const;
    void setOn_(bool on);
};

class SegmentedObject : public ControlObject {
public:
    explicit SegmentedObject(runtime::Class& cls) : ControlObject(cls) {}
    void setUp();
    SegmentsWidget* segments() const { return static_cast<SegmentsWidget*>(widget()); }
};

// Called by registerViewKitClasses (kit_classes.h), after "UIControl".
void registerToggleClasses(runtime::Runtime& runtime);

}  // namespace lexicorn::host::ui
