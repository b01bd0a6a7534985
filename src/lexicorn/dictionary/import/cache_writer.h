#pragma once

// Collects what the format readers hand on and turns each entry into cache
// records at once, so an import holds the JSON text of the new dictionary
// rather than every entry as read.

#include "lexicorn/dictionary/import/inflections.h"
#include "lexicorn/dictionary/import/source_entry.h"

#include <QDir>
#include <QString>
#include <QStringList>

#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace lexicorn::dictimport {

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

    size_t headwordCount() const { return slots_.size(); }
    size_t entryCount() const { return entries_; }
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
    std::vector<std::pair<QString, QString>> wordForms() const;

private:
    QStringList warnings_;
    struct Slot {
        std::string key;      // headword, UTF-8
        std::string records;  // its records' JSON, comma-separated
        unsigned wordClasses = 0;  // bit per WordClass seen in its senses
    };
    Slot& slotFor(const QString& headword);

    QString staging_;
    std::function<void(qint64, qint64)> progressHandler_;
    std::vector<Slot> slots_;
    std::unordered_map<std::string, size_t> slotIndex_;
    std::vector<std::pair<QString, QString>> fileForms_;
    std::vector<QString> resources_;
    int64_t nextIndex_ = 0;
    size_t entries_ = 0;
    QString currentFile_;
};

// Where a resource name from a dictionary file goes under the Dict folder
// ("\\us\\run.mp3" -> "us/run.mp3"); empty when the name would leave it.
QString safeResourceName(const QString& name);

}  // namespace lexicorn::dictimport
