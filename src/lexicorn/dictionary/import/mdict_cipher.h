#pragma once

// The cipher of MDict's key index. Files with Encrypted="2" encipher only
// their key-info block (the descriptors of the key blocks), with a key
// taken from the block itself, so they open without the buyer's
// registration key.

#include <QByteArray>

namespace lexicorn::dictimport::mdict {

// The key-info block as stored (type word, adler32, enciphered payload)
// turned back into an ordinary packed block: the first 8 bytes are kept,
// the rest deciphered. A block shorter than 8 bytes comes back unchanged;
// unpacking it then reports it.
QByteArray decipherKeyInfo(const char* block, qsizetype size);

}  // namespace lexicorn::dictimport::mdict
