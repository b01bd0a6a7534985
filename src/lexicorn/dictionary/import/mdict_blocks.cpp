#include "lexicorn/dictionary/import/mdict_blocks.h"

#include <lzo/lzo1x.h>
#include <zlib.h>

#include <algorithm>

namespace lexicorn::dictimport::mdict {

namespace {

// Neither zlib nor LZO packs better than about a thousand to one; a larger
// claimed size is a damaged size field, refused before allocating for it.
constexpr quint64 maxPackingRatio = 1100;

[[noreturn]] void failBlock(const QString& place, const QString& why)
{
    throw ImportError(QStringLiteral("%1: %2").arg(place, why).toStdString());
}

QByteArray inflate(const char* payload, qsizetype size, quint64 unpackedSize, const QString& place)
{
    QByteArray out(qsizetype(unpackedSize), Qt::Uninitialized);
    uLongf written = uLongf(unpackedSize);
    const int status = uncompress(reinterpret_cast<Bytef*>(out.data()), &written,
                                  reinterpret_cast<const Bytef*>(payload), uLong(size));
    if (status != Z_OK || written != unpackedSize)
        failBlock(place, QStringLiteral("zlib data does not unpack to %1 bytes (zlib status %2)").arg(unpackedSize).arg(status));
    return out;
}

QByteArray unpackLzo(const char* payload, qsizetype size, quint64 unpackedSize, const QString& place)
{
    static const bool ready = lzo_init() == LZO_E_OK;
    if (!ready)
        failBlock(place, QStringLiteral("the LZO library did not start"));
    QByteArray out(qsizetype(unpackedSize), Qt::Uninitialized);
    lzo_uint written = lzo_uint(unpackedSize);
    const int status = lzo1x_decompress_safe(reinterpret_cast<const unsigned char*>(payload), lzo_uint(size),
                                             reinterpret_cast<unsigned char*>(out.data()), &written, nullptr);
    if (status != LZO_E_OK || written != unpackedSize)
        failBlock(place, QStringLiteral("LZO data does not unpack to %1 bytes (LZO status %2)").arg(unpackedSize).arg(status));
    return out;
}

}  // namespace

ByteReader::ByteReader(const char* data, qsizetype size, QString place)
    : data_(data), size_(size), place_(std::move(place))
{
}

quint64 ByteReader::number(int width)
{
    const auto* bytes = reinterpret_cast<const unsigned char*>(take(quint64(width)));
    quint64 value = 0;
    for (int i = 0; i < width; ++i)
        value = (value << 8) | bytes[i];
    return value;
}

const char* ByteReader::take(quint64 count)
{
    if (count > quint64(remaining()))
        fail(QStringLiteral("needs %1 bytes, only %2 are left (truncated or a size past the end)").arg(count).arg(remaining()));
    const char* at = data_ + offset_;
    offset_ += qsizetype(count);
    return at;
}

void ByteReader::fail(const QString& why) const
{
    throw ImportError(QStringLiteral("%1, byte %2: %3").arg(place_).arg(offset_).arg(why).toStdString());
}

quint32 adler32Of(const char* data, qsizetype size)
{
    uLong sum = adler32(0L, Z_NULL, 0);
    // zlib takes lengths as uInt; feed big buffers in pieces.
    while (size > 0) {
        const qsizetype piece = std::min<qsizetype>(size, 1 << 30);
        sum = adler32(sum, reinterpret_cast<const Bytef*>(data), uInt(piece));
        data += piece;
        size -= piece;
    }
    return quint32(sum);
}

QByteArray unpackBlock(const char* data, qsizetype size, quint64 unpackedSize, const QString& place)
{
    if (size < 8)
        failBlock(place, QStringLiteral("a block of %1 bytes is shorter than its 8-byte prefix").arg(size));
    const auto* prefix = reinterpret_cast<const unsigned char*>(data);
    const quint32 type = quint32(prefix[0]) | quint32(prefix[1]) << 8 | quint32(prefix[2]) << 16 | quint32(prefix[3]) << 24;
    const quint32 checksum = quint32(prefix[4]) << 24 | quint32(prefix[5]) << 16 | quint32(prefix[6]) << 8 | prefix[7];
    const char* payload = data + 8;
    const qsizetype payloadSize = size - 8;
    if (unpackedSize > quint64(payloadSize) * maxPackingRatio + 1024)
        failBlock(place, QStringLiteral("claims %1 unpacked bytes from %2 packed ones").arg(unpackedSize).arg(payloadSize));

    QByteArray out;
    switch (type) {
    case 0:
        if (quint64(payloadSize) != unpackedSize)
            failBlock(place, QStringLiteral("a stored block of %1 bytes should hold %2").arg(payloadSize).arg(unpackedSize));
        out = QByteArray(payload, payloadSize);
        break;
    case 1:
        out = unpackLzo(payload, payloadSize, unpackedSize, place);
        break;
    case 2:
        out = inflate(payload, payloadSize, unpackedSize, place);
        break;
    default:
        failBlock(place, QStringLiteral("unknown block type %1 (encrypted or damaged)").arg(type));
    }
    if (adler32Of(out.constData(), out.size()) != checksum)
        failBlock(place, QStringLiteral("checksum does not match (the block is damaged)"));
    return out;
}

}  // namespace lexicorn::dictimport::mdict
