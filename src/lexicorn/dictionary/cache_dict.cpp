#include "lexicorn/dictionary/cache_dict.h"

#include "lexicorn/dictionary/json_writer.h"
#include "lexicorn/dictionary/record_decoder.h"
#include "lexicorn/dictionary/top_level_scanner.h"

namespace lexicorn {

namespace {

// Turns the spelling of a JSON key (escapes included) into its text.
std::optional<std::string> unescapeKey(std::string_view raw)
{
    const simdjson::padded_string quoted('"' + std::string(raw) + '"');
    simdjson::ondemand::parser parser;
    simdjson::ondemand::document document;
    std::string_view text;
    if (parser.iterate(quoted).get(document) || document.get_string().get(text))
        return std::nullopt;
    return std::string(text);
}

simdjson::ondemand::parser& threadParser()
{
    thread_local simdjson::ondemand::parser parser;
    return parser;
}

}  // namespace

std::shared_ptr<const CacheDict> CacheDict::fromJson(simdjson::padded_string json, jsonread::Failure& failure)
{
    std::shared_ptr<CacheDict> dict(new CacheDict);
    dict->json_ = std::move(json);
    const char* base = dict->json_.data();
    const size_t end = dict->json_.size() + simdjson::SIMDJSON_PADDING;
    simdjson::ondemand::parser parser;
    bool ok = true;
    const QString structureError = scanTopLevelObject(dict->json(), [&](const TopLevelEntry& entry) {
        std::string_view key = entry.rawKey;
        if (entry.keyHasEscapes) {
            std::optional<std::string> text = unescapeKey(key);
            if (!text) {
                failure.what = QStringLiteral("the key at byte %1 is not a valid string").arg(entry.valueOffset);
                return ok = false;
            }
            key = dict->unescapedKeys_.emplace_back(std::move(*text));
        }
        if (!checkEnWordDataList(parser, base + entry.valueOffset, entry.valueLength, end - entry.valueOffset, failure)) {
            failure.prefix(QStringLiteral("record \"%1\"").arg(QString::fromUtf8(key.data(), qsizetype(key.size()))));
            return ok = false;
        }
        // A headword written twice keeps its last value.
        dict->index_.insert_or_assign(key, Span{entry.valueOffset, entry.valueLength});
        return true;
    });
    if (!structureError.isEmpty()) {
        failure.where.clear();
        failure.what = structureError;
        return nullptr;
    }
    if (!ok)
        return nullptr;
    return dict;
}

std::shared_ptr<const CacheDict> CacheDict::fromRecords(const CacheRecords& records)
{
    std::string text;
    std::vector<std::pair<size_t, Span>> spans;  // key offset, value span
    spans.reserve(records.size());
    text += '{';
    for (const auto& [headword, list] : records) {
        if (text.size() > 1)
            text += ',';
        const size_t keyOffset = text.size();
        json::appendString(text, headword);
        text += ':';
        const size_t valueOffset = text.size();
        json::appendEnWordDataList(text, list);
        spans.push_back({keyOffset, Span{valueOffset, text.size() - valueOffset}});
    }
    text += '}';

    std::shared_ptr<CacheDict> dict(new CacheDict);
    dict->json_ = simdjson::padded_string(text);
    dict->index_.reserve(records.size());
    for (size_t i = 0; i < records.size(); ++i) {
        const QByteArray headword = records[i].first.toUtf8();
        const size_t keyOffset = spans[i].first;
        std::string_view key(dict->json_.data() + keyOffset + 1, size_t(headword.size()));
        // Keys written with escapes are kept as their own text.
        if (key != std::string_view(headword.constData(), size_t(headword.size())))
            key = dict->unescapedKeys_.emplace_back(headword.constData(), size_t(headword.size()));
        dict->index_.insert_or_assign(key, spans[i].second);
    }
    return dict;
}

std::shared_ptr<const CacheDict> CacheDict::empty()
{
    static const std::shared_ptr<const CacheDict> none(new CacheDict);
    return none;
}

const CacheDict::Span* CacheDict::spanOf(const QString& headword) const
{
    const QByteArray key = headword.toUtf8();
    const auto found = index_.find(std::string_view(key.constData(), size_t(key.size())));
    return found == index_.end() ? nullptr : &found->second;
}

QStringList CacheDict::headwords() const
{
    QStringList words;
    words.reserve(qsizetype(index_.size()));
    for (const auto& entry : index_)
        words.append(QString::fromUtf8(entry.first.data(), qsizetype(entry.first.size())));
    return words;
}

bool CacheDict::contains(const QString& headword) const
{
    return spanOf(headword) != nullptr;
}

std::optional<EnWordDataList> CacheDict::find(const QString& headword) const
{
    const Span* span = spanOf(headword);
    if (!span)
        return std::nullopt;
    jsonread::Failure failure;
    const size_t capacity = json_.size() + simdjson::SIMDJSON_PADDING - span->offset;
    std::optional<EnWordDataList> records =
        decodeEnWordDataList(threadParser(), json_.data() + span->offset, span->length, capacity, failure);
    // Every span was checked when the dictionary was made.
    return records ? std::move(records) : EnWordDataList{};
}

}  // namespace lexicorn
