#pragma once

#include <QByteArray>
#include <QJsonObject>

#include <optional>

namespace lexicorn {

// Reads an AnkiConnect reply body. Only a JSON object is a reply; anything
// else (not JSON, an array, a bare value) reads as no reply.
std::optional<QJsonObject> parseAnkiReply(const QByteArray& body);

// True when the reply's "error" member is JSON null, the sign of success.
bool ankiReplySucceeded(const QJsonObject& reply);

}  // namespace lexicorn
