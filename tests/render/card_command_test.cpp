#include "card_fixtures.h"

#include "support/cli_run.h"

#include "lexicorn/anki/ksw_ankiconnect.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using testing::CliRun;
const auto lexicorn = testing::runLexicorn;

class CardCommand : public testing::CardHome {
protected:
    void SetUp() override
    {
        for (const char* name : {"LDOCE5_html.json", "collins.json", "wordforms.json"})
            home_.writeDict(QString::fromLatin1(name), testing::sampleFile(QString::fromLatin1(name)));
    }

    QString writeNote(const QJsonObject& note)
    {
        const QString path = home_.path() + QStringLiteral("/note.json");
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QJsonDocument(note).toJson());
        return path;
    }
};

QJsonObject parsed(const CliRun& run)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(run.out.toUtf8(), &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << run.out.toStdString();
    return document.object();
}

TEST_F(CardCommand, MakePrintsTheNoteThePopupWrites)
{
    const CliRun ldoce = lexicorn({"card", "make", "--dict", "LDOCE5", "--sentence", "She took the book home.", "--translation",
                                   "她把书带回家了。", "took", "1", "0"});
    ASSERT_EQ(ldoce.status, 0) << ldoce.err.toStdString();
    EXPECT_EQ(parsed(ldoce),
              (QJsonObject{{"noteid", ""},
                           {"notetitle", "took; take;🗣teɪk🔝●●●༒verb📇1-0🔚;"},
                           {"highlight_text", "She took the book home."},
                           {"notes", QJsonArray{QJsonObject{{"text", "她把书带回家了。"}, {"type", "TextNote"}, {"group", "sentenceCN"}},
                                                QJsonObject{{"text",
                                                             "💫MOVE🌒带走🌓[T]🌕get hold of; have with you as you go🇨🇳拿；带走\n"
                                                             "📌Don't forget to take an umbrella.🇨🇳别忘了带伞。\n"
                                                             "📌Take this book to your teacher.🇨🇳把这本书带给你的老师。"},
                                                            {"type", "TextNote"},
                                                            {"group", "exts"}}}}}));

    // Collins is dictionary 1: its number follows the row. No translation given: an empty one.
    const CliRun collins = lexicorn({"card", "make", "take", "1", "1"});
    ASSERT_EQ(collins.status, 0) << collins.err.toStdString();
    const QJsonObject note = parsed(collins);
    EXPECT_EQ(note.value("notetitle").toString(), QStringLiteral("take;🗣/teɪk/🔝5༒VERB📇1-1-1🔚;"));
    EXPECT_EQ(note.value("notes").toArray().at(0).toObject().value("text").toString(), QString());
}

TEST_F(CardCommand, FieldsPrintsTheAnkiNoteOrTheError)
{
    const CliRun made = lexicorn({"card", "make", "--dict", "LDOCE5", "--sentence", "She took the book home.", "took", "1", "0"});
    ASSERT_EQ(made.status, 0) << made.err.toStdString();
    QJsonObject note = parsed(made);
    note.insert("noteid", "N-7");
    const QString path = writeNote(note);

    testing::AnkiCollection anki(home_);
    ASSERT_TRUE(anki.ready()) << anki.problem().toStdString();
    const QString stored = KSWAnkiconnect::shareInstance().ipString();
    // The collection's address was stored by this process; --ip gives one for the call only.
    KSWAnkiconnect::shareInstance().setIpString_(QStringLiteral("127.0.0.1:%1").arg(testing::closedPort()));
    const CliRun unreachable = lexicorn({"card", "fields", path});
    EXPECT_EQ(unreachable.status, 2);
    EXPECT_EQ(parsed(unreachable), (QJsonObject{{"domain", "com.ksw.hookNM"}, {"code", 20000}, {"error", "Ankiconnect 连接失败！"}}));

    const CliRun fields = lexicorn({"card", "fields", "--book-title", "Sample", "--ip", stored, path});
    ASSERT_EQ(fields.status, 0) << fields.err.toStdString();
    const QJsonObject ankiNote = parsed(fields).value("note").toObject();
    EXPECT_EQ(ankiNote.value("deckName").toString(), QStringLiteral("Default"));
    EXPECT_EQ(ankiNote.value("fields").toObject().value("EXTRAINFO").toString(), QStringLiteral("《Sample》"));
    EXPECT_EQ(ankiNote.value("fields").toObject().value("URL").toString(), QStringLiteral("laiskemprabapp://note/N-7"));
    EXPECT_EQ(ankiNote.value("fields").toObject().value("SENTENCE").toString(), QStringLiteral("She <b>took</b> the book home."));
    // The sense was found in the dictionary the title names: no alert.
    EXPECT_FALSE(fields.err.contains(QStringLiteral("索引错误"))) << fields.err.toStdString();

    note.insert("notetitle", "took; take;🗣teɪk🔝●●●༒verb📇1-0");
    const CliRun broken = lexicorn({"card", "fields", "--ip", stored, writeNote(note)});
    EXPECT_EQ(broken.status, 2);
    EXPECT_EQ(parsed(broken).value("code").toInt(), 10000);
    EXPECT_TRUE(parsed(broken).value("error").toString().startsWith(QStringLiteral("标题结构错误: took; take;"))) << broken.out.toStdString();

    QFile notJsonFile(path);
    ASSERT_TRUE(notJsonFile.open(QIODevice::WriteOnly));
    notJsonFile.write("took;🗣");
    notJsonFile.close();
    const CliRun notJson = lexicorn({"card", "fields", "--ip", stored, path});
    EXPECT_EQ(notJson.status, 2);
    EXPECT_EQ(parsed(notJson).value("code").toInt(), 10000);
    EXPECT_TRUE(parsed(notJson).value("error").toString().startsWith(QStringLiteral("not a JSON note"))) << notJson.out.toStdString();
}

}  // namespace
}  // namespace lexicorn
