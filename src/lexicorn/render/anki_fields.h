#pragma once

// Anki note type
// --------------
// Lexicorn fills the fields of an Anki note type of your choice. In the Anki
// settings give, for each item, the name of the field that should hold it.
// Items are stored in the order of this table; when two items name the same
// field, the later one wins. An item without a field name goes under the
// empty name, which AnkiConnect ignores: leave a name empty to leave an item
// out.
//
// | setting             | what the field holds                                              |
// |---------------------|-------------------------------------------------------------------|
// | ANKISET_EXPRESSION  | the word as you selected it ("took")                              |
// | ANKISET_DEFINITIONS | the card's style sheet, then the sense on one line: part of       |
// |                     | speech, English definition, Chinese definition                    |
// | ANKISET_SENTENCE    | the sentence the word was found in, the word in bold              |
// | ANKISET_EXTRAINFO   | "《book title》", the sentence's translation and the card's extra  |
// |                     | comments, each on a line of its own (joined with "<br>"; an empty |
// |                     | part is left out)                                                 |
// | ANKISET_URL         | laiskemprabapp://note/NOTEID, the link back to the mind-map note; |
// |                     | Lexicorn finds the card's Anki note again by the note id in it    |
// | ANKISET_DEFINITION  | the sense: star, part of speech, [grammar], subtitle, signposts,  |
// |                     | English and Chinese definition, then the examples, each with its  |
// |                     | sound, the English (headword in bold) and the Chinese             |
// | ANKISET_READING     | the pronunciation as the dictionary writes it ("/tʊk/")            |
// | ANKISET_AUDIO       | the word's sound, [sound:FILE]                                    |
//
// Also set: ANKISET_DECKNAME (the deck) and ANKISET_TYPENAME (the note type),
// both required; ANKISET_DUPLICATE = YES (exactly) lets a card be added when
// the deck already holds a note with the same first field. Every card gets
// the tag "Lexicorn".
//
// The HTML uses the class names of the style sheet cardStyle below (star,
// pos, gram, subTitle, tran, signpos, eng_tran, chn_tran, sents, sent,
// speak_sent, eng_sent, chn_sent); the DEFINITIONS field carries the sheet,
// or copy it into the note type's styling.
//
// Sound files stored in Anki's media folder:
// - the word: MN3_YD_WORD_1.mp3, read by the voice service; or,
//   when the dictionary entry's American pronunciation is a "sound://FILE"
//   reference to a file in the Dict folder, that file as MN3_LW_FILE; or,
//   when the voice service cannot be reached, the offline voice (eSpeak NG)
//   as MN3_LW_WORD.wav;
// - an example: the file its speaker names in the Dict folder ("sound://FILE"
//   or a bare FILE) as MN3_LW_FILE; else the example sentence read by the
//   voice service as MN3_YD_ex_HASH_1.mp3, or by the offline voice as
//   MN3_LW_ex_HASH.wav, HASH being the first 12 hex digits of the SHA-1 of
//   the sentence (UTF-8), so a sentence always maps to the same file.
// Characters that file names cannot hold (/ \ : * ? " < > | and control
// characters, and the brackets that would end the sound tag) become "_".
// Anki may store a file under a changed name (some versions lower-case it);
// the sound tag names the file as Anki stored it, and a card whose sound
// Anki does not hold is not sent.

#include "lexicorn/anki/anki_media.h"

#include "lexicorn/settings/preference_keys.h"
#include "lexicorn/dictionary/records.h"
#include "lexicorn/render/card_error.h"

#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <QStringList>

#include <initializer_list>
#include <optional>
#include <vector>

namespace lexicorn {

// The tag every card carries.
inline const QString ankiCardTag = QStringLiteral("Lexicorn");
// The link back to a mind-map note, with the note id for %@.
inline const QString noteLinkFormat = QStringLiteral("laiskemprabapp://note/%@");

// The card's style sheet, and the one-line sense template that follows it in
// the full sheet: part of speech, English and Chinese definition for the
// three %@, a no-break space and a blank after the English. The template
// exists with single and with double quotes around its class names.
inline const QString cardStyle = QStringLiteral(
    "<style>span.star {color: #FFBB00;} "
    "span.cet {margin: 0 3px; padding: 0 3px; font-weight: normal; font-size: 16px; color: white; background-color: #5cb85c; border-radius: 3px;} "
    "span.pos {text-transform: lowercase; font-size: 16px; margin-right: 5px; padding: 2px 4px; color: white; background-color: #0d47a1; border-radius: 3px;} "
    "span.tran {margin: 0; padding: 0;} "
    "span.eng_tran {margin-right: 3px; padding: 0;} "
    "span.chn_tran {color: coral;} "
    "ul.sents {font-size: 14px; list-style: square inside; margin: 3px 0; padding: 5px; background: rgba(13,71,161,0.1); border-radius: 5px;} "
    "li.sent {margin: 0; padding: 0;} "
    "span.eng_sent {margin-right: 5px;} "
    "span.chn_sent {color: coral;}"
    "</style>");
inline const QString senseLineTemplate = QStringLiteral(
    "<span class='pos'>%@</span><span class='tran'><span class='eng_tran'>%@\u00a0 </span><span class='chn_tran'>%@</span></span>");
inline const QString senseLineTemplateDoubleQuoted = QStringLiteral(
    "<span class=\"pos\">%@</span><span class=\"tran\"><span class=\"eng_tran\">%@\u00a0 </span><span class=\"chn_tran\">%@</span></span>");
inline const QString cardStyleSheet = cardStyle + senseLineTemplate;
inline const QString cardStyleSheetDoubleQuoted = cardStyle + senseLineTemplateDoubleQuoted;

// Replaces each "%@" of format, left to right, by the next argument; text
// brought in by an argument is not scanned again.
QString formatWithObjects(const QString& format, std::initializer_list<QString> arguments);

// An entry and one of its senses: section = index into DictData::enWords(),
// item = index into that entry's defs.
struct SenseIndex {
    qsizetype section = 0;
    qsizetype item = 0;
};

// The AnkiConnect note for one sense of a lookup: {"deckName", "modelName",
// "fields", "options", "tags"}, plus "id" when ankiID is given (an update).
// word is the word as looked up (the expression, and the word whose
// pronunciation is used); noteId, when not empty, makes the URL field.
// The quote sentence gets the word in bold, unless it holds <b> tags already
// (a card read back from its note brings them). sentenceCN is the sentence's
// translation, which may mark words with <b>.
// appendHtml is HTML from the card's extra comments, taken as it is.
//
// Stores the word's and the examples' sound files in Anki's media folder
// first, so it blocks (voice service, AnkiConnect): call it off the main
// thread.
//
// Errors (code 10000): the section or item out of range (also logged), the
// deck or note type name not set, a sound file Anki does not hold (the
// message names it); code 20000 "Ankiconnect 连接失败！" when Anki did not
// answer.
CardResult<QJsonObject> wordDictForAnki(const DictData& data, const QString& word, const QString& bookTitle, SenseIndex indexPath,
                                        const QString& sentenceCN, std::optional<QJsonValue> ankiID,
                                        std::optional<QString> appendHtml, const QString& noteId = {});

// wordDictForAnki in two steps, so that many cards can store their sounds
// with one request: the draft holds everything of the note and the sound
// files; noteWith makes the note once Anki has stored them.
struct AnkiCardDraft {
    QString deckName;
    QString modelName;
    EnWordPtr entry;
    EnWordDefPtr sense;
    QString word;
    QString quoteSentence;
    QString bookTitle;
    QString sentenceCN;
    std::optional<QJsonValue> ankiID;
    std::optional<QString> appendHtml;
    QString noteId;
    // Nothing where there is no sound (no voice could read the text).
    std::optional<MediaFile> wordSound;
    std::vector<std::optional<MediaFile>> exampleSounds;  // one per example

    // The sound files to store, word first, then the examples'.
    std::vector<MediaFile> soundFiles() const;
    // The note, given where Anki stored soundFiles() (in their order); the
    // error names every sound Anki does not hold, or says Anki did not answer.
    CardResult<QJsonObject> noteWith(const std::vector<StoredMedia>& stored) const;
};

// The checks of wordDictForAnki, then the sound files (blocking on the
// voice service); no request to Anki.
CardResult<AnkiCardDraft> draftForAnki(const DictData& data, const QString& word, const QString& bookTitle, SenseIndex indexPath,
                                       const QString& sentenceCN, std::optional<QJsonValue> ankiID,
                                       std::optional<QString> appendHtml, const QString& noteId = {});

}  // namespace lexicorn
