#pragma once

// The raw Collins dictionary file and its conversion into cache records.

#include "lexicorn/dictionary/cache_dict.h"
#include "lexicorn/dictionary/json_buffer.h"
#include "lexicorn/dictionary/json_reader.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace lexicorn {

struct CollinsExt {
    QString ext_cn;
    QString ext_en;
};

struct CollinsDef {
    QString def_cn;
    QString def_en;
    QString pos_cn;
    QString pos_en;
    std::vector<CollinsExt> ext;
};

struct CollinsWord {
    QString star;
    QStringList readings;
    std::vector<CollinsDef> defs;
};

// Headword -> word object, in file order (a repeated headword appears twice).
using CollinsWords = std::vector<std::pair<QString, CollinsWord>>;

// Reports work done out of the total, for progress display.
using Progress = std::function<void(size_t done, size_t total)>;

// Decodes bytes of the raw shape; every key is required. Fills failure and
// returns nothing when they do not decode.
std::optional<CollinsWords> collinsWords(const JsonBuffer& bytes, jsonread::Failure& failure);

// Converts the raw map into cache records: one record per headword, one entry
// per part of speech (sorted), senses without a part of speech left out.
CacheRecords toEnWordData(const CollinsWords& words, const Progress& progress = {});

}  // namespace lexicorn
