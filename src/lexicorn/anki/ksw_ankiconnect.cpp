#include "lexicorn/anki/ksw_ankiconnect.h"

#include "lexicorn/settings/preference_keys.h"

#include "lexicorn/anki/anki_reply.h"

#include "foundation/alerts.h"
#include "foundation/dispatch.h"
#include "foundation/http_client.h"
#include "foundation/log.h"
#include "foundation/user_defaults.h"

#include <QJsonDocument>
#include <QStringList>

#include <algorithm>

namespace lexicorn {

namespace {


}  // namespace

KSWAnkiconnect& KSWAnkiconnect::shareInstance()
{
    static KSWAnkiconnect* instance = new KSWAnkiconnect;
    return *instance;
}

KSWAnkiconnect::KSWAnkiconnect()
{
    // The first use writes the default address into the user defaults.
    setIpString_(UserDefaults::standard().stringIfSet(keys::ankiAddress).value_or(defaultIpString));
}

QString KSWAnkiconnect::ipString() const
{
    std::lock_guard lock(mutex_);
    return ipString_;
}

void KSWAnkiconnect::setIpString_(const QString& ipString)
{
    UserDefaults::standard().set(keys::ankiAddress, ipString);
    std::lock_guard lock(mutex_);
    ipString_ = ipString;
}

void KSWAnkiconnect::showeAlertWithMessage_(const QString& message)
{
    mainQueue().async([message] { presentAlert(QString(), message, QStringLiteral("OK")); });
}

KSWAnkiconnect::Reply KSWAnkiconnect::postRequestCommand_params_(const QString& action, const std::optional<QJsonObject>& params)
{
    return postRequest(action, params.value_or(QJsonObject()), {});
}

KSWAnkiconnect::Reply KSWAnkiconnect::postRequest(const QString& action, const QJsonObject& params,
                                                  const CheckEarlierSend& checkEarlierSend)
{
    HttpRequest request;
    request.method = "POST";
    request.url = QUrl(QStringLiteral("http://%1").arg(ipString()));
    request.timeout = requestTimeout;
    request.headers = {{"Content-Type", "application/json; charset=utf-8"}, {"Accept", "application/json"}};
    const QJsonObject body{{QStringLiteral("action"), action}, {QStringLiteral("version"), 6}, {QStringLiteral("params"), params}};
    request.body = QJsonDocument(body).toJson(QJsonDocument::Compact);
    const bool creates = createsSomething(action, params);

    // Every write of the request counts, a resend on a fresh connection too.
    int sendsLeft = attempts;
    while (sendsLeft > 0) {
        const HttpResponse response = HttpClient::shared().send(request);
        sendsLeft -= std::max(1, response.sends);
        if (response.replied()) {
            if (Reply reply = parseAnkiReply(response.body)) {
                logLine(reply->text());
                return reply;
            }
            logLine(QStringLiteral("(null)"));
        } else {
            logLine(QStringLiteral("🌀🌀🌀🌀 AnkiConnect error: %1 🌀🌀🌀🌀").arg(response.error));
        }
        if (!creates || !response.mayHaveArrived())
            continue;
        if (sendsLeft <= 0 || !checkEarlierSend)
            break;
        const EarlierSend earlier = checkEarlierSend();
        if (earlier.verdict == EarlierSend::Verdict::tookEffect)
            return earlier.reply;
        if (earlier.verdict == EarlierSend::Verdict::unknown)
            break;
    }
    return std::nullopt;
}

std::optional<std::vector<AnkiReply>> KSWAnkiconnect::multi(const std::vector<Action>& actions)
{
    if (actions.empty())
        return std::vector<AnkiReply>();
    if (actions.size() == 1) {
        Reply reply = postRequest(actions.front().action, actions.front().params, {});
        if (!reply)
            return std::nullopt;
        return std::vector<AnkiReply>{std::move(*reply)};
    }
    QJsonArray list;
    for (const Action& action : actions) {
        list.append(QJsonObject{{QStringLiteral("action"), action.action},
                                {QStringLiteral("version"), 6},
                                {QStringLiteral("params"), action.params}});
    }
    const Reply reply = postRequest(QStringLiteral("multi"), QJsonObject{{QStringLiteral("actions"), list}}, {});
    if (!reply)
        return std::nullopt;
    return splitMultiReply(*reply, actions.size());
}

bool KSWAnkiconnect::createsSomething(const QString& action, const QJsonObject& params)
{
    static const QStringList creating{QStringLiteral("addNote"), QStringLiteral("addNotes"), QStringLiteral("createDeck"),
                                      QStringLiteral("createModel")};
    if (creating.contains(action))
        return true;
    if (action != QStringLiteral("multi"))
        return false;
    const QJsonArray nested = params.value(QStringLiteral("actions")).toArray();
    return std::any_of(nested.begin(), nested.end(), [](const QJsonValue& entry) {
        const QJsonObject object = entry.toObject();
        return createsSomething(object.value(QStringLiteral("action")).toString(), object.value(QStringLiteral("params")).toObject());
    });
}

QString KSWAnkiconnect::currentDeckQuery(const QString& query)
{
    const std::optional<QString> deck = UserDefaults::standard().stringIfSet(ankiset::deckName);
    return deck ? QStringLiteral("\"deck:%1\" %2").arg(*deck, query) : query;
}

KSWAnkiconnect::Reply KSWAnkiconnect::addToAnkiWithWordDict_(const QJsonObject& note, const CheckEarlierSend& checkEarlierSend)
{
    return postRequest(QStringLiteral("addNote"), note, checkEarlierSend);
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
    return postRequestCommand_params_(QStringLiteral("findNotes"), QJsonObject{{QStringLiteral("query"), currentDeckQuery(query)}});
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
