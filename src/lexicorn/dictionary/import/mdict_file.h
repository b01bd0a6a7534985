#pragma once

// One MDict file (.mdx or .mdd) read from a buffer: its header tag, its key
// section (key-info block and key blocks) and its record blocks, walked in
// file order. Knows nothing about what the records mean.

#include "lexicorn/dictionary/import/source_entry.h"

#include <QByteArray>
#include <QMap>
#include <QString>

#include <functional>
#include <vector>

namespace lexicorn::dictimport::mdict {

enum class TextEncoding { Utf8, Utf16, Other };

class MdictFile {
public:
    // Reads the header and all keys; throws ImportError naming `fileName`
    // and the section for a damaged or truncated file, or one encrypted for
    // its buyer; a file whose key index alone is enciphered is read. A resource
    // file (.mdd) keeps its keys in UTF-16 whatever its header says.
    MdictFile(const char* data, qsizetype size, QString fileName, bool resourceFile);

    QString attribute(const QString& name) const { return attributes_.value(name); }
    double version() const { return version_; }
    qint64 entryCount() const { return qint64(keys_.size()); }

    // Text in the file's encoding, without the NUL terminators records end with.
    QString decodeText(const char* data, qsizetype size) const;

    // Calls `visit` for every key in file order with its record's bytes.
    // Throws ImportError naming the record block or the entry at fault.
    using Visitor = std::function<void(qint64 index, const QString& key, const char* record, qsizetype size)>;
    void forEachRecord(const Visitor& visit) const;

private:
    struct Key {
        quint64 recordOffset;
        QString text;
    };

    void readHeader();
    void readKeySection();
    void readKeyBlock(const QByteArray& block, quint64 blockIndex);
    QString where(const QString& section) const;

    const char* data_;
    qsizetype size_;
    QString fileName_;
    bool resourceFile_;
    QMap<QString, QString> attributes_;
    double version_ = 0;
    int numberWidth_ = 8;  // 8 bytes from version 2.0 on, 4 before
    TextEncoding encoding_ = TextEncoding::Utf8;
    QByteArray encodingName_;
    TextEncoding keyEncoding_ = TextEncoding::Utf8;
    bool keyInfoEnciphered_ = false;  // Encrypted="2"
    qsizetype offset_ = 0;  // where the next section starts
    std::vector<Key> keys_;
};

}  // namespace lexicorn::dictimport::mdict
