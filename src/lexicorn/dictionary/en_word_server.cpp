#include "lexicorn/dictionary/en_word_server.h"

#include "lexicorn/dictionary/dictionary_files.h"
#include "lexicorn/dictionary/legacy_records.h"
#include "lexicorn/dictionary/text_helpers.h"

#include "foundation/fatal.h"
#include "foundation/paths.h"

#include <QFileInfo>

#include <unordered_map>

namespace lexicorn {

namespace {

const QString loadQueueLabel = QStringLiteral("com.ksw.hookNM");

void appendMissing(QStringList& list, const QString& item)
{
    if (!list.contains(item))
        list.append(item);
}

// The spellings tried for a lookup after the word as given, in order, each once.
QStringList lookupCandidates(const QString& word, const WordForms& forms)
{
    QStringList candidates;
    appendMissing(candidates, word.toLower());
    const QStringList parts = word.split(u' ', Qt::SkipEmptyParts);
    if (parts.size() >= 2) {
        QStringList headwords;
        for (const QString& part : parts)
            headwords.append(forms.headwordFor(part).value_or(part));
        appendMissing(candidates, headwords.join(u' '));
    }
    appendMissing(candidates, word.toUpper());
    appendMissing(candidates, deletingHyphen(word));
    appendMissing(candidates, deletingSpaceAndBr(word));
    return candidates;
}

// Decodes each headword's records once while links are followed, since the
// same headwords are visited several times over.
class RecordCache {
public:
    explicit RecordCache(std::shared_ptr<const CacheDict> dict) : dict_(std::move(dict)) {}

    const EnWordDataList& recordsOf(const QString& headword)
    {
        auto [slot, inserted] = decoded_.try_emplace(headword);
        if (inserted)
            slot->second = dict_->find(headword).value_or(EnWordDataList{});
        return slot->second;
    }

    QStringList linksOf(const QString& headword)
    {
        QStringList links;
        for (const EnWordDataPtr& record : recordsOf(headword)) {
            if (record->link)
                appendMissing(links, *record->link);
        }
        return links;
    }

    QStringList linksOf(const QStringList& headwords)
    {
        QStringList links;
        QStringList processed;
        for (const QString& headword : headwords) {
            if (processed.contains(headword))
                continue;
            processed.append(headword);
            for (const QString& link : linksOf(headword))
                appendMissing(links, link);
        }
        return links;
    }

    // The headword, then everything reachable through links in discovery order.
    QStringList reachableFrom(const QString& headword)
    {
        QStringList reachable{headword};
        for (;;) {
            bool grew = false;
            for (const QString& link : linksOf(reachable)) {
                if (!reachable.contains(link)) {
                    reachable.append(link);
                    grew = true;
                }
            }
            if (!grew)
                return reachable;
        }
    }

    EnWordList entriesOf(const EnWordDataList& records)
    {
        EnWordList entries;
        for (const EnWordDataPtr& record : records) {
            if (!record->link) {
                entries.insert(entries.end(), record->enWords.begin(), record->enWords.end());
                continue;
            }
            // A cross-reference: the entries of everything it reaches, not its own.
            for (const QString& headword : reachableFrom(*record->link)) {
                for (const EnWordDataPtr& linked : recordsOf(headword))
                    entries.insert(entries.end(), linked->enWords.begin(), linked->enWords.end());
            }
        }
        return entries;
    }

private:
    std::shared_ptr<const CacheDict> dict_;
    std::unordered_map<QString, EnWordDataList> decoded_;
};

}  // namespace

EnWordServer::EnWordServer() = default;

EnWordServer::~EnWordServer()
{
    waitForLoadJobs();
}

EnWordServer& EnWordServer::shared()
{
    // Lives for the whole process; never destroyed, so a load job still
    // running at exit never sees a dead engine.
    static EnWordServer* server = new EnWordServer;
    return *server;
}

std::optional<QString> EnWordServer::path() const
{
    std::lock_guard lock(mutex_);
    return path_;
}

void EnWordServer::setPath(std::optional<QString> path)
{
    std::lock_guard lock(mutex_);
    path_ = std::move(path);
}

SelectDictType EnWordServer::dictType() const
{
    return *SelectDictType::fromRawValue(dictType_.load());
}

std::shared_ptr<const WordForms> EnWordServer::wordforms()
{
    std::lock_guard lock(wordformsMutex_);
    if (!wordforms_)
        wordforms_ = std::make_shared<const WordForms>(WordForms::load(dictDirectory() + QStringLiteral("/wordforms.json")));
    return wordforms_;
}

void EnWordServer::reloadFiles(std::optional<int64_t> dictNumber)
{
    {
        std::lock_guard lock(wordformsMutex_);
        wordforms_.reset();
    }
    waitForLoadJobs();
    // No job runs now; one that found no file left the engine loading.
    isCaching_.store(false);
    if (const std::optional<SelectDictType> type = dictNumber ? SelectDictType::fromRawValue(*dictNumber) : std::nullopt)
        dictType_.store(type->rawValue());
    cacheDict_.store(CacheDict::empty());
    asyncInitDict();
}

void EnWordServer::asyncInitDict()
{
    if (isCaching_.load())
        return;
    // A new queue for each load, as each load is one job of its own.
    std::shared_ptr<SerialQueue> queue = SerialQueue::create(loadQueueLabel);
    {
        std::lock_guard lock(mutex_);
        ++runningLoadJobs_;
    }
    queue->async([this] {
        loadJob();
        std::lock_guard lock(mutex_);
        --runningLoadJobs_;
        loadJobEnded_.notify_all();
    });
}

void EnWordServer::loadJob()
{
    isCaching_.store(true);
    const QString dictFolder = dictDirectory() + u'/';
    const QString cachePath = dictFolder + dictFileName();
    setPath(cachePath);

    if (QFileInfo::exists(cachePath) || dictType() != SelectDictType::collins()) {
        cacheDict_.store(enDict());
        isCaching_.store(false);
        return;
    }

    setPath(dictFolder + QStringLiteral("collins.json"));
    if (!QFileInfo::exists(*path())) {
        // No raw file and no cache: the engine stays "loading" for the rest
        // of the process, so the settings keep saying the cache is being built.
        cacheDict_.store(CacheDict::empty());
        return;
    }
    cacheDict_.store(enDict());
    setPath(cachePath);
    encodeCacheToPath(cachePath);
    isCaching_.store(false);
}

void EnWordServer::waitForLoadJobs() const
{
    std::unique_lock lock(mutex_);
    loadJobEnded_.wait(lock, [this] { return runningLoadJobs_ == 0; });
}

void EnWordServer::setDictTypeWithNumber(int64_t number)
{
    const std::optional<SelectDictType> type = SelectDictType::fromRawValue(number);
    if (!type)
        return;
    if (*type == dictType() && !cacheDictNull())
        return;
    cacheDict_.store(CacheDict::empty());
    dictType_.store(type->rawValue());
    asyncInitDict();
}

QString EnWordServer::dictTypeWithIndex(int64_t index) const
{
    const std::optional<SelectDictType> type = SelectDictType::fromRawValue(index);
    if (!type)
        fatalError(QStringLiteral("dictionary index %1 is neither 0 (LDOCE5) nor 1 (collins)").arg(index));
    return type->name();
}

std::shared_ptr<const CacheDict> EnWordServer::enDict() const
{
    const std::optional<QString> file = path();
    if (!file)
        fatalError(QStringLiteral("a dictionary was read before its path was set"));
    return readDictionaryFile(*file);
}

std::shared_ptr<const CacheDict> EnWordServer::enDict(const QString& path)
{
    setPath(path);
    return cacheDict();
}

void EnWordServer::encodeCacheToPath(const QString& path) const
{
    writeCacheFile(*cacheDict(), path);
}

DictDataPtr EnWordServer::query(const QString& word, const QString& quoteSentence)
{
    const std::shared_ptr<const CacheDict> dict = cacheDict();
    if (dict->isEmpty())
        return DictData::make(word, quoteSentence, {});

    QString w = word;
    w.remove(QStringLiteral("- "));  // a word broken at a line end

    // The word as given first; other spellings only when it is not filed.
    std::optional<EnWordDataList> records = dict->find(w);
    if (!records || records->empty()) {
        const std::shared_ptr<const WordForms> formsHeld = wordforms();
        const WordForms& forms = *formsHeld;
        const QStringList candidates = lookupCandidates(w, forms);
        for (qsizetype i = 0; !records && i < candidates.size(); ++i)
            records = dict->find(candidates[i]);
        if (!records || records->empty()) {
            records.reset();
            for (qsizetype i = 0; !records && i < candidates.size(); ++i) {
                if (const std::optional<QString> headword = forms.headwordFor(candidates[i]))
                    records = dict->find(*headword);
            }
        }
    }
    return DictData::make(word, quoteSentence, records ? RecordCache(dict).entriesOf(*records) : EnWordList{});
}

bool EnWordServer::knows(const QString& word)
{
    const QString lower = word.toLower();
    const std::shared_ptr<const CacheDict> dict = cacheDict();
    return dict->contains(word) || dict->contains(lower) || wordforms()->headwordFor(lower).has_value();
}

std::shared_ptr<HookEnWordData> EnWordServer::query(const QString& word)
{
    return legacyRecordFor(word, query(word, QString()));
}

QStringList EnWordServer::findLinkInDict(const QString& word) const
{
    return RecordCache(cacheDict()).linksOf(word);
}

QStringList EnWordServer::findLinkInDict(const QStringList& words) const
{
    return RecordCache(cacheDict()).linksOf(words);
}

QStringList EnWordServer::findAllLinkInDict(const QString& word) const
{
    return RecordCache(cacheDict()).reachableFrom(word);
}

EnWordList EnWordServer::getAllEnWord(const EnWordDataList& records) const
{
    return RecordCache(cacheDict()).entriesOf(records);
}

}  // namespace lexicorn
