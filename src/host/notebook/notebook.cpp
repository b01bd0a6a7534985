#include "host/notebook/notebook.h"

#include "foundation/paths.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <QUuid>

#include <atomic>

namespace lexicorn::host {

namespace {

// Each notebook object has its own connection, so two of them (or the reader
// and a test) can have the same file open.
QString newConnectionName()
{
    static std::atomic<unsigned> counter{0};
    return QStringLiteral("lexicorn-notebook-%1").arg(counter++);
}

const QStringList schema{
    QStringLiteral("CREATE TABLE notes ("
                   " seq INTEGER PRIMARY KEY,"  // grows with every add: the insertion order
                   " noteid TEXT NOT NULL UNIQUE,"
                   " notetitle TEXT NOT NULL,"
                   " highlight_text TEXT NOT NULL,"
                   " notes TEXT NOT NULL,"  // the comment records as a JSON array
                   " mind_width REAL NOT NULL,"
                   " mind_height REAL NOT NULL,"
                   " highlight_style TEXT NOT NULL,"
                   " book_md5 TEXT NOT NULL,"
                   " page_no INTEGER NOT NULL DEFAULT 0,"  // the page of the excerpt, from 1; 0: none
                   " highlight_rects TEXT NOT NULL DEFAULT '[]')"),  // [[x, y, w, h], ...] in page points
    QStringLiteral("CREATE INDEX notes_of_book ON notes (book_md5, seq)"),
    QStringLiteral("CREATE TABLE books ("
                   " md5 TEXT PRIMARY KEY,"
                   " title TEXT NOT NULL,"
                   " path TEXT NOT NULL,"
                   " last_page INTEGER NOT NULL DEFAULT 0,"  // where the reader left the book, from 1
                   " last_opened REAL NOT NULL DEFAULT 0)"),  // seconds since 1970; 0: never opened
    QStringLiteral("PRAGMA user_version = %1").arg(Notebook::schemaVersion),
};

// What a notebook of layout 1 needs to read as the current layout.
const QStringList upgradeFrom1{
    QStringLiteral("ALTER TABLE notes ADD COLUMN page_no INTEGER NOT NULL DEFAULT 0"),
    QStringLiteral("ALTER TABLE notes ADD COLUMN highlight_rects TEXT NOT NULL DEFAULT '[]'"),
    QStringLiteral("ALTER TABLE books ADD COLUMN last_page INTEGER NOT NULL DEFAULT 0"),
    QStringLiteral("ALTER TABLE books ADD COLUMN last_opened REAL NOT NULL DEFAULT 0"),
    QStringLiteral("PRAGMA user_version = %1").arg(Notebook::schemaVersion),
};

const QString noteColumns = QStringLiteral(
    "noteid, notetitle, highlight_text, notes, mind_width, mind_height, highlight_style, book_md5, page_no, highlight_rects");

// SQLite stores a null QString as NULL, which the NOT NULL columns refuse.
QString text(const QString& value)
{
    return value.isNull() ? QStringLiteral("") : value;
}

QString commentsText(const QJsonArray& comments)
{
    return QString::fromUtf8(QJsonDocument(comments).toJson(QJsonDocument::Compact));
}

QString rectsText(const std::vector<QRectF>& rects)
{
    return QString::fromUtf8(QJsonDocument(rectsJson(rects)).toJson(QJsonDocument::Compact));
}

MbBookNote noteOfRow(const QSqlQuery& row)
{
    MbBookNote note;
    note.setNoteid(row.value(0).toString());
    note.setNotetitle(row.value(1).toString());
    note.setHighlight_text(row.value(2).toString());
    note.setNotes(QJsonDocument::fromJson(row.value(3).toString().toUtf8()).array());
    note.setMindSize({row.value(4).toDouble(), row.value(5).toDouble()});
    note.setHighlightStyle(row.value(6).toString());
    note.setBookMd5(row.value(7).toString());
    note.setPageNo(row.value(8).toInt());
    note.setHighlightRects(rectsOfJson(QJsonDocument::fromJson(row.value(9).toString().toUtf8()).array()));
    return note;
}

QString errorOf(const QSqlQuery& query)
{
    return query.lastError().text();
}

}  // namespace

QString Notebook::defaultPath()
{
    return homeDirectory() + QStringLiteral("/Lexicorn/notebook.sqlite");
}

Notebook::Notebook(QString path) : path_(std::move(path)), connection_(newConnectionName()) {}

Notebook::~Notebook()
{
    {
        QSqlDatabase db = QSqlDatabase::database(connection_, false);
        if (db.isValid())
            db.close();
    }
    if (QSqlDatabase::contains(connection_))
        QSqlDatabase::removeDatabase(connection_);
}

bool Notebook::fail(const QString& message)
{
    error_ = message;
    return false;
}

bool Notebook::open()
{
    if (open_)
        return true;
    error_.clear();
    const QFileInfo info(path_);
    if (info.exists() && !info.isFile())
        return fail(QStringLiteral("cannot open the notebook %1: it is not a file").arg(path_));
    if (!info.exists() && !QDir().mkpath(info.absolutePath()))
        return fail(QStringLiteral("cannot open the notebook %1: cannot make the folder %2").arg(path_, info.absolutePath()));

    const QString problem = openConnection();
    if (problem.isEmpty()) {
        open_ = true;
        return true;
    }
    // The connection is dropped only once no query or handle of it is left.
    {
        QSqlDatabase db = QSqlDatabase::database(connection_, false);
        db.close();
    }
    QSqlDatabase::removeDatabase(connection_);
    return fail(QStringLiteral("cannot open the notebook %1: %2").arg(path_, problem));
}

namespace {

// Why a statement on a file that should be a notebook failed, in words.
QString readProblem(const QSqlQuery& query)
{
    const QString native = query.lastError().nativeErrorCode();
    if (native == QStringLiteral("26"))  // SQLITE_NOTADB
        return QStringLiteral("the file is not a readable notebook (%1)").arg(errorOf(query));
    if (native == QStringLiteral("11"))  // SQLITE_CORRUPT
        return QStringLiteral("the file is damaged (%1)").arg(errorOf(query));
    return errorOf(query);
}

}  // namespace

QString Notebook::openConnection()
{
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection_);
    db.setDatabaseName(path_);
    // The reader and the command-line tool may write at the same time; the
    // second waits for the first instead of failing at once.
    db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
    if (!db.open())
        return db.lastError().text();

    QSqlQuery query(db);
    // The first read of the file. SQLite writes nothing before it, so a file
    // that is no database, or a damaged one, is refused here untouched.
    if (!query.exec(QStringLiteral("PRAGMA quick_check")))
        return readProblem(query);
    QStringList problems;
    while (query.next())
        problems << query.value(0).toString();
    if (problems != QStringList{QStringLiteral("ok")})
        return QStringLiteral("the file is damaged (%1)").arg(problems.mid(0, 3).join(QStringLiteral("; ")));

    if (!query.exec(QStringLiteral("PRAGMA user_version")) || !query.next())
        return readProblem(query);
    const int version = query.value(0).toInt();
    if (!query.exec(QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table'")))
        return readProblem(query);
    QStringList tables;
    while (query.next())
        tables << query.value(0).toString();

    if (version > schemaVersion)
        return QStringLiteral("it was written by a newer Lexicorn (layout %1; this one reads up to %2)")
            .arg(version)
            .arg(schemaVersion);
    if (version == 0 && !tables.isEmpty())
        return QStringLiteral("it is a database of another program (tables: %1)").arg(tables.join(u' '));
    if (version >= 1
        && (!tables.contains(QStringLiteral("notes")) || !tables.contains(QStringLiteral("books"))))
        return QStringLiteral("its notes or books table is missing");

    // Write-ahead logging: a writer killed half-way leaves the last committed
    // state, and readers are not blocked while a change is written. Every
    // commit is flushed to disk, as notes are the user's own work.
    if (!query.exec(QStringLiteral("PRAGMA journal_mode = WAL")) || !query.next()
        || query.value(0).toString().compare(QStringLiteral("wal"), Qt::CaseInsensitive) != 0)
        return QStringLiteral("cannot switch to write-ahead logging (%1)").arg(errorOf(query));
    if (!query.exec(QStringLiteral("PRAGMA synchronous = FULL")))
        return errorOf(query);

    if (version == 0 || version == 1) {
        // A new file gets all tables, an older one what it lacks; either in
        // one transaction with the layout number.
        if (!query.exec(QStringLiteral("BEGIN IMMEDIATE")))
            return errorOf(query);
        for (const QString& statement : version == 0 ? schema : upgradeFrom1) {
            if (!query.exec(statement)) {
                const QString message = errorOf(query);
                query.exec(QStringLiteral("ROLLBACK"));
                return QStringLiteral("cannot make the tables (%1)").arg(message);
            }
        }
        if (!query.exec(QStringLiteral("COMMIT"))) {
            const QString message = errorOf(query);
            query.exec(QStringLiteral("ROLLBACK"));
            return QStringLiteral("cannot make the tables (%1)").arg(message);
        }
    }
    return QString();
}

bool Notebook::change(QStringView name, const std::function<bool()>& write)
{
    if (!open_)
        return fail(QStringLiteral("the notebook %1 is not open").arg(path_));
    QSqlQuery control(QSqlDatabase::database(connection_, false));
    // IMMEDIATE takes the write lock at once, so a busy file makes us wait
    // for it here rather than fail half-way. A batch's transaction starts
    // with its first change, so a gesture that writes nothing takes no lock;
    // inside it each change is a savepoint, and still succeeds or fails whole.
    if (batchDepth_ > 0 && !batchOpen_)
        batchOpen_ = control.exec(QStringLiteral("BEGIN IMMEDIATE"));
    const bool inBatch = batchOpen_;
    if (!control.exec(inBatch ? QStringLiteral("SAVEPOINT change") : QStringLiteral("BEGIN IMMEDIATE")))
        return fail(QStringLiteral("%1: cannot start a transaction (%2)").arg(name, errorOf(control)));
    bool ok = write();
    if (ok && failureHook_ && failureHook_(name))
        ok = fail(QStringLiteral("%1: broken by the failure hook").arg(name));
    if (ok && !control.exec(inBatch ? QStringLiteral("RELEASE change") : QStringLiteral("COMMIT")))
        ok = fail(QStringLiteral("%1: cannot commit (%2)").arg(name, errorOf(control)));
    if (!ok) {
        if (inBatch) {
            control.exec(QStringLiteral("ROLLBACK TO change"));
            control.exec(QStringLiteral("RELEASE change"));
        } else {
            control.exec(QStringLiteral("ROLLBACK"));
        }
        return false;
    }
    if (!inBatch)
        ++commits_;
    error_.clear();
    return true;
}

void Notebook::beginBatch()
{
    ++batchDepth_;
}

bool Notebook::endBatch()
{
    if (batchDepth_ == 0 || --batchDepth_ > 0 || !batchOpen_)
        return true;
    batchOpen_ = false;
    QSqlQuery control(QSqlDatabase::database(connection_, false));
    if (!control.exec(QStringLiteral("COMMIT"))) {
        const QString why = errorOf(control);
        control.exec(QStringLiteral("ROLLBACK"));
        return fail(QStringLiteral("the batch cannot commit (%1)").arg(why));
    }
    ++commits_;
    return true;
}

namespace {

// Binds, in this order, the fields an update may change: title, excerpt,
// comments, mind size and highlight style.
void bindEditableFields(QSqlQuery& query, const MbBookNote& note)
{
    query.addBindValue(text(note.notetitle()));
    query.addBindValue(text(note.highlight_text()));
    query.addBindValue(commentsText(note.notes()));
    query.addBindValue(note.mindSize().width);
    query.addBindValue(note.mindSize().height);
    query.addBindValue(text(note.highlightStyle()));
}

}  // namespace

bool Notebook::add(MbBookNote& note)
{
    const QString noteid = note.noteid().isEmpty() ? QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper()
                                                   : note.noteid();
    const bool ok = change(u"add", [&] {
        QSqlQuery query(QSqlDatabase::database(connection_, false));
        query.prepare(QStringLiteral("SELECT 1 FROM notes WHERE noteid = ?"));
        query.addBindValue(noteid);
        if (!query.exec())
            return fail(QStringLiteral("add: %1").arg(errorOf(query)));
        if (query.next())
            return fail(QStringLiteral("add: a note with the id %1 is already in the notebook").arg(noteid));
        query.finish();
        query.prepare(QStringLiteral("INSERT INTO notes (%1) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)").arg(noteColumns));
        query.addBindValue(noteid);
        bindEditableFields(query, note);
        query.addBindValue(text(note.bookMd5()));
        query.addBindValue(note.pageNo());
        query.addBindValue(rectsText(note.highlightRects()));
        if (!query.exec())
            return fail(QStringLiteral("add: %1").arg(errorOf(query)));
        return true;
    });
    if (ok)
        note.setNoteid(noteid);
    return ok;
}

bool Notebook::update(const MbBookNote& note)
{
    return change(u"update", [&] {
        QSqlQuery query(QSqlDatabase::database(connection_, false));
        query.prepare(QStringLiteral("UPDATE notes SET notetitle = ?, highlight_text = ?, notes = ?, mind_width = ?,"
                                     " mind_height = ?, highlight_style = ? WHERE noteid = ?"));
        bindEditableFields(query, note);
        query.addBindValue(text(note.noteid()));
        if (!query.exec())
            return fail(QStringLiteral("update: %1").arg(errorOf(query)));
        if (query.numRowsAffected() != 1)
            return fail(QStringLiteral("update: no note with the id %1").arg(note.noteid()));
        return true;
    });
}

bool Notebook::remove(const QString& noteid)
{
    return change(u"remove", [&] {
        QSqlQuery query(QSqlDatabase::database(connection_, false));
        query.prepare(QStringLiteral("DELETE FROM notes WHERE noteid = ?"));
        query.addBindValue(text(noteid));
        if (!query.exec())
            return fail(QStringLiteral("remove: %1").arg(errorOf(query)));
        if (query.numRowsAffected() != 1)
            return fail(QStringLiteral("remove: no note with the id %1").arg(noteid));
        return true;
    });
}

std::vector<MbBookNote> Notebook::select(const QString& condition, const QString& value)
{
    std::vector<MbBookNote> result;
    if (!open_) {
        fail(QStringLiteral("the notebook %1 is not open").arg(path_));
        return result;
    }
    QSqlQuery query(QSqlDatabase::database(connection_, false));
    query.setForwardOnly(true);
    query.prepare(QStringLiteral("SELECT %1 FROM notes %2 ORDER BY seq").arg(noteColumns, condition));
    if (!condition.isEmpty())
        query.addBindValue(text(value));
    if (!query.exec()) {
        fail(QStringLiteral("reading notes: %1").arg(errorOf(query)));
        return result;
    }
    while (query.next())
        result.push_back(noteOfRow(query));
    error_.clear();
    return result;
}

std::optional<MbBookNote> Notebook::note(const QString& noteid)
{
    std::vector<MbBookNote> found = select(QStringLiteral("WHERE noteid = ?"), noteid);
    if (found.empty())
        return std::nullopt;
    return std::move(found.front());
}

std::vector<MbBookNote> Notebook::notes()
{
    return select(QString(), QString());
}

std::vector<MbBookNote> Notebook::notesOfBook(const QString& bookMd5)
{
    return select(QStringLiteral("WHERE book_md5 = ?"), bookMd5);
}

}  // namespace lexicorn::host
