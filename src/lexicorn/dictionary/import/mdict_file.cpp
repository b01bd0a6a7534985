#include "lexicorn/dictionary/import/mdict_file.h"

#include "lexicorn/dictionary/import/mdict_blocks.h"
#include "lexicorn/dictionary/import/mdict_cipher.h"

#include <QRegularExpression>
#include <QStringDecoder>

namespace lexicorn::dictimport::mdict {

namespace {

[[noreturn]] void fail(const QString& message)
{
    throw ImportError(message.toStdString());
}

quint32 littleEndian32(const char* at)
{
    const auto* b = reinterpret_cast<const unsigned char*>(at);
    return quint32(b[0]) | quint32(b[1]) << 8 | quint32(b[2]) << 16 | quint32(b[3]) << 24;
}

// The header tag is UTF-16LE in files MDict writes, UTF-8 in some others:
// an ASCII '<' followed by a zero byte tells them apart.
QString headerText(const char* data, qsizetype size)
{
    if (size >= 2 && data[1] == '\0') {
        QString text = QString::fromUtf16(reinterpret_cast<const char16_t*>(data), size / 2);
        while (text.endsWith(QChar(0)))
            text.chop(1);
        return text;
    }
    QString text = QString::fromUtf8(data, size);
    while (text.endsWith(QChar(0)))
        text.chop(1);
    return text;
}

QString unescapeAttribute(QString value)
{
    value.replace(QStringLiteral("&quot;"), QStringLiteral("\""));
    value.replace(QStringLiteral("&lt;"), QStringLiteral("<"));
    value.replace(QStringLiteral("&gt;"), QStringLiteral(">"));
    value.replace(QStringLiteral("&amp;"), QStringLiteral("&"));
    return value;
}

// Length in bytes of a NUL-terminated string of `unit`-byte characters at
// the reader's position, without the terminator; -1 when none ends it.
qsizetype terminatedLength(const char* data, qsizetype available, int unit)
{
    for (qsizetype i = 0; i + unit <= available; i += unit) {
        if (data[i] == '\0' && (unit == 1 || data[i + 1] == '\0'))
            return i;
    }
    return -1;
}

}  // namespace

MdictFile::MdictFile(const char* data, qsizetype size, QString fileName, bool resourceFile)
    : data_(data), size_(size), fileName_(std::move(fileName)), resourceFile_(resourceFile)
{
    readHeader();
    readKeySection();
}

QString MdictFile::where(const QString& section) const
{
    return QStringLiteral("%1: %2").arg(fileName_, section);
}

QString MdictFile::decodeText(const char* data, qsizetype size) const
{
    switch (encoding_) {
    case TextEncoding::Utf16: {
        qsizetype units = size / 2;
        const auto* text = reinterpret_cast<const char16_t*>(data);
        while (units > 0 && text[units - 1] == 0)
            --units;
        return QString::fromUtf16(text, units);
    }
    case TextEncoding::Utf8:
    case TextEncoding::Other:
        break;
    }
    while (size > 0 && data[size - 1] == '\0')
        --size;
    if (encoding_ == TextEncoding::Other) {
        QStringDecoder decoder(encodingName_.constData());
        return decoder.decode(QByteArrayView(data, size));
    }
    return QString::fromUtf8(data, size);
}

void MdictFile::readHeader()
{
    ByteReader reader(data_, size_, where(QStringLiteral("header")));
    const quint64 headerSize = reader.number(4);
    const char* header = reader.take(headerSize);
    const char* checksum = reader.take(4);
    if (littleEndian32(checksum) != adler32Of(header, qsizetype(headerSize)))
        reader.fail(QStringLiteral("header checksum does not match (the file is damaged)"));
    offset_ = reader.offset();

    const QString tag = headerText(header, qsizetype(headerSize));
    if (!tag.startsWith(u'<'))
        reader.fail(QStringLiteral("no header tag: not an MDict file"));
    static const QRegularExpression attributePattern(QStringLiteral(R"re((\w+)\s*=\s*"([^"]*)")re"));
    for (auto it = attributePattern.globalMatch(tag); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        attributes_.insert(match.captured(1), unescapeAttribute(match.captured(2)));
    }

    bool numeric = false;
    version_ = attribute(QStringLiteral("GeneratedByEngineVersion")).trimmed().toDouble(&numeric);
    if (!numeric)
        fail(where(QStringLiteral("header has no engine version (GeneratedByEngineVersion)")));
    if (version_ >= 3.0)
        fail(where(QStringLiteral("MDict version %1 files are not supported (1.x and 2.x are)").arg(version_)));
    numberWidth_ = version_ >= 2.0 ? 8 : 4;

    // "Encrypted" holds two flags. 2: only the key-info block is enciphered,
    // with a key the file itself gives, so it can be read. 1: the records
    // are enciphered with the buyer's registration key, which we do not
    // have. Old files say "Yes" for 1 and "No" for 0.
    const QString encrypted = attribute(QStringLiteral("Encrypted")).trimmed();
    if (encrypted.isEmpty() || encrypted.compare(QStringLiteral("No"), Qt::CaseInsensitive) == 0 || encrypted == QStringLiteral("0")) {
        keyInfoEnciphered_ = false;
    } else if (encrypted == QStringLiteral("2")) {
        if (version_ < 2.0)
            fail(where(QStringLiteral("header: an enciphered key index (Encrypted=\"2\") in an MDict %1 file is not supported").arg(version_)));
        keyInfoEnciphered_ = true;
    } else if (encrypted == QStringLiteral("1") || encrypted == QStringLiteral("3") ||
               encrypted.compare(QStringLiteral("Yes"), Qt::CaseInsensitive) == 0) {
        fail(where(QStringLiteral("the dictionary is encrypted for its buyer (Encrypted=\"%1\"): reading it needs the "
                                  "registration key it was sold with, which Lexicorn does not have")
                       .arg(encrypted)));
    } else {
        fail(where(QStringLiteral("header: unknown encryption Encrypted=\"%1\"; only plain files and files with "
                                  "Encrypted=\"2\" can be imported")
                       .arg(encrypted)));
    }

    const QString encoding = attribute(QStringLiteral("Encoding")).trimmed().toUpper();
    if (encoding.isEmpty() || encoding == QStringLiteral("UTF-8") || encoding == QStringLiteral("UTF8")) {
        encoding_ = TextEncoding::Utf8;
    } else if (encoding.startsWith(QStringLiteral("UTF-16")) || encoding == QStringLiteral("UTF16")) {
        encoding_ = TextEncoding::Utf16;
    } else {
        encoding_ = TextEncoding::Other;
        // GBK and GB2312 are subsets of GB18030.
        encodingName_ = (encoding == QStringLiteral("GBK") || encoding == QStringLiteral("GB2312")) ? QByteArray("GB18030")
                                                                                                    : encoding.toLatin1();
        if (!QStringDecoder(encodingName_.constData()).isValid())
            fail(where(QStringLiteral("text encoding %1 is not supported").arg(encoding)));
    }
    keyEncoding_ = resourceFile_ ? TextEncoding::Utf16 : encoding_;
}

void MdictFile::readKeySection()
{
    const int width = numberWidth_;
    const bool v2 = version_ >= 2.0;
    const int unit = keyEncoding_ == TextEncoding::Utf16 ? 2 : 1;

    ByteReader reader(data_ + offset_, size_ - offset_, where(QStringLiteral("key section")));
    const char* numbers = reader.take(quint64(width) * (v2 ? 5 : 4));
    ByteReader numbersReader(numbers, width * (v2 ? 5 : 4), where(QStringLiteral("key section")));
    const quint64 blockCount = numbersReader.number(width);
    const quint64 entryCount = numbersReader.number(width);
    const quint64 infoUnpackedSize = v2 ? numbersReader.number(width) : 0;
    const quint64 infoSize = numbersReader.number(width);
    const quint64 blocksSize = numbersReader.number(width);
    if (v2) {
        const quint32 checksum = quint32(reader.number(4));
        if (checksum != adler32Of(numbers, width * 5))
            reader.fail(QStringLiteral("key section checksum does not match (the file is damaged)"));
    }

    const char* infoBytes = reader.take(infoSize);
    QByteArray info;
    if (!v2) {
        info = QByteArray::fromRawData(infoBytes, qsizetype(infoSize));
    } else if (keyInfoEnciphered_) {
        // A wrong key or a damaged block shows as data that does not unpack
        // or a checksum that does not match.
        const QByteArray plain = decipherKeyInfo(infoBytes, qsizetype(infoSize));
        info = unpackBlock(plain.constData(), plain.size(), infoUnpackedSize,
                           where(QStringLiteral("key-info block (enciphered, Encrypted=\"2\")")));
    } else {
        info = unpackBlock(infoBytes, qsizetype(infoSize), infoUnpackedSize, where(QStringLiteral("key-info block")));
    }
    const char* blocks = reader.take(blocksSize);
    offset_ += reader.offset();

    ByteReader infoReader(info.constData(), info.size(), where(QStringLiteral("key-info block")));
    ByteReader blockReader(blocks, qsizetype(blocksSize), where(QStringLiteral("key blocks")));
    for (quint64 block = 0; block < blockCount; ++block) {
        infoReader.number(width);  // entries in the block; the block itself says
        for (int edge = 0; edge < 2; ++edge) {  // first and last key, kept only to look keys up
            const quint64 characters = infoReader.number(v2 ? 2 : 1);
            infoReader.take((characters + (v2 ? 1 : 0)) * quint64(unit));
        }
        const quint64 packedSize = infoReader.number(width);
        const quint64 unpackedSize = infoReader.number(width);
        const char* packed = blockReader.take(packedSize);
        readKeyBlock(unpackBlock(packed, qsizetype(packedSize), unpackedSize, where(QStringLiteral("key block %1").arg(block))), block);
    }
    if (keys_.size() != entryCount)
        fail(where(QStringLiteral("key blocks hold %1 keys, the key section says %2").arg(keys_.size()).arg(entryCount)));
}

void MdictFile::readKeyBlock(const QByteArray& block, quint64 blockIndex)
{
    const int unit = keyEncoding_ == TextEncoding::Utf16 ? 2 : 1;
    ByteReader reader(block.constData(), block.size(), where(QStringLiteral("key block %1").arg(blockIndex)));
    while (!reader.atEnd()) {
        const quint64 recordOffset = reader.number(numberWidth_);
        const char* text = block.constData() + reader.offset();
        const qsizetype length = terminatedLength(text, reader.remaining(), unit);
        if (length < 0)
            reader.fail(QStringLiteral("a key is not terminated"));
        reader.take(quint64(length + unit));
        QString key = keyEncoding_ == TextEncoding::Utf16
            ? QString::fromUtf16(reinterpret_cast<const char16_t*>(text), length / 2)
            : (keyEncoding_ == TextEncoding::Utf8 ? QString::fromUtf8(text, length) : decodeText(text, length));
        keys_.push_back({recordOffset, std::move(key)});
    }
}

void MdictFile::forEachRecord(const Visitor& visit) const
{
    const int width = numberWidth_;
    ByteReader reader(data_ + offset_, size_ - offset_, where(QStringLiteral("record section")));
    const quint64 blockCount = reader.number(width);
    const quint64 entryCount = reader.number(width);
    const quint64 infoSize = reader.number(width);
    const quint64 blocksSize = reader.number(width);
    if (entryCount != keys_.size())
        reader.fail(QStringLiteral("%1 records for %2 keys").arg(entryCount).arg(keys_.size()));
    if (blockCount > infoSize || infoSize != blockCount * 2 * quint64(width))
        reader.fail(QStringLiteral("record-info size %1 does not fit %2 blocks").arg(infoSize).arg(blockCount));
    ByteReader info(reader.take(infoSize), qsizetype(infoSize), where(QStringLiteral("record-info")));
    ByteReader blocks(reader.take(blocksSize), qsizetype(blocksSize), where(QStringLiteral("record blocks")));

    struct BlockSize {
        quint64 packed;
        quint64 unpacked;
    };
    std::vector<BlockSize> sizes;
    sizes.reserve(blockCount);
    quint64 totalUnpacked = 0;
    for (quint64 i = 0; i < blockCount; ++i) {
        const BlockSize size{info.number(width), info.number(width)};
        if (size.unpacked > ~quint64(0) - totalUnpacked)
            info.fail(QStringLiteral("record block sizes overflow"));
        totalUnpacked += size.unpacked;
        sizes.push_back(size);
    }

    // Records sit back to back across the blocks: an entry's record runs from
    // its offset to the next entry's. Only the blocks the current entry needs
    // are kept unpacked.
    QByteArray window;
    quint64 windowStart = 0;
    quint64 windowEnd = 0;
    size_t nextBlock = 0;
    for (size_t k = 0; k < keys_.size(); ++k) {
        const quint64 start = keys_[k].recordOffset;
        const quint64 end = k + 1 < keys_.size() ? keys_[k + 1].recordOffset : totalUnpacked;
        const QString entryPlace = QStringLiteral("entry %1 \"%2\"").arg(k + 1).arg(keys_[k].text);
        if (end < start || start < windowStart)
            fail(where(entryPlace + QStringLiteral(": record offsets out of order")));
        while (end > windowEnd) {
            if (nextBlock == sizes.size())
                fail(where(entryPlace + QStringLiteral(": record offset %1 past the last record block").arg(end)));
            const BlockSize size = sizes[nextBlock];
            const QString blockPlace = QStringLiteral("record block %1 (at %2)").arg(nextBlock).arg(entryPlace);
            QByteArray unpacked = unpackBlock(blocks.take(size.packed), qsizetype(size.packed), size.unpacked, where(blockPlace));
            ++nextBlock;
            if (start >= windowEnd) {
                window = std::move(unpacked);
                windowStart = windowEnd;
            } else {
                window.append(unpacked);
            }
            windowEnd += size.unpacked;
        }
        visit(qint64(k), keys_[k].text, window.constData() + (start - windowStart), qsizetype(end - start));
    }
}

}  // namespace lexicorn::dictimport::mdict
