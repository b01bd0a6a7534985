#include "lexicorn/dictionary/import/mdict_cipher.h"

#include "lexicorn/dictionary/import/ripemd128.h"

namespace lexicorn::dictimport::mdict {

QByteArray decipherKeyInfo(const char* block, qsizetype size)
{
    QByteArray out(block, size);
    if (size < 8)
        return out;

    // The key is the digest of the block's own checksum field followed by
    // the number 0x3695 in four little-endian bytes.
    unsigned char seed[8];
    for (int i = 0; i < 4; ++i)
        seed[i] = static_cast<unsigned char>(block[4 + i]);
    seed[4] = 0x95, seed[5] = 0x36, seed[6] = 0x00, seed[7] = 0x00;
    const Ripemd128Digest key = ripemd128(seed, sizeof seed);

    // Each byte has its nibbles swapped and is mixed with the byte before it
    // as stored, its position and the key.
    const auto* in = reinterpret_cast<const unsigned char*>(block) + 8;
    auto* plain = reinterpret_cast<unsigned char*>(out.data()) + 8;
    unsigned char previous = 0x36;
    for (qsizetype i = 0; i < size - 8; ++i) {
        const unsigned char stored = in[i];
        const unsigned char swapped = static_cast<unsigned char>((stored >> 4) | (stored << 4));
        plain[i] = static_cast<unsigned char>(swapped ^ previous ^ (i & 0xff) ^ key[std::size_t(i) % key.size()]);
        previous = stored;
    }
    return out;
}

}  // namespace lexicorn::dictimport::mdict
