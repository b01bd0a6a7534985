#pragma once

// Regular English inflection of a headword, so that a selected "studies",
// "stopped" or "bigger" finds "study", "stop" or "big". Irregular forms come
// from the dictionary files themselves (exception lists, form columns).

#include <QString>

#include <string>
#include <string_view>
#include <vector>

namespace lexicorn::dictimport {

enum class WordClass { Unknown, Noun, Verb, Adjective, Other };

// The class of a part of speech as dictionary files write it ("n.", "noun",
// "vt.", "verb", "adj.", "a.", WordNet's "s"); Unknown for an empty one.
WordClass wordClassOf(const QString& pos);

// Plural (nouns), third person, past and -ing (verbs), comparative and
// superlative (adjectives); all of them for Unknown. Only for headwords of
// lower-case letters a-z; other headwords (phrases, abbreviations) get none.
std::vector<std::string> regularForms(std::string_view headword, WordClass wordClass);

}  // namespace lexicorn::dictimport
