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

    QString writeNote(const QByteArray& contents)
    {
        const QString path = home_.path() + QStringLiteral("/note.json");
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
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

// The note's contents are checked in the library tests (card_round_trip_test,
// anki_fields_test, card_make_with_test); here only that each subcommand
// takes its options, runs the library and prints the result or the error.
TEST_F(CardCommand, MakeAndFieldsPrintTheNoteOrTheError)
{
    const CliRun made = lexicorn({"card", "make", "--dict", "LDOCE5", "--sentence", "She took the book home.", "--translation",
                                  "她把书带回家了。", "took", "1", "0"});
    ASSERT_EQ(made.status, 0) << made.err.toStdString();
    QJsonObject note = parsed(made);
    EXPECT_EQ(note.value("notetitle").toString(), QStringLiteral("took; take;🗣teɪk🔝●●●༒verb📇1-0🔚;"));
    EXPECT_EQ(note.value("highlight_text").toString(), QStringLiteral("She took the book home."));
    EXPECT_EQ(note.value("notes").toArray().at(0).toObject().value("text").toString(), QStringLiteral("她把书带回家了。"));
    // Without --dict the card is collins's, dictionary 1: its number follows the row.
    const CliRun collins = lexicorn({"card", "make", "take", "1", "1"});
    ASSERT_EQ(collins.status, 0) << collins.err.toStdString();
    EXPECT_EQ(parsed(collins).value("notetitle").toString(), QStringLiteral("take;🗣/teɪk/🔝5༒VERB📇1-1-1🔚;"));
    EXPECT_EQ(parsed(collins).value("notes").toArray().at(0).toObject().value("text").toString(), QString());  // no translation

    note.insert("noteid", "N-7");
    const QString path = writeNote(QJsonDocument(note).toJson());
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
    const QJsonObject ankiFields = parsed(fields).value("note").toObject().value("fields").toObject();
    EXPECT_EQ(ankiFields.value("EXTRAINFO").toString(), QStringLiteral("《Sample》<br>她把书带回家了。"));
    EXPECT_EQ(ankiFields.value("URL").toString(), QStringLiteral("laiskemprabapp://note/N-7"));
    // The sense was found in the dictionary the title names: no alert.
    EXPECT_FALSE(fields.err.contains(QStringLiteral("索引错误"))) << fields.err.toStdString();

    writeNote("took;🗣");
    const CliRun notJson = lexicorn({"card", "fields", "--ip", stored, path});
    EXPECT_EQ(notJson.status, 2);
    EXPECT_EQ(parsed(notJson).value("code").toInt(), 10000);
    EXPECT_TRUE(parsed(notJson).value("error").toString().startsWith(QStringLiteral("not a JSON note"))) << notJson.out.toStdString();
}

}  // namespace
}  // namespace lexicorn
