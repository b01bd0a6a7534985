// The reader's launch with and without the plug-in loaded into it.

#include "support/temp_home.h"

#include "host/app/host_application.h"

#include "foundation/alerts.h"
#include "foundation/user_defaults.h"

#include "runtime/runtime.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using runtime::send;

struct Alert {
    QString title;
    QString message;
    QString button;
};

// Each test runs in a process of its own: the plug-in is loaded at most once.
class Hosting : public ::testing::Test {
protected:
    void SetUp() override
    {
        // Each alert is dismissed at once, as if the user pressed its button.
        setAlertPresenter([this](const QString& title, const QString& message, const QString& button,
                                 std::function<void()> acknowledged) {
            alerts_.push_back({title, message, button});
            if (acknowledged)
                acknowledged();
        });
    }
    void TearDown() override { setAlertPresenter({}); }

    testing::TempHome home_;
    std::vector<Alert> alerts_;
};

TEST_F(Hosting, WithoutAWorkingPluginTheHostBehavesAsItsOwn)
{
    // No plug-in asked for, then one that cannot be loaded.
    for (const QString& path : {QString(), home_.path() + QStringLiteral("/no-such-plugin.so")}) {
        const host::HostApplication app = host::launchHost(path);
        EXPECT_FALSE(app.plugin.loaded) << path.toStdString();
        if (!path.isEmpty()) {
            EXPECT_FALSE(app.plugin.problem.isEmpty());
        }
        EXPECT_TRUE(app.delegate->launched) << path.toStdString();
        EXPECT_EQ(send<std::string>(*app.delegate, "defaultTitleLinkColor0"), "systemBlue") << path.toStdString();
        EXPECT_FALSE(runtime::respondsTo(*app.delegate, "enableMouse3")) << path.toStdString();
    }
    EXPECT_TRUE(alerts_.empty());
    EXPECT_TRUE(UserDefaults::standard().keys().isEmpty());
}

TEST_F(Hosting, ThePluginsLaunchRunsItsStartUpAndTheHostsOwnLaunch)
{
    UserDefaults& defaults = UserDefaults::standard();
    defaults.set(QStringLiteral("SPECIAL_SELECTED_DICT"), 0);
    defaults.set(QStringLiteral("SPECIAL_ENABLEMOUSE3"), true);
    defaults.set(QStringLiteral("mindbooks_nomenuonnewhighlight"), true);

    const host::HostApplication app = host::launchHost(QStringLiteral(LEXICORN_PLUGIN_PATH));
    ASSERT_TRUE(app.plugin.loaded) << app.plugin.problem.toStdString();
    EXPECT_TRUE(app.delegate->launched);  // the host's own launch still ran
    EXPECT_EQ(send<std::string>(*app.delegate, "defaultTitleLinkColor0"), "systemRed");

    EXPECT_FALSE(defaults.boolean(QStringLiteral("mindbooks_nomenuonnewhighlight")));
    // With debugging off every launch stores the engine's own dictionary (collins).
    EXPECT_EQ(defaults.integer(QStringLiteral("SPECIAL_SELECTED_DICT")), 1);
    EXPECT_TRUE(send<bool>(*app.delegate, "enableMouse3"));
    EXPECT_TRUE(send<bool>(*app.delegate, "shieldDictCard"));

    ASSERT_EQ(alerts_.size(), 1u);
    EXPECT_EQ(alerts_[0].title, QStringLiteral("⚠️ 免责声明"));
    EXPECT_TRUE(alerts_[0].message.startsWith(QStringLiteral("1. Lexicorn 为免费分享的插件, 仅供测试学习使用!\n2. ")));
    EXPECT_EQ(alerts_[0].button, QStringLiteral("OK"));
    EXPECT_TRUE(defaults.boolean(QStringLiteral("KSW_EXEMPTION_3.7.5")));

    // A second launch does not show the disclaimer again.
    const host::HostApplication again = host::launchHost(QStringLiteral(LEXICORN_PLUGIN_PATH));
    EXPECT_TRUE(again.delegate->launched);
    EXPECT_EQ(alerts_.size(), 1u);
}

}  // namespace
}  // namespace lexicorn
