// StarDict files written at test time by Debian's stardict-tools (tabfile:
// plain text in a .dict.dz; babylon: HTML with synonyms), read back by our
// reader and imported through the real lexicorn tool.

#include "import_fixtures.h"

#include "support/temp_home.h"

#include "lexicorn/dictionary/import/dictionary_sources.h"
#include "lexicorn/dictionary/import/stardict_reader.h"

#include <QDir>
#include <QFile>
#include <QMap>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

namespace lexicorn {
namespace {

using dictimport::Markup;
using dictimport::SourceEntry;
using testing::CollectingSink;

const QString toolDir = QStringLiteral("/usr/lib/stardict-tools");

// Runs a stardict-tools converter on a source file in dir; it writes
// <base>.ifo, .idx, .dict.dz (and .syn) beside it.
void convert(const QString& dir, const QString& tool, const QString& source, const QByteArray& text)
{
    testing::writeFile(dir + u'/' + source, text);
    QProcess process;
    process.setWorkingDirectory(dir);
    process.start(toolDir + u'/' + tool, {source});
    ASSERT_TRUE(process.waitForFinished(60000));
    ASSERT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
}

// The tools' files: plain text, and HTML with synonyms; then the same HTML
// dictionary with its body uncompressed and its index gzipped, and the plain
// one with a 64-bit index.
void makeFixtures(const QString& dir)
{
    convert(dir, QStringLiteral("tabfile"), QStringLiteral("plain.txt"),
            "apple\ta round fruit\\n苹果\nrun\tto move fast\nzoo\ta place with animals\n");
    convert(dir, QStringLiteral("babylon"), QStringLiteral("html.babylon"),
            "\n#stripmethod=keep\n#sametypesequence=h\n#bookname=html\n\n"
            "apple|apples|pomme\n<b>n.</b> a round fruit<br>苹果\n\n"
            "run|ran\nto move fast\n\n");
    QDir(dir).mkdir(QStringLiteral("open"));
    for (const char* ext : {".ifo", ".idx", ".syn"})
        QFile::copy(dir + QStringLiteral("/html") + ext, dir + QStringLiteral("/open/html") + ext);
    QProcess unzip;
    unzip.start(QStringLiteral("dictzip"), {QStringLiteral("-d"), QStringLiteral("-c"), dir + QStringLiteral("/html.dict.dz")});
    ASSERT_TRUE(unzip.waitForFinished(60000));
    testing::writeFile(dir + QStringLiteral("/open/html.dict"), unzip.readAllStandardOutput());
    ASSERT_EQ(QProcess::execute(QStringLiteral("gzip"), {dir + QStringLiteral("/open/html.idx")}), 0);

    // A 64-bit index: the tool's entries with their offsets widened.
    QDir(dir).mkdir(QStringLiteral("wide"));
    const QByteArray idx = testing::readFile(dir + QStringLiteral("/plain.idx"));
    QByteArray wide;
    for (qsizetype at = 0; at < idx.size();) {
        const qsizetype end = idx.indexOf('\0', at);
        wide += idx.mid(at, end + 1 - at) + QByteArray(4, '\0') + idx.mid(end + 1, 8);
        at = end + 9;
    }
    testing::writeFile(dir + QStringLiteral("/wide/plain.idx"), wide);
    QByteArray ifo = testing::readFile(dir + QStringLiteral("/plain.ifo"));
    ifo.replace("version=2.4.2", "version=3.0.0\nidxoffsetbits=64");
    ifo.replace(QByteArray("idxfilesize=") + QByteArray::number(idx.size()), QByteArray("idxfilesize=") + QByteArray::number(wide.size()));
    testing::writeFile(dir + QStringLiteral("/wide/plain.ifo"), ifo);
    QFile::copy(dir + QStringLiteral("/plain.dict.dz"), dir + QStringLiteral("/wide/plain.dict.dz"));
}

TEST(StarDictReader, ToolMadeFilesReadBackWhole)
{
    QTemporaryDir dir;
    makeFixtures(dir.path());
    struct Case {
        const char* ifo;
        Markup markup;
        QString appleText;
        QStringList links;  // synonym -> headword, as "syn>word"
    };
    const QString plainApple = QStringLiteral("a round fruit\n苹果");
    const QString htmlApple = QStringLiteral("<b>n.</b> a round fruit<br>苹果");
    const QStringList htmlLinks{QStringLiteral("apples>apple"), QStringLiteral("pomme>apple"), QStringLiteral("ran>run")};
    const Case cases[] = {
        {"plain.ifo", Markup::PlainText, plainApple, {}},
        {"html.ifo", Markup::Html, htmlApple, htmlLinks},
        {"open/html.ifo", Markup::Html, htmlApple, htmlLinks},
        {"wide/plain.ifo", Markup::PlainText, plainApple, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.ifo);
        CollectingSink sink;
        dictimport::readStarDict(dir.path() + u'/' + QString::fromLatin1(c.ifo), sink);
        const auto entries = sink.byHeadword();
        ASSERT_TRUE(entries.contains(QStringLiteral("apple")));
        EXPECT_EQ(entries.value(QStringLiteral("apple"))->text, c.appleText);
        EXPECT_EQ(entries.value(QStringLiteral("apple"))->markup, c.markup);
        EXPECT_EQ(entries.value(QStringLiteral("run"))->text, QStringLiteral("to move fast"));
        QStringList links;
        for (const SourceEntry& e : sink.entries)
            if (!e.linkTo.isEmpty())
                links << e.headword + u'>' + e.linkTo;
        links.sort();
        EXPECT_EQ(links, c.links);
        EXPECT_EQ(sink.done, sink.total);
    }
}

// Any file of a set, the set's folder, or all its files at once: the set is
// imported once; a folder with several sets gives each.
TEST(StarDictReader, AnyFileOfASetOrItsFolderIsTheSetOnce)
{
    QTemporaryDir dir;
    makeFixtures(dir.path());
    const QString d = dir.path();
    const auto ifo = [&d](const char* name) { return dictimport::DictionarySource{dictimport::SourceFormat::StarDict, d + u'/' + QString::fromLatin1(name)}; };
    struct Case {
        QStringList paths;
        std::vector<dictimport::DictionarySource> sources;
    };
    const Case cases[] = {
        {{d + QStringLiteral("/html.dict.dz")}, {ifo("html.ifo")}},
        {{d + QStringLiteral("/open/html.idx.gz")}, {ifo("open/html.ifo")}},
        {{d + QStringLiteral("/wide/plain.idx"), d + QStringLiteral("/wide"), d + QStringLiteral("/wide/plain.ifo")}, {ifo("wide/plain.ifo")}},
        {{d}, {ifo("html.ifo"), ifo("plain.ifo")}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(dictimport::dictionariesIn(c.paths), c.sources) << c.paths.join(u' ').toStdString();
}

TEST(StarDictReader, DamagedFilesAreReportedWithFileAndPlace)
{
    QTemporaryDir dir;
    makeFixtures(dir.path());
    const QString base = dir.path() + QStringLiteral("/plain");
    QMap<QString, QByteArray> files;
    for (const QString& suffix : {QStringLiteral(".ifo"), QStringLiteral(".idx"), QStringLiteral(".dict.dz")})
        files.insert(suffix, testing::readFile(base + suffix));
    struct Case {
        const char* file;  // the one damaged
        std::function<void(QByteArray&)> damage;
        QString expected;  // in the message, after the file's path
    };
    const Case cases[] = {
        {".ifo", [](QByteArray& b) { b.replace("wordcount=3", "wordcount=4"); }, QStringLiteral("wordcount=4 but the .idx file holds 3")},
        {".idx", [](QByteArray& b) { b.chop(3); }, QStringLiteral(".idx is cut short in entry 3")},
        // The last entry's offset, far past the data.
        {".idx", [](QByteArray& b) { b[b.indexOf("zoo") + 4] = char(0x7f); }, QStringLiteral("entry 3 \"zoo\" points past the end")},
        // The first chunk's compressed size, in the RA field.
        {".dict.dz", [](QByteArray& b) { b.replace(22, 2, "\xff\x7f"); }, QStringLiteral("dictzip chunk 1 of 1")},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.expected.toStdString());
        for (const QString& suffix : files.keys()) {
            QByteArray bytes = files.value(suffix);
            if (suffix == QLatin1StringView(c.file))
                c.damage(bytes);
            testing::writeFile(base + suffix, bytes);
        }
        CollectingSink sink;
        testing::expectImportError([&] { dictimport::readStarDict(base + QStringLiteral(".ifo"), sink); }, base, c.expected);
    }
}

TEST(StarDictReader, ImportedSynonymsLeadToTheirHeadword)
{
    testing::TempHome home;
    makeFixtures(home.path());
    const testing::CliRun run = testing::runLexicorn(
        {"import", "--home", home.path(), "--into", "collins", home.path() + QStringLiteral("/html.ifo")});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    EXPECT_EQ(testing::titleFound(home.path(), QStringLiteral("collins"), QStringLiteral("pomme")), QStringLiteral("apple"));
}

}  // namespace
}  // namespace lexicorn
