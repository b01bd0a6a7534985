#pragma once

// Writing dictionary cards to Anki with few requests: a group of cards is
// looked up, has its sounds stored, and is added or updated with one
// request per step ("multi"), so a batch costs a handful of round trips per
// group rather than several per card.
//
// Along the way it makes up for AnkiConnect's ways:
// - field names are resolved against the note type's own fields once per
//   writer, since updateNoteFields skips a name that differs in case;
// - a new card that AnkiConnect put in the note type's deck instead of the
//   configured one is moved to the configured deck;
// - an add that may have reached a slow Anki is not sent again until a look
//   in Anki shows that it did not take effect.

#include "lexicorn/anki/model_fields.h"
#include "lexicorn/render/dict_note.h"

#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <optional>
#include <vector>

namespace lexicorn {

struct AnkiCardDraft;

class CardWriter {
public:
    // What became of one card: success with the Anki note id, or the
    // message that says why not.
    struct Outcome {
        bool success = false;
        QString message;  // the failure's message
        QJsonValue ankiId;
    };

    explicit CardWriter(QString bookTitle) : bookTitle_(std::move(bookTitle)) {}

    // Rebuilds each card from its note and writes it to Anki: updated where
    // Anki has its note, added where it has none. The notes must be
    // dictionary cards made with the selected dictionary. One outcome per
    // note, in order. Blocks: call off the main thread.
    std::vector<Outcome> write(const std::vector<const DictNote*>& notes);

    // Adds a new card whose AnkiConnect parameters ({"note": {...}}) were
    // made when the note was; the note identifies the card in Anki.
    Outcome add(const DictNote& note, const QJsonObject& params);

private:
    struct Pending;
    void send(std::vector<Pending*>& pending);
    void sendOne(Pending& card);
    void placeNewCardsInDeck(std::vector<Pending*>& pending);
    std::optional<QString> resolveFieldNames(QJsonObject& note);

    QString bookTitle_;
    // The note type's fields, asked once; or why they could not be.
    std::optional<ModelFields> modelFields_;
    std::optional<QString> modelFieldsProblem_;
};

}  // namespace lexicorn
