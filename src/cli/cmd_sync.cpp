#include "cli/anki_address.h"
#include "cli/commands.h"
#include "cli/dict_home.h"
#include "cli/output.h"

#include "host/notebook/mb_model_tool.h"
#include "host/notebook/notebook.h"

#include "lexicorn/anki/sync/card_sync.h"
#include "lexicorn/dictionary/en_word_server.h"

#include <QCoreApplication>

namespace lexicorn::cli {

namespace {

// The notes to synchronise: the ones named, else those of the book, else all.
BatchSync::NoteList notesToSync(host::Notebook& notebook, const QStringList& ids, const std::optional<QString>& bookMd5)
{
    std::vector<host::MbBookNote> found;
    if (!ids.isEmpty()) {
        for (const QString& id : ids) {
            std::optional<host::MbBookNote> note = notebook.note(id);
            if (!note)
                throw CommandError(QStringLiteral("no note %1 in %2").arg(id, notebook.path()));
            found.push_back(std::move(*note));
        }
    } else {
        found = bookMd5 ? notebook.notesOfBook(*bookMd5) : notebook.notes();
    }
    BatchSync::NoteList notes;
    for (host::MbBookNote& note : found)
        notes.push_back(std::make_shared<host::MbBookNote>(std::move(note)));
    return notes;
}

}  // namespace

int runSync(Arguments& arguments)
{
    applyHomeOption(arguments);
    const std::optional<QString> ip = arguments.option(QStringLiteral("ip"));
    const std::optional<QString> bookMd5 = arguments.option(QStringLiteral("book-md5"));
    const int dict = dictNumberFromName(arguments.option(QStringLiteral("dict")).value_or(QStringLiteral("collins")));
    const QStringList ids = arguments.positionals();

    host::Notebook notebook;
    if (!notebook.open())
        throw CommandError(notebook.errorString());
    const BatchSync::NoteList notes = notesToSync(notebook, ids, bookMd5);

    // The book the cards quote: the one asked for, else the first note's.
    QString md5 = bookMd5.value_or(QString());
    if (md5.isEmpty() && !notes.empty())
        md5 = static_cast<const host::MbBookNote&>(*notes.front()).bookMd5();
    host::MbModelTool books(notebook);
    const QString bookTitle = books.getBookFromMd5_(md5).value_or(host::MbBook{}).bookTitle;

    // Cards are checked against the dictionary they were made with.
    loadDictionary(EnWordServer::shared(), dict);
    const ScopedAnkiAddress address(ip);

    BatchSync batch({}, [](const BatchSync::Counts& counts) {
        std::fprintf(stderr, "synchronised %lu of %lu notes\n", counts.visited, counts.total);
    });
    print(QStringLiteral("总数：%1，开始批量同步...\n").arg(notes.size()));
    const BatchSync::Outcome outcome = batch.run(notes, bookTitle);
    QCoreApplication::processEvents();  // the summary alert is queued for the main thread
    print(outcome.summary + u'\n');
    if (!outcome.errorText.isEmpty())
        print(QStringLiteral("pasteboard:") + outcome.errorText + u'\n');
    return outcome.errorText.isEmpty() ? 0 : 1;
}

}  // namespace lexicorn::cli
