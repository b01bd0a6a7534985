#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <optional>

namespace lexicorn {

// Reads an AnkiConnect reply body. Only a JSON object is a reply; anything
// else (not JSON, an array, a bare value) reads as no reply.
std::optional<QJsonObject> parseAnkiReply(const QByteArray& body);

// How a reply value prints in a message or a log line: text as it is,
// numbers without a fraction, null or nothing as "(null)", the rest as
// compact JSON.
QString describeReplyValue(const QJsonValue& value);

// True when the reply's "error" member is JSON null, the sign of success.
bool ankiReplySucceeded(const QJsonObject& reply);

}  // namespace lexicorn
