#pragma once

// Text to HTML for Anki cards. Every text that comes from a dictionary or a
// page goes through one of these before it is put into a card, so none of it
// can become live HTML; the only markup that survives is a bold run.

#include <QString>

namespace lexicorn {

// "&" -> "&amp;" first, then "<" -> "&lt;", ">" -> "&gt;", '"' -> "&quot;",
// "'" -> "&#39;". Nothing else changes.
QString htmlEscape(const QString& text);

// The same escaping for dictionary texts and translations, which mark bold
// words with exactly "<b>" and "</b>": those two tags stay live, every other
// "<" (also "<B>", "<b class=...>", "<script>") is escaped.
QString htmlEscapeEliminateB(const QString& text);

// Surrounds every whole-word occurrence of word in text with the mark, e.g.
// "**took**". The comparison ignores case and keeps the text's own spelling.
// Whole word: no letter, digit or "_" right before or after the occurrence
// (checked only on a side where the word itself ends in such a character, so
// "Mr." is found before a blank). When the word does not occur, the word
// without hyphens is tried, then that without blanks and line breaks, as the
// quote sentence may write "e-mail" as "email" or "ice cream" as "icecream".
// An empty word leaves the text unchanged.
QString markBold(const QString& text, const QString& word, const QString& with = QStringLiteral("**"));

// Turns each pair of "**" marks, taken left to right, into "<b>" and "</b>".
// An unpaired last mark stays as it is. Does not escape anything.
QString markTohtmlBold(const QString& text);

// The HTML of a dictionary text (escaped as by htmlEscapeEliminateB) with
// every whole-word occurrence of word (as markBold finds it) in "<b>" and
// "</b>". The word is matched in the text before escaping, so it is never
// found inside an entity or a tag.
QString htmlBoldWord(const QString& text, const QString& word);

}  // namespace lexicorn
