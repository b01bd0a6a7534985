#include "lexicorn/dictionary/record_decoder.h"

#include "lexicorn/dictionary/json_buffer.h"

namespace lexicorn {

using namespace jsonread;

namespace {

// Reads an array of records of type Item into a list of shared objects.
template <typename Item, bool (*ReadItem)(value&, Item*, Failure&)>
bool readShared(value& v, std::vector<std::shared_ptr<Item>>* target, Failure& failure)
{
    return readArray(v, failure, [&](value& element, size_t) {
        if (!target)
            return ReadItem(element, nullptr, failure);
        auto item = std::make_shared<Item>();
        if (!ReadItem(element, item.get(), failure))
            return false;
        target->push_back(std::move(item));
        return true;
    });
}

bool readExt(value& v, EnWordExt* target, Failure& failure)
{
    static const FieldRule<EnWordExt> rules[] = {
        {"cn", text<&EnWordExt::cn>},
        {"en", text<&EnWordExt::en>},
        {"speaker", text<&EnWordExt::speaker>},
    };
    return readObject(v, target, rules, failure);
}

bool readDef(value& v, EnWordDef* target, Failure& failure)
{
    static const FieldRule<EnWordDef> rules[] = {
        {"def_cn", text<&EnWordDef::def_cn>},
        {"def_en", text<&EnWordDef::def_en>},
        {"exts", [](value& v, EnWordDef* t, Failure& f) { return readShared<EnWordExt, readExt>(v, t ? &t->exts : nullptr, f); }},
        {"subTitle", text<&EnWordDef::subTitle>},
        {"signpos_cn", text<&EnWordDef::signpos_cn>},
        {"signpos_en", text<&EnWordDef::signpos_en>},
        {"gram", text<&EnWordDef::gram>},
    };
    return readObject(v, target, rules, failure);
}

bool readEnWord(value& v, EnWord* target, Failure& failure)
{
    static const FieldRule<EnWord> rules[] = {
        {"title", text<&EnWord::title>},
        {"star", text<&EnWord::star>},
        {"readings", text<&EnWord::readings>},
        {"brePron", text<&EnWord::brePron>},
        {"amePron", text<&EnWord::amePron>},
        {"defs", [](value& v, EnWord* t, Failure& f) {
             if (t)
                 t->defs.clear();  // replaces the shared default sense
             return readShared<EnWordDef, readDef>(v, t ? &t->defs : nullptr, f);
         }},
        {"pos_cn", text<&EnWord::pos_cn>},
        {"pos_en", text<&EnWord::pos_en>},
    };
    return readObject(v, target, rules, failure);
}

bool readLink(value& v, EnWordData* target, Failure& failure)
{
    // A null link reads as absent, like a missing key.
    bool isNull = false;
    if (v.is_null().get(isNull))
        return fail(failure, QStringLiteral("is malformed"));
    if (isNull) {
        if (target)
            target->link.reset();
        return true;
    }
    QString link;
    if (!readText(v, target ? &link : nullptr, failure))
        return false;
    if (target)
        target->link = std::move(link);
    return true;
}

bool readEnWordData(value& v, EnWordData* target, Failure& failure)
{
    static const FieldRule<EnWordData> rules[] = {
        {"index", [](value& v, EnWordData* t, Failure& f) { return readInt64(v, t ? &t->index : nullptr, f); }},
        {"word", text<&EnWordData::word>},
        {"link", readLink, true},
        {"enWords", [](value& v, EnWordData* t, Failure& f) { return readShared<EnWord, readEnWord>(v, t ? &t->enWords : nullptr, f); }},
    };
    return readObject(v, target, rules, failure);
}

struct DictDataFields {
    QString word;
    QString quoteSentence;
    EnWordList enWords;
};

bool readDictDataFields(value& v, DictDataFields* target, Failure& failure)
{
    static const FieldRule<DictDataFields> rules[] = {
        {"word", text<&DictDataFields::word>},
        {"quoteSentence", text<&DictDataFields::quoteSentence>},
        {"enWords", [](value& v, DictDataFields* t, Failure& f) { return readShared<EnWord, readEnWord>(v, &t->enWords, f); }},
    };
    return readObject(v, target, rules, failure);
}

}  // namespace

bool readEnWordDataList(value& v, EnWordDataList* target, Failure& failure)
{
    return readShared<EnWordData, readEnWordData>(v, target, failure);
}

std::optional<EnWordDataList> decodeEnWordDataList(simdjson::ondemand::parser& parser, const char* data,
                                                   size_t length, size_t capacity, Failure& failure)
{
    EnWordDataList list;
    if (!readDocument(parser, data, length, capacity, failure, [&](value& root) { return readEnWordDataList(root, &list, failure); }))
        return std::nullopt;
    return list;
}

bool checkEnWordDataList(simdjson::ondemand::parser& parser, const char* data, size_t length, size_t capacity,
                         Failure& failure)
{
    return readDocument(parser, data, length, capacity, failure, [&](value& root) { return readEnWordDataList(root, nullptr, failure); });
}

DictDataPtr decodeDictData(std::string_view json, Failure& failure)
{
    const JsonBuffer padded = JsonBuffer::copyOf(json);
    simdjson::ondemand::parser parser;
    DictDataFields fields;
    if (!readDocument(parser, padded.data(), padded.size(), padded.capacity(), failure,
                      [&](value& root) { return readDictDataFields(root, &fields, failure); }))
        return nullptr;
    return DictData::make(std::move(fields.word), std::move(fields.quoteSentence), std::move(fields.enWords));
}

}  // namespace lexicorn
