#include "lexicorn/anki/anki_reply.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace lexicorn {

std::optional<QJsonObject> parseAnkiReply(const QByteArray& body)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    return document.object();
}

QString describeReplyValue(const QJsonValue& value)
{
    if (value.isString())
        return value.toString();
    if (value.isDouble()) {
        const double number = value.toDouble();
        const auto whole = qint64(number);
        return double(whole) == number ? QString::number(whole) : QString::number(number);
    }
    if (value.isBool())
        return value.toBool() ? QStringLiteral("1") : QStringLiteral("0");
    if (value.isObject())
        return QString::fromUtf8(QJsonDocument(value.toObject()).toJson(QJsonDocument::Compact));
    if (value.isArray())
        return QString::fromUtf8(QJsonDocument(value.toArray()).toJson(QJsonDocument::Compact));
    return QStringLiteral("(null)");
}

bool ankiReplySucceeded(const QJsonObject& reply)
{
    return reply.contains(QStringLiteral("error")) && reply.value(QStringLiteral("error")).isNull();
}

}  // namespace lexicorn
