#include "lexicorn/clipboard/clipboard.h"

#include <QCoreApplication>
#include <QtCore/qtestsupport_core.h>

#include <gtest/gtest.h>

#include <functional>

namespace lexicorn {
namespace {

// Without a GUI application the general pasteboard is the in-process one.
Pasteboard& pasteboard()
{
    return Pasteboard::general();
}

TEST(Clipboard, ReportsTheTextOnThePasteboardWhenItHasChanged)
{
    using Step = std::function<void()>;
    const Step copyA = [] { pasteboard().setString(QStringLiteral("apple")); };
    const Step copyB = [] { pasteboard().setString(QStringLiteral("banana")); };
    const Step copyImage = [] { pasteboard().setNonText(); };
    struct Case {
        const char* name;
        std::vector<Step> beforePoll;
        QStringList reported;
    };
    const Case cases[] = {
        {"nothing copied", {}, {}},
        {"an empty text is still text", {[] { pasteboard().setString(QString()); }}, {""}},
        {"two copies within one period: the text there at the poll, once", {copyA, copyB}, {"banana"}},
        {"text, then something that is not text", {copyA, copyImage}, {}},
        {"something that is not text, then text", {copyImage, copyB}, {"banana"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Clipboard watcher(pasteboard());
        watcher.startListening();
        QStringList reported;
        watcher.onNewCopy([&](const QString& text) { reported << text; });
        for (const Step& step : c.beforePoll)
            step();
        watcher.checkForChangesInPasteboard();
        EXPECT_EQ(reported, c.reported);
        EXPECT_EQ(watcher.changeCount(), pasteboard().changeCount());
        // A second poll with no change in between reports nothing more.
        watcher.checkForChangesInPasteboard();
        EXPECT_EQ(reported, c.reported);
        watcher.stopListening();
    }
}

TEST(Clipboard, HooksRunInOrderAndACopyMadeByOneIsTakenAsSeen)
{
    Clipboard watcher(pasteboard());
    watcher.startListening();
    QStringList calls;
    for (const QString& name : {QStringLiteral("first"), QStringLiteral("second")})
        watcher.onNewCopy([&calls, name](const QString& text) { calls << name + u':' + text; });
    watcher.onNewCopy([&](const QString& text) {
        calls << QStringLiteral("third:") + text;
        watcher.copy(text.toUpper());
    });
    const QString text = QStringLiteral("  two words\n第二行 ");
    watcher.copy(text);
    EXPECT_EQ(pasteboard().string(), text);
    watcher.checkForChangesInPasteboard();
    watcher.checkForChangesInPasteboard();
    EXPECT_EQ(calls, (QStringList{"first:" + text, "second:" + text, "third:" + text}));
    EXPECT_EQ(pasteboard().string(), text.toUpper());
}

TEST(Clipboard, StartingTakesTheCurrentCountAsSeenAndDropsHooks)
{
    pasteboard().setString(QStringLiteral("copied before"));
    Clipboard watcher(pasteboard());
    QStringList reported;
    watcher.onNewCopy([&](const QString& text) { reported << QStringLiteral("old hook: ") + text; });
    pasteboard().setString(QStringLiteral("copied before starting"));
    watcher.startListening();
    EXPECT_TRUE(watcher.hooks().empty());
    EXPECT_TRUE(watcher.isRunning());
    EXPECT_EQ(watcher.changeCount(), pasteboard().changeCount());
    watcher.onNewCopy([&](const QString& text) { reported << text; });
    watcher.checkForChangesInPasteboard();
    EXPECT_TRUE(reported.isEmpty());
    pasteboard().setString(QStringLiteral("copied after"));
    watcher.checkForChangesInPasteboard();
    EXPECT_EQ(reported, QStringList{"copied after"});
}

TEST(Clipboard, TheTimerPollsUntilAHookStopsIt)
{
    Clipboard watcher(pasteboard());
    watcher.timerInterval = std::chrono::milliseconds(10);
    watcher.startListening();
    QStringList reported;
    watcher.onNewCopy([&](const QString& text) {
        reported << text;
        // Stopping from inside the poll the timer is running.
        if (text == QStringLiteral("stop"))
            watcher.stopListening();
    });
    watcher.copy(QStringLiteral("first"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return reported.size() == 1; }, 30000));
    watcher.copy(QStringLiteral("stop"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !watcher.isRunning(); }, 30000));
    EXPECT_EQ(reported, (QStringList{"first", "stop"}));
    // Let the stopped timer's deferred deletion run.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

}  // namespace
}  // namespace lexicorn
