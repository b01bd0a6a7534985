#pragma once

// "UITableView" and "UITableViewCell": rows of sections that a data source
// and a delegate provide through runtime::send, laid out eagerly in a scroll
// area (the reader's tables hold tens of rows).
//
// UITableView: +tableViewWithFrame:style: (QRectF, int); setDataSource:,
// dataSource, setDelegate:, delegate (held weakly); setRowHeight: (double),
// rowHeight; setAllowsSelection: (bool), allowsSelection; style; reloadData;
// beginUpdates, endUpdates (ask the heights again and lay the same cells out
// anew); numberOfSections; numberOfRowsInSection: (int);
// cellForRowAtIndexPath: (IndexPath); dequeueReusableCellWithIdentifier:
// (QString); scrollToRowAtIndexPath:atScrollPosition:animated: (IndexPath,
// int 0 nearest, 1 top, 2 middle, 3 bottom, bool); rectForRowAtIndexPath:
// (IndexPath, content coordinates); indexPathForRowAtPoint: (QPointF ->
// IndexPath, section -1 when none); selectRowAtIndexPath: (IndexPath, calls
// the delegate as a tap does).
//
// The data source answers numberOfSectionsInTableView: (optional, else 1),
// tableView:numberOfRowsInSection: and tableView:cellForRowAtIndexPath:; the
// delegate optionally tableView:heightForRowAtIndexPath: (else rowHeight),
// tableView:heightForHeaderInSection: (else no header),
// tableView:viewForHeaderInSection: and tableView:didSelectRowAtIndexPath:.
//
// UITableViewCell: +newWithStyle:reuseIdentifier: (int, QString) makes an
// instance of the receiving class and sends it initWithStyle:reuseIdentifier:,
// which makes the content view (filling the cell) and returns the cell;
// contentView; reuseIdentifier.

#include "host/kit/view_kit.h"

#include "foundation/index_path.h"

#include <QString>

#include <functional>
#include <map>
#include <optional>
#include <vector>

class QScrollArea;

namespace lexicorn::host::ui {

inline constexpr const char* tableViewClassName = "UITableView";
inline constexpr const char* tableViewCellClassName = "UITableViewCell";

class TableViewObject : public ViewObject {
public:
    explicit TableViewObject(runtime::Class& cls) : ViewObject(cls) {}
    // Makes the scroll area and attaches it; called once by the class's factory.
    void setUp();

    ObjectRef dataSource() const { return dataSource_.lock(); }
    void setDataSource_(const ObjectRef& source) { dataSource_ = source; }
    ObjectRef delegate() const { return delegate_.lock(); }
    void setDelegate_(const ObjectRef& delegate) { delegate_ = delegate; }

    double rowHeight = 44;
    bool allowsSelection = true;
    int style = 0;

    void reloadData();
    void endUpdates() { layoutRows(true); }
    int numberOfSections() const { return static_cast<int>(sections_.size()); }
    int numberOfRowsInSection_(int section) const;
    ObjectRef cellForRowAtIndexPath_(IndexPath path) const;
    ObjectRef dequeueReusableCellWithIdentifier_(const QString& identifier);
    void scrollToRowAtIndexPath_atScrollPosition_animated_(IndexPath path, int position, bool animated);
    QRectF rectForRowAtIndexPath_(IndexPath path) const;
    std::optional<IndexPath> indexPathForRowAtPoint_(QPointF point) const;
    void selectRowAtIndexPath_(IndexPath path);

    // The height of all sections and rows as last laid out.
    double contentHeight() const { return contentHeight_; }
    // Called after each layout with the new content height (cards size
    // themselves to it).
    std::function<void(double)> contentHeightChanged;

    // Lays the rows out again for a new width, asking the heights again.
    void viewportResized();

protected:
    void applyBackground(const QColor& color) override;

private:
    struct Row {
        ObjectRef cell;
        double height = 0;
        double y = 0;
    };
    struct Section {
        ObjectRef header;
        double headerHeight = 0;
        double y = 0;
        std::vector<Row> rows;
    };

    const Row* rowAt(IndexPath path) const;
    void layoutRows(bool askHeights);
    int viewportWidth() const;

    std::weak_ptr<runtime::Object> dataSource_;
    std::weak_ptr<runtime::Object> delegate_;
    QScrollArea* scrollArea_ = nullptr;
    QWidget* content_ = nullptr;
    std::vector<Section> sections_;
    std::map<QString, std::vector<ObjectRef>> reusable_;
    double contentHeight_ = 0;
    int laidOutWidth_ = -1;
    bool reloading_ = false;
};

class CellObject : public ViewObject {
public:
    explicit CellObject(runtime::Class& cls) : ViewObject(cls) {}
    ObjectRef initWithStyle_reuseIdentifier_(int style, const QString& identifier);
    ObjectRef contentView() const { return contentView_; }
    QString reuseIdentifier() const { return reuseIdentifier_; }

private:
    ObjectRef contentView_;
    QString reuseIdentifier_;
    int style_ = 0;
};

// Called by registerViewKitClasses (kit_classes.h), after "UIView".
void registerTableViewClasses(runtime::Runtime& runtime);

}  // namespace lexicorn::host::ui
