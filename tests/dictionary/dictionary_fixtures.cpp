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

EnWordDataList oneSense(const QString& word, const char* definition)
{
    return {makeRecord(word, {makeEntry(word, QStringLiteral("verb"), {definition})})};
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

QStringList described(const HookEnWordData& record)
{
    QStringList out{QStringList{record.word, record.quoteSentence, record.star, record.readings.join(u',')}.join(u'|')};
    for (const auto& def : record.defs) {
        QStringList examples;
        for (const auto& ext : def->exts)
            examples.append(ext->en);
        out.append(QStringList{def->pos_en, def->def_en, def->def_cn, examples.join(u';')}.join(u'|'));
    }
    return out;
}

QStringList definitionsFound(EnWordServer& server, const QString& word)
{
    QStringList found;
    const DictDataPtr lookup = server.query(word, QString());
    for (const EnWordPtr& entry : lookup->enWords())
        found.append(entry->defs.front()->def_en);
    return found;
}

}  // namespace lexicorn::testing
