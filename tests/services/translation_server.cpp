#include "translation_server.h"

#include "foundation/http_client.h"
#include "foundation/user_defaults.h"

#include <QJsonDocument>

#include <gtest/gtest.h>

namespace lexicorn::testing {

TranslationServer::TranslationServer(const QJsonObject& config)
    : process_(QStringLiteral("python3"), {QStringLiteral(LEXICORN_TESTS_DIR "/support/translation_server.py"),
                                           QString::fromUtf8(QJsonDocument(config).toJson(QJsonDocument::Compact))})
{
    if (process_.started())
        ports_ = control(QStringLiteral("/ports")).toObject();
}

QString TranslationServer::root(const QString& role) const
{
    return QStringLiteral("http://") + authority(role);
}

QString TranslationServer::authority(const QString& role) const
{
    return QStringLiteral("127.0.0.1:%1").arg(ports_.value(role).toInt());
}

void TranslationServer::pointHostsHere() const
{
    for (const QString& role : ports_.keys())
        UserDefaults::standard().set(hostKeyOf(role), root(role));
}

QJsonArray TranslationServer::requests() const
{
    return control(QStringLiteral("/requests")).toArray();
}

QStringList TranslationServer::rolesAsked() const
{
    QStringList roles;
    for (const QJsonValue& request : requests())
        roles.append(request[QStringLiteral("role")].toString());
    return roles;
}

QJsonValue TranslationServer::control(const QString& path) const
{
    HttpRequest request;
    request.url = QUrl(process_.url() + path);
    request.timeout = std::chrono::seconds(10);
    const HttpResponse response = HttpClient::shared().send(request);
    EXPECT_EQ(response.status, 200) << path.toStdString() << ": " << response.error.toStdString();
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(response.body, &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << response.body.toStdString();
    return document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());
}

QString hostKeyOf(const QString& role)
{
    return QStringLiteral("SPECIAL_HOST_") + role.toUpper();
}

QStringList allTranslationRoles()
{
    return {QStringLiteral("google_cn"), QStringLiteral("youdao"), QStringLiteral("google"), QStringLiteral("eudic"),
            QStringLiteral("deepl")};
}

QStringList headerValues(const QJsonObject& request, const QString& name)
{
    QStringList values;
    for (const QJsonValue& header : request[QStringLiteral("headers")].toArray()) {
        if (header[0].toString().compare(name, Qt::CaseInsensitive) == 0)
            values.append(header[1].toString());
    }
    return values;
}

}  // namespace lexicorn::testing
