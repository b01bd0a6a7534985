#pragma once

// Headword -> where its records stand in the cache text, kept as one flat
// block of bytes: an open-addressing hash table that can be written next to
// the cache file and memory-mapped back, so a large dictionary is ready for
// lookups without reading or indexing its text again.
//
// Layout, all numbers little-endian:
//   Header                        magic, the cache it indexes, counts, checksum
//   uint32 buckets[bucketCount]   entry number + 1; 0 marks an empty bucket
//   Entry  entries[count]
//   char   keys[keyBytes]         every headword's UTF-8, one after another

#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lexicorn {

// What a cache file was when it was indexed: its stamp and a digest of its
// first and last 64 KiB, which catches a file rewritten within one clock tick.
struct CacheIdentity {
    uint64_t size = 0;
    int64_t modifiedNs = 0;
    uint64_t fingerprint = 0;
    bool operator==(const CacheIdentity&) const = default;
};

uint64_t fingerprintOf(std::string_view cacheText);

class HeadwordIndex {
public:
    struct Span {
        uint64_t offset = 0;
        uint32_t length = 0;
    };
    struct Headword {
        std::string_view key;  // UTF-8
        Span span;
    };

    HeadwordIndex() = default;  // indexes nothing

    // Indexes the headwords in order; a headword given twice keeps its last span.
    static HeadwordIndex build(const std::vector<Headword>& headwords, const CacheIdentity& cache);

    // Takes bytes written by bytes() (held alive by owner). Returns nothing and
    // says why when they are not a whole, undamaged index of that cache.
    static std::optional<HeadwordIndex> open(std::string_view bytes, std::shared_ptr<const void> owner,
                                             const CacheIdentity& cache, QString& why);

    std::optional<Span> find(std::string_view key) const;
    size_t size() const { return count_; }
    std::vector<std::string_view> keys() const;

    // The whole index, as open() reads it back.
    std::string_view bytes() const { return bytes_; }

    // Bytes with their header's cache identity and checksum rewritten to claim
    // them for cache. The fuzzer uses it to get past those two checks to the
    // structure behind them.
    static std::string withHeaderFor(std::string_view bytes, const CacheIdentity& cache);

private:
    struct Entry;
    // The index over bytes whose header has been checked (or just written).
    static HeadwordIndex laidOver(std::string_view bytes, std::shared_ptr<const void> owner);
    Entry entryAt(uint32_t number) const;
    std::string_view keyOf(const Entry& entry) const;
    uint32_t bucketAt(size_t bucket) const;

    std::shared_ptr<const void> owner_;
    std::string_view bytes_;
    size_t count_ = 0;
    size_t bucketCount_ = 0;
    size_t entriesStart_ = 0;
    size_t keysStart_ = 0;
};

}  // namespace lexicorn
