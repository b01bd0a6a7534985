#include "lexicorn/render/card_lookup.h"

#include "lexicorn/anki/anki_search.h"
#include "lexicorn/anki/ksw_ankiconnect.h"
#include "lexicorn/render/anki_fields.h"
#include "lexicorn/render/html_text.h"
#include "lexicorn/render/note_format.h"

#include "foundation/user_defaults.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace lexicorn {

namespace {

AnkiNoteLookup unreachable()
{
    return CardError::make(ErrorCode::ankiUnreachable, cardmessage::ankiUnreachable);
}

// What one findNotes reply says of one card.
AnkiNoteLookup lookupFrom(const AnkiReply& found)
{
    if (found.isEmpty())
        return unreachable();
    const QJsonValue error = found.error();
    if (error.isString())
        return CardError::make(ErrorCode::structure, error.toString());
    // A result that is not a list (no Anki would send one) counts as no note.
    const QJsonArray ids = found.result().toArray();
    if (ids.size() >= 2)
        return CardError::make(ErrorCode::structure,
                               cardmessage::notOneAnkiNote + QString::fromUtf8(QJsonDocument(ids).toJson(QJsonDocument::Compact)));
    if (ids.size() == 1)
        return std::optional(ids[0]);
    return std::optional<QJsonValue>();
}

bool notFound(const AnkiNoteLookup& lookup)
{
    return lookup.ok() && !lookup.value().has_value();
}

// Runs one findNotes per query in one request and stores what each says
// in the lookups of those cards.
void search(const std::vector<std::size_t>& cards, const QStringList& queries, std::vector<AnkiNoteLookup>& lookups)
{
    if (cards.empty())
        return;
    std::vector<KSWAnkiconnect::Action> finds;
    for (const QString& query : queries)
        finds.push_back({QStringLiteral("findNotes"), QJsonObject{{QStringLiteral("query"), query}}});
    const auto replies = KSWAnkiconnect::shareInstance().multi(finds);
    for (std::size_t at = 0; at < cards.size(); ++at)
        lookups[cards[at]] = replies ? lookupFrom((*replies)[at]) : unreachable();
}

}  // namespace

std::vector<AnkiNoteLookup> findAnkiNotes(const QStringList& noteIds, const QString& urlField)
{
    std::vector<AnkiNoteLookup> lookups(std::size_t(noteIds.size()), std::optional<QJsonValue>());

    std::vector<std::size_t> inDeck;
    QStringList deckQueries;
    for (qsizetype index = 0; index < noteIds.size(); ++index) {
        if (noteIds[index].trimmed().isEmpty())
            continue;
        inDeck.push_back(std::size_t(index));
        deckQueries << KSWAnkiconnect::currentDeckQuery(noteIds[index]);
    }
    search(inDeck, deckQueries, lookups);

    if (urlField.isEmpty())
        return lookups;
    std::vector<std::size_t> anywhere;
    QStringList linkQueries;
    for (std::size_t index : inDeck) {
        if (!notFound(lookups[index]))
            continue;
        anywhere.push_back(index);
        const QString link = htmlEscape(formatWithObjects(noteLinkFormat, {noteIds[qsizetype(index)]}));
        linkQueries << fieldIsQuery(urlField, link);
    }
    search(anywhere, linkQueries, lookups);
    return lookups;
}

AnkiNoteLookup findAnkiNote(const QString& noteId, const QString& urlField)
{
    return findAnkiNotes({noteId}, urlField).front();
}

QString noteLinkField()
{
    return UserDefaults::standard().string(ankiset::url);
}

}  // namespace lexicorn
