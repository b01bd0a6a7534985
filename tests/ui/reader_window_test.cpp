// The whole reader in a window, offscreen, driven by real mouse and key
// events: with the plug-in a drag over a word opens the popup and a click on
// a sense makes a card; without it the reader still selects, highlights and
// copies.

#include "screenshot.h"
#include "support/temp_home.h"

#include "host/ui/hud_overlay.h"
#include "host/ui/reader_tour.h"
#include "host/ui/reader_window.h"
#include "host/ui/view_kit.h"

#include "foundation/alerts.h"
#include "foundation/index_path.h"
#include "foundation/user_defaults.h"

#include "lexicorn/render/styled_text.h"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QTest>

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using runtime::send;
using test::saveScreenshot;
using ObjectRef = std::shared_ptr<runtime::Object>;
using StyledSections = std::vector<std::vector<StyledText>>;

const QString sampleBook = QStringLiteral(LEXICORN_SAMPLE_DIR "/books/sample-book.pdf");

class ReaderWindowTest : public ::testing::Test {
protected:
    void start(bool withPlugin)
    {
        QDir().mkpath(home_.path() + QStringLiteral("/Dict"));
        for (const QString& name : QDir(QStringLiteral(LEXICORN_SAMPLE_DIR "/Dict")).entryList(QDir::Files))
            QFile::copy(QStringLiteral(LEXICORN_SAMPLE_DIR "/Dict/") + name, home_.dictPath(name));
        // No translation engine: the tests never reach the network.
        UserDefaults::standard().set(QStringLiteral("SPECIAL_ENGINE"), 5);
        setAlertPresenter([](const QString&, const QString&, const QString&, std::function<void()> done) {
            if (done)
                done();
        });
        app_ = host::ui::launchReader(withPlugin ? QStringLiteral(LEXICORN_PLUGIN_PATH) : QString());
        window_ = std::make_unique<host::ui::ReaderWindow>(app_);
        window_->resize(1400, 900);
        window_->show();
        ASSERT_TRUE(window_->openFile(sampleBook));
        if (withPlugin)
            send<void>(*app_.bookView, "setEnableDict:", true);
    }
    void TearDown() override
    {
        window_.reset();
        setAlertPresenter({});
    }

    QWidget& viewport() { return *window_->canvas().viewport(); }
    QPointF onScreen(const QPointF& pagePoint) { return window_->pageToViewport(1, pagePoint); }

    // Drags across a page area with real mouse events.
    void dragOver(const QRectF& area)
    {
        const QPoint from = onScreen(QPointF(area.left() + 1, area.center().y())).toPoint();
        const QPoint to = onScreen(QPointF(area.right() - 1, area.center().y())).toPoint();
        QTest::mousePress(&viewport(), Qt::LeftButton, {}, from);
        for (int step = 1; step <= 4; ++step)
            QTest::mouseMove(&viewport(), from + (to - from) * step / 4);
        QTest::mouseRelease(&viewport(), Qt::LeftButton, {}, to);
    }

    ObjectRef popupTable()
    {
        const ObjectRef container = send<ObjectRef>(*app_.bookView, "enDictContainer");
        if (!container || send<bool>(*container, "isHidden"))
            return nullptr;
        return send<std::vector<ObjectRef>>(*container, "subviews").front();
    }

    // Selects each word until one opens the popup with entries; the
    // dictionary loads in the background, so the first tries may find it not ready.
    host::ui::PageWord lookUpSomeWord()
    {
        for (const host::ui::PageWord& word : host::ui::wordsOnPage(sampleBook, 1, 5)) {
            for (int attempt = 0; attempt < 100; ++attempt) {
                dragOver(word.area);
                QTest::qWait(20);
                if (popupTable())
                    break;
                QTest::qWait(100);
            }
            if (popupTable() && send<int>(*popupTable(), "numberOfSections") > 1)
                return word;
        }
        return {};
    }

    testing::TempHome home_;
    host::HostApplication app_;
    std::unique_ptr<host::ui::ReaderWindow> window_;
};

QStringList lineTexts(const StyledSections& sections)
{
    QStringList texts;
    for (const auto& section : sections)
        for (const StyledText& line : section)
            texts << line.string();
    return texts;
}

// The rows the command line renders for the same word and sentence.
QStringList commandLineRows(const QString& home, const QString& word, const QString& sentence)
{
    QProcess process;
    process.start(QStringLiteral(LEXICORN_CLI), {QStringLiteral("rows"), QStringLiteral("--home"), home, QStringLiteral("--sentence"),
                                                 sentence, QStringLiteral("--json"), word});
    process.waitForFinished(30000);
    QStringList texts;
    for (const QJsonValue& section : QJsonDocument::fromJson(process.readAllStandardOutput()).array())
        for (const QJsonValue& line : section.toArray())
            texts << line.toObject().value(QStringLiteral("text")).toString();
    return texts;
}

TEST_F(ReaderWindowTest, ADragOverAWordShowsItsRowsAndAClickOnASenseMakesACard)
{
    start(true);
    const host::ui::PageWord word = lookUpSomeWord();
    ASSERT_FALSE(word.text.isEmpty()) << "no word of page 1 opened the popup";
    const ObjectRef table = popupTable();
    const StyledSections texts = send<StyledSections>(*table, "texts");
    const QString sentence = texts[0][1].string();
    EXPECT_EQ(lineTexts(texts), commandLineRows(home_.path(), send<QString>(*app_.bookView, "selectedText"), sentence));
    saveScreenshot(*window_, QStringLiteral("reader-popup"));

    // Section 0 row 1 (the translation) changes nothing; two taps on row 0
    // leave correcting mode as it was.
    send<void>(*table, "selectRowAtIndexPath:", IndexPath{0, 1});
    EXPECT_TRUE(popupTable());
    send<void>(*table, "selectRowAtIndexPath:", IndexPath{0, 0});
    EXPECT_TRUE(send<bool>(*app_.bookView, "isCorrecting"));
    send<void>(*table, "selectRowAtIndexPath:", IndexPath{0, 0});
    EXPECT_FALSE(send<bool>(*app_.bookView, "isCorrecting"));

    // A real click on the first sense.
    const ObjectRef cell = send<ObjectRef>(*table, "cellForRowAtIndexPath:", IndexPath{1, 0});
    QWidget* sense = host::ui::widgetOf(*send<ObjectRef>(*cell, "textView"));
    QTest::mouseClick(sense, Qt::LeftButton, {}, sense->rect().center());
    QTest::qWait(50);
    EXPECT_FALSE(popupTable()) << "the popup closes when a card is made";
    const std::vector<host::MbBookNote> notes = app_.notebook->notes();
    ASSERT_EQ(notes.size(), 1u);
    const host::MbBookNote& card = notes.front();
    EXPECT_TRUE(card.notetitle().startsWith(texts[1][0].string()) || card.notetitle().contains(QStringLiteral("; ")))
        << card.notetitle().toStdString();
    EXPECT_TRUE(card.notetitle().endsWith(QStringLiteral("📇1-0-1🔚;"))) << card.notetitle().toStdString();
    ASSERT_EQ(card.notes().size(), 2);
    EXPECT_EQ(card.notes()[1].toObject().value(QStringLiteral("group")).toString(), QStringLiteral("exts"));
    EXPECT_EQ(card.notes()[1].toObject().value(QStringLiteral("text")).toString(), texts[1][1].string());
    EXPECT_FALSE(card.highlightRects().empty());
    EXPECT_EQ(card.highlight_text(), QString(sentence).simplified());
    QTest::qWait(50);
    saveScreenshot(*window_, QStringLiteral("reader-card"));
}

TEST_F(ReaderWindowTest, SixWordsHideThePopupAndClearTheSelectedText)
{
    start(true);
    ASSERT_FALSE(lookUpSomeWord().text.isEmpty());
    // A whole line of body text: six words or more.
    const std::vector<host::ui::PageWord> words = host::ui::wordsOnPage(sampleBook, 1, 1);
    QRectF line;
    for (const host::ui::PageWord& word : words) {
        if (!line.isEmpty() && word.area.top() > line.bottom())
            break;
        line = line.isEmpty() ? word.area : line.united(word.area);
    }
    const auto body = std::find_if(words.begin(), words.end(), [](const auto& w) { return w.text == QStringLiteral("Every"); });
    ASSERT_NE(body, words.end());
    dragOver(QRectF(body->area.left(), body->area.top(), 700, body->area.height()));
    EXPECT_FALSE(popupTable());
    EXPECT_EQ(send<QString>(*app_.bookView, "selectedText"), QString());
}

TEST_F(ReaderWindowTest, WithoutThePluginTheReaderScrollsSelectsHighlightsAndCopies)
{
    start(false);
    saveScreenshot(*window_, QStringLiteral("reader-without-plugin"));
    const int firstPage = window_->canvas().currentPage();
    QTest::keyClick(&viewport(), Qt::Key_End);
    EXPECT_GT(window_->canvas().currentPage(), firstPage);
    QTest::keyClick(&viewport(), Qt::Key_Home);
    EXPECT_EQ(window_->canvas().currentPage(), 0);

    const host::ui::PageWord word = host::ui::wordsOnPage(sampleBook, 1, 5).front();
    dragOver(word.area);
    EXPECT_EQ(send<QString>(*app_.bookView, "selectionText"), word.text);
    window_->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window_.get()));
    QTest::keySequence(window_.get(), QKeySequence::Copy);
    EXPECT_EQ(QApplication::clipboard()->text(), word.text);

    send<void>(*app_.bookView, "highlight:", std::string("test"));
    const std::vector<host::MbBookNote> notes = app_.notebook->notes();
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes.front().highlight_text(), word.text);
    EXPECT_EQ(notes.front().pageNo(), 1);
}

}  // namespace
}  // namespace lexicorn
