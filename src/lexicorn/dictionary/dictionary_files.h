#pragma once

// Reading and writing the dictionary files of the Dict folder.

#include "lexicorn/dictionary/cache_dict.h"
#include "lexicorn/dictionary/collins_raw.h"

#include <QString>

#include <memory>

namespace lexicorn {

// True for the path of the raw Collins file ("collins_html.json" is not one).
bool isRawCollinsPath(const QString& path);

// Reads a dictionary file. The raw Collins file is decoded and converted; when
// it cannot be read or decoded the error is logged and the result is empty. A
// cache file that cannot be read gives an empty result with a log line; one
// that does not decode is a fatal program error naming the file, the record
// and the key.
std::shared_ptr<const CacheDict> readDictionaryFile(const QString& path, const Progress& progress = {});

// Writes the dictionary's JSON into the file from its first byte, creating the
// file when missing. The file is not truncated first: a longer old file keeps
// its tail. Nothing is written for an empty dictionary. Returns false when the
// file cannot be opened.
bool writeCacheFile(const CacheDict& dict, const QString& path);

}  // namespace lexicorn
