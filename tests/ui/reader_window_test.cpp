// The whole reader in a window, offscreen, driven by real mouse and key
// events: with the plug-in a drag over a word opens the popup and a click on
// a sense makes a card (sent on to a real Anki collection); without it the
// reader still selects, highlights and copies.

#include "card_fixtures.h"
#include "raw_pdf.h"
#include "reader_session.h"
#include "screenshot.h"
#include "support/cli_run.h"
#include "support/server_process.h"
#include "support/temp_home.h"

#include "host/app/scan_reader.h"
#include "host/kit/view_kit.h"
#include "host/ui/hud_overlay.h"
#include "host/ui/import_dialog.h"
#include "host/ui/reader_tour.h"
#include "host/ui/reader_window.h"

#include "foundation/index_path.h"
#include "foundation/user_defaults.h"

#include "host/pdf/pdf_objc_api.h"
#include "lexicorn/dictionary/records.h"
#include "lexicorn/reader/sentences/hook_pdf_page_text_tool.h"
#include "lexicorn/render/anki_fields.h"
#include "lexicorn/render/note_format.h"
#include "lexicorn/render/styled_text.h"
#include "lexicorn/services/voice_endpoint.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLabel>
#include <QMessageBox>
#include <QRegularExpression>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>

#include "support/typeset.h"

namespace lexicorn {
namespace {

using runtime::send;
using test::saveScreenshot;
using ObjectRef = std::shared_ptr<runtime::Object>;
using StyledSections = std::vector<std::vector<StyledText>>;

using testing::sampleBook;

class ReaderWindowTest : public ::testing::Test {
protected:
    void start(bool withPlugin) { session_.start(home_, {.plugin = withPlugin}); }
    void TearDown() override { session_.stop(); }

    QWidget& viewport() { return *window_->canvas().viewport(); }
    QPointF onScreen(const QPointF& pagePoint) { return window_->pageToViewport(1, pagePoint); }
    void dragOver(const QRectF& area) { session_.dragOver(area); }
    ObjectRef popupTable() { return session_.popupTable(); }
    bool lookUp(const QRectF& area) { return session_.lookUp(area); }

    // Selects each word until one opens the popup with entries.
    host::ui::PageWord lookUpSomeWord()
    {
        for (const host::ui::PageWord& word : host::ui::wordsOnPage(sampleBook, 1, 5)) {
            if (lookUp(word.area) && send<int>(*popupTable(), "numberOfSections") > 1)
                return word;
        }
        return {};
    }

    // Where the user sees the popup and a page point, in window coordinates.
    QRectF popupInWindow()
    {
        QWidget* container = host::ui::widgetOf(send<ObjectRef>(*app_.bookView, "enDictContainer"));
        return QRectF(container->mapTo(&window_->boardView(), QPoint(0, 0)), QSizeF(container->size()));
    }
    QPointF inWindow(const QPointF& pagePoint) { return window_->viewportToWindow(onScreen(pagePoint)); }

    // A real click on the first sense of the popup.
    void clickFirstSense(const ObjectRef& table)
    {
        const ObjectRef cell = send<ObjectRef>(*table, "cellForRowAtIndexPath:", IndexPath{1, 0});
        ASSERT_TRUE(cell);
        QWidget* sense = host::ui::widgetOf(*send<ObjectRef>(*cell, "textView"));
        QTest::mouseClick(sense, Qt::LeftButton, {}, sense->rect().center());
    }

    testing::TempHome home_;
    testing::ReaderSession session_;
    host::HostApplication& app_ = session_.app;
    std::unique_ptr<host::ui::ReaderWindow>& window_ = session_.window;
};

// Writes the file and returns its path.
QString writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    file.write(bytes);
    return path;
}

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
    const testing::CliRun run = testing::runLexicorn({QStringLiteral("rows"), QStringLiteral("--home"), home,
                                                      QStringLiteral("--sentence"), sentence, QStringLiteral("--json"), word});
    QStringList texts;
    for (const QJsonValue& section : QJsonDocument::fromJson(run.out.toUtf8()).array())
        for (const QJsonValue& line : section.toArray())
            texts << line.toObject().value(QStringLiteral("text")).toString();
    return texts;
}

// The popup shows the command line's rows; a click on a sense makes a card
// that reads back as that sense and, with "autoAddToAnki", reaches Anki.
TEST_F(ReaderWindowTest, ADragOverAWordShowsItsRowsAndAClickOnASenseMakesACardSentToAnki)
{
    // The collection stores its address where the plug-in's Anki client reads it.
    testing::AnkiCollection anki(home_);
    ASSERT_TRUE(anki.ready()) << anki.problem().toStdString();
    // The panel's Anki settings; spoken audio from the offline voice, not the network.
    UserDefaults& defaults = UserDefaults::standard();
    defaults.set(ankiset::deckName, QStringLiteral("Default"));
    defaults.set(ankiset::typeName, QStringLiteral("Lexicorn card"));
    for (const QString& item : testing::contentItems)
        defaults.set(QStringLiteral("ANKISET_") + item, item);
    defaults.set(keys::voiceHost, QStringLiteral("http://127.0.0.1:%1").arg(testing::closedPort()));

    start(true);
    send<void>(*app_.bookView, "setAutoAddToAnki:", true);
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
    const DictDataPtr lookup = send<DictDataPtr>(*table, "dictData");
    clickFirstSense(table);
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

    // The note reads back as the sense clicked.
    const CardResult<ParsedCard> parsed = parseDictNote(card);
    ASSERT_TRUE(parsed) << parsed.error().message().toStdString();
    const EnWord& entry = *lookup->enWords().at(0);
    EXPECT_EQ(parsed->word, lookup->word());
    EXPECT_EQ(parsed->headword, entry.title);
    EXPECT_EQ(parsed->section, 1);
    EXPECT_EQ(parsed->item, 0);
    EXPECT_EQ(parsed->sense->def_en, entry.defs.at(0)->def_en);
    EXPECT_EQ(parsed->sense->def_cn, entry.defs.at(0)->def_cn);
    QTest::qWait(50);
    saveScreenshot(*window_, QStringLiteral("reader-card"));

    // The card goes to Anki in the background; the collection gets it.
    EXPECT_TRUE(QTest::qWaitFor([&] { return !anki.notesHolding(lookup->word()).isEmpty(); }, 60000)) << "heads-up: " << window_->hud().currentText().toStdString() << "\n" << anki.problem().toStdString();
}

// A card (note, size, title, body) is one transaction and one change naming
// each part once; opening the book read its file once.
TEST_F(ReaderWindowTest, ACardIsOneTransactionAndOneChangeAndOpeningReadsTheBookOnce)
{
    const int loadsBefore = host::PdfObjCAPI::filesLoaded();
    start(true);
    const int loadsOnOpening = host::PdfObjCAPI::filesLoaded() - loadsBefore;
    const host::ui::PageWord word = lookUpSomeWord();
    ASSERT_FALSE(word.text.isEmpty()) << "no word of page 1 opened the popup";
    ASSERT_TRUE(app_.bookView->book);
    host::BookDocument& book = *app_.bookView->book;

    std::vector<host::BookDocument::Changes> told;
    QObject::connect(&book, &host::BookDocument::changed, &book,
                     [&told](host::BookDocument::Changes changes) { told.push_back(changes); });
    const auto toldOf = [&told](host::BookDocument::Change change) {
        return int(std::count_if(told.begin(), told.end(), [change](auto changes) { return changes.testFlag(change); }));
    };
    const std::uint64_t commitsBefore = app_.notebook->committedTransactions();

    clickFirstSense(popupTable());
    QTest::qWait(50);

    const struct {
        const char* what;
        int count;
        int expected;
    } cases[] = {
        {"PDF files read on opening the book", loadsOnOpening, 1},
        {"notes made by the click", int(app_.notebook->notes().size()), 1},
        {"notebook transactions of the click", int(app_.notebook->committedTransactions() - commitsBefore), 1},
        {"changes told to the views", int(told.size()), 1},
        {"selection changes", toldOf(host::BookDocument::Selection), 1},
        {"highlight changes", toldOf(host::BookDocument::Highlights), 1},
        {"note changes", toldOf(host::BookDocument::Notes), 1},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.count, c.expected) << c.what;
    // The one change showed the card: its highlight is on the page.
    EXPECT_FALSE(window_->canvas().document()->highlights().empty());
}

// The popup moves to the half of the window away from the selection; in
// correcting mode a selection replaces only the quote sentence. With the
// dictionary file gone, opening the book tells where the file belongs.
TEST_F(ReaderWindowTest, ThePopupKeepsClearOfTheSelectionAndCorrectingReplacesOnlyTheSentence)
{
    start(true);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window_.get()));
    QTest::qWait(50);
    const double windowHeight = window_->boardView().height();
    // Words shown whole in the window's lower half, a line clear of its middle.
    const QRectF visible(window_->viewportToWindow(QPointF(0, 0)), QSizeF(viewport().size()));
    std::vector<host::ui::PageWord> lower;
    for (const host::ui::PageWord& word : host::ui::wordsOnPage(sampleBook, 1, 4)) {
        const QRectF area = QRectF(inWindow(word.area.topLeft()), inWindow(word.area.bottomRight())).normalized();
        if (visible.contains(area) && area.top() > windowHeight * 0.5 + area.height())
            lower.push_back(word);
    }
    ASSERT_FALSE(lower.empty()) << "page 1 shows no word in the window's lower half";
    // Two other words side by side, for the correcting drag.
    const auto pair = std::adjacent_find(lower.begin() + 1, lower.end(), [](const auto& left, const auto& right) {
        return qAbs(left.area.center().y() - right.area.center().y()) < 1;
    });
    ASSERT_NE(pair, lower.end());

    // Lower half: the popup 40 points from the window's top, above the word.
    ASSERT_TRUE(lookUp(lower.front().area));
    const QPointF lowerWord = inWindow(lower.front().area.center());
    EXPECT_EQ(popupInWindow().top(), 40);
    EXPECT_LT(popupInWindow().bottom(), lowerWord.y());

    // Upper half: 40 points above the window's bottom, below the word.
    const host::ui::PageWord word = lookUpSomeWord();
    const QPointF upperWord = inWindow(word.area.center());
    ASSERT_LT(upperWord.y(), windowHeight * 0.5) << word.text.toStdString();
    EXPECT_EQ(popupInWindow().bottom(), windowHeight - 40);
    EXPECT_GT(popupInWindow().top(), upperWord.y());
    saveScreenshot(*window_, QStringLiteral("reader-popup-below"));

    // Correcting: a drag over other words of the page becomes the quote
    // sentence; the word and its entries stay.
    const ObjectRef table = popupTable();
    const StyledSections before = send<StyledSections>(*table, "texts");
    const QString lookedUp = send<DictDataPtr>(*table, "dictData")->word();
    send<void>(*table, "selectRowAtIndexPath:", IndexPath{0, 0});
    ASSERT_TRUE(send<bool>(*app_.bookView, "isCorrecting"));
    dragOver(pair->area.united(std::next(pair)->area));
    QTest::qWait(20);
    const QString corrected = send<QString>(*app_.bookView, "selectedText");
    EXPECT_TRUE(corrected.contains(pair->text) && corrected.contains(std::next(pair)->text)) << corrected.toStdString();
    ASSERT_TRUE(popupTable());
    EXPECT_EQ(popupInWindow().top(), 40) << "the popup moves away from the new selection";
    const StyledSections after = send<StyledSections>(*table, "texts");
    ASSERT_EQ(after.size(), before.size());
    EXPECT_EQ(after[0][1].string(), corrected);
    EXPECT_EQ(lineTexts(StyledSections(after.begin() + 1, after.end())), lineTexts(StyledSections(before.begin() + 1, before.end())));
    EXPECT_EQ(send<DictDataPtr>(*table, "dictData")->word(), lookedUp);
    EXPECT_EQ(send<DictDataPtr>(*table, "dictData")->quoteSentence(), corrected);
    EXPECT_TRUE(send<bool>(*app_.bookView, "isCorrecting"));
    saveScreenshot(*window_, QStringLiteral("reader-popup-correcting"));

    // The card made now holds the corrected selection, and ends correcting.
    clickFirstSense(table);
    const std::vector<host::MbBookNote> notes = app_.notebook->notes();
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes.front().highlight_text(), corrected);
    EXPECT_FALSE(send<bool>(*app_.bookView, "isCorrecting"));

    // The dictionary file gone (raw and converted): opening the book says
    // where it belongs and puts that path on the clipboard.
    const QString expected = home_.dictPath(QStringLiteral("collins.json"));
    for (const QString& name : {QStringLiteral("collins.json"), QStringLiteral("collins_html.json")})
        QFile::remove(home_.dictPath(name));
    QApplication::clipboard()->clear();
    ASSERT_TRUE(window_->openFile(sampleBook));
    ASSERT_TRUE(QTest::qWaitFor([this] { return window_->isBookReady(); }, 10000));
    EXPECT_EQ(window_->hud().currentText(), expected + QStringLiteral(" 文件未找到，正确路径已复制到剪切板！"));
    EXPECT_EQ(QApplication::clipboard()->text(), expected);
}

// A word of a sentence that runs on from the foot of the first column to the
// top of the second, standing in the second column; and that sentence.
QRectF wordAfterColumnBreak(const QString& pdf, const QString& wanted, QString& sentenceText)
{
    const host::PdfObjCAPI document(pdf);
    for (const Sentence& sentence : HookPDFPageTextTool::cutSentences(document.textContentsForPageNo_(1), nullptr)) {
        std::size_t start = 1;
        while (start < sentence.size() && sentence[start].rect.top() >= sentence[start - 1].rect.top() - 100)
            ++start;
        QString after;
        for (std::size_t i = start; i < sentence.size(); ++i)
            after.append(QChar(sentence[i].ch));
        const qsizetype at = start < sentence.size() ? after.indexOf(wanted) : -1;
        if (at < 0)
            continue;
        QRectF word;
        for (qsizetype k = at; k < at + wanted.size(); ++k)
            word = word.united(sentence[start + std::size_t(k)].rect);
        for (const CharRecord& record : sentence)
            sentenceText.append(QChar(record.ch));
        return word;
    }
    return {};
}

// A sentence running from one column into the next is quoted whole; a card
// made after scrolling to the next page stays on the word's page.
TEST_F(ReaderWindowTest, ATwoColumnPageQuotesWholeSentencesAndCardsStayOnTheirPage)
{
    start(true);
    const QString pdf = testing::typesetPdf(home_.path(), QStringLiteral("paper"),
                                            testing::twoColumnSource(false) + QStringLiteral(".bp\n.PP\nA second page.\n"));
    ASSERT_TRUE(window_->openFile(pdf));
    ASSERT_TRUE(QTest::qWaitFor([this] { return window_->isBookReady(); }, 10000));
    QString printed;
    const QRectF word = wordAfterColumnBreak(pdf, QStringLiteral("sentences"), printed);
    ASSERT_FALSE(word.isEmpty()) << "no sentence runs from one column into the next with the word";
    ASSERT_TRUE(lookUp(word));
    const ObjectRef table = popupTable();
    ASSERT_TRUE(table);
    const QString quote = send<DictDataPtr>(*table, "dictData")->quoteSentence();
    EXPECT_TRUE(testing::twoColumnProse().contains(quote.trimmed())) << quote.toStdString();
    EXPECT_EQ(testing::lettersOf(quote), testing::lettersOf(printed));
    QTest::qWait(500);  // the page image is rendered in the background
    saveScreenshot(*window_, QStringLiteral("reader-two-columns"));

    QScrollBar* scroller = window_->canvas().verticalScrollBar();
    scroller->setValue(scroller->maximum());
    QTest::qWait(50);
    ASSERT_EQ(send<int>(*app_.bookView, "currentPageNo"), 2);
    ASSERT_TRUE(popupTable()) << "the popup stays open while the book scrolls";
    clickFirstSense(table);
    const std::vector<host::MbBookNote> notes = app_.notebook->notes();
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes.front().pageNo(), 1);
    EXPECT_EQ(testing::lettersOf(notes.front().highlight_text()), testing::lettersOf(printed));
}

// A scanned page, upright and stored on its side with /Rotate 90, is read by
// OCR when it is shown; a drag over one of its words then quotes the word's whole sentence.
TEST_F(ReaderWindowTest, AScannedPageIsReadByOcrAndAWordQuotesItsSentence)
{
    start(true);
    const QString text = testing::typesetPdf(home_.path(), QStringLiteral("paper"), testing::twoColumnSource(false));
    QStringList prose;
    for (const QString& sentence : testing::twoColumnProse())
        prose.append(testing::lettersOf(sentence));
    for (const bool turned : {false, true}) {
        const QString scan = testing::scanOf(text, turned ? QStringLiteral("scan-sideways") : QStringLiteral("scan"), turned);
        ASSERT_FALSE(scan.isEmpty());
        ASSERT_TRUE(window_->openFile(scan));
        ASSERT_TRUE(QTest::qWaitFor([this] { return window_->isBookReady(); }, 10000));
        ASSERT_TRUE(QTest::qWaitFor([this] { return window_->bookView().book->scanReader().pagesWaiting() == 0; }, 120000));
        const PageLines lines = window_->bookView().book->pdf().textContentsForPageNo_(1);
        ASSERT_FALSE(lines.empty()) << "turned " << turned;

        // A word of five letters or more in a sentence OCR read whole.
        QRectF word;
        QString sentenceLetters;
        for (const Sentence& sentence : HookPDFPageTextTool::cutSentences(lines, nullptr)) {
            QString printed;
            for (const CharRecord& record : sentence)
                printed.append(QChar(record.ch));
            const qsizetype at = printed.indexOf(QRegularExpression(QStringLiteral("\\b[a-z]{5,}\\b")));
            if (at < 0 || !prose.contains(testing::lettersOf(printed)))
                continue;
            for (qsizetype k = at; k < printed.size() && printed[k].isLetter(); ++k)
                word = word.united(sentence[std::size_t(k)].rect);
            sentenceLetters = testing::lettersOf(printed);
            break;
        }
        ASSERT_FALSE(word.isEmpty()) << "OCR read no sentence of the page whole (turned " << turned << ")";
        ASSERT_TRUE(lookUp(word)) << "turned " << turned;
        const QString quote = send<DictDataPtr>(*popupTable(), "dictData")->quoteSentence();
        EXPECT_EQ(testing::lettersOf(quote), sentenceLetters) << "turned " << turned;
        QTest::qWait(300);  // the page image is rendered in the background
        saveScreenshot(*window_, turned ? QStringLiteral("reader-scan-turned") : QStringLiteral("reader-scan"));
    }
}

// A double click selects the sentence under the pointer; with Ctrl (the
// command key) the section it stands in. A drag over six words looks nothing up.
TEST_F(ReaderWindowTest, ADoubleClickSelectsTheSentenceAndWithCtrlTheSectionAndSixWordsLookNothingUp)
{
    start(true);
    const std::vector<host::ui::PageWord> words = host::ui::wordsOnPage(sampleBook, 1, 5);
    const auto market = std::find_if(words.begin(), words.end(), [](const auto& w) { return w.text == QStringLiteral("market"); });
    ASSERT_NE(market, words.end());
    const QPoint at = onScreen(market->area.center()).toPoint();

    const QString sentence =
        QStringLiteral("Every Saturday morning my grandmother and I walk 2.5 kilometres to the old market by the river.");
    QTest::mouseDClick(&viewport(), Qt::LeftButton, {}, at);
    EXPECT_EQ(send<QString>(*app_.bookView, "selectionText").simplified(), sentence);

    // The section runs on past the paragraph, to the page's last sentence.
    QTest::mouseDClick(&viewport(), Qt::LeftButton, Qt::ControlModifier, at);
    const QString section = send<QString>(*app_.bookView, "selectionText").simplified();
    EXPECT_TRUE(section.startsWith(sentence + QStringLiteral(" She goes there"))) << section.toStdString();
    EXPECT_TRUE(section.contains(QStringLiteral("It belongs to Mr. Green. Mr. Green is not really green"))) << section.toStdString();

    // A drag over a whole line of body text (six words or more) hides the
    // popup and clears the selected text.
    ASSERT_FALSE(lookUpSomeWord().text.isEmpty());
    const auto body = std::find_if(words.begin(), words.end(), [](const auto& w) { return w.text == QStringLiteral("Every"); });
    ASSERT_NE(body, words.end());
    dragOver(QRectF(body->area.left(), body->area.top(), 700, body->area.height()));
    EXPECT_FALSE(popupTable());
    EXPECT_EQ(send<QString>(*app_.bookView, "selectedText"), QString());
}

// With no translation engine, a translation copied from any program fills the
// empty row; the sentence itself is no translation, a filled row stays.
TEST_F(ReaderWindowTest, ATranslationCopiedWhileThePopupIsOpenFillsItsEmptyTranslationRow)
{
    start(true);
    ASSERT_FALSE(lookUpSomeWord().text.isEmpty());
    const ObjectRef table = popupTable();
    const auto rowText = [&] {
        const ObjectRef cell = send<ObjectRef>(*table, "cellForRowAtIndexPath:", IndexPath{0, 1});
        return send<QString>(*send<ObjectRef>(*cell, "textView"), "text");
    };
    const auto translation = [&] { return send<StyledSections>(*table, "texts")[0][2].string(); };
    ASSERT_EQ(translation(), QString());

    // The watcher looks at the pasteboard about once a second. A slow
    // machine can only make the unchanged cases pass without a look.
    const auto copyAndWait = [&](const QString& text) {
        QGuiApplication::clipboard()->setText(text);
        QTest::qWait(2500);
    };
    copyAndWait(send<StyledSections>(*table, "texts")[0][1].string());
    EXPECT_EQ(translation(), QString()) << "the sentence itself is no translation";

    const QString copied = QStringLiteral("每个星期六早上，我和祖母步行去河边的老市场。");
    QGuiApplication::clipboard()->setText(copied);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !translation().isEmpty(); }, 10000));
    EXPECT_EQ(translation(), copied);
    EXPECT_EQ(rowText(), copied);

    copyAndWait(QStringLiteral("a later copy"));
    EXPECT_EQ(translation(), copied);
    EXPECT_EQ(popupTable(), table);
}

// A damaged plug-in leaves a plain reader that says why in its status line.
TEST_F(ReaderWindowTest, WithoutThePluginTheReaderScrollsSelectsHighlightsAndCopies)
{
    const QString damaged = writeFile(home_.path() + QStringLiteral("/liblexicorn.so"), "not a shared library");
    session_.start(home_, {.plugin = false, .pluginFile = damaged});
    saveScreenshot(*window_, QStringLiteral("reader-without-plugin"));
    const auto* pluginStatus = window_->statusBar()->findChild<QLabel*>(QStringLiteral("pluginStatus"));
    ASSERT_TRUE(pluginStatus);
    EXPECT_TRUE(pluginStatus->isVisible());
    EXPECT_EQ(pluginStatus->text(), QStringLiteral("Dictionary features are off: the plug-in did not load."));
    EXPECT_TRUE(pluginStatus->toolTip().contains(damaged));

    // What the desktop's "Open with" may hand over that is no PDF.
    const QString picture = home_.path() + QStringLiteral("/page.pdf");
    QImage(8, 8, QImage::Format_RGB32).save(picture, "PNG");
    QString said;
    QTimer::singleShot(0, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        said = box ? box->text() : QString();
        if (box)
            box->accept();
    });
    EXPECT_FALSE(window_->openFile(picture));
    EXPECT_EQ(said, QStringLiteral("Cannot open %1:\nit is not a PDF but PNG image (image/png).").arg(picture));

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

// File › Import dictionary… runs the import tool; the next selection shows the imported entry.
TEST_F(ReaderWindowTest, AnImportedDictionaryAnswersTheNextSelection)
{
    qputenv("LEXICORN_CLI", LEXICORN_CLI);
    // A first day: no collins file, so the engine stays loading.
    session_.start(home_, {.collins = false});
    const host::ui::PageWord word = host::ui::wordsOnPage(sampleBook, 1, 5).front();
    const QString csv = writeFile(home_.path() + QStringLiteral("/mine.csv"),
                                  "word,phonetic,definition,translation,pos,collins,oxford,tag,bnc,frq,exchange,detail,audio\n"
                                      + word.text.toLower().toUtf8() + ",test,a word the test imported,n. 导入的释义,,3,,,,,,,\n");

    QAction* importAction = nullptr;
    for (QAction* action : window_->findChildren<QAction*>())
        if (action->text() == QStringLiteral("Import dictionary…"))
            importAction = action;
    ASSERT_TRUE(importAction);
    importAction->trigger();
    auto* dialog = window_->findChild<lexicorn::ImportDialog*>();
    ASSERT_TRUE(dialog);
    QSignalSpy imported(dialog, &lexicorn::ImportDialog::imported);
    dialog->setFiles({csv});
    dialog->startImport();
    saveScreenshot(*dialog, QStringLiteral("import-dialog"));
    ASSERT_TRUE(imported.wait(60000));
    EXPECT_EQ(imported.front().front().toString(), QStringLiteral("collins"));
    dialog->close();

    // The engine reloads in the background: select until the new entry shows.
    bool shown = false;
    for (int attempt = 0; attempt < 100 && !shown; ++attempt) {
        dragOver(word.area);
        QTest::qWait(50);
        if (const ObjectRef table = popupTable())
            shown = lineTexts(send<StyledSections>(*table, "texts")).join(u'\n').contains(QStringLiteral("导入的释义"));
    }
    EXPECT_TRUE(shown) << word.text.toStdString();

    // Switching dictionaries works at once.
    auto& board = static_cast<host::StudyboardObject&>(*window_->studyboard());
    const auto refusals = [&board] { return board.headsUps.count(QStringLiteral("字典缓存中，请稍后再试！")); };
    const qsizetype before = refusals();
    send<void>(board, "selectDict:", 0);
    EXPECT_EQ(refusals(), before);
    EXPECT_EQ(UserDefaults::standard().integer(QStringLiteral("SPECIAL_SELECTED_DICT")), 0);
}

// A three-page PDF whose outline has two chapters, the first with a section.
QString writeBookWithContents(const QString& folder)
{
    const QByteArray page = "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 300 400] >>";
    return writeFile(folder + QStringLiteral("/contents.pdf"), test::rawPdf({
        "<< /Type /Catalog /Pages 2 0 R /Outlines 3 0 R >>",
        "<< /Type /Pages /Kids [4 0 R 5 0 R 6 0 R] /Count 3 >>",
        "<< /Type /Outlines /First 7 0 R /Last 8 0 R /Count 3 >>",
        page,
        page,
        page,
        "<< /Title (Chapter One) /Parent 3 0 R /Next 8 0 R /First 9 0 R /Last 9 0 R /Count 1 /Dest [4 0 R /Fit] >>",
        "<< /Title (Chapter Two) /Parent 3 0 R /Prev 7 0 R /Dest [6 0 R /Fit] >>",
        "<< /Title (A Section) /Parent 7 0 R /Dest [5 0 R /Fit] >>",
    }));
}

// The contents pane's table shares the popup's data source and delegate (the
// book view controller): with the plug-in loaded it still lists the outline.
TEST_F(ReaderWindowTest, TheContentsPaneWorksWithThePluginLoaded)
{
    start(true);
    const QString book = writeBookWithContents(home_.path());
    ASSERT_TRUE(window_->openFile(book));
    ASSERT_TRUE(QTest::qWaitFor([this] { return window_->isBookReady(); }, 10000));
    const ObjectRef contents = window_->contentsTable();
    QWidget* pane = host::ui::widgetOf(contents);
    ASSERT_TRUE(pane->isVisible());
    ASSERT_EQ(send<int>(*contents, "numberOfSections"), 1);
    ASSERT_EQ(send<int>(*contents, "numberOfRowsInSection:", 0), 3);
    QStringList titles;
    for (int row = 0; row < 3; ++row) {
        const ObjectRef cell = send<ObjectRef>(*contents, "cellForRowAtIndexPath:", IndexPath{0, row});
        titles << host::ui::widgetOf(cell)->findChild<QLabel*>(QStringLiteral("outlineTitle"))->text();
    }
    EXPECT_EQ(titles, (QStringList{QStringLiteral("Chapter One"), QStringLiteral("A Section"), QStringLiteral("Chapter Two")}));

    // A real click on "Chapter Two" opens page 3.
    QWidget* content = host::ui::widgetOf(send<ObjectRef>(*send<ObjectRef>(*contents, "cellForRowAtIndexPath:", IndexPath{0, 2}), "contentView"));
    QTest::mouseClick(content, Qt::LeftButton, {}, content->rect().center());
    EXPECT_EQ(window_->canvas().currentPage(), 2);

    // The sample book has no outline: the pane goes away.
    ASSERT_TRUE(window_->openFile(sampleBook));
    ASSERT_TRUE(QTest::qWaitFor([this] { return window_->isBookReady(); }, 10000));
    EXPECT_FALSE(pane->isVisible());

    // Opened again, the book is where it was left.
    ASSERT_TRUE(window_->openFile(book));
    ASSERT_TRUE(QTest::qWaitFor([this] { return window_->isBookReady() && window_->canvas().currentPage() == 2; }, 10000))
        << "at page " << window_->canvas().currentPage() + 1;
}

}  // namespace
}  // namespace lexicorn
