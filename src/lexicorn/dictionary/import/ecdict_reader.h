#pragma once

// Reads an ECDICT-style CSV file: a header row naming the columns word,
// phonetic, definition, translation, pos, collins, oxford, tag, bnc, frq,
// exchange, detail, audio, then one row per headword. Fields follow the usual
// CSV quoting; line breaks inside a field are written as real breaks or as
// the two characters "\n".

#include "lexicorn/dictionary/import/source_entry.h"

#include <QString>

namespace lexicorn::dictimport {

// Throws ImportError naming the file and the line for a row it cannot read.
void readEcdictCsv(const QString& csvPath, ImportSink& sink);

// The same, over bytes already in memory; `name` stands for the file in messages.
void readEcdictCsvBytes(const QByteArray& bytes, const QString& name, ImportSink& sink);

}  // namespace lexicorn::dictimport
