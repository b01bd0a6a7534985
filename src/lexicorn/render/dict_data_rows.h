#pragma once

// The dictionary popup's rows of a lookup: sections of styled lines, section 0
// the lookup's head (dictionary name, quote sentence, its translation), each
// later section one dictionary entry (header line, then one line per sense).
//
// Every field is followed by its field marker written unstyled, so the text
// of a line copied into a note reads exactly as a dictionary card's title or
// definition block.

#include "lexicorn/dictionary/records.h"
#include "lexicorn/render/styled_text.h"

#include <QString>

#include <vector>

namespace lexicorn {

using StyledSections = std::vector<std::vector<StyledText>>;

// How many examples of a sense its line shows; the rest are left out.
inline constexpr std::size_t shownExamplesPerSense = 2;

// The line under construction, shared by the whole process: joined() with
// isStart replaces it by a fresh empty line. Main thread only.
StyledText& lineStep();

// Appends one field to lineStep() and returns it: when isStart, lineStep()
// starts afresh; then prefix + self + suffix with these attributes (nothing at
// all when self is empty, so a prefix or suffix never stands alone); then the
// separator, unstyled, always, even after an empty field.
StyledText& joined(const QString& self, const TextAttributes& attributes, const QString& separator = {},
                   const QString& prefix = {}, const QString& suffix = {}, bool isStart = false);

// The popup's sections for a lookup. Asks the translator for the quote
// sentence's translation, synchronously, before rendering any entry. An entry
// with empty readings whose title is the first entry's title takes the first
// entry's readings: the entry itself is changed, not only its line.
StyledSections attrStrings(DictData& data);

// Inserts newLine just after a line addressed by a popup tag, section * 1000
// + line. A tag addressing no section, or the last line of its section (or no
// line), gives the sections back unchanged.
StyledSections modify(StyledSections texts, const StyledText& newLine, int tag);

}  // namespace lexicorn
