#pragma once

// The headword index of a cache file, kept next to it ("X.json" ->
// "X.json.index"). It lets a later start map the cache and look words up at
// once instead of reading, checking and indexing hundreds of megabytes. It is
// only ever a copy of what the cache file says: when it is missing, damaged,
// or made for another version of the file, the file is read in full and the
// index is made again.

#include "lexicorn/dictionary/cache_dict.h"
#include "lexicorn/dictionary/mapped_file.h"

#include <QString>

#include <memory>

namespace lexicorn {

QString indexPathOf(const QString& cachePath);

// The cache file mapped with its index; null when there is no index that
// holds for the file as it is now (a rejected index is logged with why).
std::shared_ptr<const CacheDict> openIndexedCache(const QString& cachePath);

// Writes the index of dict, read from cachePath with the stamp read, next to
// the file, unless the file changed since. A failure to write only costs the
// next start its speed, so it is logged and nothing more.
void writeCacheIndex(const CacheDict& dict, const QString& cachePath, const FileStamp& read);

}  // namespace lexicorn
