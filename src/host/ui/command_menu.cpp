#include "host/ui/command_menu.h"

#include "host/kit/kit_images.h"
#include "host/kit/kit_toggles.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QIcon>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace lexicorn::host::ui {

using runtime::makeImp;

namespace {

constexpr double plainRowHeight = 44;
constexpr int iconSide = 22;
constexpr int cornerRadius = 9;
const char* const layerName = "studyboardPopover";

QLabel* iconLabel(const ObjectRef& image)
{
    auto* label = new QLabel;
    label->setFixedSize(iconSide, iconSide);
    if (auto* kitImage = dynamic_cast<ImageObject*>(image.get()))
        label->setPixmap(QIcon(kitImage->pixmap()).pixmap(iconSide, iconSide));
    return label;
}

// Covers the window while a popover is open: a click outside the panel or
// Escape closes it.
class PopoverLayer final : public QWidget {
public:
    explicit PopoverLayer(QWidget* window) : QWidget(window)
    {
        setObjectName(QString::fromLatin1(layerName));
        setGeometry(window->rect());
        window->installEventFilter(this);
    }

    void close()
    {
        // Gone for whoever looks for the window's popover from now on, even
        // before the deletion runs (a menu may be replaced by a new one).
        setObjectName(QString());
        hide();
        deleteLater();
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched == parentWidget() && event->type() == QEvent::Resize)
            setGeometry(parentWidget()->rect());
        return false;
    }
    // Only a press outside the panel closes it. A press on a row must reach
    // the row's release: closing here would delete the row before the
    // release arrives, and the row's action would be lost.
    void mousePressEvent(QMouseEvent* event) override
    {
        event->accept();
        if (!childAt(event->position().toPoint()))
            close();
    }
    void keyPressEvent(QKeyEvent* event) override
    {
        if (event->key() == Qt::Key_Escape) {
            event->accept();
            close();
            return;
        }
        QWidget::keyPressEvent(event);
    }
};

PopoverLayer* layerOf(QWidget* window)
{
    return window ? window->findChild<PopoverLayer*>(QString::fromLatin1(layerName), Qt::FindDirectChildrenOnly) : nullptr;
}

}  // namespace

CommandRow CommandRow::fromMap(const QVariantMap& map)
{
    CommandRow row;
    row.title = map.value(QStringLiteral("title")).toString();
    row.target = map.value(QStringLiteral("object")).value<std::weak_ptr<runtime::Object>>();
    row.selector = map.value(QStringLiteral("selector")).toString();
    row.image = map.value(QStringLiteral("image")).value<ObjectRef>();
    row.disabled = map.value(QStringLiteral("disabled")).toBool();
    if (map.contains(QStringLiteral("segments"))) {
        row.kind = Kind::segmented;
        row.segments = map.value(QStringLiteral("segments")).toStringList();
        row.segmentIndex = map.value(QStringLiteral("segmentIndex"), -1).toInt();
    } else if (map.contains(QStringLiteral("checked")) || map.value(QStringLiteral("switch")).toBool()) {
        row.kind = Kind::toggle;
        row.checked = map.value(QStringLiteral("checked")).toBool();
    }
    return row;
}

double CommandRow::height() const
{
    if (kind != Kind::segmented)
        return plainRowHeight;
    const int count = std::max(1, static_cast<int>(segments.size()));
    const int lines = (count + SegmentsWidget::segmentsPerLine - 1) / SegmentsWidget::segmentsPerLine;
    return 34 + lines * SegmentsWidget::lineHeight + 8;
}

double CommandTableObject::contentHeight() const
{
    double height = barHeight + 6 + static_cast<double>(sections.size()) * sectionHeaderHeight;
    for (const CommandRow& row : rows)
        height += row.height();
    return height;
}

CommandRowWidget::CommandRowWidget(const CommandRow& row, QWidget* parent) : QWidget(parent), row_(row)
{
    setFocusPolicy(Qt::StrongFocus);
    setFixedHeight(int(std::lround(row_.height())));
    setEnabled(!row_.disabled);
    setAccessibleName(row_.title);

    auto* line = new QHBoxLayout;
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(10);
    line->addWidget(iconLabel(row_.image));
    auto* title = new QLabel(row_.title);
    line->addWidget(title, 1);

    runtime::Runtime& runtime = runtime::Runtime::shared();
    if (row_.kind == CommandRow::Kind::toggle) {
        switchObject_ = makeViewOfClass(*runtime.classNamed(flatSwitchClassName));
        auto* flat = static_cast<FlatSwitchObject*>(switchObject_.get());
        flat->setOn_(row_.checked);
        switchWidget_ = flat->switchWidget();
        switchWidget_->setFocusPolicy(Qt::NoFocus);
        line->addWidget(switchWidget_);
        QObject::connect(switchWidget_, &QAbstractButton::clicked, this, [this] {
            sendAction([this](runtime::Object& target, const std::string& selector) {
                runtime::send<void>(target, selector, switchObject_);
            });
        });
    } else if (row_.kind == CommandRow::Kind::command) {
        auto* chevron = new QLabel(QStringLiteral("›"));
        chevron->setStyleSheet(QStringLiteral("color: #9a9aa0; font-size: 18px;"));
        line->addWidget(chevron);
    }

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(14, 4, 14, 4);
    column->setSpacing(4);
    column->addLayout(line);
    if (row_.kind == CommandRow::Kind::segmented) {
        const ObjectRef segmented = runtime::sendClass<ObjectRef>(*runtime.classNamed(segmentedControlClassName),
                                                                  "segmentedControlWithItems:", row_.segments);
        segmentsWidget_ = static_cast<SegmentedObject*>(segmented.get())->segments();
        segmentsWidget_->setSelectedIndex(row_.segmentIndex);
        segmentsWidget_->setFocusPolicy(Qt::NoFocus);
        column->addWidget(segmentsWidget_);
        // The control's own actions first, then the row's.
        auto ownActions = segmentsWidget_->userChose;
        segmentsWidget_->userChose = [this, ownActions](int index) {
            if (ownActions)
                ownActions(index);
            sendAction([index](runtime::Object& target, const std::string& selector) {
                runtime::send<void>(target, selector, index);
            });
        };
    }
}

bool CommandRowWidget::isOn() const
{
    return switchWidget_ && switchWidget_->isChecked();
}

int CommandRowWidget::segmentIndex() const
{
    return segmentsWidget_ ? segmentsWidget_->selectedIndex() : -1;
}

void CommandRowWidget::sendAction(const std::function<void(runtime::Object&, const std::string&)>& call) const
{
    const ObjectRef target = row_.target.lock();
    const std::string selector = row_.selector.toStdString();
    if (!row_.disabled && target && runtime::respondsTo(*target, selector))
        call(*target, selector);
}

void CommandRowWidget::activate()
{
    if (switchWidget_) {
        switchWidget_->click();
    } else if (row_.kind == CommandRow::Kind::command) {
        sendAction([](runtime::Object& target, const std::string& selector) { runtime::send<void>(target, selector, ObjectRef()); });
    }
}

void CommandRowWidget::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        activate();
        break;
    case Qt::Key_Left:
    case Qt::Key_Right:
        if (!segmentsWidget_) {
            event->ignore();
            return;
        }
        segmentsWidget_->step(event->key() == Qt::Key_Left ? -1 : +1);
        break;
    case Qt::Key_Up:
    case Qt::Key_Down:
        // What Tab does; the panel keeps the focus among its rows.
        focusNextPrevChild(event->key() == Qt::Key_Down);
        break;
    default:
        event->ignore();
        return;
    }
    event->accept();
}

void CommandRowWidget::mousePressEvent(QMouseEvent* event)
{
    // The row acts on release; taking the press makes it the release's target.
    event->setAccepted(event->button() == Qt::LeftButton);
}

void CommandRowWidget::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()) && row_.kind != CommandRow::Kind::segmented)
        activate();
    event->accept();
}

void CommandRowWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    if (hasFocus())
        painter.fillRect(rect(), QColor(defaultTintColor().red(), defaultTintColor().green(), defaultTintColor().blue(), 38));
    painter.setPen(QColor(0, 0, 0, 25));
    painter.drawLine(QPoint(14 + iconSide + 10, height() - 1), QPoint(width(), height() - 1));
}

void CommandRowWidget::focusInEvent(QFocusEvent* event)
{
    QWidget::focusInEvent(event);
    update();
}

void CommandRowWidget::focusOutEvent(QFocusEvent* event)
{
    QWidget::focusOutEvent(event);
    update();
}

CommandPopover::CommandPopover(const std::shared_ptr<CommandTableObject>& table, QWidget* parent) : QFrame(parent), table_(table)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, cornerRadius / 2);
    layout->setSpacing(0);
    title_ = new QLabel(table_->title);
    title_->setAlignment(Qt::AlignCenter);
    title_->setFixedHeight(int(CommandTableObject::barHeight));
    QFont bold = title_->font();
    bold.setBold(true);
    title_->setFont(bold);
    layout->addWidget(title_);

    auto* content = new QWidget;
    auto* rows = new QVBoxLayout(content);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    for (const CommandSection& section : table_->sections) {
        auto* header = new QLabel(section.title.toUpper());
        header->setFixedHeight(int(CommandTableObject::sectionHeaderHeight));
        header->setContentsMargins(14, 6, 14, 0);
        header->setStyleSheet(QStringLiteral("color: #6d6d72; font-size: 11px;"));
        rows->addWidget(header);
        const int end = std::min(section.offset + section.count, static_cast<int>(table_->rows.size()));
        for (int i = std::max(0, section.offset); i < end; ++i) {
            auto* row = new CommandRowWidget(table_->rows[i]);
            rows->addWidget(row);
            rows_.push_back(row);
        }
    }
    rows->addStretch(1);

    auto* scroller = new QScrollArea;
    scroller->setFrameShape(QFrame::NoFrame);
    scroller->setFocusPolicy(Qt::NoFocus);
    scroller->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroller->setWidgetResizable(true);
    scroller->setWidget(content);
    scroller->viewport()->setAutoFillBackground(false);
    content->setAutoFillBackground(false);
    layout->addWidget(scroller, 1);
    // Tab order follows the rows, so the focus never leaves the panel.
    for (std::size_t i = 1; i < rows_.size(); ++i)
        QWidget::setTabOrder(rows_[i - 1], rows_[i]);
}

bool CommandPopover::focusNextPrevChild(bool next)
{
    if (rows_.empty())
        return false;
    const auto focused = std::find_if(rows_.begin(), rows_.end(), [](const CommandRowWidget* row) { return row->hasFocus(); });
    const int count = static_cast<int>(rows_.size());
    int index = focused == rows_.end() ? (next ? -1 : count) : static_cast<int>(focused - rows_.begin());
    // Round the rows, past the disabled ones.
    for (int tried = 0; tried < count; ++tried) {
        index = ((index + (next ? 1 : -1)) % count + count) % count;
        if (rows_[index]->isEnabled()) {
            rows_[index]->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
            break;
        }
    }
    return true;
}

QString CommandPopover::title() const
{
    return title_->text();
}

void CommandPopover::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF area = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    QPainterPath outline;
    outline.addRoundedRect(area, cornerRadius, cornerRadius);
    painter.fillPath(outline, popoverBackgroundColor());
    painter.save();
    painter.setClipPath(outline);
    painter.fillRect(QRectF(0, 0, width(), CommandTableObject::barHeight), bookHeaderColor());
    painter.setPen(QColor(0, 0, 0, 40));
    painter.drawLine(QPointF(0, CommandTableObject::barHeight), QPointF(width(), CommandTableObject::barHeight));
    painter.restore();
    painter.setPen(QColor(0, 0, 0, 70));
    painter.drawPath(outline);
}

QColor popoverBackgroundColor()
{
    return QColor(250, 250, 252);
}

QColor bookHeaderColor()
{
    return QColor(238, 238, 243);
}

void presentPopover(QWidget* anchor, QWidget* window, const std::shared_ptr<CommandTableObject>& table, QSizeF size)
{
    if (!window || !table)
        return;
    dismissPopover(window);
    auto* layer = new PopoverLayer(window);
    auto* popover = new CommandPopover(table, layer);
    const int width = std::min(int(std::lround(size.width())), window->width() - 16);
    const bool anchored = anchor && window->isAncestorOf(anchor);
    const QPoint below = anchored ? anchor->mapTo(window, QPoint(anchor->width() / 2, anchor->height()))
                                  : QPoint(window->width() - 8 - width / 2, 8);
    const int x = std::clamp(below.x() - width / 2, 8, std::max(8, window->width() - width - 8));
    const int y = below.y() + 6;
    const int height = std::min(int(std::lround(size.height())), window->height() - y - 8);
    popover->setGeometry(x, y, width, height);
    layer->show();
    layer->raise();
    // The keyboard starts at the first row.
    popover->focusNextPrevChild(true);
}

void dismissPopover(QWidget* window)
{
    if (auto* layer = layerOf(window))
        layer->close();
}

CommandPopover* openPopover(QWidget* window)
{
    PopoverLayer* layer = layerOf(window);
    return layer && layer->isVisible() ? layer->findChild<CommandPopover*>() : nullptr;
}

void registerCommandTableClass(runtime::Runtime& runtime)
{
    runtime::Class& table = runtime.registerClass(commandTableClassName, "NSObject");
    runtime.addClassMethod(table, "controllerWithTitle:sections:commands:",
                           makeImp([](runtime::Class& cls, QString title, QVariantList sections, QVariantList commands) -> ObjectRef {
                               auto object = std::make_shared<CommandTableObject>(cls);
                               object->title = title;
                               for (const QVariant& section : sections) {
                                   const QVariantMap map = section.toMap();
                                   object->sections.push_back({map.value(QStringLiteral("title")).toString(),
                                                               map.value(QStringLiteral("offset")).toInt(),
                                                               map.value(QStringLiteral("count")).toInt()});
                               }
                               for (const QVariant& command : commands)
                                   object->rows.push_back(CommandRow::fromMap(command.toMap()));
                               return object;
                           }));
    runtime.addMethod(table, "title", makeImp([](CommandTableObject& self) { return self.title; }));
    runtime.addMethod(table, "contentHeight", makeImp([](CommandTableObject& self) { return self.contentHeight(); }));
}

}  // namespace lexicorn::host::ui
