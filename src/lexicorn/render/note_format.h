#pragma once

// Reading a dictionary card back out of its note.
//
// The note's title: WORD; HEADWORD;🗣READINGS🔝STAR༒POS📇SECTION-ROW[-DICT]🔚;
// followed by anything the user adds. "WORD; " stands only when the word
// looked up differs from the headword; SECTION and ROW are the sense's place
// in the popup (section 0 is the popup's head, so section s shows entry s - 1
// of the lookup), DICT the dictionary number when it is 1 or more.
// Comment 0 holds the quote sentence's translation; comment 1 the definition
// line SUBTITLE💫SIGNPOST_EN🌒SIGNPOST_CN🌓[GRAM]🌕DEFINITION_EN🇨🇳DEFINITION_CN
// and then one line 📌EXAMPLE_EN🇨🇳EXAMPLE_CN per example; comments from 2 on
// are extra content for the Anki card.

#include "lexicorn/dictionary/records.h"
#include "lexicorn/render/anki_fields.h"
#include "lexicorn/render/card_error.h"
#include "lexicorn/render/dict_note.h"

#include <QJsonObject>
#include <QString>

#include <optional>

namespace lexicorn {

class EnWordServer;

// The card as the note holds it.
struct ParsedCard {
    QString word;      // as looked up
    QString headword;  // the dictionary entry's title
    QString readings;
    QString star;
    QString pos;       // pos_en
    int section = 0;   // popup section, 1 or more for a sense
    int item = 0;      // the sense's row in that section
    // The excerpt, trimmed of blanks, with the word marked "<b>" … "</b>";
    // empty when the note has no excerpt.
    QString quoteSentence;
    QString sentenceCN;  // comment 0
    // A new sense: subtitle, signposts, grammar (without its brackets), both
    // definitions and the examples (en, cn) in line order; no speakers.
    EnWordDefPtr sense;
    // The extra comments as HTML pieces, joined; only when there are any.
    std::optional<QString> appendHtml;
};

// Takes the title and the comments apart; the first part that does not follow
// the format gives the error (code 10000) with the message that shows the
// expected structure. Blanks (spaces, tabs, other space separators) around
// every field are dropped; line breaks are not, as they separate lines.
//
// Choices where the format leaves room:
// - The title head (before "🗣") loses its last character, the ";" the popup
//   writes; what is left is cut at ";" and pieces that are empty after
//   trimming are dropped. One piece is both word and headword, two are word
//   and headword; none or more than two is the title error.
// - SECTION and ROW are decimal digits only; a third index number (the
//   dictionary) is tolerated and not read here.
// - The grammar note loses a surrounding "[" and "]" only when it has both.
// - Every line of comment 1 after the first is an example line, blank ones
//   included.
// - A later comment of type "HtmlNote" gives its "html" as it is; any other
//   gives "<div>" + its "text" + "</div>", the text escaped except for <b>
//   tags. The pieces are concatenated.
CardResult<ParsedCard> parseDictNote(const DictNote& note);

// The dictionary's own entry and sense a card was made from.
struct CardSense {
    EnWordPtr entry;
    EnWordDefPtr sense;
};

// Looks the card's sense up in the loaded dictionary: entry (section - 1) of
// the headword's lookup, counting only entries that have senses as the popup
// does, and sense item of it; when that is not the card's sense, the same
// place in the lookup of the word as looked up (what the popup listed). The
// sense found is the card's when its English and its Chinese definition,
// trimmed of blanks, equal the card's; nothing else is compared, as the
// card's other fields may have been edited by the user.
std::optional<CardSense> lookUpCardSense(const ParsedCard& card, EnWordServer& server);

// The AnkiConnect parameters {"note": {...}} for the card in a note (see
// wordDictForAnki for the note). Asks Anki first where the card's note is
// (findAnkiNote: in the current deck, then anywhere by its note link): the
// one found gives the update form (with "id"), none a new note. The sense is then looked up in the
// loaded dictionary (EnWordServer::shared()) for the entry's pronunciation
// file and the examples' speakers; when it cannot be found an alert says so
// and the card is built with fresh audio. Blocks (AnkiConnect, uploads): call
// off the main thread.
//
// Errors: 20000 Anki not reachable; 10000 Anki's own error text, more than
// one Anki note, the note not in the format (see parseDictNote), or a sound
// Anki does not hold.
CardResult<QJsonObject> makeWith(const DictNote& note, const QString& bookTitle);

// The steps of makeWith after the lookup in Anki: the card read from the
// note, checked against the loaded dictionary, with its sound files ready to
// be stored (see AnkiCardDraft). ankiID is the Anki note found, if any.
CardResult<AnkiCardDraft> draftFromNote(const DictNote& note, const QString& bookTitle, std::optional<QJsonValue> ankiID);

// The texts of the card errors.
namespace cardmessage {
inline const QString ankiUnreachable = QStringLiteral("Ankiconnect 连接失败！");
inline const QString notOneAnkiNote = QStringLiteral("查询到的个数不为 1: ");
inline const QString exampleError = QStringLiteral("例句错误: ");
inline const QString indexErrorHead = QStringLiteral("索引错误: ");
inline const QString indexErrorTail = QStringLiteral("\n此单词将重新生成单词和例句语音!");
QString titleError(const QString& piece);
QString definitionLineError(const QString& line);
}  // namespace cardmessage

}  // namespace lexicorn
