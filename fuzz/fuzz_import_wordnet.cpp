// WordNet database bytes to its reader: the input is split into an index and
// a data file of one part of speech plus its exception list, written into a
// folder the reader then reads like Debian's /usr/share/wordnet.

#include "lexicorn/dictionary/import/cache_writer.h"
#include "lexicorn/dictionary/import/wordnet_reader.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>

namespace {

void write(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace lexicorn::dictimport;
    static QTemporaryDir folder;
    const QByteArray all(reinterpret_cast<const char*>(data), qsizetype(size));
    // Parts separated by a 0x01 byte: index, data, exception list.
    const QList<QByteArray> parts = all.split('\x01');
    const char* names[] = {"index", "data"};
    for (const char* pos : {"noun", "verb", "adj", "adv"}) {
        for (int p = 0; p < 2; ++p)
            write(folder.path() + u'/' + QLatin1StringView(names[p]) + u'.' + QLatin1StringView(pos), QByteArray());
    }
    write(folder.path() + QStringLiteral("/index.noun"), parts.value(0));
    write(folder.path() + QStringLiteral("/data.noun"), parts.value(1));
    write(folder.path() + QStringLiteral("/noun.exc"), parts.value(2));
    CacheWriter writer(folder.path() + QStringLiteral("/staging"));
    try {
        readWordNet(folder.path(), writer);
    } catch (const ImportError&) {
        return 0;
    }
    (void)writer.cacheJson();
    (void)writer.wordForms();
    return 0;
}
