// lexicorn notebook: add, list and show the notes of the reader's notebook.

#include "cli/commands.h"
#include "cli/output.h"

#include "host/notebook/notebook.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>

namespace lexicorn::cli {

namespace {

using host::MbBookNote;
using host::Notebook;

QByteArray readNoteDocument(const QString& source)
{
    QFile file;
    const bool opened = source == QStringLiteral("-") ? file.open(stdin, QIODevice::ReadOnly)
                                                      : (file.setFileName(source), file.open(QIODevice::ReadOnly));
    if (!opened)
        throw CommandError(QStringLiteral("cannot read %1: %2").arg(source, file.errorString()));
    return file.readAll();
}

void openNotebook(Notebook& notebook)
{
    if (!notebook.open())
        throw CommandError(notebook.errorString());
}

int add(Notebook& notebook, const QStringList& words)
{
    if (words.size() != 2)
        throw UsageError(QStringLiteral("notebook add needs exactly one NOTE_JSON (a file, or - for standard input)"));
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(readNoteDocument(words[1]), &error);
    if (error.error != QJsonParseError::NoError)
        throw CommandError(QStringLiteral("%1 is not a JSON note: %2").arg(words[1], error.errorString()));
    if (!document.isObject())
        throw CommandError(QStringLiteral("%1 is not a JSON note: the document is not an object").arg(words[1]));
    MbBookNote note = MbBookNote::fromJson(document.object());
    openNotebook(notebook);
    if (!notebook.add(note))
        throw CommandError(notebook.errorString());
    print(note.noteid() + u'\n');
    return 0;
}

int list(Notebook& notebook, const QStringList& words)
{
    if (words.size() != 1)
        throw UsageError(QStringLiteral("notebook list takes no arguments"));
    // Listing a notebook that was never made shows nothing and makes no file.
    if (!QFileInfo::exists(notebook.path()))
        return 0;
    openNotebook(notebook);
    const std::vector<MbBookNote> notes = notebook.notes();
    if (!notebook.errorString().isEmpty())
        throw CommandError(notebook.errorString());
    for (const MbBookNote& note : notes)
        print(note.noteid() + u'\t' + note.notetitle() + u'\n');
    return 0;
}

int show(Notebook& notebook, const QStringList& words)
{
    if (words.size() != 2)
        throw UsageError(QStringLiteral("notebook show needs exactly one ID"));
    const QString& noteid = words[1];
    std::optional<MbBookNote> note;
    if (QFileInfo::exists(notebook.path())) {
        openNotebook(notebook);
        note = notebook.note(noteid);
        if (!notebook.errorString().isEmpty())
            throw CommandError(notebook.errorString());
    }
    if (!note)
        throw CommandError(QStringLiteral("no note with the id %1 in %2").arg(noteid, notebook.path()));
    print(QString::fromUtf8(QJsonDocument(note->toJson()).toJson(QJsonDocument::Indented)));
    return 0;
}

}  // namespace

int runNotebook(Arguments& arguments)
{
    applyHomeOption(arguments);
    const QStringList words = arguments.positionals();
    const QString action = words.value(0);
    Notebook notebook;
    if (action == QStringLiteral("add"))
        return add(notebook, words);
    if (action == QStringLiteral("list"))
        return list(notebook, words);
    if (action == QStringLiteral("show"))
        return show(notebook, words);
    throw UsageError(QStringLiteral("notebook needs add NOTE_JSON, list or show ID"));
}

}  // namespace lexicorn::cli
