#pragma once

// Writing a dictionary card into a note: what the popup puts into the
// mind-map note when a sense is tapped (the word card that edit protection
// keeps intact). note_format.h reads it back.

#include "lexicorn/dictionary/records.h"
#include "lexicorn/render/dict_note.h"

#include <QString>

#include <optional>

namespace lexicorn {

// The note for popup section `section` (1 or more: entry section - 1 of the
// lookup as the popup lists it) and row `row` (the sense):
// - title: the section's header line, "WORD; " before it when the word looked
//   up differs from the entry's title, then "📇" SECTION "-" ROW, with "-"
//   and the dictionary number after ROW when that number is 1 or more, and
//   "🔚;";
// - excerpt: the quote sentence;
// - comments: {"text": translation, "type": "TextNote", "group":
//   "sentenceCN"} and {"text": the sense's line, "type": "TextNote", "group":
//   "exts"}.
// The header and sense texts are the popup's own rows (attrStrings), so the
// card reads exactly as the popup showed it; rendering them asks the
// translator for the quote sentence, so choose its engine first. The note id
// stays empty: the host gives it. Nothing when the popup has no such row.
std::optional<NoteRecord> makeDictNote(DictData& data, int section, int row, const QString& translation);

}  // namespace lexicorn
