#pragma once

#include "lexicorn/dictionary/cache_dict.h"
#include "lexicorn/dictionary/records.h"
#include "lexicorn/dictionary/word_forms.h"

#include "foundation/dispatch.h"

#include <QString>
#include <QStringList>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>

namespace lexicorn {

struct HookEnWordData;

// The dictionary engine: loads the selected dictionary from the Dict folder in
// the background, resolves word forms and cross-reference links, and answers
// lookups. One instance serves the process (shared()); tests make their own.
class EnWordServer {
public:
    EnWordServer();
    // Waits for the load jobs still running, as they use this engine.
    ~EnWordServer();
    EnWordServer(const EnWordServer&) = delete;
    EnWordServer& operator=(const EnWordServer&) = delete;

    static EnWordServer& shared();

    // --- state
    bool isCaching() const { return isCaching_.load(); }
    std::optional<QString> path() const;
    SelectDictType dictType() const;
    std::shared_ptr<const CacheDict> cacheDict() const { return cacheDict_.load(); }
    // Loaded on first use and kept until the dictionaries are reloaded.
    std::shared_ptr<const WordForms> wordforms();

    bool cacheDictNull() const { return cacheDict()->isEmpty(); }
    int dictTypeNumber() const { return dictType().rawValue(); }
    QString dictFileName() const { return dictType().fileName(); }
    QString dictName() const { return dictType().name(); }

    // --- loading
    void asyncInitDict();
    void setDictTypeWithNumber(int64_t number);
    // After an import replaced files in the Dict folder: the word forms are
    // read again, and so is the dictionary (the one given, else the selected
    // one). New files are a new start: an engine left loading because a file
    // was missing loads again.
    void reloadFiles(std::optional<int64_t> dictNumber = std::nullopt);
    // 1 -> "collins", 0 -> "LDOCE5"; any other value is a fatal program error.
    QString dictTypeWithIndex(int64_t index) const;
    // Reads and decodes the file at path(); does not store the result.
    std::shared_ptr<const CacheDict> enDict() const;
    // Sets path and returns the current dictionary without reading the file.
    std::shared_ptr<const CacheDict> enDict(const QString& path);
    // Writes the current dictionary as JSON to path (see writeCacheFile).
    void encodeCacheToPath(const QString& path) const;

    // Waits until every load job started so far has ended (loaded, failed, or
    // stuck in the loading state). For the command line and tests.
    void waitForLoadJobs() const;

    // --- lookup
    DictDataPtr query(const QString& word, const QString& quoteSentence);
    // The older entry point: the legacy record built from the same entries.
    std::shared_ptr<HookEnWordData> query(const QString& word);

    // Whether the word (any case) is a headword of the current dictionary
    // or one of the word forms.
    bool knows(const QString& word);

    QStringList findLinkInDict(const QString& word) const;
    QStringList findLinkInDict(const QStringList& words) const;
    QStringList findAllLinkInDict(const QString& word) const;
    EnWordList getAllEnWord(const EnWordDataList& records) const;

private:
    void loadJob();
    void setPath(std::optional<QString> path);

    std::atomic<bool> isCaching_{false};
    std::atomic<int> dictType_{SelectDictType::collins().rawValue()};
    std::atomic<std::shared_ptr<const CacheDict>> cacheDict_{CacheDict::empty()};

    mutable std::mutex mutex_;  // guards path_ and runningLoadJobs_
    std::optional<QString> path_;
    int runningLoadJobs_ = 0;
    mutable std::condition_variable loadJobEnded_;

    std::mutex wordformsMutex_;
    std::shared_ptr<const WordForms> wordforms_;
};

}  // namespace lexicorn
