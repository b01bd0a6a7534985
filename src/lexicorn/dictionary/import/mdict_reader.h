#pragma once

// Reads an MDict dictionary: the .mdx file's entries (HTML with its
// style-sheet marks expanded, "@@@LINK=" cross-references) and, from the
// .mdd file of the same base name beside it, the sound resources the
// entries name ("sound://x.mp3").

#include "lexicorn/dictionary/import/source_entry.h"

#include <QByteArray>
#include <QString>

namespace lexicorn::dictimport {

// Throws ImportError naming the file and the block or entry it cannot read;
// a dictionary encrypted for its buyer (Encrypted="1") is refused the same
// way. One whose key index alone is enciphered (Encrypted="2") is read.
void readMdict(const QString& mdxPath, ImportSink& sink);

// The same over bytes in memory: `mdx` (when not empty) read as the
// dictionary, `mdd` (when not empty) as its resources; `name` stands for the
// file in messages.
void readMdictBytes(const QByteArray& mdx, const QByteArray& mdd, const QString& name, ImportSink& sink);

}  // namespace lexicorn::dictimport
