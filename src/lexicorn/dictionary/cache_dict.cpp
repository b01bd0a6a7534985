#include "lexicorn/dictionary/cache_dict.h"

#include "lexicorn/dictionary/json_writer.h"
#include "lexicorn/dictionary/record_decoder.h"
#include "lexicorn/dictionary/top_level_scanner.h"

#include <algorithm>
#include <thread>

namespace lexicorn {

namespace {

// Turns the spelling of a JSON key (escapes included) into its text.
std::optional<std::string> unescapeKey(std::string_view raw)
{
    const JsonBuffer quoted = JsonBuffer::copyOf('"' + std::string(raw) + '"');
    simdjson::ondemand::parser parser;
    simdjson::ondemand::document document;
    std::string_view text;
    if (parser.iterate(quoted.data(), quoted.size(), quoted.capacity()).get(document) || document.get_string().get(text))
        return std::nullopt;
    return std::string(text);
}

// Text that may stand between quotes as it is: valid UTF-8 without control characters.
bool isPlainJsonText(std::string_view text)
{
    for (char c : text) {
        if (static_cast<unsigned char>(c) < 0x20)
            return false;
    }
    return simdjson::validate_utf8(text.data(), text.size());
}

simdjson::ondemand::parser& threadParser()
{
    thread_local simdjson::ondemand::parser parser;
    return parser;
}

}  // namespace

std::shared_ptr<const CacheDict> CacheDict::fromJson(JsonBuffer json, jsonread::Failure& failure)
{
    std::shared_ptr<CacheDict> dict(new CacheDict);
    dict->json_ = std::move(json);

    std::vector<TopLevelEntry> entries;
    entries.reserve(dict->json_.size() / 512);
    const QString structureError = scanTopLevelObject(dict->json(), entries);
    if (!structureError.isEmpty()) {
        failure = {{}, structureError};
        return nullptr;
    }

    // Keys are checked here, as the scan only delimits them; keys written
    // with escapes are kept as their own text.
    for (TopLevelEntry& entry : entries) {
        std::optional<std::string> text = entry.keyHasEscapes ? unescapeKey(entry.rawKey) : std::nullopt;
        if (entry.keyHasEscapes ? !text : !isPlainJsonText(entry.rawKey)) {
            failure = {{}, QStringLiteral("the key before byte %1 is not a valid string").arg(entry.valueOffset)};
            return nullptr;
        }
        if (text)
            entry.rawKey = dict->unescapedKeys_.emplace_back(std::move(*text));
    }

    if (!dict->checkRecords(entries, failure))
        return nullptr;

    dict->index_.reserve(entries.size());
    for (const TopLevelEntry& entry : entries) {
        // A headword written twice keeps its last value.
        dict->index_.insert_or_assign(entry.rawKey, Span{entry.valueOffset, entry.valueLength});
    }
    return dict;
}

bool CacheDict::checkRecords(const std::vector<TopLevelEntry>& entries, jsonread::Failure& failure) const
{
    // Checks entries [begin, end) with a parser of its own; returns the first bad one, or end.
    auto firstBad = [&](size_t begin, size_t end, jsonread::Failure& found) {
        simdjson::ondemand::parser parser;
        for (size_t i = begin; i < end; ++i) {
            const TopLevelEntry& entry = entries[i];
            if (!checkEnWordDataList(parser, json_.data() + entry.valueOffset, entry.valueLength,
                                     json_.capacity() - entry.valueOffset, found))
                return i;
        }
        return end;
    };

    // A large file is checked in two halves at once; the first fault in file order is reported.
    const size_t count = entries.size();
    size_t middle = count;
    if (json_.size() >= (size_t(8) << 20)) {
        const size_t halfway = json_.size() / 2;
        middle = size_t(std::lower_bound(entries.begin(), entries.end(), halfway,
                                         [](const TopLevelEntry& entry, size_t offset) { return entry.valueOffset < offset; })
                        - entries.begin());
    }
    jsonread::Failure laterFailure;
    size_t laterBad = count;
    std::thread later;
    if (middle < count)
        later = std::thread([&] { laterBad = firstBad(middle, count, laterFailure); });
    jsonread::Failure earlierFailure;
    const size_t earlierBad = firstBad(0, middle, earlierFailure);
    if (later.joinable())
        later.join();

    const size_t bad = earlierBad < middle ? earlierBad : laterBad;
    if (bad == count)
        return true;
    failure = earlierBad < middle ? earlierFailure : laterFailure;
    const std::string_view key = entries[bad].rawKey;
    failure.prefix(QStringLiteral("record \"%1\"").arg(jsonread::textFromUtf8(key)));
    return false;
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
    dict->json_ = JsonBuffer::copyOf(text);
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
        words.append(jsonread::textFromUtf8(entry.first));
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
    const size_t capacity = json_.capacity() - span->offset;
    std::optional<EnWordDataList> records =
        decodeEnWordDataList(threadParser(), json_.data() + span->offset, span->length, capacity, failure);
    // Every span was checked when the dictionary was made.
    return records ? std::move(records) : EnWordDataList{};
}

}  // namespace lexicorn
