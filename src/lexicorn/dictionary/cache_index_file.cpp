#include "lexicorn/dictionary/cache_index_file.h"

#include "foundation/log.h"

#include <QFile>
#include <QSaveFile>

namespace lexicorn {

QString indexPathOf(const QString& cachePath)
{
    return cachePath + QStringLiteral(".index");
}

std::shared_ptr<const CacheDict> openIndexedCache(const QString& cachePath)
{
    const QString indexPath = indexPathOf(cachePath);
    if (!QFile::exists(indexPath))
        return nullptr;
    QString why;
    const std::shared_ptr<const MappedFile> cache = MappedFile::open(cachePath, why);
    const std::shared_ptr<const MappedFile> indexFile = cache ? MappedFile::open(indexPath, why) : nullptr;
    if (!indexFile) {
        logLine(QStringLiteral("the index %1 cannot be used: %2").arg(indexPath, why));
        return nullptr;
    }
    const CacheIdentity identity{cache->stamp().size, cache->stamp().modifiedNs, fingerprintOf(cache->bytes())};
    std::optional<HeadwordIndex> index = HeadwordIndex::open(indexFile->bytes(), indexFile, identity, why);
    if (!index) {
        logLine(QStringLiteral("the index %1 is made again: %2").arg(indexPath, why));
        return nullptr;
    }
    return CacheDict::fromIndexedFile(cache, std::move(*index));
}

void writeCacheIndex(const CacheDict& dict, const QString& cachePath, const FileStamp& read)
{
    if (fileStampOf(cachePath) != read)
        return;
    const QString indexPath = indexPathOf(cachePath);
    const std::string_view bytes = dict.index().bytes();
    // Written whole under another name and then renamed, so a start that
    // reads the index meanwhile sees the old one or the new one, never a part.
    QSaveFile file(indexPath);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes.data(), qint64(bytes.size())) != qint64(bytes.size())
        || !file.commit())
        logLine(QStringLiteral("the index %1 cannot be written: %2").arg(indexPath, file.errorString()));
}

}  // namespace lexicorn
