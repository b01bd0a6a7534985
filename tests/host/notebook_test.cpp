#include "host/notebook/mb_model_tool.h"
#include "host/notebook/notebook.h"

#include <QThread>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace lexicorn::host {
namespace {

// A notebook path in a fresh folder; the notebook's own folder does not exist yet.
class NotebookTestBase : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(dir_.isValid()); }
    QString path() const { return dir_.filePath(QStringLiteral("Lexicorn/notebook.sqlite")); }

    QTemporaryDir dir_;
};

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
}

MbBookNote makeNote(const QString& id, const QString& title, const QString& book = QString())
{
    MbBookNote note;
    note.setNoteid(id);
    note.setNotetitle(title);
    note.setBookMd5(book);
    return note;
}

std::vector<QString> idsOf(const std::vector<MbBookNote>& notes)
{
    std::vector<QString> ids;
    for (const MbBookNote& note : notes)
        ids.push_back(note.noteid());
    return ids;
}

struct RoundTripCase {
    const char* name;
    MbBookNote note;
};

std::vector<RoundTripCase> roundTripCases()
{
    MbBookNote card;
    card.setNoteid(QStringLiteral("8F2C6A51-0B7E-4C1D-9E3A-5D4F1B2C3A90"));
    card.setNotetitle(QStringLiteral("abandon; 🗣/əˈbændən/ 🔝 📇1-2🔚;"));
    card.setHighlight_text(QStringLiteral("They had to abandon the car. 他们只好弃车。"));
    card.setNotes({QJsonObject{{QStringLiteral("type"), QStringLiteral("TextNote")},
                               {QStringLiteral("group"), QStringLiteral("sentenceCN")},
                               {QStringLiteral("text"), QStringLiteral("他们只好弃车。")}},
                   QJsonObject{{QStringLiteral("type"), QStringLiteral("TextNote")},
                               {QStringLiteral("group"), QStringLiteral("exts")},
                               {QStringLiteral("text"), QStringLiteral("📌 line one\nline \"two\"\t💫")}},
                   QJsonObject{{QStringLiteral("type"), QStringLiteral("HtmlNote")},
                               {QStringLiteral("html"), QStringLiteral("<b>bold</b> &amp; <i>it</i>")},
                               {QStringLiteral("text"), QStringLiteral("bold & it")},
                               {QStringLiteral("rtf"), QJsonValue::Null}}});
    card.setMindSize({312.5, 88.25});
    card.setHighlightStyle(QStringLiteral("yellow-underline"));
    card.setBookMd5(QStringLiteral("0cc175b9c0f1b6a831c399e269772661"));
    card.setPageNo(12);
    card.setHighlightRects({QRectF(72.5, 100, 300.25, 12), QRectF(72, 113.5, 80, 12)});

    // Comments are kept as the host has them, including ones that are not
    // records at all, and values of every JSON kind.
    MbBookNote odd;
    odd.setNoteid(QStringLiteral("odd"));
    odd.setNotes({QJsonValue(7), QJsonValue(true), QJsonValue::Null, QStringLiteral("bare text"),
                  QJsonArray{1, 2.5, QStringLiteral("x")},
                  QJsonObject{{QStringLiteral("group"), 3}, {QStringLiteral("nested"), QJsonObject{{QStringLiteral("a"), -1}}}}});
    odd.setMindSize({-4, 1e9});

    MbBookNote empty;
    empty.setNoteid(QStringLiteral("empty"));

    MbBookNote quotes;
    quotes.setNoteid(QStringLiteral("it's; DROP TABLE notes; --"));
    quotes.setNotetitle(QStringLiteral("'single' \"double\" \\ back % percent ?"));
    quotes.setHighlight_text(QStringLiteral("😀\n\r\n") + QChar(0x00A0));
    quotes.setHighlightStyle(QStringLiteral("'"));
    quotes.setBookMd5(QStringLiteral("?"));

    return {{"card", card}, {"odd_comments", odd}, {"empty_fields", empty}, {"quotes_and_controls", quotes}};
}

class NotebookTest : public NotebookTestBase {};

TEST_F(NotebookTest, EveryFieldSurvivesStoringReopeningAndJson)
{
    {
        Notebook notebook(path());
        ASSERT_TRUE(notebook.open()) << notebook.errorString().toStdString();
        for (RoundTripCase& c : roundTripCases()) {
            ASSERT_TRUE(notebook.add(c.note)) << c.name << ": " << notebook.errorString().toStdString();
            EXPECT_EQ(notebook.note(c.note.noteid()), c.note) << c.name;
        }
    }
    Notebook reopened(path());
    ASSERT_TRUE(reopened.open()) << reopened.errorString().toStdString();
    for (const RoundTripCase& c : roundTripCases()) {
        const std::optional<MbBookNote> stored = reopened.note(c.note.noteid());
        ASSERT_TRUE(stored) << c.name;
        EXPECT_EQ(*stored, c.note) << c.name;
        EXPECT_EQ(stored->notes(), c.note.notes()) << c.name;
        EXPECT_EQ(MbBookNote::fromJson(stored->toJson()), c.note) << c.name;
        // Read through the card code's interface, the fields are the same.
        const DictNote& dictNote = *stored;
        EXPECT_EQ(dictNote.notetitle(), c.note.notetitle()) << c.name;
        EXPECT_EQ(dictNote.highlight_text(), c.note.highlight_text()) << c.name;
    }
}

TEST_F(NotebookTest, NotesComeBackInTheOrderTheyWereAdded)
{
    Notebook notebook(path());
    ASSERT_TRUE(notebook.open());
    // Ids out of alphabetical order, the last note removed before another
    // add: neither the id nor a reused slot may decide the order.
    for (const char* id : {"c", "a", "b", "z"}) {
        MbBookNote note = makeNote(QString::fromLatin1(id), QString(), id[0] == 'b' ? QStringLiteral("other") : QStringLiteral("book"));
        ASSERT_TRUE(notebook.add(note));
    }
    ASSERT_TRUE(notebook.remove(QStringLiteral("z")));
    MbBookNote last = makeNote(QStringLiteral("d"), QString(), QStringLiteral("book"));
    ASSERT_TRUE(notebook.add(last));
    ASSERT_TRUE(notebook.update(makeNote(QStringLiteral("c"), QStringLiteral("changed"))));

    EXPECT_EQ(idsOf(notebook.notes()), (std::vector<QString>{"c", "a", "b", "d"}));
    EXPECT_EQ(idsOf(notebook.notesOfBook(QStringLiteral("book"))), (std::vector<QString>{"c", "a", "d"}));
    EXPECT_EQ(idsOf(notebook.notesOfBook(QStringLiteral("other"))), (std::vector<QString>{"b"}));
    EXPECT_TRUE(notebook.notesOfBook(QStringLiteral("none")).empty());

    // An empty id is replaced by a fresh unique one.
    MbBookNote first = makeNote(QString(), QStringLiteral("first"));
    MbBookNote second = makeNote(QString(), QStringLiteral("second"));
    ASSERT_TRUE(notebook.add(first));
    ASSERT_TRUE(notebook.add(second));
    EXPECT_FALSE(first.noteid().isEmpty());
    EXPECT_NE(first.noteid(), second.noteid());
    ASSERT_TRUE(notebook.note(second.noteid()));
    EXPECT_EQ(notebook.note(second.noteid())->notetitle(), QStringLiteral("second"));
}

TEST_F(NotebookTest, UpdateAddAndRemoveChangeOnlyWhatTheyName)
{
    MbBookNote original = roundTripCases().front().note;
    MbBookNote edited = original;
    edited.setNotetitle(QStringLiteral("edited title"));
    edited.setHighlight_text(QStringLiteral("edited excerpt"));
    edited.setNotes({QJsonObject{{QStringLiteral("text"), QStringLiteral("only comment")}}});
    edited.setMindSize({1, 2});
    edited.setHighlightStyle(QStringLiteral("green"));
    edited.setBookMd5(QStringLiteral("another book"));  // not written by update
    MbBookNote expectedAfterUpdate = edited;
    expectedAfterUpdate.setBookMd5(original.bookMd5());
    const MbBookNote neighbour = makeNote(QStringLiteral("neighbour"), QStringLiteral("stays"));

    struct Case {
        const char* name;
        std::function<bool(Notebook&)> change;
        bool succeeds;
        std::vector<MbBookNote> after;
    };
    const std::vector<Case> cases{
        {"update", [&](Notebook& n) { return n.update(edited); }, true, {expectedAfterUpdate, neighbour}},
        {"update_missing", [&](Notebook& n) { return n.update(makeNote(QStringLiteral("nobody"), QStringLiteral("x"))); },
         false, {original, neighbour}},
        {"remove", [&](Notebook& n) { return n.remove(original.noteid()); }, true, {neighbour}},
        {"remove_missing", [&](Notebook& n) { return n.remove(QStringLiteral("nobody")); }, false, {original, neighbour}},
        {"add_existing_id", [&](Notebook& n) { MbBookNote copy = edited; return n.add(copy); }, false,
         {original, neighbour}},
    };
    for (const Case& c : cases) {
        QTemporaryDir dir;
        Notebook notebook(dir.filePath(QStringLiteral("n.sqlite")));
        ASSERT_TRUE(notebook.open());
        MbBookNote first = original;
        MbBookNote second = neighbour;
        ASSERT_TRUE(notebook.add(first) && notebook.add(second));
        EXPECT_EQ(c.change(notebook), c.succeeds) << c.name;
        EXPECT_EQ(notebook.errorString().isEmpty(), c.succeeds) << c.name << ": " << notebook.errorString().toStdString();
        EXPECT_EQ(notebook.notes(), c.after) << c.name;
    }
}

TEST_F(NotebookTest, ChangeThatFailsBeforeCommittingLeavesTheNotebookAsItWas)
{
    MbBookNote edited = roundTripCases().front().note;
    edited.setNotetitle(QStringLiteral("edited"));
    edited.setNotes({});
    edited.setMindSize({9, 9});
    struct Case {
        const char* change;
        std::function<bool(Notebook&)> run;
    };
    const std::vector<Case> cases{
        {"add", [](Notebook& n) { MbBookNote note = makeNote(QStringLiteral("new"), QStringLiteral("new")); return n.add(note); }},
        {"update", [&](Notebook& n) { return n.update(edited); }},
        {"remove", [&](Notebook& n) { return n.remove(edited.noteid()); }},
        {"addBook", [](Notebook& n) { return MbModelTool(n).addBook(QStringLiteral("m"), QStringLiteral("t"), QStringLiteral("p")); }},
    };
    for (const Case& c : cases) {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("n.sqlite"));
        Notebook notebook(file);
        ASSERT_TRUE(notebook.open());
        MbBookNote stored = roundTripCases().front().note;
        ASSERT_TRUE(notebook.add(stored));
        ASSERT_TRUE(MbModelTool(notebook).addBook(QStringLiteral("m0"), QStringLiteral("t0"), QStringLiteral("p0")));
        const std::vector<MbBookNote> notesBefore = notebook.notes();
        const std::vector<MbBook> booksBefore = MbModelTool(notebook).books();

        notebook.setFailureHook([&](QStringView change) { return change == QLatin1StringView(c.change); });
        EXPECT_FALSE(c.run(notebook)) << c.change;
        EXPECT_FALSE(notebook.errorString().isEmpty()) << c.change;
        EXPECT_EQ(notebook.notes(), notesBefore) << c.change;
        EXPECT_EQ(MbModelTool(notebook).books(), booksBefore) << c.change;
        {
            // Nothing of the failed change reached the file either.
            Notebook other(file);
            ASSERT_TRUE(other.open());
            EXPECT_EQ(other.notes(), notesBefore) << c.change;
        }

        // The failed change left no transaction open: the same change now works.
        notebook.setFailureHook({});
        EXPECT_TRUE(c.run(notebook)) << c.change << ": " << notebook.errorString().toStdString();
    }
}

// A batch (one gesture's writes) is one transaction: nothing of it reaches the
// file until the outermost endBatch, a change that fails inside it is undone
// alone, and a batch that writes nothing commits nothing. Two notebooks open
// on one file see each other's changes.
TEST_F(NotebookTest, ABatchCommitsOnceAndAChangeThatFailsInItIsUndoneAlone)
{
    Notebook notebook(path());
    ASSERT_TRUE(notebook.open());
    Notebook other(path());
    ASSERT_TRUE(other.open());
    const std::uint64_t before = notebook.committedTransactions();

    notebook.beginBatch();
    notebook.endBatch();
    EXPECT_EQ(notebook.committedTransactions(), before) << "an empty batch";

    notebook.beginBatch();
    notebook.beginBatch();
    MbBookNote first = makeNote(QStringLiteral("first"), QStringLiteral("first"));
    ASSERT_TRUE(notebook.add(first));
    notebook.setFailureHook([](QStringView change) { return change == u"update"; });
    EXPECT_FALSE(notebook.update(makeNote(QStringLiteral("first"), QStringLiteral("broken"))));
    notebook.setFailureHook({});
    MbBookNote second = makeNote(QStringLiteral("second"), QStringLiteral("second"));
    ASSERT_TRUE(notebook.add(second));
    EXPECT_TRUE(notebook.endBatch());
    EXPECT_TRUE(other.notes().empty()) << "the inner batch's end commits nothing";
    EXPECT_TRUE(notebook.endBatch()) << notebook.errorString().toStdString();

    EXPECT_EQ(notebook.committedTransactions() - before, 1u);
    EXPECT_EQ(idsOf(other.notes()), (std::vector<QString>{QStringLiteral("first"), QStringLiteral("second")}));
    EXPECT_EQ(other.note(QStringLiteral("first"))->notetitle(), QStringLiteral("first"));

    // And the other way round: what the second connection writes, the first sees.
    ASSERT_TRUE(other.update(makeNote(QStringLiteral("second"), QStringLiteral("from the other"))));
    EXPECT_EQ(notebook.note(QStringLiteral("second"))->notetitle(), QStringLiteral("from the other"));
}

// Makes a database of the given tables and schema number, as another program would.
void makeForeignDatabase(const QString& file, const QStringList& statements)
{
    const QString name = QStringLiteral("foreign-") + file;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(file);
        ASSERT_TRUE(db.open());
        QSqlQuery query(db);
        for (const QString& statement : statements)
            ASSERT_TRUE(query.exec(statement)) << statement.toStdString();
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
}

TEST_F(NotebookTest, FileThatIsNoNotebookIsRefusedAndLeftUntouched)
{
    struct Case {
        const char* name;
        std::function<void(const QString&)> make;
        const char* reason;
    };
    const std::vector<Case> cases{
        {"text_file", [](const QString& f) { writeFile(f, "my notes, typed by hand\n"); }, "not a readable notebook"},
        {"pdf_file", [](const QString& f) { writeFile(f, QByteArray("%PDF-1.7\n").append(QByteArray(5000, '\x01'))); },
         "not a readable notebook"},
        {"sqlite_header_then_garbage",
         [](const QString& f) { writeFile(f, QByteArray("SQLite format 3\0", 16).append(QByteArray(8192, '\xff'))); },
         "not a readable notebook"},
        {"other_program_database",
         [](const QString& f) { makeForeignDatabase(f, {QStringLiteral("CREATE TABLE contacts (name TEXT)"),
                                                        QStringLiteral("INSERT INTO contacts VALUES ('Ann')")}); },
         "another program"},
        {"newer_notebook",
         [](const QString& f) { makeForeignDatabase(f, {QStringLiteral("CREATE TABLE notes (x)"),
                                                        QStringLiteral("CREATE TABLE books (x)"),
                                                        QStringLiteral("PRAGMA user_version = 99")}); },
         "newer Lexicorn"},
        {"notebook_without_tables",
         [](const QString& f) { makeForeignDatabase(f, {QStringLiteral("CREATE TABLE notes (x)"),
                                                        QStringLiteral("PRAGMA user_version = 1")}); },
         "table is missing"},
        {"truncated_notebook",
         [](const QString& f) {
             {
                 Notebook notebook(f);
                 ASSERT_TRUE(notebook.open());
                 for (int i = 0; i < 300; ++i) {
                     MbBookNote note = makeNote(QString::number(i), QString(200, u'x'));
                     ASSERT_TRUE(notebook.add(note));
                 }
             }  // closing writes the log back into the file
             QByteArray bytes = readFile(f);
             ASSERT_GT(bytes.size(), 8 * 4096);
             writeFile(f, bytes.left(bytes.size() / 2));
         },
         "damaged"},
        {"folder", [](const QString& f) { QDir().mkpath(f); }, "not a file"},
    };
    for (const Case& c : cases) {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("notebook.sqlite"));
        c.make(file);
        const QByteArray before = readFile(file);
        ASSERT_TRUE(!before.isEmpty() || QFileInfo(file).isDir()) << c.name;

        Notebook notebook(file);
        EXPECT_FALSE(notebook.open()) << c.name;
        EXPECT_FALSE(notebook.isOpen()) << c.name;
        EXPECT_TRUE(notebook.errorString().contains(file)) << c.name << ": " << notebook.errorString().toStdString();
        EXPECT_TRUE(notebook.errorString().contains(QLatin1StringView(c.reason)))
            << c.name << ": " << notebook.errorString().toStdString();
        // Nothing can be written through a notebook that did not open.
        MbBookNote note = makeNote(QStringLiteral("n"), QStringLiteral("t"));
        EXPECT_FALSE(notebook.add(note)) << c.name;
        EXPECT_EQ(readFile(file), before) << c.name;
    }
}

class MbModelToolTest : public NotebookTestBase {};

TEST_F(MbModelToolTest, Md5OfFileIsTheHexDigestOfItsBytes)
{
    struct Case {
        const char* name;
        QByteArray bytes;
        const char* md5;
    };
    // A file larger than one read buffer checks that every chunk is hashed.
    QByteArray large;
    for (int i = 0; i < 300000; ++i)
        large.append("abc");
    const std::vector<Case> cases{
        {"empty", "", "d41d8cd98f00b204e9800998ecf8427e"},
        {"abc", "abc", "900150983cd24fb0d6963f7d28e17f72"},
        {"fox", "The quick brown fox jumps over the lazy dog", "9e107d9d372bb6826bd81d3542a419d6"},
        {"binary", QByteArray("\0\xff\0", 3), "b2b237a1bbd9c57b93b952c24e7936a8"},
        {"large", large, "337469055f13c81216d911ae7b440ff2"},
    };
    for (const Case& c : cases) {
        const QString file = dir_.filePath(QString::fromLatin1(c.name));
        writeFile(file, c.bytes);
        const std::optional<QString> md5 = MbModelTool::md5OfFile(file);
        ASSERT_TRUE(md5) << c.name;
        EXPECT_EQ(*md5, QLatin1StringView(c.md5)) << c.name;
    }
    EXPECT_FALSE(MbModelTool::md5OfFile(dir_.filePath(QStringLiteral("missing.pdf"))));
}

TEST_F(MbModelToolTest, BooksAreFoundByMd5AndKeepTheirLatestTitle)
{
    {
        Notebook notebook(path());
        ASSERT_TRUE(notebook.open());
        MbModelTool tool(notebook);
        ASSERT_TRUE(tool.addBook(QStringLiteral("aaa"), QStringLiteral("英语语法"), QStringLiteral("/books/grammar.pdf")));
        ASSERT_TRUE(tool.addBook(QStringLiteral("bbb"), QStringLiteral("Old title"), QStringLiteral("/old.pdf")));
        ASSERT_TRUE(tool.addBook(QStringLiteral("bbb"), QStringLiteral("New title"), QStringLiteral("/moved/new.pdf")));
        EXPECT_FALSE(tool.addBook(QString(), QStringLiteral("no md5"), QString()));
    }
    Notebook notebook(path());
    ASSERT_TRUE(notebook.open());
    MbModelTool tool(notebook);
    struct Case {
        const char* md5;
        std::optional<MbBook> book;
    };
    const std::vector<Case> cases{
        {"aaa", MbBook{QStringLiteral("aaa"), QStringLiteral("英语语法"), QStringLiteral("/books/grammar.pdf")}},
        {"bbb", MbBook{QStringLiteral("bbb"), QStringLiteral("New title"), QStringLiteral("/moved/new.pdf")}},
        {"ccc", std::nullopt},
        {"", std::nullopt},
    };
    for (const Case& c : cases)
        EXPECT_EQ(tool.getBookFromMd5_(QString::fromLatin1(c.md5)), c.book) << c.md5;
    EXPECT_EQ(tool.books().size(), 2u);

    // The reader remembers where it left a book; the last one opened comes first.
    EXPECT_TRUE(tool.recentBooks(5).empty());
    ASSERT_TRUE(tool.setLastPage(QStringLiteral("bbb"), 7));
    QThread::msleep(5);
    ASSERT_TRUE(tool.setLastPage(QStringLiteral("aaa"), 3));
    const std::vector<MbBook> recent = tool.recentBooks(5);
    ASSERT_EQ(recent.size(), 2u);
    EXPECT_EQ(recent[0].bookMd5, QStringLiteral("aaa"));
    EXPECT_EQ(recent[1].lastPage, 7);
    EXPECT_EQ(tool.recentBooks(1).size(), 1u);
}

TEST_F(MbModelToolTest, ANotebookOfTheFirstLayoutIsUpgradedKeepingItsNotes)
{
    QDir().mkpath(QFileInfo(path()).absolutePath());
    makeForeignDatabase(path(), {
        QStringLiteral("CREATE TABLE notes (seq INTEGER PRIMARY KEY, noteid TEXT NOT NULL UNIQUE, notetitle TEXT NOT NULL,"
                       " highlight_text TEXT NOT NULL, notes TEXT NOT NULL, mind_width REAL NOT NULL,"
                       " mind_height REAL NOT NULL, highlight_style TEXT NOT NULL, book_md5 TEXT NOT NULL)"),
        QStringLiteral("CREATE TABLE books (md5 TEXT PRIMARY KEY, title TEXT NOT NULL, path TEXT NOT NULL)"),
        QStringLiteral("INSERT INTO notes VALUES (1, 'old', 'kept', '', '[]', 0, 0, '', 'aaa')"),
        QStringLiteral("INSERT INTO books VALUES ('aaa', 'Old book', '/a.pdf')"),
        QStringLiteral("PRAGMA user_version = 1"),
    });
    Notebook notebook(path());
    ASSERT_TRUE(notebook.open()) << notebook.errorString().toStdString();
    EXPECT_EQ(notebook.note(QStringLiteral("old"))->notetitle(), QStringLiteral("kept"));
    MbModelTool tool(notebook);
    EXPECT_EQ(tool.getBookFromMd5_(QStringLiteral("aaa"))->lastPage, 0);
    MbBookNote placed = makeNote(QStringLiteral("new"), QStringLiteral("placed"), QStringLiteral("aaa"));
    placed.setPageNo(2);
    placed.setHighlightRects({QRectF(1, 2, 3, 4)});
    ASSERT_TRUE(notebook.add(placed)) << notebook.errorString().toStdString();
    EXPECT_EQ(notebook.note(QStringLiteral("new")), placed);
}

}  // namespace
}  // namespace lexicorn::host
