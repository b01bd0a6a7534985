// The study board's dictionary settings, offscreen with the plug-in loaded,
// driven by real clicks and keys: the menu of the clip bar's dictionary
// button, and the Anki panel against a real collection and a closed port.

#include "card_fixtures.h"
#include "reader_session.h"
#include "screenshot.h"
#include "support/server_process.h"
#include "support/temp_home.h"

#include "host/app/note_classes.h"
#include "host/kit/kit_toggles.h"
#include "host/kit/view_kit.h"
#include "host/ui/command_menu.h"
#include "host/ui/hud_overlay.h"
#include "host/ui/reader_tour.h"
#include "host/ui/reader_window.h"

#include "foundation/index_path.h"
#include "foundation/user_defaults.h"

#include "lexicorn/anki/ksw_ankiconnect.h"
#include "lexicorn/render/anki_fields.h"
#include "lexicorn/services/voice_endpoint.h"

#include <QApplication>
#include <QLineEdit>
#include <QTest>
#include <QToolBar>

#include <gtest/gtest.h>

#include <functional>

namespace lexicorn {
namespace {

using host::ui::CommandPopover;
using host::ui::CommandRow;
using host::ui::widgetOf;
using runtime::send;
using test::saveScreenshot;
using ObjectRef = std::shared_ptr<runtime::Object>;

using testing::sampleBook;
const QString cachingMessage = QStringLiteral("字典缓存中，请稍后再试！");

// Waits for what a background request brings back; the bound only keeps a
// broken build from hanging.
bool eventually(const std::function<bool()>& condition)
{
    return QTest::qWaitFor(condition, 30000);
}

// Presses the key on the focused widget until the row has the focus.
bool moveFocusTo(QWidget* row, Qt::Key key)
{
    for (int i = 0; i < 30 && !row->hasFocus(); ++i)
        QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : row, key);
    return row->hasFocus();
}

void click(QWidget* widget, QPoint at = {})
{
    ASSERT_TRUE(widget);
    QTest::mouseClick(widget, Qt::LeftButton, {}, at.isNull() ? widget->rect().center() : at);
}

class SettingsTest : public ::testing::Test {
protected:
    // The engine stays as stored (the menu shows its default); translation
    // and voice services are closed ports.
    void start() { session_.start(home_, {.engineOff = false}); }
    void TearDown() override { session_.stop(); }

    host::StudyboardObject& board() { return static_cast<host::StudyboardObject&>(*window_->studyboard()); }
    ObjectRef dictButton() { return send<ObjectRef>(board(), "dictSetting"); }

    CommandPopover* openMenu()
    {
        host::ui::dismissPopover(window_.get());
        QTest::qWait(0);
        click(widgetOf(dictButton()));
        QTest::qWait(20);
        return host::ui::openPopover(window_.get());
    }
    void closeMenu(CommandPopover* menu)
    {
        QTest::keyClick(menu->row(0), Qt::Key_Escape);
        QTest::qWait(0);
    }
    host::ui::CommandRowWidget* menuRow(CommandPopover* menu, const QString& title)
    {
        for (int i = 0; i < menu->rowCount(); ++i) {
            if (menu->row(i)->title() == title)
                return menu->row(i);
        }
        return nullptr;
    }

    testing::TempHome home_;
    testing::ReaderSession session_;
    host::HostApplication& app_ = session_.app;
    std::unique_ptr<host::ui::ReaderWindow>& window_ = session_.window;
};

// The panel lists what the real collection holds and stores each choice at
// once; against a closed port the lists open nothing.
TEST_F(SettingsTest, TheAnkiPanelListsWhatAnkiHoldsAndStoresEachChoice)
{
    testing::AnkiCollection anki(home_);
    ASSERT_TRUE(anki.ready()) << anki.problem().toStdString();
    start();
    UserDefaults& defaults = UserDefaults::standard();

    // The menu's command row, by keyboard: down to it and Enter.
    CommandPopover* menu = openMenu();
    ASSERT_TRUE(menu);
    host::ui::CommandRowWidget* ankiRow = menuRow(menu, QStringLiteral("Ankiconnect 设置"));
    ASSERT_TRUE(ankiRow);
    ASSERT_TRUE(moveFocusTo(ankiRow, Qt::Key_Down));
    QTest::keyClick(ankiRow, Qt::Key_Return);
    QTest::qWait(0);
    EXPECT_FALSE(host::ui::openPopover(window_.get())) << "the menu closes when the panel opens";
    const ObjectRef panel = send<ObjectRef>(board(), "ankiconnectSettingView");
    ASSERT_TRUE(panel);
    const QSize boardSize = window_->boardView().size();
    EXPECT_EQ(send<QRectF>(*panel, "frame"), QRectF((boardSize.width() - 600) / 2.0, (boardSize.height() - 280) / 2.0, 600, 280));
    EXPECT_TRUE(widgetOf(panel)->isVisible());

    const auto button = [&panel](const char* name) { return send<ObjectRef>(*panel, name); };
    const auto title = [](const ObjectRef& view) { return send<QString>(*view, "currentTitle"); };
    const ObjectRef connect = button("connect");
    const ObjectRef table = button("selectionTableView");
    const auto connectTo = [&](const QString& address) {
        ASSERT_TRUE(eventually([&] { return send<bool>(*connect, "isEnabled"); }));
        auto* field = static_cast<QLineEdit*>(widgetOf(button("ip")));
        field->selectAll();
        QTest::keyClicks(field, address);
        click(widgetOf(connect));
        EXPECT_EQ(title(connect), QStringLiteral("…")) << "the test runs in the background";
        ASSERT_TRUE(eventually([&] { return send<bool>(*connect, "isEnabled"); }));
    };
    // Presses a setting button; when Anki answers, picks the row with the text.
    const auto pick = [&](const char* name, const QStringList& expectedRows, const QString& text) {
        click(widgetOf(button(name)));
        // The button stays dimmed until Anki has answered.
        EXPECT_FALSE(send<bool>(*button(name), "isEnabled")) << name;
        ASSERT_TRUE(eventually([&] { return send<bool>(*button(name), "isEnabled"); })) << name;
        ASSERT_FALSE(send<bool>(*table, "isHidden")) << name;
        EXPECT_EQ(send<QStringList>(*panel, "strings"), expectedRows) << name;
        const int row = static_cast<int>(expectedRows.indexOf(text));
        click(widgetOf(send<ObjectRef>(*table, "cellForRowAtIndexPath:", IndexPath{0, row})));
        EXPECT_TRUE(send<bool>(*table, "isHidden"));
        EXPECT_EQ(title(button(name)), text);
    };

    // The collection's address, as the test's own client reaches it.
    const QString address = KSWAnkiconnect::shareInstance().ipString();
    connectTo(address);
    EXPECT_EQ(title(connect), QStringLiteral("Connected! v6"));
    EXPECT_EQ(send<QColor>(*connect, "backgroundColor"), QColor(Qt::cyan));
    EXPECT_EQ(defaults.string(QStringLiteral("ipString")), address);

    // A field button with no note type asks nothing and opens nothing.
    click(widgetOf(button("expression")));
    EXPECT_TRUE(send<bool>(*button("expression"), "isEnabled"));
    EXPECT_TRUE(send<bool>(*table, "isHidden"));

    // "Duplicate" starts blank, then cycles between YES and NO.
    for (const QString& expected : {QStringLiteral("YES"), QStringLiteral("NO"), QStringLiteral("YES")}) {
        click(widgetOf(button("duplicate")));
        EXPECT_EQ(title(button("duplicate")), expected);
        EXPECT_EQ(defaults.string(ankiset::duplicate), expected);
    }

    const auto listed = [](const KSWAnkiconnect::Reply& reply) {
        QStringList rows{QString()};
        for (const QJsonValue& value : reply->result().toArray())
            rows << value.toString();
        return rows;
    };
    KSWAnkiconnect& client = KSWAnkiconnect::shareInstance();
    pick("deckName", listed(client.getDeckNames()), QStringLiteral("Default"));
    pick("typeName", listed(client.getModelNames()), QStringLiteral("Lexicorn card"));
    pick("expression", QStringList{QString()} + testing::contentItems, QStringLiteral("EXPRESSION"));
    EXPECT_EQ(defaults.string(ankiset::deckName), QStringLiteral("Default"));
    EXPECT_EQ(defaults.string(ankiset::typeName), QStringLiteral("Lexicorn card"));
    EXPECT_EQ(defaults.string(ankiset::expression), QStringLiteral("EXPRESSION"));
    click(widgetOf(button("audio")));
    ASSERT_TRUE(eventually([&] { return !send<bool>(*table, "isHidden"); }));
    saveScreenshot(*window_, QStringLiteral("anki-panel-connected"));

    // The blank note type: the field mappings and the duplicate rule go.
    pick("typeName", listed(client.getModelNames()), QString());
    EXPECT_EQ(defaults.stringIfSet(ankiset::typeName), QString());
    EXPECT_FALSE(defaults.contains(ankiset::expression));
    EXPECT_FALSE(defaults.contains(ankiset::duplicate));
    EXPECT_EQ(title(button("expression")), QString());
    EXPECT_EQ(defaults.string(ankiset::deckName), QStringLiteral("Default"));

    connectTo(QStringLiteral("127.0.0.1:%1").arg(testing::closedPort()));
    EXPECT_EQ(title(connect), QStringLiteral("Not Connect!"));
    EXPECT_EQ(send<QColor>(*connect, "backgroundColor"), QColor(Qt::red));
    click(widgetOf(button("deckName")));
    ASSERT_TRUE(eventually([&] { return send<bool>(*button("deckName"), "isEnabled"); }));
    EXPECT_TRUE(send<bool>(*table, "isHidden"));
    saveScreenshot(*window_, QStringLiteral("anki-panel-not-connected"));

    click(widgetOf(button("close")));
    EXPECT_TRUE(widgetOf(panel)->isHidden());
}

// The menu's rows show and change the reader's settings.
// Last in this file: its end leaves the dictionary engine building a cache
// that never comes for the rest of the process.
TEST_F(SettingsTest, TheDictionaryMenuShowsAndChangesTheReadersSettings)
{
    start();
    UserDefaults& defaults = UserDefaults::standard();
    ASSERT_FALSE(defaults.contains(QStringLiteral("SPECIAL_ENGINE")));
    const ObjectRef reader = app_.bookView;
    EXPECT_EQ(send<double>(*reader, "cardWidth"), 700.0) << "no width stored: the board gives 700";
    EXPECT_EQ(widgetOf(dictButton())->parentWidget(), &window_->clipBar());
    EXPECT_TRUE(send<bool>(*dictButton(), "isSelected")) << "the dictionary is on";

    CommandPopover* menu = openMenu();
    ASSERT_TRUE(menu);
    EXPECT_EQ(menu->title(), QStringLiteral("特异功能"));
    using Kind = CommandRow::Kind;
    const QStringList widths{"700", "900", "1100", "1300", "1500", "2000", "2500", "3000", "3500", "4000", "4500", "5000"};
    struct Expected {
        QString title;
        Kind kind;
        int value;  // a switch's state, a segment's index
        QStringList segments;
    };
    const Expected expected[] = {
        {QStringLiteral("打开字典"), Kind::toggle, 1, {}},
        {QStringLiteral("字典卡牌格式保护"), Kind::toggle, 1, {}},
        {QStringLiteral("自动添加到 Anki"), Kind::toggle, 0, {}},
        {QStringLiteral("选择复制"), Kind::toggle, 0, {}},
        {QStringLiteral("作为字典视图"), Kind::toggle, 0, {}},
        {QStringLiteral("选中后发音"), Kind::toggle, 0, {}},
        {QStringLiteral("句子卡片"), Kind::toggle, 0, {}},
        {QStringLiteral("翻译卡片"), Kind::toggle, 0, {}},
        {QStringLiteral("选择词典"), Kind::segmented, 1, {"LDOCE5", "collins"}},
        {QStringLiteral("翻译引擎"), Kind::segmented, 1, {"自动", "Google cn", "有道", "Google", "Eudic"}},
        {QStringLiteral("新建卡片宽度设置"), Kind::segmented, 0, widths},
        {QStringLiteral("Ankiconnect 设置"), Kind::command, 0, {}},
        {QStringLiteral("Mouse3控制"), Kind::toggle, 0, {}},
    };
    ASSERT_EQ(menu->rowCount(), static_cast<int>(std::size(expected)));
    for (int i = 0; i < menu->rowCount(); ++i) {
        const host::ui::CommandRowWidget* row = menu->row(i);
        const Expected& want = expected[i];
        EXPECT_EQ(row->title(), want.title) << i;
        EXPECT_EQ(row->kind(), want.kind) << i;
        EXPECT_TRUE(row->hasImage()) << i;
        if (want.kind == Kind::toggle) {
            EXPECT_EQ(row->isOn(), want.value == 1) << want.title.toStdString();
        } else if (want.kind == Kind::segmented) {
            EXPECT_EQ(row->segmentIndex(), want.value) << want.title.toStdString();
            EXPECT_EQ(row->segmentsWidget()->items(), want.segments) << want.title.toStdString();
        }
    }
    saveScreenshot(*window_, QStringLiteral("dictionary-menu"));

    // By keyboard: down to the width row, five steps right: "2000" is 1700.
    ASSERT_TRUE(moveFocusTo(menuRow(menu, QStringLiteral("新建卡片宽度设置")), Qt::Key_Down));
    for (int step = 0; step < 5; ++step)
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Right);
    EXPECT_EQ(defaults.integer(QStringLiteral("SPECIAL_CARDWIDTH")), 1700);
    EXPECT_EQ(send<double>(*reader, "cardWidth"), 1700.0);
    closeMenu(menu);
    EXPECT_FALSE(host::ui::openPopover(window_.get()));
    send<void>(*reader, "setCardWidth:", 900.0);
    window_->hide();
    window_->show();
    QApplication::setActiveWindow(window_.get());  // the offscreen platform does not activate it again
    EXPECT_EQ(send<double>(*reader, "cardWidth"), 1700.0) << "shown again, the board gives the stored width";

    menu = openMenu();
    EXPECT_EQ(menuRow(menu, QStringLiteral("新建卡片宽度设置"))->segmentIndex(), 5);
    // Space flips the focused switch; a sender that is no switch changes nothing.
    host::ui::CommandRowWidget* copying = menuRow(menu, QStringLiteral("选择复制"));
    ASSERT_TRUE(moveFocusTo(copying, Qt::Key_Tab));
    QTest::keyClick(copying, Qt::Key_Space);
    EXPECT_TRUE(send<bool>(*reader, "selectingCopy"));
    send<void>(board(), "selectingCopy:", dictButton());
    EXPECT_TRUE(send<bool>(*reader, "selectingCopy"));
    closeMenu(menu);

    // "打开字典" off, by a click on its switch, hides the open popup at once.
    ASSERT_TRUE(session_.lookUp(host::ui::wordsOnPage(sampleBook, 1, 5).front().area));
    menu = openMenu();
    click(menuRow(menu, QStringLiteral("打开字典"))->switchWidget());
    EXPECT_TRUE(send<bool>(*send<ObjectRef>(*reader, "enDictContainer"), "isHidden"));
    EXPECT_FALSE(send<bool>(*reader, "enableDict"));
    EXPECT_FALSE(send<bool>(*dictButton(), "isSelected"));
    closeMenu(menu);

    // Without collins files, choosing collins leaves the engine building its
    // cache for good; each round chooses the dictionary the engine does not
    // have, until a refusal comes with collins stored.
    QFile::remove(home_.dictPath(QStringLiteral("collins.json")));
    QFile::remove(home_.dictPath(QStringLiteral("collins_html.json")));
    const QString dictKey = QStringLiteral("SPECIAL_SELECTED_DICT");
    bool refused = false;
    for (int round = 0; round < 200 && !refused; ++round) {
        menu = openMenu();
        host::ui::CommandRowWidget* dictionaries = menuRow(menu, QStringLiteral("选择词典"));
        const qint64 before = defaults.integer(dictKey);
        const qsizetype refusals = board().headsUps.count(cachingMessage);
        host::ui::SegmentsWidget* segments = dictionaries->segmentsWidget();
        click(segments, segments->segmentRect(1 - dictionaries->segmentIndex()).center());
        refused = board().headsUps.count(cachingMessage) > refusals && before == 1;
        EXPECT_TRUE(board().headsUps.count(cachingMessage) == refusals || defaults.integer(dictKey) == before)
            << "a refused choice is not stored";
        menu = host::ui::openPopover(window_.get());
        ASSERT_TRUE(menu);
        if (refused) {
            EXPECT_EQ(menuRow(menu, QStringLiteral("选择词典"))->segmentIndex(), 1) << "the open menu shows collins again";
        }
        closeMenu(menu);
    }
    ASSERT_TRUE(refused);
    EXPECT_EQ(window_->hud().currentText(), cachingMessage);
    EXPECT_EQ(defaults.integer(dictKey), 1);
}

}  // namespace
}  // namespace lexicorn
