#include "support/temp_home.h"

#include "lexicorn/clipboard/clipboard.h"
#include "lexicorn/clipboard/ksw_hdebug.h"

#include "foundation/alerts.h"
#include "foundation/user_defaults.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

namespace lexicorn {
namespace {

// Each test leaves the shared watcher stopped, as it found it.
class KSWHDebugClipboard : public ::testing::Test {
protected:
    void TearDown() override { Clipboard::shared().stopListening(); }

    static void copyAndPoll(const QString& text)
    {
        Clipboard::shared().copy(text);
        Clipboard::shared().checkForChangesInPasteboard();
    }
};

TEST_F(KSWHDebugClipboard, ListeningPassesCopiesToTheFirstControllerWhileItLives)
{
    auto first = std::make_shared<int>(1);
    auto second = std::make_shared<int>(2);
    QStringList updates;
    KSWHDebug::pasteboardChangedListen_(first, [&](const QString& text) { updates << QStringLiteral("first:") + text; });
    EXPECT_TRUE(Clipboard::shared().isRunning());
    KSWHDebug::pasteboardChangedListen_(second, [&](const QString& text) { updates << QStringLiteral("second:") + text; });
    EXPECT_EQ(Clipboard::shared().hooks().size(), 1u);
    copyAndPoll(QStringLiteral("once"));
    // Once the controller is gone, copies reach nobody but are still taken as seen.
    first.reset();
    copyAndPoll(QStringLiteral("gone"));
    EXPECT_EQ(updates, QStringList{"first:once"});
    EXPECT_EQ(Clipboard::shared().changeCount(), Pasteboard::general().changeCount());
}

TEST_F(KSWHDebugClipboard, StoppingEndsTheUpdatesAndAllowsListeningAnew)
{
    auto controller = std::make_shared<int>(0);
    QStringList updates;
    KSWHDebug::pasteboardChangedListen_(controller, [&](const QString& text) { updates << QStringLiteral("old:") + text; });
    KSWHDebug::pasteboardChangedStop_(controller);
    EXPECT_FALSE(Clipboard::shared().isRunning());
    EXPECT_TRUE(Clipboard::shared().hooks().empty());
    copyAndPoll(QStringLiteral("while stopped"));

    KSWHDebug::pasteboardChangedListen_(controller, [&](const QString& text) { updates << QStringLiteral("new:") + text; });
    copyAndPoll(QStringLiteral("after"));
    EXPECT_EQ(updates, QStringList{"new:after"});
}

const QString exemptionKey = QStringLiteral("KSW_EXEMPTION_3.7.5");

// The disclaimer in a fresh home, with the presenter removed afterwards.
class KSWHDebugExemption : public ::testing::Test {
protected:
    void TearDown() override { setAlertPresenter({}); }

    testing::TempHome home_;
};

TEST_F(KSWHDebugExemption, IsStoredOnlyOnceTheUserPressedOKOrItWasLogged)
{
    // Without a presenter it is logged, and that is as good as OK.
    KSWHDebug::exemption();
    EXPECT_TRUE(UserDefaults::standard().boolean(exemptionKey));
    UserDefaults::standard().remove(exemptionKey);

    // The dialog stays open: the presenter keeps the completions without calling them.
    std::vector<std::function<void()>> pending;
    setAlertPresenter([&](const QString&, const QString&, const QString&, std::function<void()> acknowledged) {
        pending.push_back(std::move(acknowledged));
    });
    KSWHDebug::exemption();
    ASSERT_EQ(pending.size(), 1u);
    EXPECT_FALSE(UserDefaults::standard().boolean(exemptionKey));

    // Quitting without pressing OK: the next start shows it again.
    KSWHDebug::exemption();
    ASSERT_EQ(pending.size(), 2u);

    ASSERT_TRUE(pending.back());
    pending.back()();
    EXPECT_TRUE(UserDefaults::standard().boolean(exemptionKey));
    KSWHDebug::exemption();
    EXPECT_EQ(pending.size(), 2u);
}

}  // namespace
}  // namespace lexicorn
