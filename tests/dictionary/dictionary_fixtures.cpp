#include "dictionary_fixtures.h"

#include "lexicorn/dictionary/json_writer.h"

namespace lexicorn::testing {

EnWordPtr makeEntry(const QString& title, const QString& pos, std::initializer_list<const char*> definitions)
{
    auto entry = std::make_shared<EnWord>(title, EnWordDefList{});
    entry->pos_en = pos;
    for (const char* definition : definitions) {
        auto sense = std::make_shared<EnWordDef>();
        sense->def_en = QString::fromUtf8(definition);
        sense->def_cn = QStringLiteral("释义");
        sense->exts.push_back(std::make_shared<EnWordExt>(EnWordExt{QStringLiteral("例句"), QStringLiteral("An example."), {}}));
        entry->defs.push_back(std::move(sense));
    }
    return entry;
}

EnWordDataPtr makeRecord(const QString& word, std::initializer_list<EnWordPtr> entries, std::optional<QString> link)
{
    auto record = std::make_shared<EnWordData>();
    record->word = word;
    record->link = std::move(link);
    record->enWords = entries;
    return record;
}

QByteArray cacheJson(const std::vector<std::pair<QString, EnWordDataList>>& records)
{
    std::string out = "{";
    for (const auto& [headword, list] : records) {
        if (out.size() > 1)
            out += ',';
        json::appendString(out, headword);
        out += ':';
        json::appendEnWordDataList(out, list);
    }
    out += '}';
    return QByteArray::fromStdString(out);
}

}  // namespace lexicorn::testing
