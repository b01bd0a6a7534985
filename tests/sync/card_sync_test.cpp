// One card sent to Anki: added from the popup's parameters, then kept up to
// date from its note, against a real Anki collection.

#include "sync_fixtures.h"

#include "lexicorn/anki/ksw_ankiconnect.h"
#include "lexicorn/anki/sync/card_sync.h"
#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/render/anki_fields.h"

#include "foundation/user_defaults.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using testing::CallbackLog;

class CardSync : public testing::CardHome {
protected:
    void SetUp() override { testing::loadSampleDictionary(0); }

    // The popup's card for "took": LDOCE's "take", first sense.
    std::shared_ptr<JsonDictNote> tookCard(const QString& noteid)
    {
        std::optional<NoteRecord> note = testing::cardFor("took", "She took the book home.", 1, 0, noteid);
        EXPECT_TRUE(note);
        return std::make_shared<JsonDictNote>(note.value_or(NoteRecord{}));
    }

    // What the popup sends for that card.
    QJsonObject popupParams(const QString& noteid, const QString& deck = {})
    {
        const DictDataPtr lookup = EnWordServer::shared().query(QStringLiteral("took"), QStringLiteral("She took the book home."));
        CardResult<QJsonObject> note = wordDictForAnki(*lookup, QStringLiteral("took"), QStringLiteral("Sample"), SenseIndex{0, 0},
                                                       QStringLiteral("她把书带回家了。"), std::nullopt, std::nullopt, noteid);
        EXPECT_TRUE(note);
        QJsonObject fields = note.ok() ? note.value() : QJsonObject();
        if (!deck.isEmpty())
            fields["deckName"] = deck;
        return QJsonObject{{"note", fields}};
    }

    testing::AlertLog alerts_;  // alerts of a card rebuild would otherwise only be logged
};

TEST_F(CardSync, AddThenUpdateFollowsTheAnkiNote)
{
    testing::SyncPeer anki(home_);
    ASSERT_TRUE(anki.ready()) << anki.problem().toStdString();
    CallbackLog log;
    const QString noteid = QStringLiteral("CS-0001");
    const std::shared_ptr<JsonDictNote> card = tookCard(noteid);

    // Added with what the popup made.
    asyncAddToAnkiWithTitle_wordDict_showHUD_(card, QStringLiteral("Sample"), popupParams(noteid), log.callback());
    EXPECT_EQ(log.next(), (CallbackLog::Call{true, QStringLiteral("👍 Anki 成功添加卡片：took"), true}));
    const QJsonArray added = anki.notesHolding(noteid);
    ASSERT_EQ(added.size(), 1);
    const CallbackLog::Call synced{true, QStringLiteral("👍 Anki 同步完成卡片：took"), true};

    // The note's translation edited: the same Anki note takes the new text.
    NoteRecord edited = card->record();
    QJsonObject translation = edited.notes[0].toObject();
    translation["text"] = QStringLiteral("她把那本书带回了家。");
    edited.notes[0] = translation;
    asyncUpdateToAnkiWithTitle_showHUD_(std::make_shared<JsonDictNote>(edited), QStringLiteral("Sample"), log.callback());
    EXPECT_EQ(log.next(), synced);
    EXPECT_EQ(anki.notesHolding(noteid), added);
    const QString extra = anki.fieldsOf(added[0]).value("EXTRAINFO").toString();
    EXPECT_TRUE(extra.contains(QStringLiteral("她把那本书带回了家。"))) << extra.toStdString();
    EXPECT_FALSE(extra.contains(QStringLiteral("她把书带回家了。"))) << extra.toStdString();

    // Deleted in Anki: the update adds it anew.
    anki.deleteNote(added[0]);
    ASSERT_TRUE(anki.notesHolding(noteid).isEmpty());
    asyncUpdateToAnkiWithTitle_showHUD_(card, QStringLiteral("Sample"), log.callback());
    EXPECT_EQ(log.next(), synced);
    const QJsonArray again = anki.notesHolding(noteid);
    ASSERT_EQ(again.size(), 1);
    EXPECT_NE(again[0], added[0]);

    // Anki refuses a deck it does not have: its own error text comes back.
    const std::shared_ptr<JsonDictNote> other = tookCard(QStringLiteral("CS-0002"));
    asyncAddToAnkiWithTitle_wordDict_showHUD_(other, {}, popupParams(QStringLiteral("CS-0002"), QStringLiteral("No such deck")),
                                              log.callback());
    const std::optional<CallbackLog::Call> call = log.next();
    ASSERT_TRUE(call);
    EXPECT_FALSE(call->success);
    EXPECT_FALSE(call->message.isEmpty());
    EXPECT_NE(call->message, QStringLiteral("AnkiConnect error: Could not connect to the server."));
    EXPECT_TRUE(anki.notesHolding(QStringLiteral("CS-0002")).isEmpty());

    EXPECT_TRUE(alerts_.messages.isEmpty()) << alerts_.messages.join(u'\n').toStdString();
    QCoreApplication::processEvents();
    EXPECT_TRUE(log.calls.isEmpty()) << "one callback per operation";
}

TEST_F(CardSync, CardsThatCannotBeSentSayWhy)
{
    // Nothing listens: whatever gets as far as Anki finds it closed.
    KSWAnkiconnect::shareInstance().setIpString_(QStringLiteral("127.0.0.1:%1").arg(testing::closedPort()));
    const NoteRecord good = tookCard(QStringLiteral("CS-0003"))->record();
    const auto retitled = [&](const char* from, const char* to) {
        NoteRecord note = good;
        note.notetitle.replace(QString::fromUtf8(from), QString::fromUtf8(to));
        return note;
    };
    // A card title without the card's comments still counts as a card.
    NoteRecord titleOnly = retitled("📇1-0", "📇1-0-1");
    titleOnly.notes = {};

    struct Case {
        const char* name;
        NoteRecord note;
        QString message;
    };
    const Case cases[] = {
        {"made with collins while LDOCE5 is selected", retitled("📇1-0", "📇1-0-1"), QStringLiteral("❌ 字典不匹配无法同步，请选择：collins")},
        {"card title without card comments", titleOnly, QStringLiteral("❌ 字典不匹配无法同步，请选择：collins")},
        {"Anki out of reach", good, QStringLiteral("Ankiconnect 连接失败！")},
    };
    for (const Case& c : cases) {
        CallbackLog log;
        const JsonDictNote note(c.note);
        updateToAnkiWithTitle_showHUD_(note, QStringLiteral("Sample"), log.callback());
        EXPECT_TRUE(log.calls.isEmpty()) << c.name << ": the callback waits for the main queue";
        EXPECT_EQ(log.next(), (CallbackLog::Call{false, c.message, true})) << c.name;
        EXPECT_EQ(note.record().toJson(), c.note.toJson()) << c.name;
    }

    // A note that is no card is left alone: no callback at all.
    CallbackLog ignored;
    updateToAnkiWithTitle_showHUD_(JsonDictNote(testing::plainNote("plain", "CS-0004")), {}, ignored.callback());
    testing::runEventsUntil([] { return false; }, std::chrono::milliseconds(200));
    EXPECT_TRUE(ignored.calls.isEmpty());

    // Adding with nobody listening, after the client's three attempts.
    CallbackLog log;
    asyncAddToAnkiWithTitle_wordDict_showHUD_(tookCard(QStringLiteral("CS-0005")), {}, QJsonObject{{"note", QJsonObject{}}},
                                              log.callback());
    const QString closed = QStringLiteral("AnkiConnect error: Could not connect to the server.");
    EXPECT_EQ(log.next(), (CallbackLog::Call{false, closed, true}));
}

}  // namespace
}  // namespace lexicorn
