#pragma once

#include "lexicorn/anki/anki_reply.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QObject>
#include <QPointer>
#include <QString>

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace lexicorn {

// The one client of the AnkiConnect add-on: sends an action with its
// parameters to the stored address and hands back the parsed reply. It
// blocks its caller for up to three sends of two seconds each, so callers
// other than the settings panel run it on a background queue.
//
// A request that creates something in Anki (a note, a deck, a note type) is
// never sent blindly a second time once a send may have reached Anki: a
// slow Anki may have acted on it after the client gave up waiting. It is
// sent again only when the caller's check finds that it did not take effect.
class KSWAnkiconnect {
public:
    using Reply = std::optional<AnkiReply>;

    // What a look in Anki found out about an earlier send that may have
    // arrived: it took effect (and reply is what it would have answered), it
    // did not, or Anki could not be asked.
    struct EarlierSend {
        enum class Verdict { tookEffect, didNotTakeEffect, unknown };
        Verdict verdict = Verdict::unknown;
        AnkiReply reply;
    };
    using CheckEarlierSend = std::function<EarlierSend()>;

    // One action of a "multi" request.
    struct Action {
        QString action;
        QJsonObject params;
    };

    static KSWAnkiconnect& shareInstance();

    static inline const QString defaultIpString = QStringLiteral("127.0.0.1:8765");
    static constexpr std::chrono::milliseconds requestTimeout{2000};
    static constexpr int attempts = 3;

    QString ipString() const;
    // Stores the address in the user defaults under "ipString"; no validation.
    void setIpString_(const QString& ipString);

    // The Anki settings panel that is open, if any; the client never uses it.
    QPointer<QObject> ankiconnectSettingView;

    // Shows an alert with no title and an "OK" button, on the main queue, from any thread.
    static void showeAlertWithMessage_(const QString& message);

    // Sends {"action", "version": 6, "params"} and returns the parsed reply,
    // or nothing after three failed attempts.
    Reply postRequestCommand_params_(const QString& action, const std::optional<QJsonObject>& params);
    // The same, with the check that decides whether a request that creates
    // something may be sent again after a send that may have arrived.
    Reply postRequest(const QString& action, const QJsonObject& params, const CheckEarlierSend& checkEarlierSend);

    // Several actions in one "multi" request (one action goes on its own).
    // One {"result", "error"} reply per action, in order; nothing when Anki
    // did not answer. An error of the request as a whole becomes each
    // action's reply.
    std::optional<std::vector<AnkiReply>> multi(const std::vector<Action>& actions);

    // True for the actions that add to the collection (and a "multi" that
    // holds one): they are not sent again blindly.
    static bool createsSomething(const QString& action, const QJsonObject& params);

    // The query findNotesInCurrentDeckWithNoteid_ sends.
    static QString currentDeckQuery(const QString& query);

    // Adds a note. After a send that may have reached Anki, it is sent again
    // only when checkEarlierSend says the earlier one did not take effect.
    Reply addToAnkiWithWordDict_(const QJsonObject& note, const CheckEarlierSend& checkEarlierSend = {});
    // The server's version number when the reply has a null "error"; else nothing.
    std::optional<QJsonValue> getVersion();
    Reply findNotesInCurrentDeckWithNoteid_(const QString& query);
    Reply findNotesWithNoteid_(const QString& query);
    Reply getDeckConfigWithDeckName_(const QString& deckName);
    Reply getModelFieldNames_(const QString& modelName);
    Reply getDeckNames();
    Reply getModelNames();
    // Sends "storeMediaFile" with a "notes" list: kept exactly so.
    Reply getNotesInfoWithNoteid_(const QJsonValue& noteId);
    Reply updateMediaFile_data_(const QString& fileName, const QString& base64Data);
    Reply updateMediaFile_url_(const QString& fileName, const QString& url);
    Reply updateWithParams_(const QJsonObject& params);

private:
    KSWAnkiconnect();

    mutable std::mutex mutex_;
    QString ipString_;
};

}  // namespace lexicorn
