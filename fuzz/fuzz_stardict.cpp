// StarDict files of any content: the index, the synonyms and the entry data
// (with and without a same-type sequence), and a .dict.dz body. The reader
// must end with entries or an ImportError, never read outside its input.
//
// Input: one byte of flags (bit 0: 64-bit offsets; bits 1-2: the same-type
// sequence none, "m", "th" or "xg"; bit 3: the wordcount is off by one), two
// bytes each for the lengths of the .idx and .syn parts, then .idx, .syn and
// the .dict data. The same bytes are also read as a .dict.dz file.

#include "lexicorn/dictionary/import/dictzip.h"
#include "lexicorn/dictionary/import/stardict_reader.h"

#include <cstddef>
#include <cstdint>

namespace {

using namespace lexicorn::dictimport;

struct NullSink : ImportSink {
    void entry(SourceEntry) override {}
    void wordForm(const QString&, const QString&) override {}
    void resource(const QString&, const QByteArray&) override {}
    void progress(qint64, qint64) override {}
};

// How many index entries the bytes hold, counted as the reader walks them.
int entriesIn(const QByteArray& idx, int offsetBytes)
{
    int count = 0;
    for (qsizetype at = 0; at < idx.size(); ++count) {
        const qsizetype end = idx.indexOf('\0', at);
        if (end < 0)
            return count + 1;
        at = end + 1 + offsetBytes + 4;
    }
    return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 5)
        return 0;
    const auto* bytes = reinterpret_cast<const char*>(data);
    const unsigned flags = data[0];
    const qsizetype idxLength = std::min<qsizetype>(qsizetype(data[1] | data[2] << 8), qsizetype(size) - 5);
    const qsizetype synLength = std::min<qsizetype>(qsizetype(data[3] | data[4] << 8), qsizetype(size) - 5 - idxLength);
    const QByteArray idx(bytes + 5, idxLength);
    const QByteArray syn(bytes + 5 + idxLength, synLength);
    const QByteArray dict(bytes + 5 + idxLength + synLength, qsizetype(size) - 5 - idxLength - synLength);
    const bool wide = flags & 1;
    const char* sequences[] = {"", "m", "th", "xg"};
    const int words = entriesIn(idx, wide ? 8 : 4) + ((flags & 8) ? 1 : 0);
    QByteArray ifo = "StarDict's dict ifo file\nversion=3.0.0\nwordcount=" + QByteArray::number(words) + '\n';
    if (wide)
        ifo += "idxoffsetbits=64\n";
    if (const char* sequence = sequences[(flags >> 1) & 3]; *sequence)
        ifo += QByteArray("sametypesequence=") + sequence + '\n';
    NullSink sink;
    try {
        readStarDictBytes(ifo, idx, dict, syn, QStringLiteral("fuzz"), sink);
    } catch (const ImportError&) {
    }
    try {
        (void)inflateDictzip(QByteArray(bytes, qsizetype(size)), QStringLiteral("fuzz.dict.dz"));
    } catch (const ImportError&) {
    }
    return 0;
}
