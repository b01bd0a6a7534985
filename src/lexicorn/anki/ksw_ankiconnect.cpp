#include "lexicorn/anki/ksw_ankiconnect.h"

#include "lexicorn/anki/anki_reply.h"

#include "foundation/alerts.h"
#include "foundation/dispatch.h"
#include "foundation/http_client.h"
#include "foundation/log.h"
#include "foundation/user_defaults.h"

#include <QJsonDocument>

namespace lexicorn {

namespace {

const QString ipStringKey = QStringLiteral("ipString");
const QString deckNameKey = QStringLiteral("ANKISET_DECKNAME");

QString compact(const QJsonObject& object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

}  // namespace

KSWAnkiconnect& KSWAnkiconnect::shareInstance()
{
    static KSWAnkiconnect* instance = new KSWAnkiconnect;
    return *instance;
}

KSWAnkiconnect::KSWAnkiconnect()
{
    // The first use writes the default address into the user defaults.
    setIpString_(UserDefaults::standard().stringIfSet(ipStringKey).value_or(defaultIpString));
}

QString KSWAnkiconnect::ipString() const
{
    std::lock_guard lock(mutex_);
    return ipString_;
}

void KSWAnkiconnect::setIpString_(const QString& ipString)
{
    UserDefaults::standard().set(ipStringKey, ipString);
    std::lock_guard lock(mutex_);
    ipString_ = ipString;
}

void KSWAnkiconnect::showeAlertWithMessage_(const QString& message)
{
    mainQueue().async([message] { presentAlert(QString(), message, QStringLiteral("OK")); });
}

KSWAnkiconnect::Reply KSWAnkiconnect::postRequestCommand_params_(const QString& action, const std::optional<QJsonObject>& params)
{
    HttpRequest request;
    request.method = "POST";
    request.url = QUrl(QStringLiteral("http://%1").arg(ipString()));
    request.timeout = requestTimeout;
    request.headers = {{"Content-Type", "application/json; charset=utf-8"}, {"Accept", "application/json"}};
    const QJsonObject body{{QStringLiteral("action"), action},
                           {QStringLiteral("version"), 6},
                           {QStringLiteral("params"), params.value_or(QJsonObject())}};
    request.body = QJsonDocument(body).toJson(QJsonDocument::Compact);

    Reply reply;
    for (int attempt = 1; !reply && attempt <= attempts; ++attempt) {
        const HttpResponse response = HttpClient::shared().send(request);
        if (!response.replied()) {
            logLine(QStringLiteral("🌀🌀🌀🌀 AnkiConnect error: %1 🌀🌀🌀🌀").arg(response.error));
            continue;
        }
        reply = parseAnkiReply(response.body);
        logLine(reply ? compact(*reply) : QStringLiteral("(null)"));
    }
    return reply;
}

KSWAnkiconnect::Reply KSWAnkiconnect::addToAnkiWithWordDict_(const QJsonObject& note)
{
    return postRequestCommand_params_(QStringLiteral("addNote"), note);
}

std::optional<QJsonValue> KSWAnkiconnect::getVersion()
{
    const Reply reply = postRequestCommand_params_(QStringLiteral("version"), QJsonObject());
    if (reply && ankiReplySucceeded(*reply))
        return reply->value(QStringLiteral("result"));
    const QJsonValue error = reply ? reply->value(QStringLiteral("error")) : QJsonValue();
    logLine(QStringLiteral("🌀🌀🌀🌀 KSWAnkiconnect getVersion error: %1").arg(describeReplyValue(error)));
    return std::nullopt;
}

KSWAnkiconnect::Reply KSWAnkiconnect::findNotesInCurrentDeckWithNoteid_(const QString& query)
{
    const std::optional<QString> deck = UserDefaults::standard().stringIfSet(deckNameKey);
    const QString fullQuery = deck ? QStringLiteral("\"deck:%1\" %2").arg(*deck, query) : query;
    return postRequestCommand_params_(QStringLiteral("findNotes"), QJsonObject{{QStringLiteral("query"), fullQuery}});
}

KSWAnkiconnect::Reply KSWAnkiconnect::findNotesWithNoteid_(const QString& query)
{
    return postRequestCommand_params_(QStringLiteral("findNotes"), QJsonObject{{QStringLiteral("query"), query}});
}

KSWAnkiconnect::Reply KSWAnkiconnect::getDeckConfigWithDeckName_(const QString& deckName)
{
    return postRequestCommand_params_(QStringLiteral("getDeckConfig"), QJsonObject{{QStringLiteral("deck"), deckName}});
}

KSWAnkiconnect::Reply KSWAnkiconnect::getModelFieldNames_(const QString& modelName)
{
    return postRequestCommand_params_(QStringLiteral("modelFieldNames"), QJsonObject{{QStringLiteral("modelName"), modelName}});
}

KSWAnkiconnect::Reply KSWAnkiconnect::getDeckNames()
{
    return postRequestCommand_params_(QStringLiteral("deckNames"), QJsonObject());
}

KSWAnkiconnect::Reply KSWAnkiconnect::getModelNames()
{
    return postRequestCommand_params_(QStringLiteral("modelNames"), QJsonObject());
}

KSWAnkiconnect::Reply KSWAnkiconnect::getNotesInfoWithNoteid_(const QJsonValue& noteId)
{
    return postRequestCommand_params_(QStringLiteral("storeMediaFile"), QJsonObject{{QStringLiteral("notes"), QJsonArray{noteId}}});
}

KSWAnkiconnect::Reply KSWAnkiconnect::updateMediaFile_data_(const QString& fileName, const QString& base64Data)
{
    return postRequestCommand_params_(QStringLiteral("storeMediaFile"),
                                      QJsonObject{{QStringLiteral("filename"), fileName}, {QStringLiteral("data"), base64Data}});
}

KSWAnkiconnect::Reply KSWAnkiconnect::updateMediaFile_url_(const QString& fileName, const QString& url)
{
    return postRequestCommand_params_(QStringLiteral("storeMediaFile"),
                                      QJsonObject{{QStringLiteral("filename"), fileName}, {QStringLiteral("url"), url}});
}

KSWAnkiconnect::Reply KSWAnkiconnect::updateWithParams_(const QJsonObject& params)
{
    return postRequestCommand_params_(QStringLiteral("updateNoteFields"), params);
}

}  // namespace lexicorn
