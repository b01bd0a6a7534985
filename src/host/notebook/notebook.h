#pragma once

// The reader's notebook: its mind-map notes and the books they come from,
// kept in one SQLite file.

#include "host/notebook/mb_book_note.h"

#include <QString>
#include <QStringView>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace lexicorn::host {

class Notebook {
public:
    // The layout of the tables; a file with a higher number was written by a
    // newer reader and is not opened.
    static constexpr int schemaVersion = 2;

    // homeDirectory() + "/Lexicorn/notebook.sqlite".
    static QString defaultPath();

    explicit Notebook(QString path = defaultPath());
    ~Notebook();
    Notebook(const Notebook&) = delete;
    Notebook& operator=(const Notebook&) = delete;

    // Opens the file, making it (and its folder) when missing. A file that is
    // not a notebook (damaged, another program's database, a newer schema)
    // is left as it is and open() returns false with errorString() saying why.
    bool open();
    bool isOpen() const { return open_; }
    const QString& path() const { return path_; }
    // What the last failed call went wrong on; empty after a success.
    const QString& errorString() const { return error_; }

    // Stores a new note at the end of the notebook. An empty noteid is
    // replaced by a fresh UUID, which is written back into the note. False
    // when a note with that id exists.
    bool add(MbBookNote& note);
    std::optional<MbBookNote> note(const QString& noteid);
    // In the order they were added.
    std::vector<MbBookNote> notes();
    std::vector<MbBookNote> notesOfBook(const QString& bookMd5);
    // Writes the title, excerpt, comments, mind size and highlight style of
    // the stored note with the same id; its book, page and highlight
    // rectangles stay. False when
    // there is no such note.
    bool update(const MbBookNote& note);
    // False when there is no such note.
    bool remove(const QString& noteid);

    // Every change runs in one transaction, and just before it commits it
    // asks this hook (when set) with the change's name ("add", "update",
    // "remove", "addBook"); true makes the change fail and roll back. Tests
    // use it to break a change after its writes.
    using FailureHook = std::function<bool(QStringView change)>;
    void setFailureHook(FailureHook hook) { failureHook_ = std::move(hook); }

    // The changes made between beginBatch and the matching endBatch (one
    // gesture's writes) go to the file in one transaction, begun by the first
    // change and committed by the last endBatch; each change inside still
    // succeeds or fails whole. Batches nest. When the file is too busy to
    // begin the transaction each change commits alone. endBatch is false
    // (errorString says why) when the commit failed and the batch's changes
    // were rolled back.
    void beginBatch();
    bool endBatch();
    bool inBatch() const { return batchDepth_ > 0; }
    // Transactions committed since the notebook was opened, a batch counting once.
    std::uint64_t committedTransactions() const { return commits_; }

private:
    friend class MbModelTool;

    // Runs write() inside a transaction and commits it; on any failure rolls
    // back and sets error_. write() returns false (having set error_) to abort.
    bool change(QStringView name, const std::function<bool()>& write);
    // Connects and checks or makes the tables; the problem in words, or empty.
    QString openConnection();
    bool fail(const QString& message);
    std::vector<MbBookNote> select(const QString& condition, const QString& value);

    QString path_;
    QString connection_;
    QString error_;
    bool open_ = false;
    FailureHook failureHook_;
    int batchDepth_ = 0;
    bool batchOpen_ = false;  // the batch's transaction is open
    std::uint64_t commits_ = 0;
};

}  // namespace lexicorn::host
