#pragma once

// Every user-defaults key the plug-in reads or writes, each defined once.
// The keys are the stored names users' settings already carry, so they must
// never change.

#include <QString>
#include <QStringList>

namespace lexicorn::keys {

// The dictionary chosen in the settings menu (0 Collins, 1 the other slot).
inline const QString selectedDict = QStringLiteral("SPECIAL_SELECTED_DICT");
// The sentence translation engine, as KSWTranslate numbers it.
inline const QString engine = QStringLiteral("SPECIAL_ENGINE");
// The width of new cards in points; 700 when unset.
inline const QString cardWidth = QStringLiteral("SPECIAL_CARDWIDTH");
// Whether the middle mouse button pans the page.
inline const QString enableMouse3 = QStringLiteral("SPECIAL_ENABLEMOUSE3");
// The address of AnkiConnect, "127.0.0.1:8765" when unset.
inline const QString ankiAddress = QStringLiteral("ipString");
// Set once the clipboard watcher's disclaimer has been shown.
inline const QString clipboardExemption = QStringLiteral("KSW_EXEMPTION_3.7.5");
// The host's own switch for its menu on a new highlight; start-up turns it off.
inline const QString noMenuOnNewHighlight = QStringLiteral("mindbooks_nomenuonnewhighlight");

// Where each outside service is reached; unset means its usual host.
inline const QString voiceHost = QStringLiteral("SPECIAL_HOST_VOICE");
inline const QString googleCnHost = QStringLiteral("SPECIAL_HOST_GOOGLE_CN");
inline const QString googleHost = QStringLiteral("SPECIAL_HOST_GOOGLE");
inline const QString youdaoHost = QStringLiteral("SPECIAL_HOST_YOUDAO");
inline const QString eudicHost = QStringLiteral("SPECIAL_HOST_EUDIC");
inline const QString deeplHost = QStringLiteral("SPECIAL_HOST_DEEPL");

}  // namespace lexicorn::keys

// The Anki panel's settings: the deck, the note type, whether duplicates
// may be added, and which note field takes each part of a card.
namespace lexicorn::ankiset {

inline const QString deckName = QStringLiteral("ANKISET_DECKNAME");
inline const QString typeName = QStringLiteral("ANKISET_TYPENAME");
inline const QString duplicate = QStringLiteral("ANKISET_DUPLICATE");
inline const QString expression = QStringLiteral("ANKISET_EXPRESSION");
inline const QString sentence = QStringLiteral("ANKISET_SENTENCE");
inline const QString reading = QStringLiteral("ANKISET_READING");
inline const QString extraInfo = QStringLiteral("ANKISET_EXTRAINFO");
inline const QString definition = QStringLiteral("ANKISET_DEFINITION");
inline const QString url = QStringLiteral("ANKISET_URL");
inline const QString definitions = QStringLiteral("ANKISET_DEFINITIONS");
inline const QString audio = QStringLiteral("ANKISET_AUDIO");
// The field settings in the order their contents are stored: when two name
// the same field, the later one wins.
inline const QStringList fieldsInOrder{expression, definitions, sentence, extraInfo, url, definition, reading, audio};

}  // namespace lexicorn::ankiset
