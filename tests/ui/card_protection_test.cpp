// Cards edited in the reader's notebook panel with the plug-in loaded, by
// real mouse clicks and key presses: the title editors wrap a selection in
// Markdown marks; a dictionary card keeps its bold words and its format and
// is updated in a real Anki collection; with the protection off it is
// edited as plain text.

#include "reader_session.h"
#include "screenshot.h"
#include "sync_fixtures.h"

#include "host/ui/hud_overlay.h"
#include "host/ui/note_card_view.h"
#include "host/ui/notebook_panel.h"
#include "host/ui/reader_tour.h"
#include "host/ui/reader_window.h"

#include "foundation/user_defaults.h"

#include "lexicorn/render/note_format.h"

#include <QTest>
#include <QTextCursor>
#include <QTextEdit>

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using runtime::send;
using ObjectRef = std::shared_ptr<runtime::Object>;

using testing::sampleBook;
const QString breaksCard = QStringLiteral("修改将破坏字典卡片的数据结构！");

class CardProtectionTest : public testing::CardHome {
protected:
    void SetUp() override { session_.start(home_); }
    void TearDown() override { session_.stop(); }

    host::ui::NotebookPanel& panel() { return window_->notebookPanel(); }

    // A note of the open book, shown in the notebook panel.
    void addNote(const NoteRecord& record)
    {
        host::MbBookNote note(record);
        note.setBookMd5(app_.bookView->bookMd5);
        note.setPageNo(1);
        ASSERT_TRUE(app_.notebook->add(note));
        panel().reload();
    }
    host::MbBookNote stored(const QString& noteid) { return app_.notebook->note(noteid).value_or(host::MbBookNote()); }
    ObjectRef card(const QString& noteid) { return panel().cardViewFor(noteid); }
    QTextEdit* rowEdit(const QString& noteid, int row)
    {
        const auto view = std::dynamic_pointer_cast<host::ui::NoteCardObject>(card(noteid));
        const ObjectRef cell = send<ObjectRef>(*view->tableView(), "cellForRowAtIndexPath:", IndexPath{0, row});
        const auto texts = send<std::vector<ObjectRef>>(*send<ObjectRef>(*cell, "contentView"), "subviews");
        return static_cast<QTextEdit*>(host::ui::widgetOf(texts.at(0)));
    }
    // Clicks into a row and puts the caret at its end. The panel shows a
    // card once the event loop has run since it was made.
    QTextEdit* editRow(const QString& noteid, int row)
    {
        EXPECT_TRUE(QTest::qWaitFor([&] { return host::ui::widgetOf(card(noteid))->isVisible(); }));
        QTextEdit* edit = rowEdit(noteid, row);
        QTest::mouseClick(edit->viewport(), Qt::LeftButton, {}, QPoint(4, 4));
        QTest::keyClick(edit, Qt::Key_End, Qt::ControlModifier);
        return edit;
    }
    // A click on the card's header ends the edit, as it selects the card.
    void clickHeader(const QString& noteid) { QTest::mouseClick(host::ui::widgetOf(card(noteid)), Qt::LeftButton, {}, QPoint(30, 8)); }
    void appendToRow(const QString& noteid, int row, const QString& text)
    {
        QTest::keyClicks(editRow(noteid, row), text);
        clickHeader(noteid);
    }
    void selectNext(QTextEdit* edit, int letters)
    {
        for (int i = 0; i < letters; ++i)
            QTest::keyClick(edit, Qt::Key_Right, Qt::ShiftModifier);
    }

    // The plug-in loads its dictionary in the background: a drag over a word
    // opens the popup once it is there.
    void waitForTheDictionary()
    {
        ASSERT_TRUE(session_.lookUp(host::ui::wordsOnPage(sampleBook, 1, 5).front().area, 300)) << "the dictionary did not load";
        send<void>(*send<ObjectRef>(*app_.bookView, "enDictContainer"), "setHidden:", true);
    }

    testing::ReaderSession session_;
    QStringList& alerts_ = session_.alerts;
    host::HostApplication& app_ = session_.app;
    std::unique_ptr<host::ui::ReaderWindow>& window_ = session_.window;
};

// "[" with nothing selected is typed as it is.
TEST_F(CardProtectionTest, TypingAMarkOverASelectedWordOfATitleWrapsIt)
{
    addNote(testing::plainNote(QStringLiteral("one two three"), QStringLiteral("T-1")));
    QTextEdit* title = editRow(QStringLiteral("T-1"), 0);
    QTest::keyClick(title, Qt::Key_Home);
    selectNext(title, 3);
    QTest::keyClick(title, '`');
    EXPECT_EQ(title->toPlainText(), QStringLiteral("`one` two three"));
    QTest::keyClick(title, Qt::Key_Right);
    selectNext(title, 3);
    QTest::keyClick(title, '[');
    EXPECT_EQ(title->toPlainText(), QStringLiteral("`one` [two](#two) three"));
    QTest::keyClick(title, Qt::Key_Right);
    selectNext(title, 5);
    QTest::keyClick(title, '*');
    EXPECT_EQ(title->toPlainText(), QStringLiteral("`one` [two](#two) *three*"));
    QTest::keyClick(title, '[');
    EXPECT_EQ(title->toPlainText(), QStringLiteral("`one` [two](#two) *three*["));
    test::saveScreenshot(panel(), QStringLiteral("card-protection-title-editor"));
    QTest::keyClick(title, Qt::Key_Return);
    EXPECT_EQ(stored(QStringLiteral("T-1")).notetitle(), QStringLiteral("`one` [two](#two) *three*["));
}

// The card's Anki note is updated in place, never a second one; with the
// protection off the same card is edited as plain text.
TEST_F(CardProtectionTest, ADictionaryCardKeepsItsBoldWordsAndFormatAndIsUpdatedInAnki)
{
    testing::SyncPeer anki(home_);
    ASSERT_TRUE(anki.ready()) << anki.problem().toStdString();
    testing::loadSampleDictionary(1);
    ASSERT_NO_FATAL_FAILURE(waitForTheDictionary());
    send<void>(*app_.bookView, "setAutoAddToAnki:", true);

    // The card the popup makes for "took", its translation with a bold word.
    const QString id = QStringLiteral("CP-1");
    std::optional<NoteRecord> made = testing::cardFor(QStringLiteral("took"), QStringLiteral("She took the book home."), 1, 0, id);
    ASSERT_TRUE(made);
    QJsonObject translation = made->notes[0].toObject();
    translation[comment::text] = QStringLiteral("她把书<b>带</b>回家了。");
    made->notes[0] = translation;
    addNote(*made);

    // Shown and edited as bold; stored with the tag.
    QTextEdit* row = rowEdit(id, 2);
    EXPECT_EQ(row->toPlainText(), QStringLiteral("她把书带回家了。"));
    QTextCursor inBold(row->document());
    inBold.setPosition(4);
    EXPECT_TRUE(inBold.charFormat().fontWeight() >= QFont::Bold);
    appendToRow(id, 2, QStringLiteral(" ok"));
    EXPECT_EQ(stored(id).notes()[0].toObject().value(comment::text).toString(), QStringLiteral("她把书<b>带</b>回家了。 ok"));
    const CardResult<ParsedCard> parsed = parseDictNote(stored(id));
    ASSERT_TRUE(parsed) << parsed.error().message().toStdString();
    EXPECT_EQ(parsed->sentenceCN, QStringLiteral("她把书<b>带</b>回家了。 ok"));

    // Anki gets the card; a second edit updates that note.
    auto extraInfo = [&] {
        const QJsonArray found = anki.notesHolding(id);
        return found.size() == 1 ? anki.fieldsOf(found[0]).value(QStringLiteral("EXTRAINFO")).toString() : QString();
    };
    ASSERT_TRUE(testing::runEventsUntil([&] { return extraInfo().contains(QStringLiteral(" ok")); }, std::chrono::seconds(120)))
        << "heads-up: " << window_->hud().currentText().toStdString();
    EXPECT_TRUE(extraInfo().contains(QStringLiteral("<b>带</b>"))) << extraInfo().toStdString();
    const qsizetype notesInAnki = anki.noteCount();
    appendToRow(id, 2, QStringLiteral(" again"));
    ASSERT_TRUE(testing::runEventsUntil([&] { return extraInfo().contains(QStringLiteral(" again")); }, std::chrono::seconds(120)));
    EXPECT_EQ(anki.noteCount(), notesInAnki);
    test::saveScreenshot(panel(), QStringLiteral("card-protection-edited"));

    // A title that no longer reads as a card, and a definition line emptied,
    // are refused with a warning.
    const host::MbBookNote before = stored(id);
    QTextEdit* title = editRow(id, 0);
    QTest::keyClick(title, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(title, QStringLiteral("took"));
    QTest::keyClick(title, Qt::Key_Return);
    QTextEdit* definition = editRow(id, 3);
    QTest::keyClick(definition, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(definition, Qt::Key_Delete);
    clickHeader(id);
    ASSERT_TRUE(testing::runEventsUntil([&] { return alerts_.count(breaksCard) == 2; }, std::chrono::seconds(10))) << alerts_.join('\n').toStdString();
    EXPECT_EQ(stored(id).notetitle(), before.notetitle());
    EXPECT_EQ(stored(id).notes(), before.notes());

    // The protection off: the host's own row heights, and the tags are text.
    const ObjectRef view = card(id);
    auto rowHeights = [&] {
        const ObjectRef table = send<ObjectRef>(*view, "tableView");
        std::vector<double> heights;
        for (int r = 0; r < 4; ++r)
            heights.push_back(send<double>(*view, "tableView:heightForRowAtIndexPath:", table, IndexPath{0, r}));
        return heights;
    };
    const std::vector<double> compact = rowHeights();
    send<void>(*app_.delegate, "setShieldDictCard:", false);
    const std::vector<double> roomy = rowHeights();
    EXPECT_EQ(roomy[0] - compact[0], 15);
    for (int r = 1; r < 4; ++r)
        EXPECT_EQ(roomy[r] - compact[r], 20) << "row " << r;
    panel().reload();
    EXPECT_EQ(rowEdit(id, 2)->toPlainText(), QStringLiteral("她把书<b>带</b>回家了。 ok again"));
    appendToRow(id, 2, QStringLiteral("!"));
    EXPECT_EQ(stored(id).notes()[0].toObject().value(comment::text).toString(), QStringLiteral("她把书<b>带</b>回家了。 ok again!"));
}

}  // namespace
}  // namespace lexicorn
