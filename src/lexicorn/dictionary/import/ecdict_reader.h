#pragma once

// Reads an ECDICT-style CSV file: a header row naming the columns word,
// phonetic, definition, translation, pos, collins, oxford, tag, bnc, frq,
// exchange, detail, audio, then one row per headword. Fields follow the usual
// CSV quoting; line breaks inside a field are written as real breaks or as
// the two characters "\n".
//
// ECDICT runs to 770,000 rows, so its rows become cache records straight
// from the file's bytes, on as many threads as there are cores, and are
// handed to the writer in file order: the result, warnings and errors are
// those of reading the rows one after the other.

#include "lexicorn/dictionary/import/cache_writer.h"

#include <QString>

namespace lexicorn::dictimport {

// Throws ImportError naming the file and the line for a row it cannot read.
void readEcdictCsv(const QString& csvPath, CacheWriter& writer);

// How rows become records: straight from UTF-8 where the row allows, or all
// through QString, the plain reference the fast way must match (the fuzzer
// compares the two).
enum class EcdictRows { Fast, ThroughQString };

// The same, over bytes already in memory; `name` stands for the file in messages.
void readEcdictCsvBytes(const QByteArray& bytes, const QString& name, CacheWriter& writer,
                        EcdictRows rows = EcdictRows::Fast);

}  // namespace lexicorn::dictimport
