#pragma once

// The body of a StarDict .dict.dz: a gzip file, usually written by dictzip,
// whose header carries a table of independently compressed chunks ("RA"
// extra field) so that any part can be read without the parts before it.

#include <QByteArray>
#include <QString>

namespace lexicorn::dictimport {

// The uncompressed bytes. With a chunk table every chunk is inflated on its
// own, through the table; a plain gzip file is inflated as one stream.
// Throws ImportError naming `name` and the chunk or byte that is wrong.
QByteArray inflateDictzip(const QByteArray& file, const QString& name);

}  // namespace lexicorn::dictimport
