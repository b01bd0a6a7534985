#pragma once

// The byte-level pieces of an MDict file: big-endian numbers read with
// bounds checks, and the compressed blocks (key-info, key and record blocks)
// with their type word and adler32 checksum.

#include "lexicorn/dictionary/import/source_entry.h"

#include <QByteArray>
#include <QString>

#include <cstdint>

namespace lexicorn::dictimport::mdict {

// Reads numbers and byte runs out of a buffer it does not own. Every read
// past the end throws ImportError naming `place` (file and section) and
// the offset where the data ran out.
class ByteReader {
public:
    ByteReader(const char* data, qsizetype size, QString place);

    qsizetype offset() const { return offset_; }
    qsizetype remaining() const { return size_ - offset_; }
    bool atEnd() const { return offset_ >= size_; }

    // A big-endian unsigned number of 1, 2, 4 or 8 bytes.
    quint64 number(int width);
    // The next `count` bytes; the pointer stays valid as long as the buffer.
    const char* take(quint64 count);

    [[noreturn]] void fail(const QString& why) const;

private:
    const char* data_;
    qsizetype size_;
    qsizetype offset_ = 0;
    QString place_;
};

quint32 adler32Of(const char* data, qsizetype size);

// Unpacks one block: a little-endian type word (0 stored, 1 LZO, 2 zlib),
// the big-endian adler32 of the unpacked bytes, then the payload. The
// unpacked size must be `unpackedSize`. Throws ImportError naming `place`
// for an unknown type, bad compressed data or a checksum that does not match.
QByteArray unpackBlock(const char* data, qsizetype size, quint64 unpackedSize, const QString& place);

}  // namespace lexicorn::dictimport::mdict
