#pragma once

// A dictionary card as the mind map keeps it: a note whose title, excerpt and
// comments carry one sense of one dictionary entry (see note_format.h).

#include "lexicorn/render/card_error.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>

namespace lexicorn {

// What the card code reads of a note. The reader's note class implements it
// over the host's note; JsonDictNote implements it over plain JSON.
class DictNote {
public:
    virtual ~DictNote() = default;

    virtual QString noteid() const = 0;
    virtual QString notetitle() const = 0;
    // The excerpt: the quote sentence, plain text.
    virtual QString highlight_text() const = 0;
    // The comments in order, each an object with keys such as "type", "text",
    // "html" and "group". Elements are passed on as the host has them, so a
    // comment may lack a key or hold a value of another kind.
    virtual QJsonArray notes() const = 0;
};

// Comment record keys and values, as the popup writes them.
namespace comment {
inline const QString type = QStringLiteral("type");
inline const QString text = QStringLiteral("text");
inline const QString html = QStringLiteral("html");
inline const QString group = QStringLiteral("group");
inline const QString textNote = QStringLiteral("TextNote");
inline const QString htmlNote = QStringLiteral("HtmlNote");
inline const QString sentenceCN = QStringLiteral("sentenceCN");
inline const QString exts = QStringLiteral("exts");
}  // namespace comment

// A note as plain data: {"noteid", "notetitle", "highlight_text", "notes"}.
struct NoteRecord {
    QString noteid;
    QString notetitle;
    QString highlight_text;
    QJsonArray notes;

    QJsonObject toJson() const;
    // Missing or non-text members read as empty; a missing or non-list
    // "notes" as no comments.
    static NoteRecord fromJson(const QJsonObject& object);
};

// The note interface over a NoteRecord, for the command line and tests.
class JsonDictNote final : public DictNote {
public:
    explicit JsonDictNote(NoteRecord record) : record_(std::move(record)) {}
    // A JSON document holding one object; an error (code 10000) names what
    // is wrong with the document otherwise.
    static CardResult<JsonDictNote> fromJson(const QByteArray& document);

    QString noteid() const override { return record_.noteid; }
    QString notetitle() const override { return record_.notetitle; }
    QString highlight_text() const override { return record_.highlight_text; }
    QJsonArray notes() const override { return record_.notes; }

    const NoteRecord& record() const { return record_; }

private:
    NoteRecord record_;
};

}  // namespace lexicorn
