#pragma once

// RIPEMD-128, the 128-bit digest MDict derives its key-index cipher key
// with. Small and unoptimised: it hashes a few bytes per file.

#include <array>
#include <cstddef>
#include <cstdint>

namespace lexicorn::dictimport {

using Ripemd128Digest = std::array<std::uint8_t, 16>;

Ripemd128Digest ripemd128(const void* data, std::size_t size);

}  // namespace lexicorn::dictimport
