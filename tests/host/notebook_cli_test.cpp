// lexicorn notebook add / list / show against a notebook in a temporary home.

#include "host/notebook/notebook.h"
#include "support/cli_run.h"
#include "support/temp_home.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace lexicorn::host {
namespace {

using testing::runLexicorn;
using testing::TempHome;
using testing::CliRun;

// Runs the tool with the document on its standard input.
CliRun runWithInput(const QStringList& arguments, const QByteArray& input)
{
    QProcess process;
    process.start(QStringLiteral(LEXICORN_CLI), arguments);
    process.write(input);
    process.closeWriteChannel();
    EXPECT_TRUE(process.waitForFinished(120000));
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
}

QString writeNoteFile(const TempHome& home, const QString& name, const QByteArray& content)
{
    const QString path = home.path() + u'/' + name;
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
    return path;
}

QString notebookFile(const TempHome& home)
{
    return home.path() + QStringLiteral("/Lexicorn/notebook.sqlite");
}

const QByteArray cardJson = R"({"noteid": "card-1", "notetitle": "abandon; 🗣 🔝 📇1-2🔚;",
  "highlight_text": "They had to abandon the car.",
  "notes": [{"type": "TextNote", "group": "sentenceCN", "text": "他们只好弃车。"},
            {"type": "TextNote", "group": "exts", "text": "📌"}],
  "bookMd5": "0cc175b9c0f1b6a831c399e269772661"})";

TEST(NotebookCliTest, AddedNotesAreListedAndShownWhole)
{
    TempHome home;
    // Reading a notebook that was never made creates no file.
    const CliRun empty = runLexicorn({QStringLiteral("notebook"), QStringLiteral("list")});
    EXPECT_EQ(empty.status, 0) << empty.err.toStdString();
    EXPECT_EQ(empty.out, QString());
    EXPECT_EQ(runLexicorn({QStringLiteral("notebook"), QStringLiteral("show"), QStringLiteral("x")}).status, 1);
    EXPECT_FALSE(QFileInfo::exists(notebookFile(home)));

    const CliRun fromFile = runLexicorn({QStringLiteral("notebook"), QStringLiteral("add"),
                                         writeNoteFile(home, QStringLiteral("card.json"), cardJson)});
    ASSERT_EQ(fromFile.status, 0) << fromFile.err.toStdString();
    EXPECT_EQ(fromFile.out, QStringLiteral("card-1\n"));

    // No id, and "-": the note comes from standard input and gets a new id.
    const CliRun fromStdin = runWithInput({QStringLiteral("notebook"), QStringLiteral("add"), QStringLiteral("-")},
                                          R"({"noteid": "", "notetitle": "second"})");
    ASSERT_EQ(fromStdin.status, 0) << fromStdin.err.toStdString();
    const QString newId = fromStdin.out.trimmed();
    EXPECT_FALSE(newId.isEmpty());

    const CliRun list = runLexicorn({QStringLiteral("notebook"), QStringLiteral("list")});
    ASSERT_EQ(list.status, 0) << list.err.toStdString();
    EXPECT_EQ(list.out, QStringLiteral("card-1\tabandon; 🗣 🔝 📇1-2🔚;\n") + newId + QStringLiteral("\tsecond\n"));

    const CliRun show = runLexicorn({QStringLiteral("notebook"), QStringLiteral("show"), QStringLiteral("card-1")});
    ASSERT_EQ(show.status, 0) << show.err.toStdString();
    QJsonObject expected = QJsonDocument::fromJson(cardJson).object();
    expected.insert(QStringLiteral("mindSize"), QJsonObject{{QStringLiteral("width"), 0}, {QStringLiteral("height"), 0}});
    expected.insert(QStringLiteral("highlightStyle"), QStringLiteral(""));
    expected.insert(QStringLiteral("pageNo"), 0);
    expected.insert(QStringLiteral("highlightRects"), QJsonArray());
    EXPECT_EQ(QJsonDocument::fromJson(show.out.toUtf8()).object(), expected) << show.out.toStdString();
}

TEST(NotebookCliTest, FailuresExplainThemselvesAndChangeNothing)
{
    struct Case {
        const char* name;
        QStringList arguments;  // "NOTE" stands for a file holding the case's document
        QByteArray document;
        int status;
        const char* message;
    };
    const std::vector<Case> cases{
        {"duplicate_id", {"add", "NOTE"}, cardJson, 1, "already in the notebook"},
        {"not_json", {"add", "NOTE"}, "{not json", 1, "is not a JSON note"},
        {"not_an_object", {"add", "NOTE"}, "[1, 2]", 1, "not an object"},
        {"missing_file", {"add", "/nonexistent/note.json"}, {}, 1, "cannot read"},
        {"unknown_id", {"show", "nobody"}, {}, 1, "no note with the id nobody"},
        {"no_action", {}, {}, 2, "notebook needs"},
        {"extra_argument", {"list", "more"}, {}, 2, "takes no arguments"},
    };
    for (const Case& c : cases) {
        TempHome home;
        ASSERT_EQ(runLexicorn({QStringLiteral("notebook"), QStringLiteral("add"),
                               writeNoteFile(home, QStringLiteral("card.json"), cardJson)})
                      .status,
                  0);
        Notebook before(notebookFile(home));
        ASSERT_TRUE(before.open());
        const std::vector<MbBookNote> notesBefore = before.notes();

        QStringList arguments{QStringLiteral("notebook")};
        for (const QString& argument : c.arguments)
            arguments << (argument == QStringLiteral("NOTE") ? writeNoteFile(home, QStringLiteral("case.json"), c.document)
                                                            : argument);
        const CliRun run = runLexicorn(arguments);
        EXPECT_EQ(run.status, c.status) << c.name;
        EXPECT_TRUE(run.err.contains(QLatin1StringView(c.message))) << c.name << ": " << run.err.toStdString();
        EXPECT_EQ(before.notes(), notesBefore) << c.name;
    }
}

}  // namespace
}  // namespace lexicorn::host
