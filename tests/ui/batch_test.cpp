// The study board's Anki button over a whole notebook, and the middle
// button panning the page: the reader with the plug-in, offscreen, driven by
// real clicks and drags, the cards going to a real Anki collection.

#include "reader_session.h"
#include "screenshot.h"
#include "sync_fixtures.h"

#include "host/kit/view_kit.h"
#include "host/ui/hud_overlay.h"
#include "host/ui/note_card_view.h"
#include "host/ui/notebook_panel.h"
#include "host/ui/reader_window.h"
#include "host/ui/task_progress.h"

#include "foundation/user_defaults.h"

#include "lexicorn/render/anki_fields.h"

#include <QScrollBar>
#include <QTest>

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using namespace std::chrono_literals;
using runtime::send;
using ObjectRef = std::shared_ptr<runtime::Object>;

using testing::sampleBook;

class ReaderWithPlugin : public testing::CardHome {
protected:
    void start() { session_.start(home_); }
    void TearDown() override { session_.stop(); }

    // Adds a note of the open book to the notebook.
    void addNote(host::MbBookNote note)
    {
        note.setBookMd5(app_.bookView->bookMd5);
        note.setPageNo(1);
        ASSERT_TRUE(app_.notebook->add(note)) << app_.notebook->errorString().toStdString();
    }

    void clickButton(const ObjectRef& button)
    {
        QWidget* widget = host::ui::widgetOf(button);
        QTest::mouseClick(widget, Qt::LeftButton, {}, widget->rect().center());
    }

    testing::ReaderSession session_;
    QStringList& alerts_ = session_.alerts;
    host::HostApplication& app_ = session_.app;
    std::unique_ptr<host::ui::ReaderWindow>& window_ = session_.window;
};

struct Report {
    int done;
    int total;
    bool batchRunning;
    bool shown;
};

// The whole path from the button to Anki; what a batch does when Anki fails
// midway is checked in tests/sync.
TEST_F(ReaderWithPlugin, TheAnkiButtonSyncsTheNotebookShowingProgress)
{
    // Many copies of one card: Anki must take notes with the same first field.
    UserDefaults::standard().set(ankiset::duplicate, QStringLiteral("YES"));
    testing::SyncPeer anki(home_);
    ASSERT_TRUE(anki.ready()) << anki.problem().toStdString();
    start();
    // The cards are made with collins, the plug-in's choice at start-up.
    testing::loadSampleDictionary(1);
    const std::optional<NoteRecord> took =
        testing::cardFor(QStringLiteral("took"), QStringLiteral("She took the book home."), 1, 0, {});
    ASSERT_TRUE(took);
    addNote(host::MbBookNote(testing::plainNote(QStringLiteral("A thought"), QStringLiteral("PLAIN-1"))));
    addNote(host::MbBookNote(testing::plainNote(QStringLiteral("Another"), QStringLiteral("PLAIN-2"))));
    for (int number = 0; number < 200; ++number) {
        NoteRecord card = *took;
        card.noteid = QStringLiteral("CARD-%1").arg(number, 3, 10, QChar(u'0'));
        addNote(host::MbBookNote(card));
    }
    window_->notebookPanel().reload();

    const ObjectRef board = window_->studyboard();
    const ObjectRef button = send<ObjectRef>(*board, "updateToAnki");
    ASSERT_TRUE(button) << "no Anki button on the study board";
    host::ui::TaskProgress& progress = window_->taskProgress();
    QList<Report> reports;
    QObject::connect(&progress, &host::ui::TaskProgress::reported, [&](int done, int total) {
        reports.append({done, total, send<bool>(*board, "isUpdating"), progress.isVisible()});
        if (done == 100)
            test::saveScreenshot(*window_, QStringLiteral("batch-in-progress"));
    });

    // The plug-in loads its dictionary in the background; until then the button says so.
    const QString notLoaded = QStringLiteral("字典初始化未完成，请稍后重试！");
    for (int tries = 0; tries < 300; ++tries) {
        clickButton(button);
        if (window_->hud().currentText() != notLoaded)
            break;
        QTest::qWait(50);
    }
    ASSERT_EQ(window_->hud().currentText(), QStringLiteral("总数：200，开始批量同步..."));
    // The click came back while the batch runs; a second one is turned away.
    clickButton(button);
    EXPECT_EQ(window_->hud().currentText(), QStringLiteral("批量更新未完成，请稍后重试！"));
    ASSERT_TRUE(testing::runEventsUntil([&] { return !alerts_.isEmpty() && !progress.isVisible(); }, 5min));
    EXPECT_EQ(alerts_, QStringList{QStringLiteral("👍 同步完成。总数: 200, 有效数: 200。")});
    EXPECT_EQ(anki.noteCount(), 200);
    ASSERT_EQ(reports.size(), 10);
    for (int at = 0; at < reports.size(); ++at) {
        SCOPED_TRACE(at);
        EXPECT_EQ(reports[at].done, 20 * at);
        EXPECT_EQ(reports[at].total, 200);
        EXPECT_TRUE(reports[at].batchRunning && reports[at].shown) << "each report is shown while the batch runs";
    }

    // A selection in the notebook is what the board works on, plain notes
    // included, in the order chosen.
    host::ui::NotebookPanel& panel = window_->notebookPanel();
    for (const char* noteid : {"CARD-007", "PLAIN-2"}) {
        QWidget* card = host::ui::widgetOf(panel.cardViewFor(QString::fromLatin1(noteid)));
        QTest::mouseClick(card, Qt::LeftButton, Qt::ControlModifier, QPoint(30, 8));
    }
    QStringList selected;
    for (const ObjectRef& note : send<std::vector<ObjectRef>>(*board, "selectionNotes"))
        selected << send<QString>(*note, "noteid");
    EXPECT_EQ(selected, (QStringList{QStringLiteral("CARD-007"), QStringLiteral("PLAIN-2")}));
    EXPECT_EQ(send<QString>(*board, "currentBookTitle"), QStringLiteral("sample-book"));
}

// The plug-in's monitor makes a middle drag a left drag with space held, so
// the canvas pans instead of selecting.
TEST_F(ReaderWithPlugin, TheMiddleButtonPansThePageOnlyWithMouse3Control)
{
    UserDefaults::standard().set(QStringLiteral("SPECIAL_ENABLEMOUSE3"), true);
    start();
    QWidget& viewport = *window_->canvas().viewport();
    QScrollBar& scroll = *window_->canvas().verticalScrollBar();
    const int top = scroll.value();
    const QPoint from = viewport.rect().center();
    const auto middleDrag = [&] {
        QTest::mousePress(&viewport, Qt::MiddleButton, {}, from);
        for (int step = 1; step <= 4; ++step)
            QTest::mouseMove(&viewport, from - QPoint(0, 50 * step));
        QTest::mouseRelease(&viewport, Qt::MiddleButton, {}, from - QPoint(0, 200));
    };

    // On at start-up, from the stored setting: the page follows the pointer up.
    middleDrag();
    EXPECT_EQ(scroll.value(), top + 200);
    EXPECT_EQ(send<QString>(*app_.bookView, "selectionText"), QString()) << "panning selects nothing";
    EXPECT_FALSE(app_.delegate->spacePressed) << "space is let go with the button";

    send<void>(*app_.delegate, "setEnableMouse3:", false);
    middleDrag();
    EXPECT_EQ(scroll.value(), top + 200);
    EXPECT_EQ(send<QString>(*app_.bookView, "selectionText"), QString());
}

}  // namespace
}  // namespace lexicorn
