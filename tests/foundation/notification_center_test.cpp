#include "foundation/notification_center.h"

#include <gtest/gtest.h>

#include <vector>

namespace lexicorn {
namespace {

TEST(NotificationCenter, DeliversByNameInOrderAndCopesWithChangesDuringDelivery)
{
    NotificationCenter center;
    std::vector<QString> heard;
    NotificationCenter::Token late = 0;
    NotificationCenter::Token second = 0;

    center.addObserverForName(QStringLiteral("OpenHotword"), [&](const Notification& n) {
        heard.push_back(QStringLiteral("first:") + n.userInfo.value(QStringLiteral("word")).toString());
        // Removing a later observer and adding a new one while delivering.
        center.removeObserver(second);
        if (!late)
            late = center.addObserverForName(QStringLiteral("OpenHotword"), [&](const Notification&) { heard.push_back(QStringLiteral("late")); });
    });
    second = center.addObserverForName(QStringLiteral("OpenHotword"), [&](const Notification&) { heard.push_back(QStringLiteral("second")); });
    center.addObserverForName(QString(), [&](const Notification& n) { heard.push_back(QStringLiteral("all:") + n.name); });
    center.addObserverForName(QStringLiteral("CancelEditNote"), [&](const Notification&) { heard.push_back(QStringLiteral("cancel")); });

    center.postNotificationName(QStringLiteral("OpenHotword"), {}, {{QStringLiteral("word"), QStringLiteral("take")}});
    EXPECT_EQ(heard, (std::vector<QString>{QStringLiteral("first:take"), QStringLiteral("all:OpenHotword")}));

    heard.clear();
    center.postNotificationName(QStringLiteral("OpenHotword"));
    EXPECT_EQ(heard, (std::vector<QString>{QStringLiteral("first:"), QStringLiteral("all:OpenHotword"), QStringLiteral("late")}));

    heard.clear();
    center.removeObserver(late);
    center.removeObserver(12345);  // unknown tokens are ignored
    center.postNotificationName(QStringLiteral("StopWebDownload"));
    EXPECT_EQ(heard, (std::vector<QString>{QStringLiteral("all:StopWebDownload")}));
}

}  // namespace
}  // namespace lexicorn
