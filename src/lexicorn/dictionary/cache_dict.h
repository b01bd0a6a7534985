#pragma once

#include "lexicorn/dictionary/json_buffer.h"
#include "lexicorn/dictionary/json_reader.h"
#include "lexicorn/dictionary/records.h"
#include "lexicorn/dictionary/top_level_scanner.h"

#include <QStringList>

#include <simdjson.h>

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace lexicorn {

// Headword -> records, in the order they were made, each headword once.
using CacheRecords = std::vector<std::pair<QString, EnWordDataList>>;

// A loaded dictionary in cache form: headword -> list of EnWordData.
//
// The dictionary is kept as its JSON text plus a hash index from headword to
// the bytes of that headword's records, and records are decoded when looked
// up. A cache file of hundreds of megabytes thus costs about its own size in
// memory, and a lookup decodes only the few records it returns. Every record
// is checked once when the dictionary is made, so a lookup cannot fail.
class CacheDict {
public:
    // Checks and indexes a cache-shape document. Returns null and fills
    // failure (its path starts with the headword) when it does not decode.
    static std::shared_ptr<const CacheDict> fromJson(JsonBuffer json, jsonread::Failure& failure);

    // Encodes records made in memory (a converted raw dictionary).
    static std::shared_ptr<const CacheDict> fromRecords(const CacheRecords& records);

    static std::shared_ptr<const CacheDict> empty();

    bool isEmpty() const { return index_.empty(); }
    size_t size() const { return index_.size(); }
    bool contains(const QString& headword) const;

    // The records filed under the headword, as new objects; nothing when absent.
    std::optional<EnWordDataList> find(const QString& headword) const;

    // Every headword, in no particular order.
    QStringList headwords() const;

    // The whole dictionary as JSON text (what the cache file holds).
    std::string_view json() const { return json_.view(); }

private:
    struct Span {
        size_t offset = 0;
        size_t length = 0;
    };

    CacheDict() = default;
    bool checkRecords(const std::vector<TopLevelEntry>& entries, jsonread::Failure& failure) const;
    const Span* spanOf(const QString& headword) const;

    JsonBuffer json_;
    std::unordered_map<std::string_view, Span> index_;
    std::deque<std::string> unescapedKeys_;  // keys that differ from their JSON spelling
};

}  // namespace lexicorn
