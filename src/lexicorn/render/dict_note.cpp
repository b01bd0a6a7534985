#include "lexicorn/render/dict_note.h"

#include <QJsonDocument>

namespace lexicorn {

namespace {
const QString noteidKey = QStringLiteral("noteid");
const QString notetitleKey = QStringLiteral("notetitle");
const QString highlightKey = QStringLiteral("highlight_text");
const QString notesKey = QStringLiteral("notes");
}  // namespace

QJsonObject NoteRecord::toJson() const
{
    return {{noteidKey, noteid}, {notetitleKey, notetitle}, {highlightKey, highlight_text}, {notesKey, notes}};
}

NoteRecord NoteRecord::fromJson(const QJsonObject& object)
{
    NoteRecord record;
    record.noteid = object.value(noteidKey).toString();
    record.notetitle = object.value(notetitleKey).toString();
    record.highlight_text = object.value(highlightKey).toString();
    record.notes = object.value(notesKey).toArray();
    return record;
}

CardResult<JsonDictNote> JsonDictNote::fromJson(const QByteArray& document)
{
    QJsonParseError error;
    const QJsonDocument parsed = QJsonDocument::fromJson(document, &error);
    if (error.error != QJsonParseError::NoError)
        return CardError::make(ErrorCode::structure, QStringLiteral("not a JSON note: %1").arg(error.errorString()));
    if (!parsed.isObject())
        return CardError::make(ErrorCode::structure, QStringLiteral("not a JSON note: the document is not an object"));
    return JsonDictNote(NoteRecord::fromJson(parsed.object()));
}

}  // namespace lexicorn
