#include "lexicorn/dictionary/cache_dict.h"

#include "lexicorn/dictionary/json_writer.h"
#include "lexicorn/dictionary/record_decoder.h"
#include "lexicorn/dictionary/top_level_scanner.h"

#include <algorithm>
#include <deque>
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

void CacheDict::holdText(JsonBuffer json)
{
    auto owned = std::make_shared<const JsonBuffer>(std::move(json));
    text_ = owned->view();
    readable_ = owned->capacity();
    textOwner_ = std::move(owned);
}

std::shared_ptr<const CacheDict> CacheDict::fromJson(JsonBuffer json, jsonread::Failure& failure, const FileStamp& stamp)
{
    std::shared_ptr<CacheDict> dict(new CacheDict);
    dict->holdText(std::move(json));

    std::vector<TopLevelEntry> entries;
    entries.reserve(dict->text_.size() / 512);
    const QString structureError = scanTopLevelObject(dict->text_, entries);
    if (!structureError.isEmpty()) {
        failure = {{}, structureError};
        return nullptr;
    }

    // Keys are checked here, as the scan only delimits them; keys written
    // with escapes are indexed by their own text.
    std::deque<std::string> unescapedKeys;
    for (TopLevelEntry& entry : entries) {
        std::optional<std::string> text = entry.keyHasEscapes ? unescapeKey(entry.rawKey) : std::nullopt;
        if (entry.keyHasEscapes ? !text : !isPlainJsonText(entry.rawKey)) {
            failure = {{}, QStringLiteral("the key before byte %1 is not a valid string").arg(entry.valueOffset)};
            return nullptr;
        }
        if (text)
            entry.rawKey = unescapedKeys.emplace_back(std::move(*text));
    }

    if (!dict->checkRecords(entries, failure))
        return nullptr;

    std::vector<HeadwordIndex::Headword> headwords;
    headwords.reserve(entries.size());
    for (const TopLevelEntry& entry : entries)
        headwords.push_back({entry.rawKey, {entry.valueOffset, uint32_t(entry.valueLength)}});
    dict->index_ = HeadwordIndex::build(headwords, {dict->text_.size(), stamp.modifiedNs, fingerprintOf(dict->text_)});
    return dict;
}

std::shared_ptr<const CacheDict> CacheDict::fromIndexedFile(std::shared_ptr<const MappedFile> file, HeadwordIndex index)
{
    std::shared_ptr<CacheDict> dict(new CacheDict);
    dict->text_ = file->bytes();
    dict->readable_ = dict->text_.size();
    dict->textOwner_ = std::move(file);
    dict->index_ = std::move(index);
    return dict;
}

bool CacheDict::checkRecords(const std::vector<TopLevelEntry>& entries, jsonread::Failure& failure) const
{
    // Checks entries [begin, end) with a parser of its own; returns the first bad one, or end.
    auto firstBad = [&](size_t begin, size_t end, jsonread::Failure& found) {
        simdjson::ondemand::parser parser;
        for (size_t i = begin; i < end; ++i) {
            const TopLevelEntry& entry = entries[i];
            if (!checkEnWordDataList(parser, text_.data() + entry.valueOffset, entry.valueLength,
                                     readable_ - entry.valueOffset, found))
                return i;
        }
        return end;
    };

    // A large file is checked in two halves at once; the first fault in file order is reported.
    const size_t count = entries.size();
    size_t middle = count;
    if (text_.size() >= (size_t(8) << 20)) {
        const size_t halfway = text_.size() / 2;
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
    std::vector<HeadwordIndex::Span> spans;
    spans.reserve(records.size());
    text += '{';
    for (const auto& [headword, list] : records) {
        if (text.size() > 1)
            text += ',';
        json::appendString(text, headword);
        text += ':';
        const size_t valueOffset = text.size();
        json::appendEnWordDataList(text, list);
        spans.push_back({valueOffset, uint32_t(text.size() - valueOffset)});
    }
    text += '}';

    std::shared_ptr<CacheDict> dict(new CacheDict);
    dict->holdText(JsonBuffer::copyOf(text));
    std::vector<QByteArray> keys;  // UTF-8 of each headword, alive while the index is made
    keys.reserve(records.size());
    std::vector<HeadwordIndex::Headword> headwords;
    headwords.reserve(records.size());
    for (size_t i = 0; i < records.size(); ++i) {
        const QByteArray& key = keys.emplace_back(records[i].first.toUtf8());
        headwords.push_back({std::string_view(key.constData(), size_t(key.size())), spans[i]});
    }
    dict->index_ = HeadwordIndex::build(headwords, {dict->text_.size(), 0, 0});
    return dict;
}

std::shared_ptr<const CacheDict> CacheDict::empty()
{
    static const std::shared_ptr<const CacheDict> none(new CacheDict);
    return none;
}

std::optional<HeadwordIndex::Span> CacheDict::spanOf(const QString& headword) const
{
    const QByteArray key = headword.toUtf8();
    return index_.find(std::string_view(key.constData(), size_t(key.size())));
}

QStringList CacheDict::headwords() const
{
    QStringList words;
    words.reserve(qsizetype(index_.size()));
    for (const std::string_view key : index_.keys())
        words.append(jsonread::textFromUtf8(key));
    return words;
}

bool CacheDict::contains(const QString& headword) const
{
    return spanOf(headword).has_value();
}

std::optional<EnWordDataList> CacheDict::find(const QString& headword) const
{
    const std::optional<HeadwordIndex::Span> span = spanOf(headword);
    if (!span)
        return std::nullopt;
    const char* data = text_.data() + span->offset;
    size_t readable = readable_ - span->offset;
    // The parser reads a little past a record; a record at the very end of a
    // mapped file has no such room, so it is read from a padded copy.
    thread_local JsonBuffer padded;
    if (readable < span->length + simdjson::SIMDJSON_PADDING) {
        padded = JsonBuffer::copyOf(text_.substr(span->offset, span->length));
        data = padded.data();
        readable = padded.capacity();
    }
    jsonread::Failure failure;
    std::optional<EnWordDataList> records = decodeEnWordDataList(threadParser(), data, span->length, readable, failure);
    // Every span was checked when its index was made.
    return records ? std::move(records) : EnWordDataList{};
}

}  // namespace lexicorn
