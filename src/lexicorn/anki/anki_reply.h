#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <optional>
#include <vector>

namespace lexicorn {

// What AnkiConnect answered: any JSON value. Version 6 replies are objects
// with "result" and "error"; a reply of another shape is still the server's
// answer (it is returned, not retried) and reads as having neither member.
class AnkiReply {
public:
    AnkiReply() = default;
    explicit AnkiReply(QJsonValue json) : json_(std::move(json)) {}
    // The reply {"result": result, "error": null}.
    static AnkiReply success(const QJsonValue& result);
    // The reply {"result": null, "error": message}.
    static AnkiReply failure(const QString& message);

    const QJsonValue& json() const { return json_; }
    QJsonObject object() const { return json_.toObject(); }
    // A member of the reply object; undefined when it has none or is no object.
    QJsonValue value(const QString& key) const { return object().value(key); }
    bool contains(const QString& key) const { return object().contains(key); }
    // True for an empty object and for a reply that is no object.
    bool isEmpty() const { return object().isEmpty(); }
    QJsonValue result() const { return value(QStringLiteral("result")); }
    QJsonValue error() const { return value(QStringLiteral("error")); }
    // The reply as compact JSON text.
    QString text() const;

private:
    QJsonValue json_;
};

// Reads an AnkiConnect reply body; nothing when it is not JSON.
std::optional<AnkiReply> parseAnkiReply(const QByteArray& body);

// How a reply value prints in a message or a log line: text as it is,
// numbers without a fraction, null or nothing as "(null)", the rest as
// compact JSON.
QString describeReplyValue(const QJsonValue& value);

// True when the reply's "error" member is JSON null, the sign of success.
bool ankiReplySucceeded(const AnkiReply& reply);

// The replies of the `count` actions of a "multi" request, each as
// {"result", "error"}: an action that did not name its version gets its bare
// result, which is wrapped. A failure of the request as a whole, or a result
// that is not a list of `count` replies, becomes every action's failure.
std::vector<AnkiReply> splitMultiReply(const AnkiReply& reply, std::size_t count);

}  // namespace lexicorn
