#include "host/kit/view_kit.h"

#include "host/app/host_classes.h"

#include <QEvent>
#include <QMainWindow>
#include <QPalette>
#include <QResizeEvent>
#include <QVariant>

#include <map>

namespace lexicorn::host::ui {

namespace {

const char* const anchorProperty = "lexicornViewAnchor";

std::map<const runtime::Class*, ViewFactory>& factories()
{
    static std::map<const runtime::Class*, ViewFactory> table;
    return table;
}

}  // namespace

// Lives as a child of a view's widget: it lets the widget find its object,
// keeps the object alive while the widget is inside another one (or always,
// for a wrapped widget), and watches the parent's resizes for autoresizing.
class ViewAnchor final : public QObject {
public:
    ViewAnchor(QWidget* widget, const std::shared_ptr<ViewObject>& object, bool owned)
        : QObject(widget), widget_(widget), object_(object), owned_(owned)
    {
        widget->setProperty(anchorProperty, QVariant::fromValue<QObject*>(this));
        widget->installEventFilter(this);
        parentChanged();
    }

    std::shared_ptr<ViewObject> object() const { return object_.lock(); }

    void parentChanged()
    {
        QWidget* parent = widget_->parentWidget();
        if (parent != watched_) {
            if (watched_)
                watched_->removeEventFilter(this);
            watched_ = parent;
            if (watched_)
                watched_->installEventFilter(this);
        }
        parentSize_ = parent ? parent->size() : QSize();
        // Reset last: it may release the object, which is then destroyed here.
        if (!owned_ || parent)
            strong_ = object_.lock();
        else
            strong_.reset();
    }

    void resetParentSize() { parentSize_ = watched_ ? watched_->size() : QSize(); }

protected:
    bool eventFilter(QObject* target, QEvent* event) override
    {
        if (target == widget_ && event->type() == QEvent::ParentChange) {
            parentChanged();
        } else if (target == watched_ && watched_ && event->type() == QEvent::Resize) {
            const QSize now = watched_->size();
            if (now != parentSize_ && parentSize_.isValid()) {
                if (auto object = object_.lock())
                    object->followSuperviewResize(parentSize_, now);
            }
            parentSize_ = now;
        }
        return false;
    }

private:
    QWidget* widget_;
    QPointer<QWidget> watched_;
    QSize parentSize_;
    std::weak_ptr<ViewObject> object_;
    std::shared_ptr<ViewObject> strong_;
    bool owned_;
};

namespace {

ViewAnchor* anchorOf(const QWidget* widget)
{
    if (!widget)
        return nullptr;
    return dynamic_cast<ViewAnchor*>(widget->property(anchorProperty).value<QObject*>());
}

std::shared_ptr<ViewObject> asView(const ObjectRef& object)
{
    return std::dynamic_pointer_cast<ViewObject>(object);
}

}  // namespace

ViewObject::~ViewObject()
{
    if (widget_ && owned_ && !widget_->parent()) {
        widget_->hide();
        widget_->deleteLater();
    }
}

void ViewObject::attach(QWidget* widget, bool owned)
{
    widget_ = widget;
    owned_ = owned;
    hidden_ = widget->isHidden() && widget->testAttribute(Qt::WA_WState_ExplicitShowHide);
    anchor_ = new ViewAnchor(widget, std::static_pointer_cast<ViewObject>(shared_from_this()), owned);
}

QRectF ViewObject::frame() const
{
    return widget_ ? QRectF(widget_->geometry()) : QRectF();
}

void ViewObject::setFrame_(const QRectF& frame)
{
    if (widget_)
        widget_->setGeometry(frame.toAlignedRect());
}

QRectF ViewObject::bounds() const
{
    return widget_ ? QRectF(QPointF(0, 0), QSizeF(widget_->size())) : QRectF();
}

bool ViewObject::isHidden() const
{
    return widget_ && widget_->parentWidget() ? widget_->isHidden() : hidden_;
}

void ViewObject::setHidden_(bool hidden)
{
    hidden_ = hidden;
    if (widget_ && widget_->parentWidget())
        widget_->setHidden(hidden);
}

void ViewObject::setBackgroundColor_(const QColor& color)
{
    background_ = color;
    applyBackground(color);
}

void ViewObject::applyBackground(const QColor& color)
{
    if (!widget_)
        return;
    QPalette palette = widget_->palette();
    palette.setColor(QPalette::Window, color);
    widget_->setPalette(palette);
    widget_->setAutoFillBackground(color.isValid() && color.alpha() > 0);
}

void ViewObject::setAutoresizingMask_(int mask)
{
    autoresizingMask_ = mask;
    if (anchor_)
        anchor_->resetParentSize();
}

void ViewObject::followSuperviewResize(QSize from, QSize to)
{
    if (!widget_ || !autoresizingMask_)
        return;
    QRect geometry = widget_->geometry();
    const int dw = to.width() - from.width();
    const int dh = to.height() - from.height();
    if (autoresizingMask_ & flexibleWidth)
        geometry.setWidth(std::max(0, geometry.width() + dw));
    else if (autoresizingMask_ & flexibleLeftMargin)
        geometry.translate(dw, 0);
    if (autoresizingMask_ & flexibleHeight)
        geometry.setHeight(std::max(0, geometry.height() + dh));
    else if (autoresizingMask_ & flexibleTopMargin)
        geometry.translate(0, dh);
    widget_->setGeometry(geometry);
}

void ViewObject::addSubview_(const ObjectRef& view)
{
    insertSubview_aboveSubview_(view, nullptr);
}

void ViewObject::insertSubview_aboveSubview_(const ObjectRef& view, const ObjectRef& sibling)
{
    auto child = asView(view);
    if (!child || !child->widget_ || !widget_ || child.get() == this)
        return;
    QWidget* childWidget = child->widget_;
    if (childWidget->parentWidget() != widget_)
        childWidget->setParent(widget_);
    QWidget* siblingWidget = widgetOf(sibling);
    QWidget* above = nullptr;  // the widget just above the sibling
    if (siblingWidget && siblingWidget->parentWidget() == widget_.data()) {
        bool passed = false;
        for (QObject* object : widget_->children()) {
            auto* w = qobject_cast<QWidget*>(object);
            if (!w || w == childWidget)
                continue;
            if (passed) {
                above = w;
                break;
            }
            passed = w == siblingWidget;
        }
    }
    if (above)
        childWidget->stackUnder(above);
    else
        childWidget->raise();
    childWidget->setVisible(!child->hidden_);
}

void ViewObject::removeFromSuperview()
{
    if (!widget_ || !widget_->parentWidget())
        return;
    // Keep this object alive through the release the reparenting causes.
    auto self = shared_from_this();
    widget_->hide();
    widget_->setParent(nullptr);
}

ObjectRef ViewObject::superview() const
{
    if (!widget_)
        return nullptr;
    for (QWidget* w = widget_->parentWidget(); w; w = w->parentWidget()) {
        if (auto object = viewObjectOf(w))
            return object;
    }
    return widget_->parentWidget() ? wrapWidget(widget_->parentWidget(), objectClass().runtime()) : nullptr;
}

std::vector<ObjectRef> ViewObject::subviews() const
{
    std::vector<ObjectRef> views;
    if (!widget_)
        return views;
    for (QObject* object : widget_->children()) {
        if (auto view = viewObjectOf(qobject_cast<QWidget*>(object)))
            views.push_back(view);
    }
    return views;
}

QWidget* windowContentOf(QWidget* widget)
{
    QWidget* top = widget->window();
    auto* main = qobject_cast<QMainWindow*>(top);
    QWidget* content = main ? main->centralWidget() : nullptr;
    return content && (content == widget || content->isAncestorOf(widget)) ? content : top;
}

ObjectRef ViewObject::window() const
{
    return widget_ ? wrapWidget(windowContentOf(widget_), objectClass().runtime()) : nullptr;
}

QPointF ViewObject::convertPoint_toView_(const QPointF& point, const ObjectRef& other) const
{
    if (!widget_)
        return point;
    QWidget* top = windowContentOf(widget_);
    const QPointF inWindow = widget_->mapTo(top, point);
    QWidget* target = widgetOf(other);
    if (!target)
        return inWindow;
    if (target == top || top->isAncestorOf(target))
        return target->mapFrom(top, inWindow);
    return target->mapFromGlobal(widget_->mapToGlobal(point));
}

ObjectRef ViewObject::viewWithTag_(int tag)
{
    if (tag_ == tag)
        return shared_from_this();
    for (const ObjectRef& child : subviews()) {
        if (auto view = asView(child)) {
            if (auto found = view->viewWithTag_(tag))
                return found;
        }
    }
    return nullptr;
}

bool ViewObject::isUserInteractionEnabled() const
{
    return widget_ && !widget_->testAttribute(Qt::WA_TransparentForMouseEvents);
}

void ViewObject::setUserInteractionEnabled_(bool enabled)
{
    if (widget_)
        widget_->setAttribute(Qt::WA_TransparentForMouseEvents, !enabled);
}

void registerViewFactory(const runtime::Class& cls, ViewFactory factory)
{
    factories()[&cls] = std::move(factory);
}

std::shared_ptr<ViewObject> makeViewOfClass(runtime::Class& cls)
{
    for (const runtime::Class* c = &cls; c; c = c->superclass()) {
        auto found = factories().find(c);
        if (found != factories().end())
            return found->second(cls);
    }
    throw runtime::Error(cls.name() + " is not a view class");
}

ObjectRef viewObjectOf(const QWidget* widget)
{
    ViewAnchor* anchor = anchorOf(widget);
    return anchor ? anchor->object() : nullptr;
}

QWidget* widgetOf(runtime::Object& object)
{
    auto* view = dynamic_cast<ViewObject*>(&object);
    return view ? view->widget() : nullptr;
}

QWidget* widgetOf(const ObjectRef& object)
{
    return object ? widgetOf(*object) : nullptr;
}

ObjectRef wrapWidget(QWidget* widget, runtime::Runtime& runtime)
{
    if (!widget)
        return nullptr;
    if (auto existing = viewObjectOf(widget))
        return existing;
    runtime::Class* viewClass = runtime.classNamed(viewClassName);
    if (!viewClass)
        throw runtime::Error("a widget is wrapped before the view kit's classes are registered");
    auto view = std::make_shared<ViewObject>(*viewClass);
    view->attach(widget, false);
    return view;
}

void registerViewClass(runtime::Runtime& runtime)
{
    using runtime::makeImp;
    if (runtime.classNamed(viewClassName))
        return;
    runtime::Class& view = runtime.registerClass(viewClassName, responderClassName);
    registerViewFactory(view, [](runtime::Class& cls) {
        auto object = std::make_shared<ViewObject>(cls);
        object->attach(new QWidget, true);
        return object;
    });

    runtime.addClassMethod(view, "viewWithFrame:", makeImp([](runtime::Class& cls, QRectF frame) -> ObjectRef {
        auto object = makeViewOfClass(cls);
        object->setFrame_(frame);
        return object;
    }));
    runtime.addClassMethod(view, "viewWithWidget:", makeImp([](runtime::Class& cls, QWidget* widget) -> ObjectRef {
        return wrapWidget(widget, cls.runtime());
    }));
    runtime.addMethod(view, "widget", makeImp([](ViewObject& self) { return self.widget(); }));
    runtime.addMethod(view, "frame", makeImp([](ViewObject& self) { return self.frame(); }));
    runtime.addMethod(view, "setFrame:", makeImp([](ViewObject& self, QRectF frame) { self.setFrame_(frame); }));
    runtime.addMethod(view, "bounds", makeImp([](ViewObject& self) { return self.bounds(); }));
    runtime.addMethod(view, "isHidden", makeImp([](ViewObject& self) { return self.isHidden(); }));
    runtime.addMethod(view, "setHidden:", makeImp([](ViewObject& self, bool hidden) { self.setHidden_(hidden); }));
    runtime.addMethod(view, "backgroundColor", makeImp([](ViewObject& self) { return self.backgroundColor(); }));
    runtime.addMethod(view, "setBackgroundColor:",
                      makeImp([](ViewObject& self, QColor color) { self.setBackgroundColor_(color); }));
    runtime.addMethod(view, "autoresizingMask", makeImp([](ViewObject& self) { return self.autoresizingMask(); }));
    runtime.addMethod(view, "setAutoresizingMask:",
                      makeImp([](ViewObject& self, int mask) { self.setAutoresizingMask_(mask); }));
    runtime.addMethod(view, "addSubview:", makeImp([](ViewObject& self, ObjectRef child) { self.addSubview_(child); }));
    runtime.addMethod(view, "insertSubview:aboveSubview:", makeImp([](ViewObject& self, ObjectRef child, ObjectRef sibling) {
        self.insertSubview_aboveSubview_(child, sibling);
    }));
    runtime.addMethod(view, "removeFromSuperview", makeImp([](ViewObject& self) { self.removeFromSuperview(); }));
    runtime.addMethod(view, "superview", makeImp([](ViewObject& self) { return self.superview(); }));
    runtime.addMethod(view, "subviews", makeImp([](ViewObject& self) { return self.subviews(); }));
    runtime.addMethod(view, "window", makeImp([](ViewObject& self) { return self.window(); }));
    runtime.addMethod(view, "convertPoint:toView:", makeImp([](ViewObject& self, QPointF point, ObjectRef other) {
        return self.convertPoint_toView_(point, other);
    }));
    runtime.addMethod(view, "tag", makeImp([](ViewObject& self) { return self.tag(); }));
    runtime.addMethod(view, "setTag:", makeImp([](ViewObject& self, int tag) { self.setTag_(tag); }));
    runtime.addMethod(view, "viewWithTag:", makeImp([](ViewObject& self, int tag) { return self.viewWithTag_(tag); }));
    runtime.addMethod(view, "isUserInteractionEnabled",
                      makeImp([](ViewObject& self) { return self.isUserInteractionEnabled(); }));
    runtime.addMethod(view, "setUserInteractionEnabled:",
                      makeImp([](ViewObject& self, bool enabled) { self.setUserInteractionEnabled_(enabled); }));
}

}  // namespace lexicorn::host::ui
