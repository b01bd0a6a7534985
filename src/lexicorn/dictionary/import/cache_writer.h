#pragma once

// Collects what the format readers hand on and turns each entry into cache
// records at once, so an import holds the JSON text of the new dictionary
// rather than every entry as read.

#include "lexicorn/dictionary/import/inflections.h"
#include "lexicorn/dictionary/import/source_entry.h"
#include "lexicorn/dictionary/import/text_index.h"
#include "lexicorn/dictionary/import/text_store.h"

#include <QDir>
#include <QString>
#include <QStringList>

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lexicorn::dictimport {

// Forms and the headwords they lead to, as UTF-8; the text is kept by the
// writer that made the list and by `generated`.
struct WordFormList {
    std::vector<std::pair<std::string_view, std::string_view>> pairs;
    TextStore generated;
};

class CacheWriter : public ImportSink {
public:
    // Resources are written into stagingDir as they arrive; the caller moves
    // them into the Dict folder once the whole import has succeeded.
    explicit CacheWriter(QString stagingDir);

    // Starts the next file: record indexes count from 0 in each file.
    void beginFile(const QString& path);
    void setProgressHandler(std::function<void(qint64, qint64)> handler) { progressHandler_ = std::move(handler); }

    void entry(SourceEntry entry) override;
    void wordForm(const QString& form, const QString& headword) override;
    void resource(const QString& name, const QByteArray& bytes) override;
    void progress(qint64 done, qint64 total) override;
    void warning(const QString& message) override { warnings_.append(message); }
    const QStringList& warnings() const { return warnings_; }

    // Records a reader has already made (the ECDICT reader writes its JSON
    // straight from the file's bytes). `recordJson` is what entry() would
    // write after the record's index: `,"word":...}`. Views into `text` and
    // into texts kept by keepText() stay valid as long as the writer.
    std::string_view keepText(std::string text) { return text_.keep(std::move(text)); }
    void addRecord(std::string_view headword, std::string_view recordJson, unsigned wordClasses);
    // An entry with nothing the popup could show still takes its index.
    void skipRecord() { ++nextIndex_; }
    // A form and its headword, already simplified, neither empty, not the same.
    void addWordForm(std::string_view form, std::string_view headword) { fileForms_.emplace_back(form, headword); }

    size_t headwordCount() const { return slots_.size(); }
    size_t entryCount() const { return records_.size(); }
    // Staged resource names, relative to the staging folder (and to Dict).
    const std::vector<QString>& resources() const { return resources_; }

    // The cache document: headword -> its records, in the order read. It is
    // handed out in pieces of about a megabyte, so that it is written
    // without a second copy of the whole dictionary in memory.
    void writeCacheJson(const std::function<void(std::string_view)>& write) const;
    std::string cacheJson() const;

    // Forms the files named, in file order, then regular inflections of
    // imported headwords; a form already named keeps its headword. An inflection that is
    // itself an imported headword ("bed" of "be") is left out; a form a file
    // names is kept even then ("better" -> "good"), as the file means it.
    WordFormList wordForms() const;

private:
    QStringList warnings_;
    struct Record {
        int64_t index = 0;
        std::string_view json;  // after the index
        uint32_t next = TextIndex::none;  // the headword's next record
    };
    struct Slot {
        std::string_view key;  // headword, UTF-8
        uint32_t first = 0;    // its records, in the order read
        uint32_t last = 0;
        unsigned wordClasses = 0;  // bit per WordClass seen in its senses
    };

    QString staging_;
    std::function<void(qint64, qint64)> progressHandler_;
    TextStore text_;
    std::vector<Slot> slots_;
    std::vector<Record> records_;
    TextIndex slotIndex_;
    std::vector<std::pair<std::string_view, std::string_view>> fileForms_;
    std::vector<QString> resources_;
    int64_t nextIndex_ = 0;
    QString currentFile_;
};

// The Chinese name of a part of speech ("n." -> "名词"), as the popup shows
// beside the English; empty for a part it does not name.
QString chinesePartOfSpeech(const QString& pos);

// Where a resource name from a dictionary file goes under the Dict folder
// ("\\us\\run.mp3" -> "us/run.mp3"); empty when the name would leave it.
QString safeResourceName(const QString& name);

}  // namespace lexicorn::dictimport
