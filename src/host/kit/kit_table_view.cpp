#include "host/kit/kit_table_view.h"

#include "host/app/gesture_scope.h"
#include "host/kit/kit_text_view.h"

#include <QMouseEvent>
#include <QPalette>
#include <QResizeEvent>
#include <QScrollArea>
#include <QScrollBar>

#include <cmath>

namespace lexicorn::host::ui {

using runtime::makeImp;
using runtime::send;

namespace {

bool responds(const ObjectRef& object, std::string_view selector)
{
    return object && runtime::respondsTo(*object, selector);
}

// The table object of a table's scroll area, when it still has one.
std::shared_ptr<TableViewObject> tableOf(QWidget* area)
{
    return std::dynamic_pointer_cast<TableViewObject>(viewObjectOf(area));
}

// The scroll area of a table: tells the table when its width changes.
class TableScrollArea final : public QScrollArea {
public:
    TableScrollArea()
    {
        setFrameShape(QFrame::NoFrame);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        setWidgetResizable(false);
    }
protected:
    void resizeEvent(QResizeEvent* event) override
    {
        QScrollArea::resizeEvent(event);
        if (auto table = tableOf(this))
            table->viewportResized();
    }
};

// The rows' parent. A left click that no widget in a row took (plain views
// let clicks through) arrives here and selects the row it was made on.
class TableContent final : public QWidget {
public:
    explicit TableContent(QScrollArea* area) : area_(area) {}

protected:
    void mousePressEvent(QMouseEvent* event) override
    {
        pressed_.reset();
        auto table = tableOf(area_);
        if (event->button() == Qt::LeftButton && table) {
            pressed_ = table->indexPathForRowAtPoint_(event->position());
            event->accept();
        } else {
            event->ignore();
        }
    }
    void mouseReleaseEvent(QMouseEvent* event) override
    {
        auto table = tableOf(area_);
        if (event->button() != Qt::LeftButton || !pressed_ || !table) {
            event->ignore();
            return;
        }
        const auto released = table->indexPathForRowAtPoint_(event->position());
        const auto pressed = std::exchange(pressed_, std::nullopt);
        event->accept();
        // What the delegate does for the tap (a card: a note, its highlight,
        // its title and body) is one gesture: one write, one repaint.
        if (released && *released == *pressed) {
            const GestureScope gesture;
            table->selectRowAtIndexPath_(*released);
        }
    }

private:
    QPointer<QScrollArea> area_;
    std::optional<IndexPath> pressed_;
};

// Takes a view's widget out of the table's content, so the widget no longer
// keeps its object alive through it.
void detach(const ObjectRef& view)
{
    if (QWidget* widget = widgetOf(view)) {
        widget->hide();
        widget->setParent(nullptr);
    }
}

}  // namespace

void TableViewObject::setUp()
{
    auto* area = new TableScrollArea;
    content_ = new TableContent(area);
    area->setWidget(content_);
    scrollArea_ = area;
    attach(area, true);
}

int TableViewObject::viewportWidth() const
{
    return scrollArea_ ? scrollArea_->viewport()->width() : 0;
}

void TableViewObject::applyBackground(const QColor& color)
{
    ViewObject::applyBackground(color);
    if (!scrollArea_)
        return;
    for (QWidget* surface : {static_cast<QWidget*>(scrollArea_->viewport()), content_}) {
        QPalette palette = surface->palette();
        palette.setColor(QPalette::Window, color);
        surface->setPalette(palette);
        surface->setAutoFillBackground(color.isValid() && color.alpha() > 0);
    }
}

void TableViewObject::reloadData()
{
    if (reloading_ || !content_)
        return;
    reloading_ = true;
    const auto self = shared_from_this();

    // Cells shown until now are set aside for dequeueReusableCellWithIdentifier:;
    // the ones the previous reload set aside and nobody took are let go.
    for (auto& [identifier, cells] : reusable_) {
        for (const ObjectRef& cell : cells)
            detach(cell);
    }
    reusable_.clear();
    for (const Section& section : sections_) {
        detach(section.header);
        for (const Row& row : section.rows) {
            if (!row.cell)
                continue;
            if (QWidget* widget = widgetOf(row.cell))
                widget->hide();
            auto* cell = dynamic_cast<CellObject*>(row.cell.get());
            reusable_[cell ? cell->reuseIdentifier() : QString()].push_back(row.cell);
        }
    }
    sections_.clear();

    const ObjectRef source = dataSource();
    const ObjectRef delegate = this->delegate();
    int sectionCount = 0;
    if (source)
        sectionCount = responds(source, "numberOfSectionsInTableView:")
            ? send<int>(*source, "numberOfSectionsInTableView:", self) : 1;
    for (int s = 0; s < sectionCount; ++s) {
        Section section;
        const int rows = send<int>(*source, "tableView:numberOfRowsInSection:", self, s);
        if (responds(delegate, "tableView:heightForHeaderInSection:"))
            section.headerHeight = send<double>(*delegate, "tableView:heightForHeaderInSection:", self, s);
        if (section.headerHeight > 0 && responds(delegate, "tableView:viewForHeaderInSection:"))
            section.header = send<ObjectRef>(*delegate, "tableView:viewForHeaderInSection:", self, s);
        if (QWidget* header = widgetOf(section.header)) {
            header->setParent(content_);
            header->show();
        }
        for (int r = 0; r < rows; ++r) {
            Row row;
            row.cell = send<ObjectRef>(*source, "tableView:cellForRowAtIndexPath:", self, IndexPath{s, r});
            for (auto& [identifier, cells] : reusable_)
                std::erase(cells, row.cell);
            if (QWidget* cell = widgetOf(row.cell)) {
                cell->setParent(content_);
                cell->show();
            }
            section.rows.push_back(std::move(row));
        }
        sections_.push_back(std::move(section));
    }
    reloading_ = false;
    layoutRows(true);
}

void TableViewObject::layoutRows(bool askHeights)
{
    if (!content_)
        return;
    const auto self = shared_from_this();
    const ObjectRef delegate = this->delegate();
    const bool rowHeights = askHeights && responds(delegate, "tableView:heightForRowAtIndexPath:");
    const int width = viewportWidth();
    double y = 0;
    for (int s = 0; s < static_cast<int>(sections_.size()); ++s) {
        Section& section = sections_[s];
        section.y = y;
        if (QWidget* header = widgetOf(section.header))
            header->setGeometry(0, int(std::lround(y)), width, int(std::lround(section.headerHeight)));
        y += section.headerHeight;
        for (int r = 0; r < static_cast<int>(section.rows.size()); ++r) {
            Row& row = section.rows[r];
            if (askHeights) {
                row.height = rowHeights
                    ? send<double>(*delegate, "tableView:heightForRowAtIndexPath:", self, IndexPath{s, r}) : rowHeight;
            }
            row.y = y;
            if (QWidget* cell = widgetOf(row.cell))
                cell->setGeometry(0, int(std::lround(y)), width, int(std::lround(y + row.height)) - int(std::lround(y)));
            y += row.height;
        }
    }
    contentHeight_ = y;
    laidOutWidth_ = width;
    content_->resize(width, int(std::ceil(y)));
    if (contentHeightChanged)
        contentHeightChanged(y);
}

void TableViewObject::viewportResized()
{
    if (!reloading_ && viewportWidth() != laidOutWidth_)
        layoutRows(true);
}

const TableViewObject::Row* TableViewObject::rowAt(IndexPath path) const
{
    if (path.section < 0 || path.section >= numberOfSections())
        return nullptr;
    const auto& rows = sections_[path.section].rows;
    if (path.row < 0 || path.row >= static_cast<int>(rows.size()))
        return nullptr;
    return &rows[path.row];
}

int TableViewObject::numberOfRowsInSection_(int section) const
{
    return section >= 0 && section < numberOfSections() ? static_cast<int>(sections_[section].rows.size()) : 0;
}

ObjectRef TableViewObject::cellForRowAtIndexPath_(IndexPath path) const
{
    const Row* row = rowAt(path);
    return row ? row->cell : nullptr;
}

ObjectRef TableViewObject::dequeueReusableCellWithIdentifier_(const QString& identifier)
{
    auto found = reusable_.find(identifier);
    if (found == reusable_.end() || found->second.empty())
        return nullptr;
    ObjectRef cell = found->second.back();
    found->second.pop_back();
    return cell;
}

QRectF TableViewObject::rectForRowAtIndexPath_(IndexPath path) const
{
    const Row* row = rowAt(path);
    return row ? QRectF(0, row->y, laidOutWidth_, row->height) : QRectF();
}

std::optional<IndexPath> TableViewObject::indexPathForRowAtPoint_(QPointF point) const
{
    for (int s = 0; s < numberOfSections(); ++s) {
        const auto& rows = sections_[s].rows;
        for (int r = 0; r < static_cast<int>(rows.size()); ++r) {
            if (point.y() >= rows[r].y && point.y() < rows[r].y + rows[r].height)
                return IndexPath{s, r};
        }
    }
    return std::nullopt;
}

void TableViewObject::scrollToRowAtIndexPath_atScrollPosition_animated_(IndexPath path, int position, bool /*animated*/)
{
    const Row* row = rowAt(path);
    if (!row || !scrollArea_)
        return;
    QScrollBar* bar = scrollArea_->verticalScrollBar();
    const int visible = scrollArea_->viewport()->height();
    const int top = int(std::lround(row->y));
    const int height = int(std::lround(row->height));
    switch (position) {
    case 1: bar->setValue(top); break;
    case 2: bar->setValue(top + height / 2 - visible / 2); break;
    case 3: bar->setValue(top + height - visible); break;
    default: scrollArea_->ensureVisible(0, top + height / 2, 0, height / 2); break;
    }
}

void TableViewObject::selectRowAtIndexPath_(IndexPath path)
{
    const ObjectRef delegate = this->delegate();
    if (!allowsSelection || !rowAt(path) || !responds(delegate, "tableView:didSelectRowAtIndexPath:"))
        return;
    send<void>(*delegate, "tableView:didSelectRowAtIndexPath:", shared_from_this(), path);
}

ObjectRef CellObject::initWithStyle_reuseIdentifier_(int style, const QString& identifier)
{
    style_ = style;
    reuseIdentifier_ = identifier;
    if (!contentView_) {
        runtime::Runtime& runtime = objectClass().runtime();
        contentView_ = makeViewOfClass(*runtime.classNamed(viewClassName));
        auto* content = static_cast<ViewObject*>(contentView_.get());
        content->setFrame_(bounds());
        addSubview_(contentView_);
        content->setAutoresizingMask_(flexibleWidth | flexibleHeight);
    }
    return shared_from_this();
}

void registerTableViewClasses(runtime::Runtime& runtime)
{
    runtime::Class& table = runtime.registerClass(tableViewClassName, viewClassName);
    registerViewFactory(table, [](runtime::Class& cls) {
        auto object = std::make_shared<TableViewObject>(cls);
        object->setUp();
        return object;
    });
    runtime.addClassMethod(table, "tableViewWithFrame:style:", makeImp([](runtime::Class& cls, QRectF frame, int style) -> ObjectRef {
        auto object = std::static_pointer_cast<TableViewObject>(makeViewOfClass(cls));
        object->style = style;
        object->setFrame_(frame);
        return object;
    }));
    runtime.addMethod(table, "setDataSource:", makeImp([](TableViewObject& self, ObjectRef source) { self.setDataSource_(source); }));
    runtime.addMethod(table, "dataSource", makeImp([](TableViewObject& self) { return self.dataSource(); }));
    runtime.addMethod(table, "setDelegate:", makeImp([](TableViewObject& self, ObjectRef delegate) { self.setDelegate_(delegate); }));
    runtime.addMethod(table, "delegate", makeImp([](TableViewObject& self) { return self.delegate(); }));
    runtime.addMethod(table, "setRowHeight:", makeImp([](TableViewObject& self, double height) { self.rowHeight = height; }));
    runtime.addMethod(table, "rowHeight", makeImp([](TableViewObject& self) { return self.rowHeight; }));
    runtime.addMethod(table, "setAllowsSelection:", makeImp([](TableViewObject& self, bool allows) { self.allowsSelection = allows; }));
    runtime.addMethod(table, "allowsSelection", makeImp([](TableViewObject& self) { return self.allowsSelection; }));
    runtime.addMethod(table, "style", makeImp([](TableViewObject& self) { return self.style; }));
    runtime.addMethod(table, "reloadData", makeImp([](TableViewObject& self) { self.reloadData(); }));
    runtime.addMethod(table, "beginUpdates", makeImp([](TableViewObject&) {}));
    runtime.addMethod(table, "endUpdates", makeImp([](TableViewObject& self) { self.endUpdates(); }));
    runtime.addMethod(table, "numberOfSections", makeImp([](TableViewObject& self) { return self.numberOfSections(); }));
    runtime.addMethod(table, "numberOfRowsInSection:", makeImp([](TableViewObject& self, int section) {
        return self.numberOfRowsInSection_(section);
    }));
    runtime.addMethod(table, "cellForRowAtIndexPath:", makeImp([](TableViewObject& self, IndexPath path) {
        return self.cellForRowAtIndexPath_(path);
    }));
    runtime.addMethod(table, "dequeueReusableCellWithIdentifier:", makeImp([](TableViewObject& self, QString identifier) {
        return self.dequeueReusableCellWithIdentifier_(identifier);
    }));
    runtime.addMethod(table, "scrollToRowAtIndexPath:atScrollPosition:animated:",
                      makeImp([](TableViewObject& self, IndexPath path, int position, bool animated) {
                          self.scrollToRowAtIndexPath_atScrollPosition_animated_(path, position, animated);
                      }));
    runtime.addMethod(table, "rectForRowAtIndexPath:", makeImp([](TableViewObject& self, IndexPath path) {
        return self.rectForRowAtIndexPath_(path);
    }));
    runtime.addMethod(table, "indexPathForRowAtPoint:", makeImp([](TableViewObject& self, QPointF point) {
        return self.indexPathForRowAtPoint_(point).value_or(IndexPath{-1, -1});
    }));
    runtime.addMethod(table, "selectRowAtIndexPath:", makeImp([](TableViewObject& self, IndexPath path) {
        self.selectRowAtIndexPath_(path);
    }));

    runtime::Class& cell = runtime.registerClass(tableViewCellClassName, viewClassName);
    registerViewFactory(cell, [](runtime::Class& cls) {
        auto object = std::make_shared<CellObject>(cls);
        auto* widget = new QWidget;
        widget->resize(320, 44);
        object->attach(widget, true);
        return object;
    });
    runtime.addClassMethod(cell, "newWithStyle:reuseIdentifier:", makeImp([](runtime::Class& cls, int style, QString identifier) {
        ObjectRef object = makeViewOfClass(cls);
        return send<ObjectRef>(*object, "initWithStyle:reuseIdentifier:", style, identifier);
    }));
    runtime.addMethod(cell, "initWithStyle:reuseIdentifier:", makeImp([](CellObject& self, int style, QString identifier) {
        return self.initWithStyle_reuseIdentifier_(style, identifier);
    }));
    runtime.addMethod(cell, "contentView", makeImp([](CellObject& self) { return self.contentView(); }));
    runtime.addMethod(cell, "reuseIdentifier", makeImp([](CellObject& self) { return self.reuseIdentifier(); }));
}

}  // namespace lexicorn::host::ui
