#pragma once

// Words that the page breaks at a line end ("it-" + "self") made whole again
// in a sentence's text. The page's characters keep their records; only the
// copy a text is made from changes, so highlights still cover the page.

#include "lexicorn/reader/sentences/char_record.h"

#include <QString>

#include <functional>

namespace lexicorn {

// Whether a word is in the dictionary or among its word forms.
using KnownWord = std::function<bool(const QString& word)>;

// The sentence with each line-end hyphen between two letters decided:
//   the joined word is known             -> the hyphen goes ("itself");
//   else the hyphenated word is known    -> it stays, with no line break
//                                           after it ("camera-ready");
//   else the next line starts in lower case -> the hyphen goes;
//   else it stays.
// A soft hyphen (U+00AD) at a line end always goes. Without `known`, only
// the case of the next line decides.
Sentence withBrokenWordsJoined(const Sentence& sentence, const KnownWord& known);

}  // namespace lexicorn
