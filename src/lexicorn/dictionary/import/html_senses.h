#pragma once

// Turns the body of a dictionary entry (HTML, XDXF, Pango markup or plain
// lines) into senses the popup can show: one sense per paragraph, list item
// or line, tags stripped, entities decoded, English and Chinese parts apart.
// Nothing of the markup survives, so no dictionary file can put live HTML
// on a card.

#include "lexicorn/dictionary/import/source_entry.h"

#include <QString>

#include <vector>

namespace lexicorn::dictimport {

std::vector<SourceSense> sensesFromMarkup(const QString& text, Markup markup);

// The visible text of a piece of markup: tags dropped, entities decoded,
// blanks collapsed.
QString plainTextOf(const QString& markup);

// Splits a line into its English and its Chinese part when it holds both,
// one after the other ("to run 跑" -> "to run", "跑"). A line in one
// language goes whole to that side.
void splitEnglishAndChinese(const QString& line, QString& english, QString& chinese);

// A leading part of speech ("n.", "vt.", "adj.") taken off the line; empty
// when the line starts with none.
QString takeLeadingPartOfSpeech(QString& line);

// Removes what could break a dictionary card's text format: its field
// markers, and control characters other than line breaks.
QString withoutCardMarkers(const QString& text);

}  // namespace lexicorn::dictimport
