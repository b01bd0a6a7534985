#pragma once

// Reads a StarDict dictionary: the .ifo description, the .idx index (32- or
// 64-bit offsets), the .dict or dictzip .dict.dz body, and the .syn
// synonyms, which become cross-references to their headwords.

#include "lexicorn/dictionary/import/source_entry.h"

#include <QByteArray>
#include <QString>

namespace lexicorn::dictimport {

// Throws ImportError naming the file and the entry or offset it cannot read.
void readStarDict(const QString& ifoPath, ImportSink& sink);

// The same over the files' bytes (the body already uncompressed); `name`
// stands for the dictionary in messages; `syn` may be empty.
void readStarDictBytes(const QByteArray& ifo, const QByteArray& idx, const QByteArray& dict, const QByteArray& syn,
                       const QString& name, ImportSink& sink);

}  // namespace lexicorn::dictimport
