#include "lexicorn/dictionary/import/stardict_reader.h"

#include "lexicorn/dictionary/import/dictzip.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>

#include <algorithm>
#include <cstring>
#include <optional>
#include <vector>

namespace lexicorn::dictimport {

namespace {

[[noreturn]] void fail(const QString& name, const QString& what)
{
    throw ImportError(QStringLiteral("%1: %2").arg(name, what).toStdString());
}

struct Description {
    qint64 wordCount = -1;
    qint64 synonymCount = 0;
    int offsetBits = 32;
    QByteArray sameTypes;  // empty: every field carries its own type byte
};

Description describe(const QByteArray& ifo, const QString& name)
{
    const QList<QByteArray> lines = ifo.split('\n');
    if (lines.isEmpty() || !lines.front().trimmed().startsWith("StarDict's dict ifo file"))
        fail(name, QStringLiteral("the .ifo file does not start with \"StarDict's dict ifo file\""));
    Description description;
    for (const QByteArray& line : lines) {
        const qsizetype equals = line.indexOf('=');
        if (equals <= 0)
            continue;
        const QByteArray key = line.left(equals).trimmed();
        const QByteArray value = line.mid(equals + 1).trimmed();
        bool ok = true;
        if (key == "wordcount")
            description.wordCount = value.toLongLong(&ok);
        else if (key == "synwordcount")
            description.synonymCount = value.toLongLong(&ok);
        else if (key == "idxoffsetbits")
            description.offsetBits = value.toInt(&ok);
        else if (key == "sametypesequence")
            description.sameTypes = value;
        if (!ok)
            fail(name, QStringLiteral("the .ifo value %1=%2 is not a number").arg(QString::fromUtf8(key), QString::fromUtf8(value)));
    }
    if (description.wordCount < 0)
        fail(name, QStringLiteral("the .ifo file gives no wordcount"));
    if (description.offsetBits != 32 && description.offsetBits != 64)
        fail(name, QStringLiteral("idxoffsetbits is %1; only 32 and 64 exist").arg(description.offsetBits));
    return description;
}

quint64 bigEndian(const char* at, int bytes)
{
    quint64 value = 0;
    for (int i = 0; i < bytes; ++i)
        value = value << 8 | uchar(at[i]);
    return value;
}

struct IndexEntry {
    QString headword;
    quint64 offset = 0;
    quint64 size = 0;
};

std::vector<IndexEntry> readIndex(const QByteArray& idx, const Description& description, const QString& name)
{
    std::vector<IndexEntry> entries;
    entries.reserve(std::size_t(std::min<qint64>(description.wordCount, idx.size() / 9 + 1)));
    const int offsetBytes = description.offsetBits / 8;
    qsizetype at = 0;
    while (at < idx.size()) {
        const qsizetype end = idx.indexOf('\0', at);
        if (end < 0 || end + offsetBytes + 4 > idx.size())
            fail(name, QStringLiteral(".idx is cut short in entry %1 (byte %2)").arg(entries.size() + 1).arg(at));
        IndexEntry entry;
        entry.headword = QString::fromUtf8(idx.constData() + at, end - at);
        entry.offset = bigEndian(idx.constData() + end + 1, offsetBytes);
        entry.size = bigEndian(idx.constData() + end + 1 + offsetBytes, 4);
        entries.push_back(std::move(entry));
        at = end + 1 + offsetBytes + 4;
    }
    if (qint64(entries.size()) != description.wordCount)
        fail(name, QStringLiteral("the .ifo file says wordcount=%1 but the .idx file holds %2 entries")
                       .arg(description.wordCount)
                       .arg(entries.size()));
    return entries;
}

// One field of an entry's data by its type letter.
void takeField(char type, const QByteArray& data, SourceEntry& entry)
{
    const QString text = QString::fromUtf8(data).trimmed();
    if (text.isEmpty())
        return;
    const auto append = [&entry, &text](Markup markup) {
        if (!entry.text.isEmpty() && entry.markup != markup)
            return;  // one markup per entry: the first kind of text wins
        entry.markup = markup;
        entry.text += entry.text.isEmpty() ? text : u'\n' + text;
    };
    switch (type) {
    case 'm':
    case 'l':
        append(Markup::PlainText);
        break;
    case 'h':
        append(Markup::Html);
        break;
    case 'x':
        append(Markup::Xdxf);
        break;
    case 'g':
        append(Markup::Pango);
        break;
    case 't':
        entry.readings = text;
        break;
    default:
        break;  // sounds, pictures, resources and other kinds the popup cannot show
    }
}

// Splits an entry's data into its fields: with a same-type sequence the types
// are given once and the last field runs to the end; otherwise each field
// starts with its type. Lower-case types are text ending in a NUL,
// upper-case ones binary data after a 32-bit size.
bool readFields(const char* data, qsizetype size, const QByteArray& sameTypes, SourceEntry& entry)
{
    qsizetype at = 0;
    qsizetype field = 0;
    while (at < size || (!sameTypes.isEmpty() && field < sameTypes.size())) {
        char type;
        if (!sameTypes.isEmpty()) {
            if (field >= sameTypes.size())
                return true;
            type = sameTypes[field];
        } else {
            type = data[at++];
        }
        const bool last = !sameTypes.isEmpty() && field + 1 == sameTypes.size();
        ++field;
        qsizetype length;
        qsizetype next;
        if (last) {
            length = size - at;
            next = size;
        } else if (type >= 'a' && type <= 'z') {
            const char* end = static_cast<const char*>(std::memchr(data + at, '\0', std::size_t(std::max<qsizetype>(size - at, 0))));
            if (!end)
                return sameTypes.isEmpty() ? (takeField(type, QByteArray(data + at, size - at), entry), true) : false;
            length = end - (data + at);
            next = at + length + 1;
        } else {
            if (at + 4 > size)
                return false;
            length = qsizetype(bigEndian(data + at, 4));
            at += 4;
            if (length > size - at)
                return false;
            next = at + length;
        }
        if (at > size)
            return false;
        takeField(type, QByteArray(data + at, length), entry);
        at = next;
    }
    return true;
}

}  // namespace

void readStarDictBytes(const QByteArray& ifo, const QByteArray& idx, const QByteArray& dict, const QByteArray& syn,
                       const QString& name, ImportSink& sink)
{
    const Description description = describe(ifo, name);
    const std::vector<IndexEntry> index = readIndex(idx, description, name);
    const qint64 total = qint64(index.size()) + description.synonymCount;
    for (std::size_t i = 0; i < index.size(); ++i) {
        const IndexEntry& item = index[i];
        if (item.offset > quint64(dict.size()) || item.size > quint64(dict.size()) - item.offset)
            fail(name, QStringLiteral("entry %1 \"%2\" points past the end of the .dict data (offset %3, size %4, data %5 bytes)")
                           .arg(i + 1)
                           .arg(item.headword)
                           .arg(item.offset)
                           .arg(item.size)
                           .arg(dict.size()));
        SourceEntry entry;
        entry.headword = item.headword;
        if (!readFields(dict.constData() + item.offset, qsizetype(item.size), description.sameTypes, entry))
            fail(name, QStringLiteral("entry %1 \"%2\" has a field that runs past its data").arg(i + 1).arg(item.headword));
        sink.entry(std::move(entry));
        if (i % 4096 == 0)
            sink.progress(qint64(i), total);
    }
    // Synonyms: a word and the number of the index entry it stands for.
    qsizetype at = 0;
    qint64 synonyms = 0;
    while (at < syn.size()) {
        const qsizetype end = syn.indexOf('\0', at);
        if (end < 0 || end + 5 > syn.size())
            fail(name, QStringLiteral(".syn is cut short in synonym %1 (byte %2)").arg(synonyms + 1).arg(at));
        const quint64 target = bigEndian(syn.constData() + end + 1, 4);
        if (target >= index.size())
            fail(name, QStringLiteral("synonym %1 points to entry %2 of %3").arg(synonyms + 1).arg(target + 1).arg(index.size()));
        SourceEntry link;
        link.headword = QString::fromUtf8(syn.constData() + at, end - at);
        link.linkTo = index[std::size_t(target)].headword;
        sink.entry(std::move(link));
        ++synonyms;
        at = end + 5;
    }
    if (!syn.isEmpty() && description.synonymCount != synonyms)
        fail(name, QStringLiteral("the .ifo file says synwordcount=%1 but the .syn file holds %2").arg(description.synonymCount).arg(synonyms));
    sink.progress(total, total);
}

void readStarDict(const QString& ifoPath, ImportSink& sink)
{
    const QString base = ifoPath.left(ifoPath.size() - 4);  // without ".ifo"
    const auto read = [&ifoPath](const QString& path) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            fail(ifoPath, QStringLiteral("cannot read %1: %2").arg(path, file.errorString()));
        return file.readAll();
    };
    // A file as it is, or compressed beside it under `suffix` (".dict.dz",
    // and ".idx.gz" as many dictionaries are shipped); nothing when neither is there.
    const auto readPlainOr = [&](const QString& path, const QString& suffix) -> std::optional<QByteArray> {
        if (QFileInfo::exists(path))
            return read(path);
        if (QFileInfo::exists(path + suffix))
            return inflateDictzip(read(path + suffix), path + suffix);
        return std::nullopt;
    };
    const QByteArray ifo = read(ifoPath);
    const std::optional<QByteArray> idx = readPlainOr(base + QStringLiteral(".idx"), QStringLiteral(".gz"));
    if (!idx)
        fail(ifoPath, QStringLiteral("neither %1.idx nor %1.idx.gz is there").arg(base));
    const std::optional<QByteArray> dict = readPlainOr(base + QStringLiteral(".dict"), QStringLiteral(".dz"));
    if (!dict)
        fail(ifoPath, QStringLiteral("neither %1.dict nor %1.dict.dz is there").arg(base));
    const QByteArray syn = readPlainOr(base + QStringLiteral(".syn"), QStringLiteral(".gz")).value_or(QByteArray());
    readStarDictBytes(ifo, *idx, *dict, syn, ifoPath, sink);
}

}  // namespace lexicorn::dictimport
