#include "lexicorn/dictionary/headword_index.h"

#include <bit>
#include <cstring>
#include <limits>
#include <string>

namespace lexicorn {

// Numbers are stored as the machine holds them; the index is a cache of this
// machine's own making, and the magic tells a foreign byte order apart.
static_assert(std::endian::native == std::endian::little);

namespace {

constexpr char magic[8] = {'L', 'X', 'H', 'W', 'I', 'D', 'X', '1'};

struct Header {
    char magic[8];
    uint64_t cacheSize;
    int64_t cacheModifiedNs;
    uint64_t cacheFingerprint;
    uint64_t count;
    uint64_t bucketCount;
    uint64_t keyBytes;
    uint64_t checksum;  // of every byte after the header
};
static_assert(sizeof(Header) == 64);

constexpr size_t fingerprintSpan = size_t(64) << 10;

// FNV-1a: short keys, and a spread good enough for a table kept half empty.
uint64_t hashOf(std::string_view key)
{
    uint64_t hash = 0xcbf29ce484222325ull;
    for (const char c : key)
        hash = (hash ^ uint8_t(c)) * 0x100000001b3ull;
    return hash;
}

// A fast digest of a block, eight bytes a step, to tell a damaged file from a whole one.
uint64_t checksumOf(std::string_view bytes)
{
    uint64_t sum = bytes.size();
    size_t i = 0;
    for (; i + 8 <= bytes.size(); i += 8) {
        uint64_t word;
        std::memcpy(&word, bytes.data() + i, 8);
        sum = std::rotl(sum ^ word, 29) * 0x9e3779b97f4a7c15ull;
    }
    for (; i < bytes.size(); ++i)
        sum = std::rotl(sum ^ uint8_t(bytes[i]), 29) * 0x9e3779b97f4a7c15ull;
    return sum ^ (sum >> 32);
}

template <typename T>
T readAt(std::string_view bytes, size_t offset)
{
    T value;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

template <typename T>
void append(std::string& out, const T& value)
{
    out.append(reinterpret_cast<const char*>(&value), sizeof value);
}

}  // namespace

struct HeadwordIndex::Entry {
    uint64_t valueOffset;
    uint32_t valueLength;
    uint32_t keyOffset;
    uint32_t keyLength;
    uint32_t hash;  // low bits of the key's hash, to skip most key comparisons
};

uint64_t fingerprintOf(std::string_view cacheText)
{
    const size_t head = std::min(cacheText.size(), fingerprintSpan);
    const size_t tail = std::min(cacheText.size() - head, fingerprintSpan);
    return checksumOf(cacheText.substr(0, head)) ^ std::rotl(checksumOf(cacheText.substr(cacheText.size() - tail)), 1);
}

HeadwordIndex HeadwordIndex::build(const std::vector<Headword>& headwords, const CacheIdentity& cache)
{
    static_assert(sizeof(Entry) == 24, "entries are stored without padding");
    // Half the buckets stay empty, which keeps probe runs short.
    size_t bucketCount = 2;
    while (bucketCount < 2 * headwords.size())
        bucketCount *= 2;
    std::vector<uint32_t> buckets(bucketCount, 0);
    std::vector<Entry> entries;
    entries.reserve(headwords.size());
    std::string keys;

    for (const Headword& headword : headwords) {
        const uint64_t hash = hashOf(headword.key);
        size_t bucket = hash & (bucketCount - 1);
        for (; buckets[bucket]; bucket = (bucket + 1) & (bucketCount - 1)) {
            Entry& other = entries[buckets[bucket] - 1];
            if (other.hash == uint32_t(hash) && std::string_view(keys).substr(other.keyOffset, other.keyLength) == headword.key)
                break;
        }
        if (buckets[bucket]) {
            entries[buckets[bucket] - 1].valueOffset = headword.span.offset;
            entries[buckets[bucket] - 1].valueLength = headword.span.length;
            continue;
        }
        entries.push_back({headword.span.offset, headword.span.length, uint32_t(keys.size()), uint32_t(headword.key.size()), uint32_t(hash)});
        buckets[bucket] = uint32_t(entries.size());
        keys += headword.key;
    }

    std::string body;
    body.reserve(bucketCount * 4 + entries.size() * sizeof(Entry) + keys.size());
    body.append(reinterpret_cast<const char*>(buckets.data()), buckets.size() * 4);
    body.append(reinterpret_cast<const char*>(entries.data()), entries.size() * sizeof(Entry));
    body += keys;

    Header header{};
    std::memcpy(header.magic, magic, sizeof magic);
    header.cacheSize = cache.size;
    header.cacheModifiedNs = cache.modifiedNs;
    header.cacheFingerprint = cache.fingerprint;
    header.count = entries.size();
    header.bucketCount = bucketCount;
    header.keyBytes = keys.size();
    header.checksum = checksumOf(body);

    auto whole = std::make_shared<std::string>();
    whole->reserve(sizeof header + body.size());
    append(*whole, header);
    *whole += body;

    const std::string_view bytes = *whole;
    return laidOver(bytes, std::move(whole));
}

HeadwordIndex HeadwordIndex::laidOver(std::string_view bytes, std::shared_ptr<const void> owner)
{
    const Header header = readAt<Header>(bytes, 0);
    HeadwordIndex index;
    index.owner_ = std::move(owner);
    index.bytes_ = bytes;
    index.count_ = size_t(header.count);
    index.bucketCount_ = size_t(header.bucketCount);
    index.entriesStart_ = sizeof(Header) + index.bucketCount_ * 4;
    index.keysStart_ = index.entriesStart_ + index.count_ * sizeof(Entry);
    return index;
}

std::optional<HeadwordIndex> HeadwordIndex::open(std::string_view bytes, std::shared_ptr<const void> owner,
                                                 const CacheIdentity& cache, QString& why)
{
    if (bytes.size() < sizeof(Header) || std::memcmp(bytes.data(), magic, sizeof magic) != 0) {
        why = QStringLiteral("it is not a headword index");
        return std::nullopt;
    }
    const Header header = readAt<Header>(bytes, 0);
    if (CacheIdentity{header.cacheSize, header.cacheModifiedNs, header.cacheFingerprint} != cache) {
        why = QStringLiteral("it was made for another version of the file");
        return std::nullopt;
    }
    // Each count is bounded by the bytes there are before the sizes are added up.
    const uint64_t room = bytes.size() - sizeof(Header);
    const bool sized = header.bucketCount >= 2 && std::has_single_bit(header.bucketCount) && header.count < header.bucketCount
        && header.bucketCount <= room / 4 && header.count <= room / sizeof(Entry) && header.keyBytes <= room
        && header.count <= std::numeric_limits<uint32_t>::max()
        && header.bucketCount * 4 + header.count * sizeof(Entry) + header.keyBytes == room;
    if (!sized) {
        why = QStringLiteral("its sizes do not add up (it may be truncated)");
        return std::nullopt;
    }
    if (checksumOf(bytes.substr(sizeof(Header))) != header.checksum) {
        why = QStringLiteral("it is damaged (checksum)");
        return std::nullopt;
    }

    HeadwordIndex index = laidOver(bytes, std::move(owner));

    // Every number is checked once here, so a lookup never reads out of
    // bounds and every probe run ends at an empty bucket.
    size_t used = 0;
    for (size_t bucket = 0; bucket < index.bucketCount_; ++bucket) {
        const uint32_t number = index.bucketAt(bucket);
        used += number != 0;
        if (number > index.count_) {
            why = QStringLiteral("bucket %1 names no entry").arg(bucket);
            return std::nullopt;
        }
    }
    if (used > index.count_) {
        why = QStringLiteral("it has more full buckets than entries");
        return std::nullopt;
    }
    for (uint32_t number = 1; number <= index.count_; ++number) {
        const Entry entry = index.entryAt(number);
        if (uint64_t(entry.keyOffset) + entry.keyLength > header.keyBytes || entry.valueOffset > cache.size
            || entry.valueLength > cache.size - entry.valueOffset) {
            why = QStringLiteral("entry %1 points outside the file").arg(number);
            return std::nullopt;
        }
    }
    return index;
}

std::string HeadwordIndex::withHeaderFor(std::string_view bytes, const CacheIdentity& cache)
{
    std::string sealed(bytes);
    if (sealed.size() < sizeof(Header))
        return sealed;
    Header header = readAt<Header>(sealed, 0);
    header.cacheSize = cache.size;
    header.cacheModifiedNs = cache.modifiedNs;
    header.cacheFingerprint = cache.fingerprint;
    header.checksum = checksumOf(std::string_view(sealed).substr(sizeof(Header)));
    std::memcpy(sealed.data(), &header, sizeof header);
    return sealed;
}

uint32_t HeadwordIndex::bucketAt(size_t bucket) const
{
    return readAt<uint32_t>(bytes_, sizeof(Header) + bucket * 4);
}

HeadwordIndex::Entry HeadwordIndex::entryAt(uint32_t number) const
{
    return readAt<Entry>(bytes_, entriesStart_ + (number - 1) * sizeof(Entry));
}

std::string_view HeadwordIndex::keyOf(const Entry& entry) const
{
    return bytes_.substr(keysStart_ + entry.keyOffset, entry.keyLength);
}

std::optional<HeadwordIndex::Span> HeadwordIndex::find(std::string_view key) const
{
    if (!bucketCount_)
        return std::nullopt;
    const uint64_t hash = hashOf(key);
    for (size_t bucket = hash & (bucketCount_ - 1);; bucket = (bucket + 1) & (bucketCount_ - 1)) {
        const uint32_t number = bucketAt(bucket);
        if (!number)
            return std::nullopt;
        const Entry entry = entryAt(number);
        if (entry.hash == uint32_t(hash) && keyOf(entry) == key)
            return Span{entry.valueOffset, entry.valueLength};
    }
}

std::vector<std::string_view> HeadwordIndex::keys() const
{
    std::vector<std::string_view> all;
    all.reserve(count_);
    for (uint32_t number = 1; number <= count_; ++number)
        all.push_back(keyOf(entryAt(number)));
    return all;
}

}  // namespace lexicorn
