#include "sync_fixtures.h"

#include "lexicorn/anki/anki_reply.h"
#include "lexicorn/anki/ksw_ankiconnect.h"
#include "lexicorn/render/note_format.h"

#include "foundation/user_defaults.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using testing::AnkiCollection;

// The card the popup makes for "took" in "She took the book home.": LDOCE's
// "take", first sense.
NoteRecord tookCard(const QString& noteid)
{
    std::optional<NoteRecord> note = testing::cardFor("took", "She took the book home.", 1, 0, noteid);
    EXPECT_TRUE(note);
    return note.value_or(NoteRecord{});
}

class CardMakeWith : public testing::CardHome {
protected:
    void SetUp() override { testing::loadSampleDictionary(0); }

    QStringList takeAlerts()
    {
        QCoreApplication::processEvents();
        return std::exchange(alerts_.messages, {});
    }

    testing::AlertLog alerts_;
};

TEST_F(CardMakeWith, AnkiDecidesBetweenNewCardUpdateAndError)
{
    AnkiCollection anki(home_);
    ASSERT_TRUE(anki.ready()) << anki.problem().toStdString();
    KSWAnkiconnect& client = KSWAnkiconnect::shareInstance();
    const JsonDictNote card(tookCard(QStringLiteral("5F0C-N-1")));

    // Not in Anki yet: a new note.
    CardResult<QJsonObject> params = makeWith(card, QStringLiteral("Sample"));
    ASSERT_TRUE(params) << params.error().message().toStdString();
    EXPECT_EQ(params->keys(), QStringList{"note"});
    EXPECT_FALSE(params->value("note").toObject().contains("id"));
    const auto added = client.addToAnkiWithWordDict_(params.value());
    ASSERT_TRUE(added && ankiReplySucceeded(*added)) << (added ? added->text().toStdString() : "no reply");
    const QJsonValue id = added->value("result");

    // Found again by the note id it holds: the update form, which Anki takes.
    params = makeWith(card, QStringLiteral("Sample"));
    ASSERT_TRUE(params) << params.error().message().toStdString();
    EXPECT_EQ(params->value("note").toObject().value("id"), id);
    const auto updated = client.updateWithParams_(params.value());
    ASSERT_TRUE(updated && ankiReplySucceeded(*updated));
    EXPECT_EQ(anki.notesHolding(QStringLiteral("5F0C-N-1")), QJsonArray{id});
    EXPECT_TRUE(takeAlerts().isEmpty());

    // A second Anki note with the same id text makes the card ambiguous.
    const auto second = client.addToAnkiWithWordDict_(QJsonObject{
        {"note", QJsonObject{{"deckName", "Default"}, {"modelName", "Basic"}, {"fields", QJsonObject{{"Front", "see 5F0C-N-1"}}}}}});
    ASSERT_TRUE(second && ankiReplySucceeded(*second));
    params = makeWith(card, QStringLiteral("Sample"));
    ASSERT_FALSE(params);
    EXPECT_EQ(params.error().code, 10000);
    const QString ids = QString::fromUtf8(QJsonDocument(anki.notesHolding(QStringLiteral("5F0C-N-1"))).toJson(QJsonDocument::Compact));
    EXPECT_EQ(params.error().message(), QStringLiteral("查询到的个数不为 1: ") + ids);
    EXPECT_TRUE(ids.contains(QString::number(qint64(id.toDouble()))));

    // Anki's own error comes back as the message.
    params = makeWith(JsonDictNote(tookCard(QStringLiteral("("))), {});
    ASSERT_FALSE(params);
    EXPECT_EQ(params.error().code, 10000);
    EXPECT_TRUE(params.error().message().startsWith(QStringLiteral("Invalid search"))) << params.error().message().toStdString();
}

TEST_F(CardMakeWith, AnkiOutOfReachIsCode20000)
{
    KSWAnkiconnect::shareInstance().setIpString_(QStringLiteral("127.0.0.1:%1").arg(testing::closedPort()));
    // Even a card that would not parse: Anki is asked first.
    for (const QString& title : {tookCard({}).notetitle, QStringLiteral("broken")}) {
        NoteRecord record = tookCard(QStringLiteral("N-1"));
        record.notetitle = title;
        const CardResult<QJsonObject> params = makeWith(JsonDictNote(record), {});
        ASSERT_FALSE(params) << title.toStdString();
        EXPECT_EQ(params.error().code, 20000);
        EXPECT_EQ(params.error().message(), QStringLiteral("Ankiconnect 连接失败！"));
    }
}

TEST_F(CardMakeWith, TheSenseIsCheckedAgainstTheDictionary)
{
    testing::AnkiCollection anki(home_);
    ASSERT_TRUE(anki.ready()) << anki.problem().toStdString();
    home_.writeDict(QStringLiteral("take_ex1.mp3"), "umbrella");
    const QString alert = QStringLiteral("索引错误: took\n此单词将重新生成单词和例句语音!");

    struct Case {
        const char* name;
        std::function<void(NoteRecord&)> edit;
        bool found;
    };
    const auto replaceInTitle = [](const char* from, const char* to) {
        return [=](NoteRecord& note) { note.notetitle.replace(QString::fromUtf8(from), QString::fromUtf8(to)); };
    };
    const auto replaceInBlock = [](const char* from, const char* to) {
        return [=](NoteRecord& note) {
            QJsonObject block = note.notes[1].toObject();
            block["text"] = block["text"].toString().replace(QString::fromUtf8(from), QString::fromUtf8(to));
            note.notes[1] = block;
        };
    };
    const Case cases[] = {
        {"as written", [](NoteRecord&) {}, true},
        {"blanks added around the definitions", replaceInBlock("🇨🇳", " \t🇨🇳 "), true},
        {"other fields edited", replaceInBlock("MOVE", "CARRY"), true},
        {"English definition edited", replaceInBlock("get hold of", "grab"), false},
        {"Chinese definition edited", replaceInBlock("拿；带走", "拿"), false},
        {"no such entry", replaceInTitle("📇1-0", "📇3-0"), false},
        {"no such sense", replaceInTitle("📇1-0", "📇1-9"), false},
        {"section 0 is the popup's head", replaceInTitle("📇1-0", "📇0-0"), false},
        {"another sense's place", replaceInTitle("📇1-0", "📇1-1"), false},
    };
    for (const Case& c : cases) {
        NoteRecord note = tookCard(QStringLiteral("N-2"));
        c.edit(note);
        const CardResult<QJsonObject> params = makeWith(JsonDictNote(note), {});
        ASSERT_TRUE(params) << c.name << ": " << params.error().message().toStdString();
        const QString definition = params->value("note").toObject().value("fields").toObject().value("DEFINITION").toString();
        if (c.found) {
            EXPECT_TRUE(takeAlerts().isEmpty()) << c.name;
            // The example's own sound file from the dictionary entry.
            EXPECT_TRUE(definition.contains(QStringLiteral("[sound:MN3_LW_take_ex1.mp3]"), Qt::CaseInsensitive))
                << c.name << definition.toStdString();
        } else {
            EXPECT_EQ(takeAlerts(), QStringList{alert}) << c.name;
            // Made afresh: the voice service is out of reach, so the offline voice.
            EXPECT_FALSE(definition.contains(QStringLiteral("take_ex1"), Qt::CaseInsensitive)) << c.name;
            EXPECT_TRUE(definition.contains(QStringLiteral("[sound:MN3_LW_ex_"), Qt::CaseInsensitive)) << c.name;
        }
    }
}

}  // namespace
}  // namespace lexicorn
