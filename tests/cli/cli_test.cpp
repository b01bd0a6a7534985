#include "support/temp_home.h"

#include "lexicorn/dictionary/record_decoder.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
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

// Every command's bad calls go through one argument reader and one error path:
// a usage error exits 2 with one line on standard error, a failed command 1
// with that line last (after what the engine logged), and nothing goes to
// standard output.
TEST(Cli, BadCallsSayWhatIsWrongOnOneLineAndFail)
{
    testing::TempHome home;
    testing::TempHome samples;
    samples.copySampleDictionaries();
    const QString book = QStringLiteral(LEXICORN_SAMPLE_DIR "/books/sample-book.pdf");
    struct Case {
        QStringList arguments;
        int status;
        QString message;
    };
    const Case cases[] = {
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
        {{"translate"}, 2, "translate needs a SENTENCE"},
        {{"translate", "--engine", "google", "Hi"}, 2, "--engine takes a number"},
        {{"say"}, 2, "say needs exactly one WORD"},
        {{"say", "two", "words"}, 2, "say needs exactly one WORD"},
        {{"say", "  "}, 2, "say needs exactly one WORD"},
        {{"say", "--out=", "hello"}, 2, "--out needs a file name"},
        {{"rows", "a"}, 2, "rows prints JSON only"},
        {{"rows", "--json", "a", "b"}, 2, "rows needs exactly one WORD"},
        {{"card"}, 2, "card needs a subcommand"},
        {{"card", "make", "took", "1"}, 2, "card make needs WORD SECTION ROW"},
        {{"card", "make", "took", "0", "0"}, 2, "SECTION must be 1 or more"},
        {{"card", "make", "took", "x", "0"}, 2, "SECTION must be a whole number"},
        {{"card", "make", "--home", samples.path(), "took", "1", "40"}, 1, "the popup for \"took\" has no row 40 in section 1"},
        {{"card", "fields"}, 2, "card fields needs exactly one NOTE_JSON_FILE"},
        {{"card", "fields", "/no/such/note.json"}, 1, "cannot read /no/such/note.json"},
        {{"sentences", "--page", "1"}, 2, "sentences needs --pdf FILE"},
        {{"sentences", "--pdf", book, "--page", "0"}, 2, "a page number counting from 1"},
        {{"sentences", "--pdf", book, "--page", "two"}, 2, "a page number counting from 1"},
        {{"sentences", "--pdf", book, "--page", "1", "extra"}, 2, "sentences takes no words"},
        {{"sentences", "--pdf", book, "--page", "4"}, 1, "has no page 4 (it has 3)"},
        {{"sentences", "--pdf", "/no/such/book.pdf", "--page", "1"}, 1, "cannot read the book /no/such/book.pdf"},
    };
    for (const Case& c : cases) {
        const CliRun run = lexicorn(c.arguments);
        const std::string call = c.arguments.join(u' ').toStdString();
        EXPECT_EQ(run.status, c.status) << call << "\n" << run.err.toStdString();
        const QString said = run.err.trimmed().section(u'\n', -1);
        EXPECT_TRUE(said.startsWith(QStringLiteral("lexicorn: ")) && said.contains(c.message)) << call << "\n" << run.err.toStdString();
        if (c.status == 2) {
            EXPECT_EQ(run.err.count(u'\n'), 1) << call << "\n" << run.err.toStdString();
        }
        EXPECT_TRUE(run.out.isEmpty()) << call << "\n" << run.out.toStdString();
    }
    const CliRun bare = lexicorn({});
    EXPECT_EQ(bare.status, 2);
    EXPECT_TRUE(bare.err.startsWith(QStringLiteral("usage: lexicorn"))) << bare.err.toStdString();
}

TEST(Cli, LookupPrintsOneJsonDocumentPerWordAndLegacyTheRecord)
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

    const CliRun legacy = lexicorn({"legacy", "--home", home.path(), "--json", " Ran\n"});
    ASSERT_EQ(legacy.status, 0) << legacy.err.toStdString();
    const QJsonObject record = QJsonDocument::fromJson(legacy.out.toUtf8()).object();
    EXPECT_EQ((QStringList{record.value("word").toString(), record.value("formatedWord").toString(), record.value("star").toString(),
                           record.value("defs").toArray().at(0).toObject().value("def_cn").toString()}),
              (QStringList{" Ran\n", "run", "5", "跑"}));
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
