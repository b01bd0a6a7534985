#include "host/notebook/mb_book_note.h"

namespace lexicorn::host {

namespace {

const QString bookMd5Key = QStringLiteral("bookMd5");
const QString mindSizeKey = QStringLiteral("mindSize");
const QString widthKey = QStringLiteral("width");
const QString heightKey = QStringLiteral("height");
const QString highlightStyleKey = QStringLiteral("highlightStyle");

}  // namespace

QJsonObject MbBookNote::toJson() const
{
    QJsonObject object = record_.toJson();
    object.insert(bookMd5Key, bookMd5_);
    object.insert(mindSizeKey, QJsonObject{{widthKey, mindSize_.width}, {heightKey, mindSize_.height}});
    object.insert(highlightStyleKey, highlightStyle_);
    return object;
}

MbBookNote MbBookNote::fromJson(const QJsonObject& object)
{
    MbBookNote note(NoteRecord::fromJson(object));
    note.bookMd5_ = object.value(bookMd5Key).toString();
    const QJsonObject size = object.value(mindSizeKey).toObject();
    note.mindSize_ = {size.value(widthKey).toDouble(), size.value(heightKey).toDouble()};
    note.highlightStyle_ = object.value(highlightStyleKey).toString();
    return note;
}

}  // namespace lexicorn::host
