#include "lexicorn/anki/anki_reply.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace lexicorn {

AnkiReply AnkiReply::success(const QJsonValue& result)
{
    return AnkiReply(QJsonObject{{QStringLiteral("result"), result}, {QStringLiteral("error"), QJsonValue::Null}});
}

AnkiReply AnkiReply::failure(const QString& message)
{
    return AnkiReply(QJsonObject{{QStringLiteral("result"), QJsonValue::Null}, {QStringLiteral("error"), message}});
}

QString AnkiReply::text() const
{
    // A document holds only an object or an array: the value goes in an
    // array, whose brackets are then dropped.
    const QByteArray list = QJsonDocument(QJsonArray{json_}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(list.mid(1, list.size() - 2));
}

std::optional<AnkiReply> parseAnkiReply(const QByteArray& body)
{
    // Wrapped in an array, any JSON value parses, bare numbers and strings included.
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson('[' + body + ']', &error);
    if (error.error != QJsonParseError::NoError || document.array().size() != 1)
        return std::nullopt;
    return AnkiReply(document.array().first());
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

bool ankiReplySucceeded(const AnkiReply& reply)
{
    return reply.contains(QStringLiteral("error")) && reply.error().isNull();
}

std::vector<AnkiReply> splitMultiReply(const AnkiReply& reply, std::size_t count)
{
    const QJsonArray results = reply.result().toArray();
    if (!ankiReplySucceeded(reply) || results.size() != qsizetype(count)) {
        const QJsonValue error = reply.error();
        const AnkiReply whole = AnkiReply::failure(error.isUndefined() || error.isNull()
                                                       ? QStringLiteral("AnkiConnect answered multi with ") + reply.text()
                                                       : describeReplyValue(error));
        return std::vector<AnkiReply>(count, whole);
    }
    std::vector<AnkiReply> replies;
    replies.reserve(count);
    for (const QJsonValue& result : results) {
        const QJsonObject envelope = result.toObject();
        const bool enveloped = envelope.size() == 2 && envelope.contains(QStringLiteral("result"))
            && envelope.contains(QStringLiteral("error"));
        replies.push_back(enveloped ? AnkiReply(result) : AnkiReply::success(result));
    }
    return replies;
}

}  // namespace lexicorn
