// Cards against Anki as users run it: AnkiConnect puts new cards in the note
// type's deck, matches field names in one action and not the other, answers
// slowly, and stores media under names of its own. The Anki peer reproduces
// each of these when a test switches it on.

#include "sync_fixtures.h"

#include "lexicorn/anki/ksw_ankiconnect.h"
#include "lexicorn/anki/sync/card_sync.h"
#include "lexicorn/render/anki_fields.h"
#include "lexicorn/render/note_format.h"

#include "foundation/user_defaults.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

class AnkiWays : public testing::CardHome {
protected:
    void SetUp() override
    {
        testing::loadSampleDictionary(0);
        ASSERT_TRUE(anki_.ready()) << anki_.problem().toStdString();
    }

    static KSWAnkiconnect::Reply ask(const QString& action, const QJsonObject& params)
    {
        return KSWAnkiconnect::shareInstance().postRequestCommand_params_(action, params);
    }

    static std::shared_ptr<const DictNote> card(const QString& noteid, const QString& translation = QStringLiteral("她把书带回家了。"))
    {
        std::optional<NoteRecord> note = testing::cardFor("took", "She took the book home.", 1, 0, noteid);
        EXPECT_TRUE(note);
        NoteRecord record = note.value_or(NoteRecord{});
        if (!record.notes.isEmpty()) {
            QJsonObject first = record.notes[0].toObject();
            first["text"] = translation;
            record.notes[0] = first;
        }
        return std::make_shared<JsonDictNote>(record);
    }

    static BatchSync::Outcome sync(const BatchSync::NoteList& notes)
    {
        return BatchSync({}).run(notes, QStringLiteral("Sample"));
    }

    // The decks the cards of the Anki notes holding this text are in.
    static QStringList decksOf(const QString& text)
    {
        const auto cards = ask(QStringLiteral("findCards"), QJsonObject{{"query", text}});
        const auto info = ask(QStringLiteral("cardsInfo"), QJsonObject{{"cards", cards ? cards->result() : QJsonValue()}});
        QStringList decks;
        for (const QJsonValue& one : info ? info->result().toArray() : QJsonArray())
            decks << one.toObject().value("deckName").toString();
        return decks;
    }

    testing::AlertLog alerts_;
    testing::SyncPeer anki_{home_};
};

TEST_F(AnkiWays, ANewCardGoesToTheConfiguredDeckAndIsNeverAddedTwice)
{
    ask(QStringLiteral("createDeck"), QJsonObject{{"deck", "English Reading"}});
    UserDefaults::standard().set(ankiset::deckName, QStringLiteral("English Reading"));
    ask(QStringLiteral("peerSwitches"), QJsonObject{{"cardsInNoteTypeDeck", true}});

    const auto note = card(QStringLiteral("WAY-0001"));
    for (int round = 1; round <= 3; ++round) {
        const BatchSync::Outcome outcome = sync({note});
        EXPECT_EQ(outcome.counts.done, 1u) << "round " << round << outcome.errorText.toStdString();
        EXPECT_EQ(anki_.notesHolding(QStringLiteral("WAY-0001")).size(), 1) << "round " << round;
        EXPECT_EQ(decksOf(QStringLiteral("WAY-0001")), QStringList{"English Reading"}) << "round " << round;
    }

    // Moved by the user to another deck: found there and updated, left there.
    const auto cards = ask(QStringLiteral("findCards"), QJsonObject{{"query", "WAY-0001"}});
    ASSERT_TRUE(cards);
    ask(QStringLiteral("changeDeck"), QJsonObject{{"cards", cards->result()}, {"deck", "Default"}});
    const BatchSync::Outcome moved = sync({card(QStringLiteral("WAY-0001"), QStringLiteral("她把那本书带回了家。"))});
    EXPECT_EQ(moved.counts.done, 1u) << moved.errorText.toStdString();
    const QJsonArray found = anki_.notesHolding(QStringLiteral("WAY-0001"));
    ASSERT_EQ(found.size(), 1);
    EXPECT_TRUE(anki_.fieldsOf(found[0]).value("EXTRAINFO").toString().contains(QStringLiteral("她把那本书带回了家。")));
    EXPECT_EQ(decksOf(QStringLiteral("WAY-0001")), QStringList{"Default"});
}

TEST_F(AnkiWays, FieldNamesAreTheNoteTypesWhateverTheirCase)
{
    UserDefaults& defaults = UserDefaults::standard();
    defaults.set(ankiset::expression, QStringLiteral("expression"));
    defaults.set(ankiset::extraInfo, QStringLiteral("ExtraInfo"));

    BatchSync::Outcome outcome = sync({card(QStringLiteral("WAY-0002"))});
    ASSERT_EQ(outcome.counts.done, 1u) << outcome.errorText.toStdString();
    outcome = sync({card(QStringLiteral("WAY-0002"), QStringLiteral("她把那本书带回了家。"))});
    ASSERT_EQ(outcome.counts.done, 1u) << outcome.errorText.toStdString();
    const QJsonArray found = anki_.notesHolding(QStringLiteral("WAY-0002"));
    ASSERT_EQ(found.size(), 1);
    const QJsonObject fields = anki_.fieldsOf(found[0]);
    EXPECT_EQ(fields.value("EXPRESSION").toString(), QStringLiteral("took"));
    EXPECT_TRUE(fields.value("EXTRAINFO").toString().contains(QStringLiteral("她把那本书带回了家。")))
        << fields.value("EXTRAINFO").toString().toStdString();

    // A field the note type does not have is an error line, not a success.
    defaults.set(ankiset::reading, QStringLiteral("Pronunciation"));
    for (const QString& noteid : {QStringLiteral("WAY-0002"), QStringLiteral("WAY-0003")}) {
        outcome = sync({card(noteid)});
        EXPECT_EQ(outcome.counts.done, 0u) << noteid.toStdString();
        EXPECT_TRUE(outcome.errorText.contains(QStringLiteral("“Pronunciation”"))) << outcome.errorText.toStdString();
    }
    EXPECT_TRUE(anki_.notesHolding(QStringLiteral("WAY-0003")).isEmpty());
}

TEST_F(AnkiWays, ACardNotYetInTheNotebookIsNew)
{
    ASSERT_EQ(sync({card(QStringLiteral("WAY-0004"))}).counts.done, 1u);
    ASSERT_EQ(anki_.noteCount(), 1);
    for (const QString& blank : {QString(), QStringLiteral(" \t")}) {
        const CardResult<QJsonObject> params = makeWith(*card(blank), QStringLiteral("Sample"));
        ASSERT_TRUE(params) << params.error().message().toStdString();
        EXPECT_FALSE(params->value("note").toObject().contains("id")) << "\"" << blank.toStdString() << "\"";
    }
}

TEST_F(AnkiWays, EverySoundTagNamesAFileAnkiHas)
{
    // A voice service that answers in 2.2 s, longer than one AnkiConnect request may take.
    testing::ServerProcess voice(QStringLiteral("python3"), {QStringLiteral(LEXICORN_TESTS_DIR "/services/voice_server.py"), "2.2"});
    ASSERT_TRUE(voice.started());
    setVoiceHost(voice.address());

    const BatchSync::Outcome outcome = sync({card(QStringLiteral("WAY-0005"))});
    ASSERT_EQ(outcome.counts.done, 1u) << outcome.errorText.toStdString();
    const QJsonArray found = anki_.notesHolding(QStringLiteral("WAY-0005"));
    ASSERT_EQ(found.size(), 1);
    const QJsonObject fields = anki_.fieldsOf(found[0]);
    const QStringList media = anki_.mediaNames();
    int tags = 0;
    for (const QJsonValue& value : fields) {
        QRegularExpressionMatchIterator tag = QRegularExpression(QStringLiteral("\\[sound:([^\\]]+)\\]")).globalMatch(value.toString());
        while (tag.hasNext()) {
            const QString name = tag.next().captured(1);
            EXPECT_TRUE(media.contains(name)) << name.toStdString();
            EXPECT_TRUE(anki_.mediaFile(name).startsWith("ID3 fake mp3 for ")) << name.toStdString();
            ++tags;
        }
    }
    EXPECT_GE(tags, 2);  // the word and its example
}

TEST_F(AnkiWays, ASoundStoredWithoutAnAnswerIsLookedForInAnki)
{
    // Every store takes longer than the client waits: Anki stores the file
    // all the same, under a lower-case name, and is then asked for it.
    ask(QStringLiteral("peerSwitches"), QJsonObject{{"mediaDelay", 2.1}});
    const std::vector<StoredMedia> stored = storeMediaFiles({MediaFile{QStringLiteral("MN3_YD_Slow_1.mp3"), "ID3 slow"}});
    ASSERT_EQ(stored.size(), 1u);
    EXPECT_TRUE(stored[0].stored()) << stored[0].problem.toStdString();
    EXPECT_TRUE(anki_.mediaNames().contains(stored[0].name)) << stored[0].name.toStdString();
    EXPECT_EQ(stored[0].name.toLower(), QStringLiteral("mn3_yd_slow_1.mp3"));
}

TEST_F(AnkiWays, ASlowAnkiGetsEachCardOnce)
{
    // Each add takes longer than the client waits for an answer.
    ask(QStringLiteral("peerSwitches"), QJsonObject{{"addDelay", 2.5}});
    struct Case {
        const char* duplicates;
        const char* noteid;
    };
    for (const Case& c : {Case{"NO", "WAY-0006"}, Case{"YES", "WAY-0007"}}) {
        UserDefaults::standard().set(ankiset::duplicate, QString::fromUtf8(c.duplicates));
        for (int round = 1; round <= 2; ++round) {
            const BatchSync::Outcome outcome = sync({card(QString::fromUtf8(c.noteid))});
            EXPECT_EQ(outcome.counts.done, 1u) << c.duplicates << " round " << round << outcome.errorText.toStdString();
            EXPECT_EQ(anki_.notesHolding(QString::fromUtf8(c.noteid)).size(), 1) << c.duplicates << " round " << round;
        }
    }
}

}  // namespace
}  // namespace lexicorn
