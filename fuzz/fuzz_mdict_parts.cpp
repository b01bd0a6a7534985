// The pieces of an MDict file reached only behind a valid header checksum,
// fed directly: the key-info block deciphered and unpacked as a file with
// Encrypted="2" has it, and a style sheet applied to an entry.
//   first byte even: the rest is a key-info block; the next two bytes say
//                    how large it claims to unpack.
//   first byte odd:  the rest is a style sheet, a NUL, then an entry.

#include "lexicorn/dictionary/import/mdict_blocks.h"
#include "lexicorn/dictionary/import/mdict_cipher.h"
#include "lexicorn/dictionary/import/mdict_styles.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace lexicorn::dictimport;
    if (size < 3)
        return 0;
    const char* rest = reinterpret_cast<const char*>(data) + 1;
    const qsizetype restSize = qsizetype(size - 1);
    if (data[0] % 2 == 0) {
        const quint64 unpackedSize = quint64(data[1]) << 8 | data[2];
        const QByteArray plain = mdict::decipherKeyInfo(rest + 2, restSize - 2);
        // Deciphering keeps the size and the 8-byte prefix the key comes from.
        if (plain.size() != restSize - 2 || std::memcmp(plain.constData(), rest + 2, size_t(std::min<qsizetype>(8, plain.size()))) != 0)
            std::abort();
        try {
            mdict::unpackBlock(plain.constData(), plain.size(), unpackedSize, QStringLiteral("fuzz.mdx: key-info block"));
        } catch (const ImportError&) {
        }
        return 0;
    }
    const char* split = static_cast<const char*>(std::memchr(rest, 0, size_t(restSize)));
    const qsizetype sheetSize = split ? split - rest : restSize;
    const QString sheetText = QString::fromUtf8(rest, sheetSize);
    const QString entry = split ? QString::fromUtf8(split + 1, restSize - sheetSize - 1) : QString();
    const mdict::StyleSheet sheet = mdict::StyleSheet::parse(sheetText);
    const QString expanded = sheet.expand(entry);
    // Without styles, or without a backtick, an entry comes back as it was.
    if ((sheet.isEmpty() || !entry.contains(u'`')) && expanded != entry)
        std::abort();
    return 0;
}
