// Damages the headword index of a small cache file with the input (XORed
// over the real index, and longer inputs extend it), then makes the header's
// identity and checksum match, so the damage reaches the structure checks.
// An index that is accepted must answer every lookup within the cache
// file's bytes, whatever its numbers say.

#include "lexicorn/dictionary/cache_dict.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdlib>

namespace {

const std::shared_ptr<const lexicorn::MappedFile>& cacheFile()
{
    static QTemporaryDir dir;
    static const std::shared_ptr<const lexicorn::MappedFile> file = [] {
        const QString path = dir.path() + QStringLiteral("/cache.json");
        QFile out(path);
        if (!out.open(QIODevice::WriteOnly))
            std::abort();
        out.write(R"({"run":[{"index":1,"word":"run","enWords":[]}],"say \"hi\"":[],"zebra":[{"index":2,"word":"zebra","enWords":[]}]})");
        out.close();
        QString error;
        return lexicorn::MappedFile::open(path, error);
    }();
    return file;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::shared_ptr<const lexicorn::MappedFile>& cache = cacheFile();
    const std::string_view text = cache->bytes();
    const lexicorn::CacheIdentity identity{text.size(), cache->stamp().modifiedNs, lexicorn::fingerprintOf(text)};
    static const std::string real = [&] {
        lexicorn::jsonread::Failure failure;
        return std::string(lexicorn::CacheDict::fromJson(lexicorn::JsonBuffer::copyOf(text), failure)->index().bytes());
    }();
    std::string damaged = real;
    for (size_t i = 0; i < size; ++i) {
        if (i < damaged.size())
            damaged[i] = char(damaged[i] ^ data[i]);
        else
            damaged += char(data[i]);
    }
    auto bytes = std::make_shared<const std::string>(lexicorn::HeadwordIndex::withHeaderFor(damaged, identity));
    QString why;
    std::optional<lexicorn::HeadwordIndex> index = lexicorn::HeadwordIndex::open(*bytes, bytes, identity, why);
    if (!index) {
        if (why.isEmpty())
            std::abort();  // a rejection must say why
        return 0;
    }
    const auto dict = lexicorn::CacheDict::fromIndexedFile(cache, std::move(*index));
    for (const QString& headword : dict->headwords())
        dict->find(headword);
    dict->find(QStringLiteral("zebra"));
    return 0;
}
