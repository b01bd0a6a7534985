#pragma once

#include "lexicorn/dictionary/headword_index.h"
#include "lexicorn/dictionary/json_buffer.h"
#include "lexicorn/dictionary/json_reader.h"
#include "lexicorn/dictionary/mapped_file.h"
#include "lexicorn/dictionary/records.h"
#include "lexicorn/dictionary/top_level_scanner.h"

#include <QStringList>

#include <simdjson.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace lexicorn {

// Headword -> records, in the order they were made, each headword once.
using CacheRecords = std::vector<std::pair<QString, EnWordDataList>>;

// A loaded dictionary in cache form: headword -> list of EnWordData.
//
// The dictionary is kept as its JSON text plus a hash index from headword to
// the bytes of that headword's records, and records are decoded when looked
// up. A cache file of hundreds of megabytes thus costs at most its own size in
// memory, and a lookup decodes only the few records it returns. Every record
// is checked once when the dictionary is made (or when the index of a mapped
// file was made), so a lookup cannot fail.
class CacheDict {
public:
    // Checks and indexes a cache-shape document, read from a file with that
    // stamp (none for text made in memory; the size is the text's). Returns null and fills failure
    // (its path starts with the headword) when it does not decode.
    static std::shared_ptr<const CacheDict> fromJson(JsonBuffer json, jsonread::Failure& failure, const FileStamp& stamp = {});

    // A cache file mapped into memory with the index made when it was checked.
    static std::shared_ptr<const CacheDict> fromIndexedFile(std::shared_ptr<const MappedFile> file, HeadwordIndex index);

    // Encodes records made in memory (a converted raw dictionary).
    static std::shared_ptr<const CacheDict> fromRecords(const CacheRecords& records);

    static std::shared_ptr<const CacheDict> empty();

    bool isEmpty() const { return index_.size() == 0; }
    size_t size() const { return index_.size(); }
    bool contains(const QString& headword) const;

    // The records filed under the headword, as new objects; nothing when absent.
    std::optional<EnWordDataList> find(const QString& headword) const;

    // Every headword, in no particular order.
    QStringList headwords() const;

    // The whole dictionary as JSON text (what the cache file holds).
    std::string_view json() const { return text_; }

    // Headword -> records; written next to the cache file to be mapped back.
    const HeadwordIndex& index() const { return index_; }

private:
    CacheDict() = default;
    void holdText(JsonBuffer json);
    bool checkRecords(const std::vector<TopLevelEntry>& entries, jsonread::Failure& failure) const;
    std::optional<HeadwordIndex::Span> spanOf(const QString& headword) const;

    std::shared_ptr<const void> textOwner_;  // the buffer or the mapping text_ lies in
    std::string_view text_;
    size_t readable_ = 0;  // bytes that may be read from text_.data(), padding included
    HeadwordIndex index_;
};

}  // namespace lexicorn
