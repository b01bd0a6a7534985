#include "import_fixtures.h"

#include "support/temp_home.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using testing::CliRun;
const auto lexicorn = testing::runLexicorn;

// Five rows in the columns and conventions of ECDICT's own CSV: breaks
// inside a field as the two characters "\n", quoted fields with commas and
// doubled quotes, forms in the exchange column, a schwa written with the
// Cyrillic "ә", and a row cut short, as ECDICT's own sample has them.
const QByteArray ecdictCsv =
    "word,phonetic,definition,translation,pos,collins,oxford,tag,bnc,frq,exchange,detail,audio\r\n"
    "go,gəʊ,\"v. move from one place to another\\nn. a turn in a game\",\"vi. 去, 走\\nn. 尝试\",v:90/n:10,5,1,zk gk,50,40,"
    "p:went/d:gone/i:going/3:goes,,\r\n"
    "child,tʃaɪld,n. a young human being,n. 儿童; 孩子,,4,1,,100,90,s:children,,\r\n"
    "study,'stʌdi,v. learn about a subject,\"v. 学习, \"\"研究\"\"\",,3,,,,,,,\r\n"
    "good,gʊd,adj. of high quality,adj. 好的,,5,,,,,r:better/t:best,,\r\n"
    "about,ә'baʊt,prep. on the subject of,prep. 关于\r\n";

TEST(ImportRoundTrip, EcdictCsvWrittenByTheTest)
{
    testing::TempHome home;
    const QString csv = home.path() + QStringLiteral("/ecdict.csv");
    testing::writeFile(csv, ecdictCsv);
    // The user's own forms: kept, and the user's choice wins over the file's.
    home.writeDict(QStringLiteral("wordforms.json"), R"({"goes": "goose-step", "mice": "mouse"})");

    const CliRun run = lexicorn({"import", "--home", home.path(), "--into", "collins", "--word-forms", csv});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    EXPECT_TRUE(run.out.contains(QStringLiteral("imported 5 headwords"))) << run.out.toStdString();
    EXPECT_EQ(run.err.trimmed(), QStringLiteral("warning: %1 line 6: 4 of the header's 13 fields; imported with what it holds").arg(csv));
    EXPECT_EQ(testing::lookupJson(home.path(), QStringLiteral("collins"), QStringLiteral("about"))->enWords().at(0)->readings,
              QStringLiteral("/ə'baʊt/"));

    const QJsonObject forms = QJsonDocument::fromJson(home.readDict(QStringLiteral("wordforms.json"))).object();
    EXPECT_EQ(forms.value("goes").toString(), QStringLiteral("goose-step"));
    EXPECT_EQ(forms.value("mice").toString(), QStringLiteral("mouse"));

    // Irregular forms from the exchange column, "studies" by regular inflection.
    for (const auto& [selected, headword] : {std::pair{"children", "child"}, {"went", "go"}, {"studies", "study"},
                                             {"better", "good"}, {"Going", "go"}})
        EXPECT_EQ(testing::titleFound(home.path(), QStringLiteral("collins"), selected), headword) << selected;

    // One entry per part of speech, Chinese beside the English of its kind,
    // stars and readings as the popup shows them.
    const DictDataPtr go = testing::lookupJson(home.path(), QStringLiteral("collins"), QStringLiteral("go"));
    ASSERT_EQ(go->enWords().size(), 2u);
    const EnWord& verb = *go->enWords()[0];
    EXPECT_EQ((QStringList{verb.pos_en, verb.star, verb.readings, verb.defs.at(0)->def_en, verb.defs.at(0)->def_cn}),
              (QStringList{"vi.", "●●●●●", "/gəʊ/", "move from one place to another", "去, 走"}));
    EXPECT_EQ(go->enWords()[1]->defs.at(0)->def_cn, QStringLiteral("尝试"));
    const DictDataPtr study = testing::lookupJson(home.path(), QStringLiteral("collins"), QStringLiteral("study"));
    EXPECT_EQ(study->enWords().at(0)->defs.at(0)->def_cn, QStringLiteral("学习, \"研究\""));

    const testing::CardBack card = testing::cardBack(home.path(), QStringLiteral("collins"), QStringLiteral("went"), 0);
    EXPECT_EQ(card.headword, QStringLiteral("go"));
    EXPECT_EQ(card.defEn, QStringLiteral("move from one place to another"));
    EXPECT_EQ(card.defCn, QStringLiteral("去, 走"));
}

TEST(ImportRoundTrip, WordNetDatabaseFromDebian)
{
    testing::TempHome home;
    // WordNet's files named one by one are the one database they belong to.
    const QString dir = QStringLiteral(LEXICORN_WORDNET_DIR);
    const CliRun run = lexicorn({"import", "--home", home.path(), "--into", "LDOCE5", "--word-forms", dir + "/data.noun",
                                 dir + "/index.verb", dir + "/verb.exc"});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    EXPECT_TRUE(run.out.contains(QStringLiteral(" from 1 dictionary into "))) << run.out.toStdString();

    // Senses in WordNet's order, examples out of the gloss's quotes.
    const DictDataPtr dog = testing::lookupJson(home.path(), QStringLiteral("LDOCE5"), QStringLiteral("dog"));
    ASSERT_FALSE(dog->enWords().empty());
    const EnWord& noun = *dog->enWords().front();
    EXPECT_EQ(noun.pos_en, QStringLiteral("n."));
    EXPECT_TRUE(noun.defs.at(0)->def_en.startsWith(QStringLiteral("a member of the genus Canis"))) << noun.defs.at(0)->def_en.toStdString();
    ASSERT_FALSE(noun.defs.at(0)->exts.empty());
    EXPECT_EQ(noun.defs.at(0)->exts.at(0)->en, QStringLiteral("the dog barked all night"));
    EXPECT_EQ(dog->enWords().back()->pos_en, QStringLiteral("v."));

    // Irregular forms from the exception lists, "studies" by regular inflection.
    const QJsonObject forms = QJsonDocument::fromJson(home.readDict(QStringLiteral("wordforms.json"))).object();
    EXPECT_EQ(forms.value("better").toString(), QStringLiteral("good"));
    for (const auto& [selected, headword] : {std::pair{"children", "child"}, {"went", "go"}, {"studies", "study"}})
        EXPECT_EQ(testing::titleFound(home.path(), QStringLiteral("LDOCE5"), selected), headword) << selected;
}

TEST(ImportRoundTrip, FilesMergeIntoOneSlotInFileOrder)
{
    testing::TempHome home;
    const QString header = QStringLiteral("word,phonetic,definition,translation\n");
    const QString first = home.path() + QStringLiteral("/first.csv");
    const QString second = home.path() + QStringLiteral("/second.csv");
    testing::writeFile(first, (header + QStringLiteral("bank,,n. land beside a river,n. 河岸\nsole,,adj. only,adj. 唯一的\n")).toUtf8());
    testing::writeFile(second, (header + QStringLiteral("bank,,n. a place that keeps money,n. 银行\n")).toUtf8());
    // An older dictionary in the slot is replaced, not added to.
    home.writeDict(QStringLiteral("LDOCE5_html.json"), R"({"old":[{"index":0,"word":"old","enWords":[]}]})");

    const CliRun run = lexicorn({"import", "--home", home.path(), "--into", "LDOCE5", first, second});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    const DictDataPtr bank = testing::lookupJson(home.path(), QStringLiteral("LDOCE5"), QStringLiteral("bank"));
    ASSERT_EQ(bank->enWords().size(), 2u);
    EXPECT_EQ(bank->enWords()[0]->defs.at(0)->def_cn, QStringLiteral("河岸"));
    EXPECT_EQ(bank->enWords()[1]->defs.at(0)->def_cn, QStringLiteral("银行"));
    EXPECT_FALSE(home.readDict(QStringLiteral("LDOCE5_html.json")).contains("\"old\""));
    EXPECT_FALSE(QFileInfo::exists(home.dictPath(QStringLiteral("wordforms.json"))));  // only with --word-forms
    // Nothing is left from staging; the index is the lookup's, made on the first load.
    EXPECT_EQ(QDir(home.path() + QStringLiteral("/Dict")).entryList(QDir::Hidden | QDir::AllEntries | QDir::NoDotAndDotDot),
              (QStringList{QStringLiteral("LDOCE5_html.json"), QStringLiteral("LDOCE5_html.json.index")}));
}

TEST(ImportRoundTrip, AFailedImportSaysWhereAndLeavesDictAsItWas)
{
    testing::TempHome home;
    const auto write = [&](const char* name, const QByteArray& bytes) {
        const QString path = home.path() + u'/' + QString::fromLatin1(name);
        testing::writeFile(path, bytes);
        return path;
    };
    const QString good = write("good.csv", "word,translation\nrun,v. 跑\n");
    const QString unclosed = write("unclosed.csv", "word,translation\nrun,v. 跑\nwalk,\"v. 走\nfly,v. 飞\n");
    const QString stray = write("stray.csv", "word,translation\nrun,v. 跑\nwalk,\"v. 走\"x\n");
    const QString inner = write("inner.csv", "word,translation\nrun,v. 跑 \"quoted\"\n");
    const QString wide = write("wide.csv", "word,translation\nrun,v. 跑,extra\n");
    const QString text = write("notes.txt", "run");
    // A folder of no dictionary, and parts of sets without their main file.
    const QString empty = home.path() + QStringLiteral("/empty");
    QDir().mkpath(empty);
    testing::writeFile(empty + QStringLiteral("/readme.txt"), "nothing here");
    const QString lonelyMdd = write("lonely.mdd", "sounds");
    const QString lonelyDict = write("lonely.dict.dz", "text");
    // A WordNet database whose adverb data stops halfway: the index points past its end.
    const QString wordnet = home.path() + QStringLiteral("/wordnet");
    QDir().mkpath(wordnet);
    for (const QString& name : QDir(QStringLiteral(LEXICORN_WORDNET_DIR)).entryList(QDir::Files))
        QFile::copy(QStringLiteral(LEXICORN_WORDNET_DIR "/") + name, wordnet + u'/' + name);
    QFile adverbs(wordnet + QStringLiteral("/data.adv"));
    ASSERT_TRUE(adverbs.resize(adverbs.size() / 2));
    home.writeDict(QStringLiteral("collins_html.json"), R"({"old":[{"index":0,"word":"old","enWords":[]}]})");
    home.writeDict(QStringLiteral("wordforms.json"), R"({"ran": "run"})");
    const QMap<QString, QByteArray> before = testing::folderSnapshot(home.path() + QStringLiteral("/Dict"));

    struct Case {
        QStringList files;
        QString message;
    };
    const Case cases[] = {
        {{unclosed}, unclosed + QStringLiteral(":3: a quoted field is never closed")},
        {{good, stray}, stray + QStringLiteral(":3: text after the closing quote of a field")},
        {{inner}, inner + QStringLiteral(":2: a quote inside an unquoted field (column 2)")},
        {{wide}, wide + QStringLiteral(":2: 3 fields, but the header names 2")},
        {{good, text}, text + QStringLiteral(": not a file of a dictionary this import reads")},
        {{empty}, empty + QStringLiteral(": no dictionary in this folder")},
        {{lonelyMdd}, lonelyMdd + QStringLiteral(": a .mdd holds only the sounds and pictures of a dictionary; its .mdx is not beside it")},
        {{lonelyDict}, lonelyDict + QStringLiteral(": a StarDict file without its .ifo beside it")},
        {{home.path() + QStringLiteral("/missing.csv")}, QStringLiteral("missing.csv: no such file")},
        {{good, wordnet}, QStringLiteral("is past the end of ") + wordnet + QStringLiteral("/data.adv")},
    };
    for (const Case& c : cases) {
        const CliRun run = lexicorn(QStringList{"import", "--home", home.path(), "--into", "collins", "--word-forms"} + c.files);
        EXPECT_EQ(run.status, 1) << c.message.toStdString();
        EXPECT_TRUE(run.err.contains(c.message)) << run.err.toStdString();
        EXPECT_TRUE(run.err.contains(QStringLiteral("the Dict folder is unchanged"))) << run.err.toStdString();
        EXPECT_EQ(testing::folderSnapshot(home.path() + QStringLiteral("/Dict")), before) << c.message.toStdString();
    }

    // A word-form map that does not decode is the user's: the import refuses
    // rather than replace it.
    home.writeDict(QStringLiteral("wordforms.json"), R"({"ran": )");
    const QMap<QString, QByteArray> broken = testing::folderSnapshot(home.path() + QStringLiteral("/Dict"));
    const CliRun run = lexicorn({"import", "--home", home.path(), "--into", "collins", "--word-forms", good});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.err.contains(home.dictPath(QStringLiteral("wordforms.json")) + QStringLiteral(" cannot be read"))) << run.err.toStdString();
    EXPECT_EQ(testing::folderSnapshot(home.path() + QStringLiteral("/Dict")), broken);
}

}  // namespace
}  // namespace lexicorn
