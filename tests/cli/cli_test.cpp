#include "support/temp_home.h"

#include "lexicorn/dictionary/record_decoder.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>

#include "support/cli_run.h"

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using testing::CliRun;
const auto lexicorn = testing::runLexicorn;

const QByteArray rawDictionary = R"({"run": {"star": "5", "readings": ["rʌn"], "defs": [
    {"def_cn": "跑", "def_en": "move fast", "pos_cn": "动词", "pos_en": "VERB", "ext": [{"ext_cn": "他跑了。", "ext_en": "He ran."}]}]},
  "walk": {"star": "4", "readings": [], "defs": [{"def_cn": "走", "def_en": "move on foot", "pos_cn": "动词", "pos_en": "VERB", "ext": []}]}})";

TEST(Cli, BadCallsSayWhatIsWrongOnOneLineAndFail)
{
    testing::TempHome home;
    struct Case {
        QStringList arguments;
        int status;
        const char* message;
    };
    const Case cases[] = {
        {{}, 2, "usage: lexicorn"},
        {{"frobnicate"}, 2, "unknown command \"frobnicate\""},
        {{"lookup"}, 2, "lookup needs at least one WORD"},
        {{"lookup", "--colour", "x"}, 2, "unknown option --colour"},
        {{"lookup", "--dict", "oxford", "x"}, 2, "unknown dictionary \"oxford\""},
        {{"lookup", "--sentence"}, 2, "--sentence needs a value"},
        {{"lookup", "--home", "/no/such/folder", "x"}, 1, "no such folder: /no/such/folder"},
        {{"lookup", "--home", home.path(), "run"}, 1, "the collins dictionary could not be loaded: neither"},
        {{"lookup", "--home", home.path(), "--dict", "LDOCE5", "run"}, 1, "the LDOCE5 dictionary could not be loaded from"},
        {{"legacy", "--dict", "2", "x"}, 2, "--dict takes 0 (LDOCE5) or 1 (collins)"},
        {{"legacy", "a", "b"}, 2, "legacy needs exactly one WORD"},
        {{"convert", "--home", home.path()}, 1, "no raw dictionary at"},
    };
    for (const Case& c : cases) {
        const CliRun run = lexicorn(c.arguments);
        EXPECT_EQ(run.status, c.status) << c.arguments.join(u' ').toStdString();
        EXPECT_TRUE(run.err.contains(QString::fromUtf8(c.message))) << c.arguments.join(u' ').toStdString() << "\n" << run.err.toStdString();
        EXPECT_TRUE(run.out.isEmpty()) << run.out.toStdString();
    }
}

TEST(Cli, LookupPrintsOneJsonDocumentPerWord)
{
    testing::TempHome home;
    home.writeDict(QStringLiteral("collins.json"), rawDictionary);
    home.writeDict(QStringLiteral("wordforms.json"), R"({"ran": "run"})");
    const CliRun run = lexicorn({"lookup", "--home", home.path(), "--json", "--sentence", "He ran home.", "ran", "Walk", "fly"});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    const QStringList lines = run.out.split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 3);

    const char* expectedTitles[] = {"run", "walk", nullptr};
    for (int i = 0; i < 3; ++i) {
        jsonread::Failure failure;
        const DictDataPtr data = decodeDictData(lines[i].toStdString(), failure);
        ASSERT_TRUE(data) << failure.describe().toStdString();
        EXPECT_EQ(data->quoteSentence(), QStringLiteral("He ran home."));
        if (expectedTitles[i])
            EXPECT_EQ(data->enWords().at(0)->title, QString::fromUtf8(expectedTitles[i]));
        else
            EXPECT_TRUE(data->enWords().empty());
    }
    EXPECT_TRUE(lines[1].startsWith(QStringLiteral("{\"word\":\"Walk\"")));

    const CliRun readable = lexicorn({"lookup", "--home", home.path(), "ran"});
    ASSERT_EQ(readable.status, 0);
    EXPECT_TRUE(readable.out.contains(QStringLiteral("move fast  跑"))) << readable.out.toStdString();
    EXPECT_TRUE(readable.out.contains(QStringLiteral("He ran.  他跑了。")));
}

TEST(Cli, ConvertWritesTheCacheAndReportsCountAndTime)
{
    testing::TempHome home;
    home.writeDict(QStringLiteral("collins.json"), rawDictionary);
    home.writeDict(QStringLiteral("collins_html.json"), QByteArray(4096, ' '));  // an old, longer cache is replaced
    const CliRun run = lexicorn({"convert", "--home", home.path()});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^converted 2 headwords into .*collins_html.json in \\d+\\.\\d\\d s\\n$")).match(run.out).hasMatch())
        << run.out.toStdString();
    const QByteArray cache = home.readDict(QStringLiteral("collins_html.json"));
    EXPECT_TRUE(cache.startsWith("{\"run\":[{\"index\":0,\"word\":\"run\""));
    EXPECT_TRUE(cache.endsWith("}]}"));

    const CliRun lookup = lexicorn({"lookup", "--home", home.path(), "--json", "walk"});
    EXPECT_EQ(lookup.status, 0);
    EXPECT_TRUE(lookup.out.contains(QStringLiteral("move on foot")));
}

TEST(Cli, LegacyRecordAsJson)
{
    testing::TempHome home;
    home.writeDict(QStringLiteral("collins.json"), rawDictionary);
    home.writeDict(QStringLiteral("wordforms.json"), R"({"ran": "run"})");
    const CliRun run = lexicorn({"legacy", "--home", home.path(), "--json", " Ran\n"});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    const QJsonObject record = QJsonDocument::fromJson(run.out.toUtf8()).object();
    EXPECT_EQ(record.value("word").toString(), QStringLiteral(" Ran\n"));
    EXPECT_EQ(record.value("formatedWord").toString(), QStringLiteral("run"));
    EXPECT_EQ(record.value("star").toString(), QStringLiteral("5"));
    EXPECT_EQ(record.value("defs").toArray().at(0).toObject().value("def_cn").toString(), QStringLiteral("跑"));
}

TEST(Cli, DemoLooksUpEveryWordOfTheSampleBooksFirstPage)
{
    const CliRun run = lexicorn({"demo"});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    const QRegularExpressionMatch summary =
        QRegularExpression(QStringLiteral("found: collins (\\d+)/(\\d+)  LDOCE5 (\\d+)/(\\d+)")).match(run.out);
    ASSERT_TRUE(summary.hasMatch()) << run.out.toStdString();
    const int words = summary.captured(2).toInt();
    EXPECT_GT(words, 50);
    EXPECT_EQ(summary.captured(1).toInt(), words) << run.out.toStdString();  // the sample covers every word
    EXPECT_EQ(summary.captured(3).toInt(), words) << run.out.toStdString();
}

}  // namespace
}  // namespace lexicorn
