// The plug-in inside the reader: the host's own methods still run under the
// plug-in's replacements, the running text of a selection from a real PDF,
// the added properties and the middle-button panning.

#include "card_fixtures.h"

#include "host/app/event_classes.h"
#include "host/app/host_application.h"
#include "host/app/note_classes.h"

#include "foundation/user_defaults.h"

#include "runtime/runtime.h"

#include <QJsonArray>

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using runtime::send;
using ObjectRef = std::shared_ptr<runtime::Object>;

const QString samplePluginPath = QStringLiteral(LEXICORN_PLUGIN_PATH);
const QString sampleBook = QStringLiteral(LEXICORN_SAMPLE_DIR "/books/sample-book.pdf");

// The reader launched in a fresh home. Each test runs in a process of its
// own: the plug-in is loaded at most once.
class Reader : public ::testing::Test {
protected:
    void launch(bool withPlugin)
    {
        app_ = host::launchHost(withPlugin ? samplePluginPath : QString());
        ASSERT_EQ(app_.plugin.loaded, withPlugin) << app_.plugin.problem.toStdString();
        ASSERT_TRUE(app_.notebook);
    }
    // Opens the sample book in the reader's book view.
    void openSampleBook()
    {
        const std::optional<QString> md5 = host::MbModelTool::md5OfFile(sampleBook);
        ASSERT_TRUE(md5);
        ASSERT_TRUE(host::MbModelTool(*app_.notebook).addBook(*md5, QStringLiteral("Sample"), sampleBook));
        send<void>(*app_.bookView, "openBook:topicid:noteid:bookLocation:", *md5, QString(), QString(), 1);
        ASSERT_EQ(send<QString>(*app_.bookView, "currentBookMd5"), *md5);
    }

    testing::TempHome home_;
    testing::AlertLog alerts_;
    host::HostApplication app_;
};

class ReaderHosting : public Reader, public ::testing::WithParamInterface<bool> {
protected:
    void SetUp() override { launch(withPlugin()); }
    bool withPlugin() const { return GetParam(); }
};

class PluginInReader : public Reader {
protected:
    void SetUp() override { launch(true); }
};

TEST_P(ReaderHosting, TheHostsOwnMethodsBehaveAsWithoutThePlugin)
{
    const auto board = host::makeStudyboard();
    // With the plug-in these run through its replacements: added on the
    // study board for the inherited ones, exchanged and replaced for its own.
    runtime::Runtime& runtime = runtime::Runtime::shared();
    EXPECT_EQ(runtime.ownInstanceMethod(board->objectClass(), "viewWillAppear:") != nullptr, withPlugin());
    EXPECT_EQ(runtime::respondsTo(*board, "hook_toggleBookLeft:"), withPlugin());
    EXPECT_EQ(runtime::respondsTo(*app_.delegate, "hook_cmdPressed"), withPlugin());
    send<void>(*board, "viewDidLoad");           // inherited from UIViewController only
    send<void>(*board, "viewWillAppear:", true);  // likewise
    EXPECT_TRUE(board->viewLoaded);
    EXPECT_EQ(board->appearances, 1);
    send<void>(*board, "toggleBookLeft:", std::string("button"));  // replaced and exchanged
    EXPECT_FALSE(board->bookLeftShown);

    app_.delegate->commandHeld = true;
    EXPECT_TRUE(send<bool>(*app_.delegate, "cmdPressed"));

    host::MbBookNote stored;
    stored.setNotetitle(QStringLiteral("a note"));
    ASSERT_TRUE(app_.notebook->add(stored));
    const auto note = host::makeBookNote(stored, app_.notebook.get());
    send<void>(*note, "setNotesAndUpdateMediaList:clear:", QJsonArray{QStringLiteral("a comment")}, false);
    send<void>(*note, "highlightTextFromAttributedText:", QStringLiteral("an <b>excerpt</b>"));
    const std::optional<host::MbBookNote> saved = app_.notebook->note(stored.noteid());
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->notes(), QJsonArray{QStringLiteral("a comment")});
    EXPECT_EQ(saved->highlight_text(), QStringLiteral("an <b>excerpt</b>"));

    // Events the plug-in does not pan with pass untouched, with or without it.
    const ObjectRef click = host::makeEvent(otherMouseDown);
    EXPECT_EQ(host::dispatchLocalEvent(click), click);
    EXPECT_EQ(send<int>(*click, "type"), otherMouseDown);  // enableMouse3 is off
    EXPECT_FALSE(app_.delegate->spacePressed);
}

TEST_P(ReaderHosting, ASelectionAcrossLinesReadsAsRunningText)
{
    openSampleBook();
    ASSERT_FALSE(HasFatalFailure());
    // The lines where "vocabulary" is broken after "vocab-".
    const std::int64_t viewHandle = send<std::int64_t>(*app_.bookView, "pdfViewHandle");
    const host::PdfObjCAPI* document = host::PdfObjCAPI::withViewHandle(viewHandle);
    ASSERT_NE(document, nullptr);
    int pageNo = 0;
    QRectF selection;
    for (int page = 1; page <= document->pageCount() && selection.isNull(); ++page) {
        const PageLines lines = document->textContentsForPageNo_(page);
        for (std::size_t i = 0; i + 1 < lines.size(); ++i) {
            if (!lines[i].empty() && lines[i].back().ch == u'-' && lines[i + 1].front().ch == u'u') {
                pageNo = page;
                selection = lines[i].back().rect.united(lines[i + 1].front().rect);
                selection.setLeft(0);
                selection.setRight(1000);
                break;
            }
        }
    }
    ASSERT_GT(pageNo, 0) << "the sample book breaks vocab-/ulary at a line end";
    send<void>(*app_.bookView, "setPDFSelection:pageNo:", selection, pageNo);

    const QString selected = send<QString>(*app_.bookView, "selectionText");
    EXPECT_TRUE(selected.contains(QStringLiteral("vocab-   ulary"))) << selected.toStdString();
    EXPECT_EQ(runtime::respondsTo(*app_.bookView, "rawLineFormatForSelected"), withPlugin());
    if (!withPlugin())
        return;
    const QString raw = send<QString>(*app_.bookView, "rawLineFormatForSelected");
    EXPECT_TRUE(raw.contains(QStringLiteral(" vocabulary grew."))) << raw.toStdString();
    EXPECT_FALSE(raw.contains(QStringLiteral("  "))) << raw.toStdString();
    // After the book is closed its page text is gone.
    send<void>(*app_.bookView, "closeBook");
    EXPECT_EQ(send<QString>(*app_.bookView, "rawLineFormatForSelected:pageNo:", selection, pageNo), QString());
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutThePlugin, ReaderHosting, ::testing::Bool(),
                         [](const ::testing::TestParamInfo<bool>& info) { return info.param ? "plugin" : "host"; });

TEST_F(PluginInReader, AddedPropertiesReadAsUnsetUntilSetAndKeepTheirEncodings)
{
    runtime::Runtime& runtime = runtime::Runtime::shared();
    runtime::Object& view = *app_.bookView;
    EXPECT_FALSE(send<bool>(view, "enableDict"));
    EXPECT_EQ(send<double>(view, "cardWidth"), 0.0);
    EXPECT_EQ(send<QString>(view, "selectedText"), QString());
    EXPECT_EQ(send<ObjectRef>(view, "enDictContainer"), nullptr);
    send<void>(view, "setEnableDict:", true);
    send<void>(view, "setCardWidth:", 420.0);
    send<void>(view, "setSelectedText:", QStringLiteral("take"));
    EXPECT_TRUE(send<bool>(view, "enableDict"));
    EXPECT_FALSE(send<bool>(view, "sentenceOnly"));
    EXPECT_EQ(send<double>(view, "cardWidth"), 420.0);
    EXPECT_EQ(send<QString>(view, "selectedText"), QStringLiteral("take"));

    struct Encoded {
        const char* className;
        const char* selector;
        const char* encoding;
    };
    const Encoded encodings[] = {
        {"BookViewController", "autoAudio", "B@:"},
        {"BookViewController", "setCardWidth:", "v@:d"},
        {"MbUIStudyboardController", "dictSetting", "@@:"},
        {"AppDelegate", "shieldDictCard", "^c@:"},
        {"AppDelegate", "setEnableMouse3:", "v@:^c"},
    };
    for (const Encoded& e : encodings) {
        const runtime::Method* method = runtime.ownInstanceMethod(*runtime.classNamed(e.className), e.selector);
        ASSERT_NE(method, nullptr) << e.selector;
        EXPECT_EQ(method->encoding(), e.encoding) << e.selector;
    }
}

}  // namespace
}  // namespace lexicorn
