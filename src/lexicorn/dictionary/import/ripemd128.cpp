#include "lexicorn/dictionary/import/ripemd128.h"

#include <cstring>

namespace lexicorn::dictimport {

namespace {

using std::uint32_t;

constexpr uint32_t rotl(uint32_t x, int n)
{
    return (x << n) | (x >> (32 - n));
}

// The four boolean functions; the left line uses them in order, the right
// line in reverse.
uint32_t f(int round, uint32_t x, uint32_t y, uint32_t z)
{
    switch (round) {
    case 0:
        return x ^ y ^ z;
    case 1:
        return (x & y) | (~x & z);
    case 2:
        return (x | ~y) ^ z;
    default:
        return (x & z) | (y & ~z);
    }
}

constexpr uint32_t leftConstant[4] = {0x00000000u, 0x5A827999u, 0x6ED9EBA1u, 0x8F1BBCDCu};
constexpr uint32_t rightConstant[4] = {0x50A28BE6u, 0x5C4DD124u, 0x6D703EF3u, 0x00000000u};

// Which message word each of the 64 steps reads, and how far it rotates.
constexpr int leftWord[64] = {
    0, 1, 2,  3,  4,  5,  6,  7,  8, 9, 10, 11, 12, 13, 14, 15,  //
    7, 4, 13, 1,  10, 6,  15, 3,  12, 0, 9,  5,  2,  14, 11, 8,  //
    3, 10, 14, 4, 9,  15, 8,  1,  2,  7, 0,  6,  13, 11, 5,  12,  //
    1, 9, 11, 10, 0,  8,  12, 4,  13, 3, 7,  15, 14, 5,  6,  2,
};
constexpr int rightWord[64] = {
    5,  14, 7,  0, 9, 2,  11, 4,  13, 6,  15, 8,  1,  10, 3, 12,  //
    6,  11, 3,  7, 0, 13, 5,  10, 14, 15, 8,  12, 4,  9,  1, 2,   //
    15, 5,  1,  3, 7, 14, 6,  9,  11, 8,  12, 2,  10, 0,  4, 13,  //
    8,  6,  4,  1, 3, 11, 15, 0,  5,  12, 2,  13, 9,  7,  10, 14,
};
constexpr int leftShift[64] = {
    11, 14, 15, 12, 5,  8,  7,  9,  11, 13, 14, 15, 6,  7,  9,  8,  //
    7,  6,  8,  13, 11, 9,  7,  15, 7,  12, 15, 9,  11, 7,  13, 12,  //
    11, 13, 6,  7,  14, 9,  13, 15, 14, 8,  13, 6,  5,  12, 7,  5,   //
    11, 12, 14, 15, 14, 15, 9,  8,  9,  14, 5,  6,  8,  6,  5,  12,
};
constexpr int rightShift[64] = {
    8,  9,  9,  11, 13, 15, 15, 5,  7,  7,  8,  11, 14, 14, 12, 6,  //
    9,  13, 15, 7,  12, 8,  9,  11, 7,  7,  12, 7,  6,  15, 13, 11,  //
    9,  7,  15, 11, 8,  6,  6,  14, 12, 13, 5,  14, 13, 13, 7,  5,   //
    15, 5,  8,  11, 14, 14, 6,  14, 6,  9,  12, 9,  12, 5,  15, 8,
};

void compress(uint32_t state[4], const std::uint8_t block[64])
{
    uint32_t x[16];
    for (int i = 0; i < 16; ++i)
        x[i] = uint32_t(block[4 * i]) | uint32_t(block[4 * i + 1]) << 8 | uint32_t(block[4 * i + 2]) << 16 |
               uint32_t(block[4 * i + 3]) << 24;

    uint32_t a = state[0], b = state[1], c = state[2], d = state[3];
    uint32_t ar = a, br = b, cr = c, dr = d;
    for (int step = 0; step < 64; ++step) {
        const int round = step / 16;
        uint32_t t = rotl(a + f(round, b, c, d) + x[leftWord[step]] + leftConstant[round], leftShift[step]);
        a = d, d = c, c = b, b = t;
        t = rotl(ar + f(3 - round, br, cr, dr) + x[rightWord[step]] + rightConstant[round], rightShift[step]);
        ar = dr, dr = cr, cr = br, br = t;
    }
    const uint32_t t = state[1] + c + dr;
    state[1] = state[2] + d + ar;
    state[2] = state[3] + a + br;
    state[3] = state[0] + b + cr;
    state[0] = t;
}

}  // namespace

Ripemd128Digest ripemd128(const void* data, std::size_t size)
{
    uint32_t state[4] = {0x67452301u, 0xEFCDAB89u, 0x98BADCFEu, 0x10325476u};
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    std::size_t done = 0;
    for (; size - done >= 64; done += 64)
        compress(state, bytes + done);

    // The tail, a 1 bit, zeros, and the length in bits as 64 bits little-endian.
    std::uint8_t tail[128] = {};
    const std::size_t rest = size - done;
    if (rest > 0)
        std::memcpy(tail, bytes + done, rest);
    tail[rest] = 0x80;
    const std::size_t tailSize = rest < 56 ? 64 : 128;
    const std::uint64_t bits = std::uint64_t(size) * 8;
    for (int i = 0; i < 8; ++i)
        tail[tailSize - 8 + i] = std::uint8_t(bits >> (8 * i));
    for (std::size_t at = 0; at < tailSize; at += 64)
        compress(state, tail + at);

    Ripemd128Digest digest;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            digest[std::size_t(4 * i + j)] = std::uint8_t(state[i] >> (8 * j));
    return digest;
}

}  // namespace lexicorn::dictimport
