#include "lexicorn/dictionary/dictionary_files.h"

#include "lexicorn/dictionary/cache_index_file.h"

#include "foundation/fatal.h"
#include "foundation/log.h"

#include <QFile>

namespace lexicorn {

bool isRawCollinsPath(const QString& path)
{
    return path.contains(QStringLiteral("collins.json"));
}

std::shared_ptr<const CacheDict> readDictionaryFile(const QString& path, const Progress& progress)
{
    const bool raw = isRawCollinsPath(path);
    if (!raw) {
        if (std::shared_ptr<const CacheDict> dict = openIndexedCache(path))
            return dict;
    }
    QString error;
    FileStamp stamp;
    std::optional<JsonBuffer> bytes = JsonBuffer::readFile(path, error, &stamp);
    if (!bytes) {
        logLine(QStringLiteral("🌀🌀🌀 cannot read %1: %2").arg(path, error));
        return CacheDict::empty();
    }
    jsonread::Failure failure;
    if (raw) {
        std::optional<CollinsWords> words = collinsWords(*bytes, failure);
        if (!words) {
            logLine(QStringLiteral("🌀🌀🌀 %1 does not decode: %2").arg(path, failure.describe()));
            return CacheDict::empty();
        }
        bytes.reset();  // the raw text is not needed while converting
        return CacheDict::fromRecords(toEnWordData(*words, progress));
    }
    std::shared_ptr<const CacheDict> dict = CacheDict::fromJson(std::move(*bytes), failure, stamp);
    if (!dict)
        fatalError(QStringLiteral("the dictionary cache %1 does not decode: %2").arg(path, failure.describe()));
    writeCacheIndex(*dict, path, stamp);
    return dict;
}

bool writeCacheFile(const CacheDict& dict, const QString& path)
{
    if (dict.isEmpty())
        return true;
    QFile file(path);
    // ReadWrite opens (and creates) without truncating, unlike WriteOnly.
    if (!file.open(QIODevice::ReadWrite))
        return false;
    const std::string_view json = dict.json();
    return file.write(json.data(), qint64(json.size())) == qint64(json.size());
}

}  // namespace lexicorn
