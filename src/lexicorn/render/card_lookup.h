#pragma once

// Finding the Anki note that belongs to a dictionary card. A card's Anki
// note carries the card's mind-map note id in its URL field (the note link),
// so that it can be found again wherever it is in the collection.

#include "lexicorn/render/card_error.h"

#include <QJsonValue>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace lexicorn {

// The Anki note id of a card, nothing for a card Anki does not have yet, or
// the error: code 20000 "Ankiconnect 连接失败！" when Anki did not answer,
// 10000 with Anki's own error text, or "查询到的个数不为 1: " and the ids
// when more than one note carries the card.
using AnkiNoteLookup = CardResult<std::optional<QJsonValue>>;

// Finds the Anki notes of many cards, given their note ids, with at most two
// requests: first in the configured deck with the note id as search text
// (findNotesInCurrentDeckWithNoteid_'s query), then, for the cards not found
// there, anywhere in the collection by the note link in the field named
// urlField (no second search when urlField is empty). A note id that is
// empty or blank belongs to a card that is not in the notebook yet: it is
// new, and never searched for, since an empty search text finds every note.
std::vector<AnkiNoteLookup> findAnkiNotes(const QStringList& noteIds, const QString& urlField);

// The same for one card.
AnkiNoteLookup findAnkiNote(const QString& noteId, const QString& urlField);

// The field setting's name for the note link (the search compares field
// names without regard to case, so the configured spelling serves).
QString noteLinkField();

}  // namespace lexicorn
