#include "lexicorn/dictionary/import/dictzip.h"

#include "lexicorn/dictionary/import/source_entry.h"

#include <zlib.h>

#include <cstdint>
#include <vector>

namespace lexicorn::dictimport {

namespace {

constexpr unsigned char flagText = 1, flagHeaderCrc = 2, flagExtra = 4, flagName = 8, flagComment = 16;

[[noreturn]] void fail(const QString& name, const QString& what)
{
    throw ImportError(QStringLiteral("%1: %2").arg(name, what).toStdString());
}

unsigned le16(const QByteArray& bytes, qsizetype at)
{
    return unsigned(uchar(bytes[at])) | unsigned(uchar(bytes[at + 1])) << 8;
}

// Inflates raw deflate data (no zlib or gzip wrapper); false when it is damaged.
bool inflateRaw(const char* data, qsizetype size, QByteArray& out, qsizetype expected)
{
    z_stream stream{};
    if (inflateInit2(&stream, -MAX_WBITS) != Z_OK)
        return false;
    const qsizetype start = out.size();
    out.resize(start + expected);
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data));
    stream.avail_in = uInt(size);
    stream.next_out = reinterpret_cast<Bytef*>(out.data() + start);
    stream.avail_out = uInt(expected);
    const int status = inflate(&stream, Z_SYNC_FLUSH);
    const bool ok = (status == Z_OK || status == Z_STREAM_END) && stream.avail_out == 0;
    out.resize(start + qsizetype(expected - stream.avail_out));
    inflateEnd(&stream);
    return ok || (status == Z_STREAM_END);
}

// The whole gzip member as one stream, for a .dict.dz without a chunk table.
QByteArray inflateGzip(const QByteArray& file, const QString& name)
{
    z_stream stream{};
    if (inflateInit2(&stream, MAX_WBITS + 16) != Z_OK)
        fail(name, QStringLiteral("cannot start decompressing"));
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(file.constData()));
    stream.avail_in = uInt(file.size());
    QByteArray out;
    int status = Z_OK;
    char buffer[1 << 16];
    while (status == Z_OK) {
        stream.next_out = reinterpret_cast<Bytef*>(buffer);
        stream.avail_out = sizeof buffer;
        status = inflate(&stream, Z_NO_FLUSH);
        out.append(buffer, qsizetype(sizeof buffer - stream.avail_out));
        if (status == Z_BUF_ERROR && stream.avail_in == 0)
            break;
    }
    inflateEnd(&stream);
    if (status != Z_STREAM_END)
        fail(name, QStringLiteral("the compressed data is damaged or cut short near byte %1").arg(stream.total_in));
    return out;
}

}  // namespace

QByteArray inflateDictzip(const QByteArray& file, const QString& name)
{
    if (file.size() < 18 || uchar(file[0]) != 0x1f || uchar(file[1]) != 0x8b || file[2] != 8)
        fail(name, QStringLiteral("not a gzip file"));
    const unsigned char flags = uchar(file[3]);
    qsizetype at = 10;
    std::vector<unsigned> chunkSizes;
    unsigned chunkLength = 0;
    if (flags & flagExtra) {
        const qsizetype extraLength = le16(file, at);
        at += 2;
        const qsizetype extraEnd = at + extraLength;
        if (extraEnd > file.size())
            fail(name, QStringLiteral("the gzip header's extra field runs past the end of the file"));
        while (at + 4 <= extraEnd) {
            const bool chunkTable = file[at] == 'R' && file[at + 1] == 'A';
            const qsizetype length = le16(file, at + 2);
            const qsizetype data = at + 4;
            if (data + length > extraEnd)
                fail(name, QStringLiteral("a gzip extra subfield runs past its field"));
            if (chunkTable) {
                if (length < 6)
                    fail(name, QStringLiteral("the dictzip chunk table is too short"));
                chunkLength = le16(file, data + 2);
                const unsigned count = le16(file, data + 4);
                if (length < 6 + 2 * qsizetype(count) || chunkLength == 0)
                    fail(name, QStringLiteral("the dictzip chunk table lists %1 chunks but holds fewer").arg(count));
                for (unsigned i = 0; i < count; ++i)
                    chunkSizes.push_back(le16(file, data + 6 + 2 * qsizetype(i)));
            }
            at = data + length;
        }
        at = extraEnd;
    }
    for (const unsigned char flag : {flagName, flagComment}) {
        if (!(flags & flag))
            continue;
        const qsizetype end = file.indexOf('\0', at);
        if (end < 0)
            fail(name, QStringLiteral("the gzip header is cut short"));
        at = end + 1;
    }
    if (flags & flagHeaderCrc)
        at += 2;
    (void)flagText;
    if (chunkSizes.empty())
        return inflateGzip(file, name);

    // The uncompressed size is the gzip trailer's last four bytes (modulo 4 GiB).
    const quint32 total = quint32(uchar(file[file.size() - 4])) | quint32(uchar(file[file.size() - 3])) << 8
        | quint32(uchar(file[file.size() - 2])) << 16 | quint32(uchar(file[file.size() - 1])) << 24;
    // Deflate shrinks data at most about 1032 times: a size beyond what the
    // chunks can hold, or beyond that ratio, is a damaged table, and is
    // refused before any memory is set aside for it.
    if (quint64(total) > quint64(chunkSizes.size()) * chunkLength || quint64(total) > quint64(file.size()) * 1100)
        fail(name, QStringLiteral("the file claims %1 uncompressed bytes, more than its %2 chunks can hold (a bad chunk table)")
                       .arg(total)
                       .arg(chunkSizes.size()));
    QByteArray out;
    out.reserve(qsizetype(total));
    for (std::size_t i = 0; i < chunkSizes.size(); ++i) {
        if (at + qsizetype(chunkSizes[i]) > file.size() - 8)
            fail(name, QStringLiteral("dictzip chunk %1 of %2 runs past the end of the file (a bad chunk table)")
                           .arg(i + 1)
                           .arg(chunkSizes.size()));
        const qsizetype left = qsizetype(total) - out.size();
        const qsizetype expected = std::min<qsizetype>(chunkLength, std::max<qsizetype>(left, 0));
        if (expected <= 0 || !inflateRaw(file.constData() + at, chunkSizes[i], out, expected))
            fail(name, QStringLiteral("dictzip chunk %1 of %2 at byte %3 does not decompress (a bad chunk table or damaged data)")
                           .arg(i + 1)
                           .arg(chunkSizes.size())
                           .arg(at));
        at += chunkSizes[i];
    }
    if (out.size() != qsizetype(total))
        fail(name, QStringLiteral("the chunks give %1 bytes, the file says %2 (a bad chunk table)").arg(out.size()).arg(total));
    return out;
}

}  // namespace lexicorn::dictimport
