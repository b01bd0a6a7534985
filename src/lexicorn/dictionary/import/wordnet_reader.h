#pragma once

// Reads a WordNet 3.0 database (data.*, index.* and *.exc of the four parts
// of speech, as Debian's wordnet-base installs them in /usr/share/wordnet):
// one entry per lemma with its English senses in WordNet's sense order and
// their examples, and the exception lists' irregular forms ("went" -> "go").

#include "lexicorn/dictionary/import/source_entry.h"

#include <QString>

namespace lexicorn::dictimport {

// path: the database folder, or its data.noun. Throws ImportError naming the
// file and line (or byte offset) it cannot read.
void readWordNet(const QString& path, ImportSink& sink);

}  // namespace lexicorn::dictimport
