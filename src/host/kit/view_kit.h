#pragma once

// The view kit: the reader's widgets as runtime classes, so the plug-in makes
// and drives views by class and selector names only.
//
//   "UIView"            a plain widget (ViewObject)
//   "UITableView"       rows of sections from a data source (kit_table_view.h)
//   "UITableViewCell"   one row of a table, with a content view
//   "UITextView"        a text edit showing styled text (kit_text_view.h)
//
// Every view object owns its QWidget, and the widget finds its object again
// (viewObjectOf). A view inside a superview is kept alive by its widget, so a
// caller may drop its reference once the view is added.
// Values travel as QRectF, QPointF, QColor, lexicorn::IndexPath and
// lexicorn::StyledText; views as ObjectRef, nil being nullptr.

#include "runtime/runtime.h"

#include <QColor>
#include <QPointF>
#include <QPointer>
#include <QRectF>
#include <QWidget>

#include <functional>
#include <memory>
#include <vector>

namespace lexicorn::host::ui {

using ObjectRef = std::shared_ptr<runtime::Object>;

inline constexpr const char* viewClassName = "UIView";

// Bits of setAutoresizingMask:. A flexible width or height follows the
// superview's change of size; a flexible left or top margin moves with it.
enum Autoresizing : int {
    flexibleLeftMargin = 1,
    flexibleWidth = 2,
    flexibleRightMargin = 4,
    flexibleTopMargin = 8,
    flexibleHeight = 16,
    flexibleBottomMargin = 32,
};

class ViewAnchor;

// A "UIView" and the base of every kit view. Selector "a:b:" is implemented
// by the member a_b_ (see registerViewClass for the list).
class ViewObject : public runtime::Object {
public:
    explicit ViewObject(runtime::Class& cls) : Object(cls) {}
    ~ViewObject() override;

    // Gives the object its widget. owned: the object made it and deletes it
    // when it goes while the widget has no parent; a widget that has a parent
    // keeps its object alive instead. A wrapped widget (not owned) keeps its
    // object alive for as long as it lives.
    void attach(QWidget* widget, bool owned);

    QWidget* widget() const { return widget_; }
    QRectF frame() const;
    void setFrame_(const QRectF& frame);
    QRectF bounds() const;
    bool isHidden() const;
    void setHidden_(bool hidden);
    QColor backgroundColor() const { return background_; }
    void setBackgroundColor_(const QColor& color);
    int autoresizingMask() const { return autoresizingMask_; }
    void setAutoresizingMask_(int mask);
    void addSubview_(const ObjectRef& view);
    // sibling null: on top of the other subviews.
    void insertSubview_aboveSubview_(const ObjectRef& view, const ObjectRef& sibling);
    void removeFromSuperview();
    ObjectRef superview() const;
    // Bottom to top; child widgets without a view object are left out.
    std::vector<ObjectRef> subviews() const;
    ObjectRef window() const;
    // other nil: the window's coordinates.
    QPointF convertPoint_toView_(const QPointF& point, const ObjectRef& other) const;
    int tag() const { return tag_; }
    void setTag_(int tag) { tag_ = tag; }
    // This view or the first subview, depth first, with the tag; null when none.
    ObjectRef viewWithTag_(int tag);
    bool isUserInteractionEnabled() const;
    void setUserInteractionEnabled_(bool enabled);

protected:
    // Paints the background colour; views whose visible surface is an inner
    // widget (a scroll area's viewport) paint that instead.
    virtual void applyBackground(const QColor& color);

private:
    friend class ViewAnchor;
    // Follows the superview's change of size by the autoresizing mask.
    void followSuperviewResize(QSize from, QSize to);

    QPointer<QWidget> widget_;
    ViewAnchor* anchor_ = nullptr;
    bool owned_ = false;
    bool hidden_ = false;
    int tag_ = 0;
    int autoresizingMask_ = 0;
    QColor background_;
};

// Makes the view object of a kit class: the C++ type is the one registered
// for the class or its nearest ancestor, so an instance of a runtime subclass
// registered later (by the plug-in) is a full view of its kind.
using ViewFactory = std::function<std::shared_ptr<ViewObject>(runtime::Class&)>;
void registerViewFactory(const runtime::Class& cls, ViewFactory factory);
std::shared_ptr<ViewObject> makeViewOfClass(runtime::Class& cls);

// The object of a widget made or wrapped by the kit, or null.
ObjectRef viewObjectOf(const QWidget* widget);
// The widget of a view object; null for other objects.
// What views call their window: a main window's central widget (menus and
// tool bars lie outside it, as they do outside a Mac window's content), else
// the top-level widget.
QWidget* windowContentOf(QWidget* widget);

QWidget* widgetOf(runtime::Object& object);
QWidget* widgetOf(const ObjectRef& object);
// The view object of a widget, wrapping it when it has none ("viewWithWidget:").
// The kit's classes must be registered (kit_classes.h).
ObjectRef wrapWidget(QWidget* widget, runtime::Runtime& runtime = runtime::Runtime::shared());

// Registers "UIView" with its methods; the host's own classes must be
// registered first. kit_classes.h registers every kit class in order; this is
// its first step. Safe to call more than once.
//
// UIView: +viewWithFrame: (QRectF), +viewWithWidget: (QWidget*); widget,
// frame, setFrame:, bounds, isHidden, setHidden:, backgroundColor,
// setBackgroundColor: (QColor), autoresizingMask, setAutoresizingMask: (int),
// addSubview:, insertSubview:aboveSubview:, removeFromSuperview, superview,
// subviews (std::vector<ObjectRef>), window, convertPoint:toView: (QPointF,
// ObjectRef), tag, setTag:, viewWithTag:, isUserInteractionEnabled,
// setUserInteractionEnabled:.
void registerViewClass(runtime::Runtime& runtime);

}  // namespace lexicorn::host::ui
