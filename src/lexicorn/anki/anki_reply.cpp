#include "lexicorn/anki/anki_reply.h"

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

bool ankiReplySucceeded(const QJsonObject& reply)
{
    return reply.contains(QStringLiteral("error")) && reply.value(QStringLiteral("error")).isNull();
}

}  // namespace lexicorn
