#pragma once

// The study board's popover menus: a command table of switch, segmented and
// command rows, built from row dictionaries, shown in a flat popover
// anchored at a view.
//
// "CommandTableController": +controllerWithTitle:sections:commands:
// (QString, QVariantList of sections, QVariantList of rows) -> ObjectRef;
// title; contentHeight (double: its title bar, section headers and rows).
//
// A section is a map {"title": QString, "offset": int, "count": int}. A row
// is a map:
//   "title"         QString
//   "object"        the target, a std::weak_ptr<runtime::Object> (not kept alive)
//   "selector"      QString, the action sent to the target
//   "image"         ObjectRef, a "UIImage" (optional)
//   "checked"       bool: a switch row showing this state
//   "switch"        bool: a switch row even without "checked"
//   "segmentIndex"  int, with "segments" QStringList: a segmented row
//   "disabled"      bool: shown greyed, does nothing
// Any other row is a command. A switch row sends its action with its
// "ABFlatSwitch" (ObjectRef); a segmented row with the chosen index (int);
// a command row with a null sender (ObjectRef).
//
// The keyboard reaches every row: Tab or Up / Down move between rows, Space
// flips a switch, Left / Right change a segment, Enter runs a command or
// flips a switch, Escape closes the popover, as does a click outside it.

#include "host/kit/view_kit.h"

#include <QFrame>
#include <QSizeF>
#include <QStringList>
#include <QVariantList>

#include <functional>
#include <vector>

class QLabel;

namespace lexicorn::host::ui {

inline constexpr const char* commandTableClassName = "CommandTableController";

class FlatSwitchWidget;
class SegmentsWidget;

struct CommandRow {
    enum class Kind { command, toggle, segmented };
    QString title;
    std::weak_ptr<runtime::Object> target;
    QString selector;
    ObjectRef image;
    Kind kind = Kind::command;
    bool checked = false;
    int segmentIndex = -1;
    QStringList segments;
    bool disabled = false;

    static CommandRow fromMap(const QVariantMap& map);
    double height() const;
};

struct CommandSection {
    QString title;
    int offset = 0;
    int count = 0;
};

class CommandTableObject : public runtime::Object {
public:
    explicit CommandTableObject(runtime::Class& cls) : Object(cls) {}
    QString title;
    std::vector<CommandSection> sections;
    std::vector<CommandRow> rows;
    double contentHeight() const;

    static constexpr double barHeight = 44;
    static constexpr double sectionHeaderHeight = 26;
};

// One row of the open popover.
class CommandRowWidget final : public QWidget {
public:
    explicit CommandRowWidget(const CommandRow& row, QWidget* parent = nullptr);

    QString title() const { return row_.title; }
    CommandRow::Kind kind() const { return row_.kind; }
    bool hasImage() const { return row_.image != nullptr; }
    bool isOn() const;
    int segmentIndex() const;
    FlatSwitchWidget* switchWidget() const { return switchWidget_; }
    SegmentsWidget* segmentsWidget() const { return segmentsWidget_; }

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void activate();
    void sendAction(const std::function<void(runtime::Object& target, const std::string& selector)>& call) const;

    CommandRow row_;
    ObjectRef switchObject_;
    FlatSwitchWidget* switchWidget_ = nullptr;
    SegmentsWidget* segmentsWidget_ = nullptr;
};

// The popover's panel: a title bar and the rows under their section titles.
class CommandPopover final : public QFrame {
public:
    CommandPopover(const std::shared_ptr<CommandTableObject>& table, QWidget* parent);

    std::shared_ptr<CommandTableObject> table() const { return table_; }
    QString title() const;
    int rowCount() const { return static_cast<int>(rows_.size()); }
    CommandRowWidget* row(int index) const { return rows_.at(index); }

    // Tab, Backtab, Up and Down cycle through the rows that are enabled.
    bool focusNextPrevChild(bool next) override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::shared_ptr<CommandTableObject> table_;
    QLabel* title_ = nullptr;
    std::vector<CommandRowWidget*> rows_;
};

// Shows the table in a popover over the anchor's window, below the anchor
// (or at the window's top when there is none), replacing the open one. The
// size is the preferred one, kept inside the window.
void presentPopover(QWidget* anchor, QWidget* window, const std::shared_ptr<CommandTableObject>& table, QSizeF size);
// Closes the window's popover, if one is open.
void dismissPopover(QWidget* window);
// The window's open popover, or null.
CommandPopover* openPopover(QWidget* window);

// The reader's colours for popovers.
QColor popoverBackgroundColor();
QColor bookHeaderColor();

// Registers "CommandTableController"; called with the window's classes.
void registerCommandTableClass(runtime::Runtime& runtime);

}  // namespace lexicorn::host::ui
