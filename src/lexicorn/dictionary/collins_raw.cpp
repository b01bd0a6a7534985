#include "lexicorn/dictionary/collins_raw.h"

#include "foundation/log.h"

#include <unordered_map>

#include <map>

namespace lexicorn {

using namespace jsonread;

namespace {

bool readCollinsExt(value& v, CollinsExt* target, Failure& failure)
{
    static const FieldRule<CollinsExt> rules[] = {
        {"ext_cn", text<&CollinsExt::ext_cn>},
        {"ext_en", text<&CollinsExt::ext_en>},
    };
    return readObject(v, target, rules, failure);
}

// Reads an array of plain values, appending each to target.
template <typename Item, bool (*ReadItem)(value&, Item*, Failure&)>
bool readValues(value& v, std::vector<Item>* target, Failure& failure)
{
    return readArray(v, failure, [&](value& element, size_t) {
        Item item;
        if (!ReadItem(element, &item, failure))
            return false;
        target->push_back(std::move(item));
        return true;
    });
}

bool readCollinsDef(value& v, CollinsDef* target, Failure& failure)
{
    static const FieldRule<CollinsDef> rules[] = {
        {"def_cn", text<&CollinsDef::def_cn>},
        {"def_en", text<&CollinsDef::def_en>},
        {"pos_cn", text<&CollinsDef::pos_cn>},
        {"pos_en", text<&CollinsDef::pos_en>},
        {"ext", [](value& v, CollinsDef* t, Failure& f) { return readValues<CollinsExt, readCollinsExt>(v, &t->ext, f); }},
    };
    return readObject(v, target, rules, failure);
}

bool readReadings(value& v, CollinsWord* target, Failure& failure)
{
    return readArray(v, failure, [&](value& element, size_t) {
        QString reading;
        if (!readText(element, &reading, failure))
            return false;
        target->readings.append(std::move(reading));
        return true;
    });
}

bool readCollinsWord(value& v, CollinsWord* target, Failure& failure)
{
    static const FieldRule<CollinsWord> rules[] = {
        {"star", text<&CollinsWord::star>},
        {"readings", readReadings},
        {"defs", [](value& v, CollinsWord* t, Failure& f) { return readValues<CollinsDef, readCollinsDef>(v, &t->defs, f); }},
    };
    return readObject(v, target, rules, failure);
}

EnWordPtr entryForGroup(const QString& headword, const CollinsWord& word, const QString& pos,
                        const std::vector<const CollinsDef*>& senses)
{
    auto entry = std::make_shared<EnWord>(headword, EnWordDefList{});
    entry->star = word.star;
    entry->readings = u'/' + word.readings.join(QStringLiteral(" $ ")) + u'/';
    entry->pos_en = pos;
    entry->pos_cn = senses.front()->pos_cn;
    entry->defs.reserve(senses.size());
    for (const CollinsDef* sense : senses) {
        auto def = std::make_shared<EnWordDef>();
        def->def_en = sense->def_en;
        def->def_cn = sense->def_cn;
        def->exts.reserve(sense->ext.size());
        for (const CollinsExt& example : sense->ext)
            def->exts.push_back(std::make_shared<EnWordExt>(EnWordExt{example.ext_cn, example.ext_en, {}}));
        entry->defs.push_back(std::move(def));
    }
    return entry;
}

}  // namespace

std::optional<CollinsWords> collinsWords(const JsonBuffer& bytes, Failure& failure)
{
    simdjson::ondemand::parser parser;
    CollinsWords words;
    const bool ok = readDocument(parser, bytes.data(), bytes.size(), bytes.capacity(), failure,
                                 [&](value& root) {
        simdjson::ondemand::object object;
        if (root.get_object().get(object))
            return fail(failure, QStringLiteral("the top level is not an object"));
        for (auto entry : object) {
            simdjson::ondemand::field field;
            std::string_view key;
            if (std::move(entry).get(field) || field.unescaped_key().get(key))
                return fail(failure, QStringLiteral("malformed headword"));
            const QString headword = textFromUtf8(key);
            CollinsWord word;
            if (!readCollinsWord(field.value(), &word, failure)) {
                failure.prefix(QStringLiteral("headword \"%1\"").arg(headword));
                return false;
            }
            words.emplace_back(headword, std::move(word));
        }
        return true;
    });
    if (!ok)
        return std::nullopt;
    return words;
}

CacheRecords toEnWordData(const CollinsWords& words, const Progress& progress)
{
    CacheRecords records;
    records.reserve(words.size());
    std::unordered_map<QString, size_t> position;  // headword -> index in records
    position.reserve(words.size());
    size_t done = 0;
    for (const auto& [headword, word] : words) {
        if (headword == QStringLiteral("word"))
            logLine(headword);  // left in as a trace of one known headword; harmless

        auto record = std::make_shared<EnWordData>();
        record->word = headword;

        // Senses grouped by part of speech; std::map sorts the keys in plain string order.
        std::map<QString, std::vector<const CollinsDef*>> groups;
        for (const CollinsDef& sense : word.defs) {
            if (!sense.pos_en.isEmpty())
                groups[sense.pos_en].push_back(&sense);
        }
        for (const auto& [pos, senses] : groups)
            record->enWords.push_back(entryForGroup(headword, word, pos, senses));

        EnWordDataList list{std::move(record)};
        const auto [it, inserted] = position.try_emplace(headword, records.size());
        if (inserted)
            records.emplace_back(headword, std::move(list));
        else
            records[it->second].second = std::move(list);

        if (progress && (++done % 4096 == 0 || done == words.size()))
            progress(done, words.size());
    }
    return records;
}

}  // namespace lexicorn
