#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QObject>
#include <QPointer>
#include <QString>

#include <chrono>
#include <mutex>
#include <optional>

namespace lexicorn {

// The one client of the AnkiConnect add-on: sends an action with its
// parameters to the stored address and hands back the parsed reply. It
// blocks its caller for up to three attempts of two seconds each, so callers
// other than the settings panel run it on a background queue.
class KSWAnkiconnect {
public:
    using Reply = std::optional<QJsonObject>;

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

    Reply addToAnkiWithWordDict_(const QJsonObject& note);
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
