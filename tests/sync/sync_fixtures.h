#pragma once

// Shared pieces of the sync tests: an Anki collection that a test can stop,
// dictionary cards made as the popup makes them, and waiting for what the
// code under test posts to the main queue.

#include "card_fixtures.h"

#include "lexicorn/render/dict_note.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>

namespace lexicorn::testing {

// A real Anki collection in the home, served on 127.0.0.1 by tools/anki-peer,
// with deck "Default" and the note type "Lexicorn card" of CardHome; the
// client is pointed at it.
class SyncPeer : public AnkiCollection {
public:
    explicit SyncPeer(const TempHome& home) : AnkiCollection(home) {}
    // Ends the server; later requests find nothing listening.
    void stop() { peer_.stop(); }

    // A note's fields, name to value; empty when Anki has no such note.
    QJsonObject fieldsOf(const QJsonValue& ankiId);
    void deleteNote(const QJsonValue& ankiId);
    // How many notes the collection holds.
    qsizetype noteCount();
};

// The card the popup writes for sense `row` of section `section` of the
// lookup of `word` in `sentence`, with the note id given; nothing when the
// popup has no such row.
std::optional<NoteRecord> cardFor(const QString& word, const QString& sentence, int section, int row, const QString& noteid);

// A note that is no dictionary card.
NoteRecord plainNote(const QString& title, const QString& noteid);

// Runs the event loop until `finished` is true or the limit passes; true
// when it finished.
bool runEventsUntil(const std::function<bool()>& finished, std::chrono::milliseconds limit);

// Collects the callbacks of the single-card operations and notes whether
// each ran on the main thread.
struct CallbackLog {
    struct Call {
        bool success;
        QString message;
        bool onMainThread;
        bool operator==(const Call&) const = default;
    };
    QList<Call> calls;
    std::function<void(bool, const QString&)> callback();
    // Waits for the next call (generously bounded) and takes it.
    std::optional<Call> next();
};

inline void PrintTo(const CallbackLog::Call& call, std::ostream* out)
{
    *out << (call.success ? "success: " : "failure: ") << call.message.toStdString()
         << (call.onMainThread ? "" : ", off the main thread");
}

}  // namespace lexicorn::testing
