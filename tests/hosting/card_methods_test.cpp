// A card sent to Anki through the plug-in's methods on the host's note class,
// reached by selector names as the reader reaches them. The study board's
// batch is driven from its button in tests/ui/batch_test.cpp.

#include "sync_fixtures.h"

#include "host/app/host_application.h"
#include "host/app/note_classes.h"


#include "runtime/runtime.h"

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using namespace std::chrono_literals;
using runtime::send;

class HostedCards : public testing::CardHome {
protected:
    testing::AlertLog alerts_;  // answers the disclaimer
};

TEST_F(HostedCards, NotesGainTheCardOperations)
{
    testing::SyncPeer peer(home_);
    ASSERT_TRUE(peer.ready()) << peer.problem().toStdString();
    testing::loadSampleDictionary(1);  // the cards are made with collins, the plug-in's start-up choice
    const auto took = testing::cardFor(QStringLiteral("took"), QStringLiteral("She took the book."), 1, 0, QStringLiteral("N1"));
    ASSERT_TRUE(took);

    const host::HostApplication app = host::launchHost(QStringLiteral(LEXICORN_PLUGIN_PATH));
    ASSERT_TRUE(app.plugin.loaded) << app.plugin.problem.toStdString();

    const auto card = host::makeBookNote(host::MbBookNote(*took));
    const auto plain = host::makeBookNote(host::MbBookNote(testing::plainNote(QStringLiteral("plain"), QStringLiteral("N3"))));
    EXPECT_TRUE(send<bool>(*card, "isDictNote"));
    EXPECT_TRUE(send<bool>(*card, "isDictTitle"));
    EXPECT_EQ(send<QString>(*card, "dictMatch"), QString());
    EXPECT_FALSE(send<bool>(*plain, "isDictNote"));

    // One card sent on its own, as after an edit.
    std::optional<std::pair<bool, QString>> result;
    send<void>(*card, "asyncUpdateToAnkiWithTitle:showHUD:", QStringLiteral("Book"),
               std::function<void(bool, QString)>([&](bool success, QString message) { result = {success, message}; }));
    ASSERT_TRUE(testing::runEventsUntil([&] { return result.has_value(); }, 30s));
    EXPECT_TRUE(result->first) << result->second.toStdString();
    EXPECT_EQ(result->second, QStringLiteral("👍 Anki 同步完成卡片：took"));
    EXPECT_EQ(peer.noteCount(), 1);
}

}  // namespace
}  // namespace lexicorn
