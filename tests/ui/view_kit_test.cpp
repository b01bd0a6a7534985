// The view kit driven the way the plug-in drives it: classes and selectors by
// name, data sources and delegates that are runtime objects, real clicks.

#include "host/kit/kit_classes.h"
#include "host/kit/kit_table_view.h"
#include "host/kit/kit_text_view.h"
#include "host/kit/styled_document.h"
#include "host/ui/fonts.h"

#include "runtime/hosting.h"

#include <QAbstractScrollArea>
#include <QTest>
#include <QTextDocument>
#include <QTextEdit>

#include <gtest/gtest.h>

namespace lexicorn::host::ui {
namespace {

using runtime::makeImp;
using runtime::send;
using runtime::sendClass;

runtime::Runtime& rt() { return runtime::Runtime::shared(); }
runtime::Class& cls(const char* name) { return *rt().classNamed(name); }

// A data source and delegate as the plug-in writes one: rows per section,
// heights 20 + 10 * row, and a record of what it was asked and told.
struct Source : runtime::Object {
    using Object::Object;
    std::vector<int> rows{2, 3};
    std::vector<IndexPath> selected;
    int cellsMade = 0;
};

// Registers the test classes once: "KitSource"; "KitSourceSub", whose own
// cellForRow: makes "KitCell" cells (re-using dequeued ones); and "KitCell",
// whose own init calls the superclass's and then adds a text view on the
// right half of the content, editable in row 0 only.
void registerTestClasses()
{
    registerViewKitClasses();
    if (rt().classNamed("KitSource"))
        return;
    runtime::Class& source = rt().registerClass("KitSource", "NSObject");
    rt().addMethod(source, "numberOfSectionsInTableView:", makeImp([](Source& s, ObjectRef) { return int(s.rows.size()); }));
    rt().addMethod(source, "tableView:numberOfRowsInSection:", makeImp([](Source& s, ObjectRef, int section) { return s.rows[section]; }));
    rt().addMethod(source, "tableView:cellForRowAtIndexPath:", makeImp([](Source&, ObjectRef, IndexPath) {
        return sendClass<ObjectRef>(cls(tableViewCellClassName), "newWithStyle:reuseIdentifier:", 0, QString("plain"));
    }));
    rt().addMethod(source, "tableView:heightForRowAtIndexPath:", makeImp([](Source&, ObjectRef, IndexPath p) { return 20.0 + 10 * p.row; }));
    rt().addMethod(source, "tableView:didSelectRowAtIndexPath:", makeImp([](Source& s, ObjectRef, IndexPath p) { s.selected.push_back(p); }));

    runtime::Class& cell = rt().registerClass("KitCell", tableViewCellClassName);
    rt().addMethod(cell, "initWithStyle:reuseIdentifier:", makeImp([](runtime::Object& self, int style, QString id) -> ObjectRef {
        ObjectRef me = runtime::callPrevious<ObjectRef>(runtime::Imp{}, cls("KitCell").superclass(), self,
                                                        "initWithStyle:reuseIdentifier:", style, id);
        ObjectRef content = send<ObjectRef>(*me, "contentView");
        ObjectRef text = sendClass<ObjectRef>(cls(textViewClassName), "textViewWithFrame:", QRectF(150, 0, 150, 20));
        send<void>(*text, "setTag:", 7);
        send<void>(*content, "addSubview:", text);
        return me;
    }));

    runtime::Class& sub = rt().registerClass("KitSourceSub", "KitSource");
    rt().addMethod(sub, "tableView:cellForRowAtIndexPath:", makeImp([](Source& s, ObjectRef table, IndexPath p) {
        ObjectRef cell = send<ObjectRef>(*table, "dequeueReusableCellWithIdentifier:", QString("kit"));
        if (!cell) {
            ++s.cellsMade;
            cell = sendClass<ObjectRef>(cls("KitCell"), "newWithStyle:reuseIdentifier:", 0, QString("kit"));
        }
        ObjectRef text = send<ObjectRef>(*cell, "viewWithTag:", 7);
        send<void>(*text, "setEditable:", p.row == 0);
        send<void>(*text, "setText:", QString("row %1.%2").arg(p.section).arg(p.row));
        return cell;
    }));
}

class kitViewTest : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        installFontFallbacks();
        registerTestClasses();
    }
    // A shown window holding a 300 x 400 table fed by a KitSourceSub.
    void makeTable()
    {
        window.resize(300, 400);
        source = std::make_shared<Source>(cls("KitSourceSub"));
        table = sendClass<ObjectRef>(cls(tableViewClassName), "tableViewWithFrame:style:", QRectF(0, 0, 300, 400), 0);
        send<void>(*wrapWidget(&window), "addSubview:", table);
        send<void>(*table, "setDataSource:", ObjectRef(source));
        send<void>(*table, "setDelegate:", ObjectRef(source));
        send<void>(*table, "reloadData");
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    }
    QWidget window;
    std::shared_ptr<Source> source;
    ObjectRef table;
};

TEST_F(kitViewTest, TableAsksTheSubclassReplacementAndLaysRowsOutByDelegateHeights)
{
    makeTable();
    EXPECT_EQ(send<int>(*table, "numberOfSections"), 2);
    EXPECT_EQ(send<int>(*table, "numberOfRowsInSection:", 1), 3);
    EXPECT_EQ(source->cellsMade, 5);
    double y = 0;
    for (IndexPath p : {IndexPath{0, 0}, {0, 1}, {1, 0}, {1, 1}, {1, 2}}) {
        ObjectRef cell = send<ObjectRef>(*table, "cellForRowAtIndexPath:", p);
        ASSERT_TRUE(cell);
        EXPECT_EQ(cell->objectClass().name(), "KitCell");
        ObjectRef text = send<ObjectRef>(*cell, "viewWithTag:", 7);
        ASSERT_TRUE(text) << "the subclass's init ran after the superclass's";
        EXPECT_EQ(send<QString>(*text, "text"), QString("row %1.%2").arg(p.section).arg(p.row));
        EXPECT_EQ(send<QRectF>(*table, "rectForRowAtIndexPath:", p), QRectF(0, y, 300, 20 + 10 * p.row));
        EXPECT_EQ(widgetOf(cell)->geometry(), QRect(0, int(y), 300, 20 + 10 * p.row));
        y += 20 + 10 * p.row;
    }
    // A second reload takes every cell from the reuse queue.
    send<void>(*table, "reloadData");
    EXPECT_EQ(source->cellsMade, 5);
}

TEST_F(kitViewTest, ClicksSelectTheRowUnlessTheyLandInEditableText)
{
    struct Case {
        IndexPath row;
        bool onText;
        bool allowsSelection;
        std::vector<IndexPath> selected;
    };
    const std::vector<Case> cases{
        {{0, 1}, false, true, {{0, 1}}}, {{1, 2}, true, true, {{1, 2}}},  // text that is not editable lets it through
        {{1, 0}, true, true, {}},        {{1, 0}, false, true, {{1, 0}}},
        {{0, 0}, false, false, {}},
    };
    makeTable();
    for (const Case& c : cases) {
        source->selected.clear();
        send<void>(*table, "setAllowsSelection:", c.allowsSelection);
        ObjectRef cell = send<ObjectRef>(*table, "cellForRowAtIndexPath:", c.row);
        auto* text = static_cast<QAbstractScrollArea*>(widgetOf(send<ObjectRef>(*cell, "viewWithTag:", 7)));
        QWidget* target = c.onText ? text->viewport() : widgetOf(cell);
        QTest::mouseClick(target, Qt::LeftButton, {}, QPoint(10, 5));
        EXPECT_EQ(source->selected, c.selected) << c.row.section << "." << c.row.row << " on text " << c.onText;
    }
}

TEST_F(kitViewTest, ViewsNestResizeAndConvertPoints)
{
    window.resize(400, 300);
    ObjectRef root = wrapWidget(&window);
    EXPECT_EQ(sendClass<ObjectRef>(cls(viewClassName), "viewWithWidget:", static_cast<QWidget*>(&window)), root);
    auto view = [](QRectF frame) { return sendClass<ObjectRef>(cls(viewClassName), "viewWithFrame:", frame); };
    ObjectRef follower = view({10, 20, 100, 50}), fixed = view({0, 0, 30, 30}), inner = view({5, 5, 10, 10});
    send<void>(*follower, "setAutoresizingMask:", int(flexibleWidth | flexibleHeight));
    send<void>(*root, "addSubview:", follower);
    send<void>(*root, "addSubview:", fixed);
    send<void>(*follower, "addSubview:", inner);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));

    window.resize(450, 280);
    EXPECT_EQ(send<QRectF>(*follower, "frame"), QRectF(10, 20, 150, 30));
    EXPECT_EQ(send<QRectF>(*fixed, "frame"), QRectF(0, 0, 30, 30));

    EXPECT_EQ(send<QPointF>(*inner, "convertPoint:toView:", QPointF(1, 2), ObjectRef()), QPointF(16, 27));
    EXPECT_EQ(send<QPointF>(*inner, "convertPoint:toView:", QPointF(1, 2), fixed), QPointF(16, 27));
    EXPECT_EQ(send<QPointF>(*fixed, "convertPoint:toView:", QPointF(16, 27), inner), QPointF(1, 2));
    EXPECT_EQ(send<ObjectRef>(*inner, "superview"), follower);
    EXPECT_EQ(send<ObjectRef>(*inner, "window"), root);

    // Inserted just above follower: between it and fixed, bottom to top.
    ObjectRef middle = view({0, 0, 5, 5});
    send<void>(*root, "insertSubview:aboveSubview:", middle, follower);
    EXPECT_EQ(send<std::vector<ObjectRef>>(*root, "subviews"), (std::vector<ObjectRef>{follower, middle, fixed}));
    send<void>(*middle, "removeFromSuperview");
    EXPECT_EQ(send<std::vector<ObjectRef>>(*root, "subviews"), (std::vector<ObjectRef>{follower, fixed}));
    EXPECT_FALSE(send<ObjectRef>(*middle, "superview"));

    // A view that takes no clicks lets them through to its parent's handling.
    send<void>(*fixed, "setUserInteractionEnabled:", false);
    EXPECT_TRUE(widgetOf(fixed)->testAttribute(Qt::WA_TransparentForMouseEvents));
}

TEST(kitStyledDocumentTest, AttributesComeBackExactly)
{
    TextAttributes bold;
    bold.bold = true;
    TextAttributes colours;
    colours.foreground = Rgba{10, 20, 30, 0.5};
    colours.background = Rgba{255, 240, 0, 0.25};
    TextAttributes font;
    font.fontName = QStringLiteral("Noto Serif");
    font.fontSize = 13.5;
    font.italic = true;
    auto styled = [](std::initializer_list<std::pair<QString, TextAttributes>> parts) {
        StyledText text;
        for (const auto& [part, attributes] : parts)
            text.append(part, attributes);
        return text;
    };
    const std::vector<std::pair<const char*, StyledText>> cases{
        {"plain", StyledText(QStringLiteral("plain text"))},
        {"run in the middle", styled({{"a ", {}}, {"bold", bold}, {" b", {}}})},
        {"colours with alpha", styled({{"x", colours}, {"y", font}})},
        {"line break inside a run", styled({{"one\ntwo", bold}, {"\nthree", colours}})},
        {"chinese and emoji", styled({{QStringLiteral("🔚; 中文 📇"), colours}, {QStringLiteral(" 词"), font}})},
        {"empty", StyledText()},
    };
    for (const auto& [name, text] : cases) {
        QTextDocument document;
        setStyledText(document, text);
        EXPECT_EQ(styledTextOf(document), text) << name;
    }
}

// Rejects typing an "x" and counts begin and end of editing.
struct TextDelegate : runtime::Object {
    using Object::Object;
    std::vector<QPoint> ranges;
    int began = 0, ended = 0;
};

TEST_F(kitViewTest, TextViewAsksItsDelegateBeforeTypedChanges)
{
    if (!rt().classNamed("KitTextDelegate")) {
        runtime::Class& c = rt().registerClass("KitTextDelegate", "NSObject");
        rt().addMethod(c, "textView:shouldChangeTextInRange:replacementText:",
                       makeImp([](TextDelegate& d, ObjectRef, QPoint range, QString text) {
                           d.ranges.push_back(range);
                           return text != "x";
                       }));
        rt().addMethod(c, "textViewDidBeginEditing:", makeImp([](TextDelegate& d, ObjectRef) { ++d.began; }));
        rt().addMethod(c, "textViewDidEndEditing:", makeImp([](TextDelegate& d, ObjectRef) { ++d.ended; }));
    }
    auto delegate = std::make_shared<TextDelegate>(cls("KitTextDelegate"));
    ObjectRef text = sendClass<ObjectRef>(cls(textViewClassName), "textViewWithFrame:", QRectF(0, 0, 200, 40));
    ObjectRef other = sendClass<ObjectRef>(cls(textViewClassName), "textViewWithFrame:", QRectF(0, 50, 200, 40));
    send<void>(*wrapWidget(&window), "addSubview:", text);
    send<void>(*wrapWidget(&window), "addSubview:", other);
    send<void>(*text, "setDelegate:", ObjectRef(delegate));
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));

    auto* edit = static_cast<QTextEdit*>(widgetOf(text));
    edit->setFocus();
    QTest::keyClicks(edit, "axb");
    QTest::keyClick(edit, Qt::Key_Backspace);
    widgetOf(other)->setFocus();
    EXPECT_EQ(send<QString>(*text, "text"), "a");
    EXPECT_EQ(delegate->ranges, (std::vector<QPoint>{{0, 0}, {1, 0}, {1, 0}, {1, 1}}));
    EXPECT_EQ(delegate->began, 1);
    EXPECT_EQ(delegate->ended, 1);
}

}  // namespace
}  // namespace lexicorn::host::ui
