// lexicorn sync killed with SIGKILL in the middle of a batch: the notebook it
// read from must open afterwards, pass SQLite's integrity check, and hold
// every note and book exactly as before, down to the last column.

#include "sync_fixtures.h"

#include "host/notebook/mb_model_tool.h"
#include "host/notebook/notebook.h"

#include <QProcess>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QVariant>

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

// Every row of a table, every column, read straight from the file.
using Rows = QList<QVariantList>;

struct FileContents {
    Rows notes;
    Rows books;
    QStringList integrity;  // what PRAGMA integrity_check says
};

FileContents readFile(const QString& path)
{
    FileContents contents;
    const QString connection = QStringLiteral("sync-killed-test");
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection);
        db.setDatabaseName(path);
        EXPECT_TRUE(db.open()) << path.toStdString();
        QSqlQuery query(db);
        const auto rowsOf = [&query](const QString& statement) {
            Rows rows;
            EXPECT_TRUE(query.exec(statement)) << statement.toStdString();
            while (query.next()) {
                QVariantList row;
                for (int column = 0; column < query.record().count(); ++column)
                    row << query.value(column);
                rows << row;
            }
            return rows;
        };
        contents.notes = rowsOf(QStringLiteral("SELECT * FROM notes ORDER BY seq"));
        contents.books = rowsOf(QStringLiteral("SELECT * FROM books ORDER BY md5"));
        for (const QVariantList& row : rowsOf(QStringLiteral("PRAGMA integrity_check")))
            contents.integrity << row.value(0).toString();
        query.finish();
        db.close();
    }
    QSqlDatabase::removeDatabase(connection);
    return contents;
}

class SyncKilled : public testing::CardHome {};

TEST_F(SyncKilled, KilledInTheMiddleOfABatchLeavesTheNotebookReadableAndUnchanged)
{
    testing::SyncPeer peer(home_);
    ASSERT_TRUE(peer.ready()) << peer.problem().toStdString();
    testing::loadSampleDictionary(1);

    // Cards for the first sense of a few words, repeated under new ids, and
    // plain notes between them: two cards in every three notes, so the batch
    // has plenty of Anki work left after its first progress report.
    const char* words[] = {"book", "borrow", "bread", "break", "bring", "buy", "carry", "cheap", "child", "coat"};
    std::vector<NoteRecord> cardTemplates;
    for (const char* word : words) {
        const auto card = testing::cardFor(QString::fromUtf8(word), QStringLiteral("She will %1 it tomorrow.").arg(word), 1, 0, {});
        if (card)
            cardTemplates.push_back(*card);
    }
    ASSERT_GE(cardTemplates.size(), 5u);

    const QString bookMd5 = QStringLiteral("0123456789abcdef0123456789abcdef");
    constexpr int noteCount = 300;
    std::vector<host::MbBookNote> notesBefore;
    {
        host::Notebook notebook;
        ASSERT_TRUE(notebook.open()) << notebook.errorString().toStdString();
        host::MbModelTool books(notebook);
        ASSERT_TRUE(books.addBook(bookMd5, QStringLiteral("Sample Book"), QStringLiteral("/books/sample.pdf")));
        ASSERT_TRUE(books.addBook(QStringLiteral("fedcba9876543210fedcba9876543210"), QStringLiteral("另一本书"),
                                  QStringLiteral("/books/other.pdf")));
        for (int number = 0; number < noteCount; ++number) {
            const QString id = QStringLiteral("K-%1").arg(number, 4, 10, QChar(u'0'));
            NoteRecord record = number % 3 == 2 ? testing::plainNote(QStringLiteral("Thought %1").arg(number), id)
                                                : cardTemplates[std::size_t(number) % cardTemplates.size()];
            record.noteid = id;
            host::MbBookNote note(record);
            note.setMindSize({120.5 + number, 40.25});
            note.setHighlightStyle(number % 2 ? QStringLiteral("yellow") : QStringLiteral("underline"));
            note.setBookMd5(number % 5 ? bookMd5 : QString());
            ASSERT_TRUE(notebook.add(note)) << notebook.errorString().toStdString();
        }
        notesBefore = notebook.notes();
    }
    ASSERT_EQ(notesBefore.size(), std::size_t(noteCount));
    const QString path = host::Notebook::defaultPath();
    const FileContents before = readFile(path);
    ASSERT_EQ(before.notes.size(), noteCount);
    ASSERT_EQ(before.integrity, QStringList{QStringLiteral("ok")});

    // The tool reports progress on standard error, among its log lines.
    QProcess sync;
    sync.setReadChannel(QProcess::StandardError);
    sync.start(QStringLiteral(LEXICORN_CLI), {QStringLiteral("sync")});
    ASSERT_TRUE(sync.waitForStarted(30000));
    QByteArray progress;
    while (progress.isEmpty()) {
        if (!sync.canReadLine()) {
            // False only when the tool ended or went silent: a hang, not slowness.
            ASSERT_TRUE(sync.waitForReadyRead(120000))
                << "lexicorn sync ended or hung before its first progress line: "
                << sync.readAllStandardOutput().toStdString() << sync.readAllStandardError().toStdString();
            continue;
        }
        const QByteArray line = sync.readLine().trimmed();
        if (line.startsWith("synchronised "))
            progress = line;
    }
    sync.kill();  // SIGKILL
    ASSERT_TRUE(sync.waitForFinished(30000));
    ASSERT_EQ(sync.exitStatus(), QProcess::CrashExit);
    EXPECT_EQ(progress, QByteArray("synchronised 20 of 300 notes"));
    // It was killed in the middle: no summary, and only some cards reached Anki.
    const QString out = QString::fromUtf8(sync.readAllStandardOutput());
    EXPECT_FALSE(out.contains(QStringLiteral("同步完成"))) << out.toStdString();
    EXPECT_LT(peer.noteCount(), qsizetype(noteCount * 2 / 3));

    const FileContents after = readFile(path);
    EXPECT_EQ(after.integrity, QStringList{QStringLiteral("ok")});
    EXPECT_EQ(after.notes, before.notes);
    EXPECT_EQ(after.books, before.books);

    host::Notebook notebook;
    ASSERT_TRUE(notebook.open()) << notebook.errorString().toStdString();
    const std::vector<host::MbBookNote> notesAfter = notebook.notes();
    ASSERT_EQ(notesAfter.size(), notesBefore.size());
    for (std::size_t i = 0; i < notesAfter.size(); ++i)
        EXPECT_TRUE(notesAfter[i] == notesBefore[i]) << "note " << notesBefore[i].noteid().toStdString() << " changed";
    // Nothing is left locked: the notebook takes a write at once.
    host::MbBookNote extra(testing::plainNote(QStringLiteral("after the kill"), QStringLiteral("K-extra")));
    EXPECT_TRUE(notebook.add(extra)) << notebook.errorString().toStdString();
}

}  // namespace
}  // namespace lexicorn
