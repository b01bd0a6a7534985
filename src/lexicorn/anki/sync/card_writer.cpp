#include "lexicorn/anki/sync/card_writer.h"

#include "lexicorn/anki/anki_search.h"
#include "lexicorn/anki/ksw_ankiconnect.h"
#include "lexicorn/anki/sync/card_sync.h"
#include "lexicorn/render/anki_fields.h"
#include "lexicorn/render/card_lookup.h"
#include "lexicorn/render/note_format.h"

#include "foundation/user_defaults.h"

#include <QJsonArray>

#include <algorithm>
#include <iterator>

namespace lexicorn {

namespace {

const QString noteKey = QStringLiteral("note");
const QString fieldsKey = QStringLiteral("fields");

using Outcome = CardWriter::Outcome;

Outcome failure(const QString& message)
{
    return {false, message, {}};
}

// What Anki said to an addNote or updateNoteFields request.
Outcome evaluate(const KSWAnkiconnect::Reply& reply)
{
    if (!reply)
        return failure(syncmessage::noConnection);
    if (ankiReplySucceeded(*reply))
        return {true, {}, reply->result()};
    if (!reply->contains(QStringLiteral("error")))
        return failure(syncmessage::unexpectedReply + reply->text());
    return failure(describeReplyValue(reply->error()));
}

// Whether an add that may have reached Anki took effect: the card's note
// link finds its note. A card without a link in Anki (no note id, or no
// field set for the link) cannot be found, so that cannot be told.
KSWAnkiconnect::EarlierSend lookForAddedCard(const QString& noteId)
{
    using EarlierSend = KSWAnkiconnect::EarlierSend;
    const QString linkField = noteLinkField();
    if (noteId.trimmed().isEmpty() || linkField.isEmpty())
        return {};
    const AnkiNoteLookup found = findAnkiNote(noteId, linkField);
    if (!found)
        return {};
    if (!found.value())
        return {EarlierSend::Verdict::didNotTakeEffect, {}};
    return {EarlierSend::Verdict::tookEffect, AnkiReply::success(*found.value())};
}

}  // namespace

struct CardWriter::Pending {
    const DictNote* note = nullptr;
    QJsonObject params;  // {"note": {...}}
    Outcome outcome;
    bool settled = false;  // the outcome is final

    QJsonObject ankiNote() const { return params.value(noteKey).toObject(); }
    bool isNew() const { return !ankiNote().contains(QStringLiteral("id")); }
    void settle(Outcome result)
    {
        outcome = std::move(result);
        settled = true;
    }
};

std::vector<Outcome> CardWriter::write(const std::vector<const DictNote*>& notes)
{
    QStringList noteIds;
    for (const DictNote* note : notes)
        noteIds << note->noteid();
    const std::vector<AnkiNoteLookup> lookups = findAnkiNotes(noteIds, noteLinkField());

    std::vector<Pending> cards(notes.size());
    std::vector<std::optional<AnkiCardDraft>> drafts(notes.size());
    std::vector<MediaFile> sounds;
    std::vector<std::ptrdiff_t> soundCount(notes.size(), 0);
    for (std::size_t index = 0; index < notes.size(); ++index) {
        cards[index].note = notes[index];
        if (!lookups[index]) {
            cards[index].settle(failure(lookups[index].error().message()));
            continue;
        }
        CardResult<AnkiCardDraft> draft = draftFromNote(*notes[index], bookTitle_, lookups[index].value());
        if (!draft) {
            cards[index].settle(failure(draft.error().message()));
            continue;
        }
        drafts[index] = std::move(draft.value());
        std::vector<MediaFile> own = drafts[index]->soundFiles();
        soundCount[index] = std::ptrdiff_t(own.size());
        std::move(own.begin(), own.end(), std::back_inserter(sounds));
    }

    // Every card's sounds in one request, then each card takes its share.
    const std::vector<StoredMedia> stored = storeMediaFiles(sounds);
    auto next = stored.begin();
    for (std::size_t index = 0; index < notes.size(); ++index) {
        if (!drafts[index])
            continue;
        const CardResult<QJsonObject> ankiNote = drafts[index]->noteWith(std::vector<StoredMedia>(next, next + soundCount[index]));
        next += soundCount[index];
        if (ankiNote)
            cards[index].params = QJsonObject{{noteKey, ankiNote.value()}};
        else
            cards[index].settle(failure(ankiNote.error().message()));
    }

    std::vector<Pending*> pending;
    for (Pending& card : cards) {
        if (!card.settled)
            pending.push_back(&card);
    }
    send(pending);

    std::vector<Outcome> outcomes;
    for (const Pending& card : cards)
        outcomes.push_back(card.outcome);
    return outcomes;
}

Outcome CardWriter::add(const DictNote& note, const QJsonObject& params)
{
    Pending card{&note, params, {}, false};
    std::vector<Pending*> pending{&card};
    send(pending);
    return card.outcome;
}

void CardWriter::send(std::vector<Pending*>& pending)
{
    std::vector<Pending*> updates;
    for (Pending* card : pending) {
        QJsonObject ankiNote = card->ankiNote();
        if (const std::optional<QString> problem = resolveFieldNames(ankiNote)) {
            card->settle(failure(*problem));
            continue;
        }
        card->params.insert(noteKey, ankiNote);
        // Each add goes on its own, so that one slow add can be checked in
        // Anki before it is sent again; updates share one request.
        if (card->isNew())
            sendOne(*card);
        else
            updates.push_back(card);
    }

    if (updates.size() > 1) {
        std::vector<KSWAnkiconnect::Action> actions;
        for (const Pending* card : updates)
            actions.push_back({QStringLiteral("updateNoteFields"), card->params});
        if (const auto replies = KSWAnkiconnect::shareInstance().multi(actions)) {
            for (std::size_t index = 0; index < updates.size(); ++index) {
                Outcome outcome = evaluate((*replies)[index]);
                if (outcome.success)
                    outcome.ankiId = updates[index]->ankiNote().value(QStringLiteral("id"));
                updates[index]->settle(outcome);
            }
            updates.clear();
        }
    }
    // One update, or the updates of a request that got no answer, one by one.
    for (Pending* card : updates)
        sendOne(*card);

    placeNewCardsInDeck(pending);
}

void CardWriter::sendOne(Pending& card)
{
    KSWAnkiconnect& anki = KSWAnkiconnect::shareInstance();
    if (!card.isNew()) {
        Outcome outcome = evaluate(anki.updateWithParams_(card.params));
        if (outcome.success)
            outcome.ankiId = card.ankiNote().value(QStringLiteral("id"));
        card.settle(outcome);
        return;
    }
    const QString noteId = card.note->noteid();
    card.settle(evaluate(anki.addToAnkiWithWordDict_(card.params, [noteId] { return lookForAddedCard(noteId); })));
}

void CardWriter::placeNewCardsInDeck(std::vector<Pending*>& pending)
{
    QJsonArray added;
    std::vector<Pending*> newCards;
    QString deck;
    for (Pending* card : pending) {
        if (!card->isNew() || !card->outcome.success)
            continue;
        added.append(card->outcome.ankiId);
        newCards.push_back(card);
        deck = card->ankiNote().value(QStringLiteral("deckName")).toString();
    }
    if (newCards.empty())
        return;

    KSWAnkiconnect& anki = KSWAnkiconnect::shareInstance();
    const KSWAnkiconnect::Reply misplaced = anki.postRequestCommand_params_(
        QStringLiteral("findCards"), QJsonObject{{QStringLiteral("query"), noteIdsQuery(added) + u' ' + outsideDeckQuery(deck)}});
    KSWAnkiconnect::Reply moved = misplaced;
    if (misplaced && ankiReplySucceeded(*misplaced) && !misplaced->result().toArray().isEmpty()) {
        moved = anki.postRequestCommand_params_(
            QStringLiteral("changeDeck"), QJsonObject{{QStringLiteral("cards"), misplaced->result()}, {QStringLiteral("deck"), deck}});
    }
    const Outcome placed = evaluate(moved);
    if (placed.success)
        return;
    for (Pending* card : newCards)
        card->outcome = failure(formatWithObjects(syncmessage::notInDeck, {deck, placed.message}));
}

std::optional<QString> CardWriter::resolveFieldNames(QJsonObject& ankiNote)
{
    const QString modelName = ankiNote.value(QStringLiteral("modelName")).toString();
    if (!modelFields_ && !modelFieldsProblem_) {
        auto fetched = ModelFields::fetch(modelName);
        if (auto* fields = std::get_if<ModelFields>(&fetched))
            modelFields_ = std::move(*fields);
        else
            modelFieldsProblem_ = std::get<std::optional<QString>>(fetched).value_or(syncmessage::noConnection);
    }
    if (modelFieldsProblem_)
        return modelFieldsProblem_;

    // The settings in their order, so that when two names reach the same
    // field the later setting wins, as when the note was made.
    const QJsonObject fields = ankiNote.value(fieldsKey).toObject();
    QJsonObject resolved;
    UserDefaults& defaults = UserDefaults::standard();
    for (const QString& setting : ankiset::fieldsInOrder) {
        const QString configured = defaults.string(setting);
        if (!fields.contains(configured))
            continue;
        const std::optional<QString> name = modelFields_->resolve(configured);
        if (!name)
            return formatWithObjects(syncmessage::fieldNotInNoteType, {modelName, configured, setting});
        resolved.insert(*name, fields.value(configured));
    }
    ankiNote.insert(fieldsKey, resolved);
    return std::nullopt;
}

}  // namespace lexicorn
