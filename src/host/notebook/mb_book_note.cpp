#include "host/notebook/mb_book_note.h"

namespace lexicorn::host {

namespace {

const QString bookMd5Key = QStringLiteral("bookMd5");
const QString mindSizeKey = QStringLiteral("mindSize");
const QString widthKey = QStringLiteral("width");
const QString heightKey = QStringLiteral("height");
const QString highlightStyleKey = QStringLiteral("highlightStyle");
const QString pageNoKey = QStringLiteral("pageNo");
const QString highlightRectsKey = QStringLiteral("highlightRects");

}  // namespace

QJsonObject MbBookNote::toJson() const
{
    QJsonObject object = record_.toJson();
    object.insert(bookMd5Key, bookMd5_);
    object.insert(mindSizeKey, QJsonObject{{widthKey, mindSize_.width}, {heightKey, mindSize_.height}});
    object.insert(highlightStyleKey, highlightStyle_);
    object.insert(pageNoKey, pageNo_);
    object.insert(highlightRectsKey, rectsJson(highlightRects_));
    return object;
}

MbBookNote MbBookNote::fromJson(const QJsonObject& object)
{
    MbBookNote note(NoteRecord::fromJson(object));
    note.bookMd5_ = object.value(bookMd5Key).toString();
    const QJsonObject size = object.value(mindSizeKey).toObject();
    note.mindSize_ = {size.value(widthKey).toDouble(), size.value(heightKey).toDouble()};
    note.highlightStyle_ = object.value(highlightStyleKey).toString();
    note.pageNo_ = object.value(pageNoKey).toInt();
    note.highlightRects_ = rectsOfJson(object.value(highlightRectsKey).toArray());
    return note;
}

QJsonArray rectsJson(const std::vector<QRectF>& rects)
{
    QJsonArray array;
    for (const QRectF& rect : rects)
        array.append(QJsonArray{rect.x(), rect.y(), rect.width(), rect.height()});
    return array;
}

std::vector<QRectF> rectsOfJson(const QJsonArray& array)
{
    std::vector<QRectF> rects;
    for (const QJsonValue& value : array) {
        const QJsonArray r = value.toArray();
        if (r.size() == 4 && r[0].isDouble() && r[1].isDouble() && r[2].isDouble() && r[3].isDouble())
            rects.emplace_back(r[0].toDouble(), r[1].toDouble(), r[2].toDouble(), r[3].toDouble());
    }
    return rects;
}

}  // namespace lexicorn::host
