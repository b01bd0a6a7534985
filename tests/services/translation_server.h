#pragma once

#include "support/server_process.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace lexicorn::testing {

// tests/support/translation_server.py: stand-ins for the translation services
// answering as configured, each role on a port of its own, recording every
// request they receive.
class TranslationServer {
public:
    // config: {"ROLE": {"answer"|"body", "status"}, ...}; see the script.
    explicit TranslationServer(const QJsonObject& config);

    bool started() const { return !ports_.isEmpty(); }
    // "http://127.0.0.1:PORT" of a role.
    QString root(const QString& role) const;
    // "127.0.0.1:PORT" of a role.
    QString authority(const QString& role) const;
    // Points each service this server stands in for at it (SPECIAL_HOST_* settings).
    void pointHostsHere() const;
    // Every request received so far, in order: {"role", "method", "target", "headers", "body"}.
    QJsonArray requests() const;
    // The roles of those requests, in order.
    QStringList rolesAsked() const;

private:
    QJsonValue control(const QString& path) const;

    ServerProcess process_;
    QJsonObject ports_;
};

// The host setting of a role ("google_cn" → "SPECIAL_HOST_GOOGLE_CN").
QString hostKeyOf(const QString& role);
// Every role, in the order the automatic engine asks them, then DeepL.
QStringList allTranslationRoles();
// Every value of a header in a recorded request, by name in any case, in order.
QStringList headerValues(const QJsonObject& request, const QString& name);

}  // namespace lexicorn::testing
