// The notebook panel over a real SQLite notebook, and the small panes: the
// heads-up overlay, dialog alerts and the research pane.

#include "host/kit/kit_table_view.h"
#include "host/ui/dialog_alerts.h"
#include "host/ui/fonts.h"
#include "host/ui/hud_overlay.h"
#include "host/ui/note_card_view.h"
#include "host/ui/notebook_panel.h"
#include "host/ui/research_pane.h"

#include "foundation/alerts.h"
#include "screenshot.h"
#include "support/temp_home.h"

#include <QDesktopServices>
#include <QJsonObject>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTextEdit>
#include <QUrlQuery>

#include <gtest/gtest.h>

namespace lexicorn::host::ui {
namespace {

using runtime::send;

MbBookNote note(const QString& id, const QString& title, const QString& excerpt, QJsonArray comments, int page = 1)
{
    MbBookNote n;
    n.setNoteid(id);
    n.setNotetitle(title);
    n.setHighlight_text(excerpt);
    n.setNotes(comments);
    n.setBookMd5(QStringLiteral("book1"));
    n.setPageNo(page);
    return n;
}

class panelNotebookTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        installFontFallbacks();
        notebook = std::make_shared<Notebook>(path());
        ASSERT_TRUE(notebook->open());
        std::vector<MbBookNote> notes{
            note("n1", "apple", "An apple a day.", {QJsonObject{{"type", "TextNote"}, {"text", "first comment"}}}, 3),
            note("n2", "词典 🔚;", "中文摘录 📇", {QJsonObject{{"type", "HtmlNote"}, {"text", "html text"}, {"html", "<b>html text</b>"}},
                                              QJsonObject{{"type", "LinkNote"}, {"noteid", "n1"}}}),
            note("n3", "", "only excerpt", {}),
            note("n4", "other book", "", {})};
        notes.back().setBookMd5("book2");
        for (MbBookNote& n : notes)
            ASSERT_TRUE(notebook->add(n));
        panel.resize(420, 640);
        panel.showBook(notebook, "book1");
        panel.show();
        panel.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&panel));
    }
    QString path() const { return home.path() + "/notebook.sqlite"; }
    // The note as stored, read through a connection of its own.
    MbBookNote stored(const QString& id) const
    {
        Notebook reopened(path());
        EXPECT_TRUE(reopened.open());
        return reopened.note(id).value_or(MbBookNote());
    }
    std::shared_ptr<NoteCardObject> card(const QString& id) const
    {
        return std::dynamic_pointer_cast<NoteCardObject>(panel.cardViewFor(id));
    }
    QTextEdit* rowEdit(const QString& id, int row) const
    {
        ObjectRef cell = send<ObjectRef>(*card(id)->tableView(), "cellForRowAtIndexPath:", IndexPath{0, row});
        return static_cast<QTextEdit*>(widgetOf(send<std::vector<ObjectRef>>(*send<ObjectRef>(*cell, "contentView"), "subviews").at(0)));
    }

    testing::TempHome home;
    std::shared_ptr<Notebook> notebook;
    NotebookPanel panel;
};

TEST_F(panelNotebookTest, ShowsTheBooksNotesInOrderAndSavesEachKindOfRowEdit)
{
    const std::vector<std::pair<QString, QStringList>> shown{
        {"n1", {"apple", "An apple a day.", "first comment"}},
        {"n2", {"词典 🔚;", "中文摘录 📇", "html text", "n1"}},
        {"n3", {"only excerpt"}}};
    int lastBottom = 0;
    for (const auto& [id, rows] : shown) {
        ASSERT_TRUE(card(id)) << id.toStdString();
        QStringList texts;
        for (int r = 0; r < rows.size(); ++r)
            texts.append(rowEdit(id, r)->toPlainText());
        EXPECT_EQ(texts, rows);
        const QRect frame = card(id)->widget()->geometry();
        EXPECT_GT(frame.top(), lastBottom) << "cards follow each other in notebook order";
        EXPECT_GE(frame.height(), card(id)->tableView() ? int(static_cast<TableViewObject&>(*card(id)->tableView()).contentHeight()) : 0);
        lastBottom = frame.bottom();
    }
    EXPECT_FALSE(panel.cardViewFor("n4"));
    EXPECT_FALSE(lexicorn::test::saveScreenshot(panel, "notebook-panel").isEmpty());

    struct Case {
        QString id;
        int row;
        std::function<QString(const MbBookNote&)> field;
    };
    const std::vector<Case> cases{
        {"n1", 0, [](const MbBookNote& n) { return n.notetitle(); }},
        {"n1", 1, [](const MbBookNote& n) { return n.highlight_text(); }},
        {"n2", 2, [](const MbBookNote& n) { return n.notes().at(0).toObject().value("text").toString(); }},
    };
    QSignalSpy changed(&panel, &NotebookPanel::notesChanged);
    for (const Case& c : cases) {
        QTextEdit* edit = rowEdit(c.id, c.row);
        const QString before = edit->toPlainText();
        edit->setFocus();
        edit->moveCursor(QTextCursor::End);
        QTest::keyClicks(edit, " ok");
        panel.setFocus();
        EXPECT_EQ(c.field(stored(c.id)), before + " ok") << c.id.toStdString() << " row " << c.row;
    }
    EXPECT_EQ(changed.count(), 3);
    EXPECT_EQ(stored("n2").notes().at(1).toObject().value("noteid").toString(), "n1") << "other comments untouched";
}

TEST_F(panelNotebookTest, FrameClicksSelectAndDeleteRemovesFromTheNotebook)
{
    QSignalSpy removed(&panel, &NotebookPanel::notesRemoved);
    QSignalSpy activated(&panel, &NotebookPanel::noteActivated);
    QTest::mouseClick(card("n2")->widget(), Qt::LeftButton, {}, QPoint(30, 8));
    QTest::mouseClick(card("n1")->widget(), Qt::LeftButton, {}, QPoint(30, 8));
    QTest::mouseClick(card("n3")->widget(), Qt::LeftButton, Qt::ControlModifier, QPoint(30, 8));
    EXPECT_EQ(panel.selectedNoteIds(), (QStringList{"n1", "n3"}));
    EXPECT_TRUE(card("n1")->isSelected());
    EXPECT_FALSE(card("n2")->isSelected());

    QTest::keyClick(&panel, Qt::Key_Delete);
    ASSERT_EQ(removed.count(), 1);
    EXPECT_EQ(removed.at(0).at(0).toStringList(), (QStringList{"n1", "n3"}));
    Notebook reopened(path());
    ASSERT_TRUE(reopened.open());
    ASSERT_EQ(reopened.notesOfBook("book1").size(), 1u);
    EXPECT_EQ(reopened.notesOfBook("book1").front().noteid(), "n2");
    EXPECT_FALSE(panel.cardViewFor("n1"));
    EXPECT_TRUE(panel.selectedNoteIds().isEmpty());

    QTest::mouseDClick(card("n2")->widget(), Qt::LeftButton, {}, QPoint(30, 8));
    ASSERT_GE(activated.count(), 1);
    EXPECT_EQ(activated.last().at(0).toString(), "n2");

    panel.showBook(notebook, "no such book");
    auto* hint = panel.findChild<QLabel*>();
    ASSERT_TRUE(hint);
    EXPECT_EQ(hint->text(), NotebookPanel::emptyHint);
    EXPECT_TRUE(hint->isVisible());
}

TEST(panelHudOverlayTest, ShowsAtOnceAndHidesAfterItsTimeANewMessageReplacingTheOld)
{
    QWidget window;
    window.resize(400, 300);
    HudOverlay hud(&window);
    window.show();
    hud.showMessage("first", 30);
    hud.showMessage("已添加 📇", 0.05);
    EXPECT_TRUE(hud.isShowing());
    EXPECT_TRUE(hud.isVisible());
    EXPECT_EQ(hud.currentText(), "已添加 📇");
    EXPECT_TRUE(hud.testAttribute(Qt::WA_TransparentForMouseEvents));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !hud.isShowing(); }, 10000));
    EXPECT_FALSE(hud.isVisible());
}

TEST(panelDialogAlertsTest, CompletionRunsOnlyOnceTheBoxIsClosed)
{
    QWidget window;
    window.show();
    installDialogAlertPresenter(&window);
    int acknowledged = 0;
    presentAlert("Title", "Anki is not running", "好的", [&] { ++acknowledged; });
    auto* box = window.findChild<QMessageBox*>();
    ASSERT_TRUE(box);
    EXPECT_EQ(box->text(), "Anki is not running");
    EXPECT_EQ(acknowledged, 0);
    QPushButton* button = box->findChild<QPushButton*>();
    ASSERT_TRUE(button);
    EXPECT_EQ(button->text(), "好的");
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_EQ(acknowledged, 1);
    setAlertPresenter({});
}

class UrlCatcher : public QObject {
    Q_OBJECT
public:
    QList<QUrl> urls;
public slots:
    void open(const QUrl& url) { urls.append(url); }
};

TEST(panelResearchPaneTest, TranslateOpensTheEncodedSentenceAndCloseSaysSo)
{
    UrlCatcher catcher;
    QDesktopServices::setUrlHandler("https", &catcher, "open");
    ResearchPane pane;
    QSignalSpy closed(&pane, &ResearchPane::closed);
    const QString sentence = QStringLiteral("Fish & chips? 100% yes — \"quoted\"");
    pane.showSentence(sentence);
    EXPECT_EQ(pane.findChild<QLabel*>("sentence")->text(), sentence);
    EXPECT_EQ(pane.findChild<QLabel*>("hint")->text(), ResearchPane::copyHint);
    QTest::mouseClick(pane.findChild<QPushButton*>("translate"), Qt::LeftButton);
    QDesktopServices::unsetUrlHandler("https");
    ASSERT_EQ(catcher.urls.size(), 1);
    const QUrl url = catcher.urls.front();
    EXPECT_EQ(url.host(), "translate.google.com");
    EXPECT_EQ(QUrlQuery(url).queryItemValue("text", QUrl::FullyDecoded), sentence);
    EXPECT_EQ(QUrlQuery(url).queryItemValue("tl"), "zh-CN");
    QTest::mouseClick(pane.findChild<QWidget*>("close"), Qt::LeftButton);
    EXPECT_EQ(closed.count(), 1);
}

}  // namespace
}  // namespace lexicorn::host::ui

#include "notebook_panel_test.moc"
