// Cards sent to Anki through the plug-in's methods on the host's note and
// study-board classes, reached by selector names as the reader reaches them.

#include "sync_fixtures.h"

#include "host/app/host_application.h"
#include "host/app/note_classes.h"

#include "foundation/alerts.h"

#include "runtime/runtime.h"

#include <QThread>

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using namespace std::chrono_literals;
using runtime::send;

class HostedCards : public testing::CardHome {
protected:
    void SetUp() override
    {
        setAlertPresenter([this](const QString&, const QString& message, const QString&, std::function<void()> acknowledged) {
            alerts_.append(message);
            if (acknowledged)
                acknowledged();
        });
    }
    void TearDown() override { setAlertPresenter({}); }
    QStringList alerts_;
};

TEST_F(HostedCards, NotesAndTheStudyBoardGainTheCardOperations)
{
    testing::SyncPeer peer(home_);
    ASSERT_TRUE(peer.ready()) << peer.problem().toStdString();
    testing::loadSampleDictionary(1);  // the cards are made with collins, the plug-in's start-up choice
    const auto took = testing::cardFor(QStringLiteral("took"), QStringLiteral("She took the book."), 1, 0, QStringLiteral("N1"));
    const auto market = testing::cardFor(QStringLiteral("market"), QStringLiteral("A market day."), 1, 0, QStringLiteral("N2"));
    ASSERT_TRUE(took && market);

    const host::HostApplication app = host::launchHost(QStringLiteral(LEXICORN_PLUGIN_PATH));
    ASSERT_TRUE(app.plugin.loaded) << app.plugin.problem.toStdString();
    alerts_.clear();  // the disclaimer

    const auto card = host::makeBookNote(host::MbBookNote(*took));
    const auto plain = host::makeBookNote(host::MbBookNote(testing::plainNote(QStringLiteral("plain"), QStringLiteral("N3"))));
    EXPECT_TRUE(send<bool>(*card, "isDictNote"));
    EXPECT_TRUE(send<bool>(*card, "isDictTitle"));
    EXPECT_EQ(send<QString>(*card, "dictMatch"), QString());
    EXPECT_FALSE(send<bool>(*plain, "isDictNote"));

    // The batch over the study board's selection.
    const auto board = host::makeStudyboard();
    board->selection = {card, plain, host::makeBookNote(host::MbBookNote(*market))};
    board->bookTitle = QStringLiteral("Book");
    // The plug-in loads its dictionary in the background at launch; until then it says so.
    for (int tries = 0; tries < 200; ++tries) {
        send<void>(*board, "dictUpdateToAnki:", std::shared_ptr<runtime::Object>());
        if (board->headsUps.last() != QStringLiteral("字典初始化未完成，请稍后重试！"))
            break;
        QThread::msleep(50);
    }
    EXPECT_EQ(board->headsUps.last(), QStringLiteral("总数：3，开始批量同步..."));
    const QString summary = QStringLiteral("👍 同步完成。总数: 3, 有效数: 2。");
    ASSERT_TRUE(testing::runEventsUntil([&] { return alerts_.contains(summary); }, 60s)) << alerts_.join(u'|').toStdString();
    // The guard drops right after the summary is queued.
    EXPECT_TRUE(testing::runEventsUntil([&] { return !send<bool>(*board, "isUpdating"); }, 10s));
    EXPECT_EQ(peer.noteCount(), 2);

    // One card brought up to date after an edit: its Anki note is found and updated.
    std::optional<std::pair<bool, QString>> result;
    send<void>(*card, "asyncUpdateToAnkiWithTitle:showHUD:", QStringLiteral("Book"),
               std::function<void(bool, QString)>([&](bool success, QString message) { result = {success, message}; }));
    ASSERT_TRUE(testing::runEventsUntil([&] { return result.has_value(); }, 30s));
    EXPECT_TRUE(result->first) << result->second.toStdString();
    EXPECT_EQ(result->second, QStringLiteral("👍 Anki 同步完成卡片：took"));
    EXPECT_EQ(peer.noteCount(), 2);
}

}  // namespace
}  // namespace lexicorn
