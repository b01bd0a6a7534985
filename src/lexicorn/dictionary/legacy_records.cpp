#include "lexicorn/dictionary/legacy_records.h"

#include "lexicorn/dictionary/hook_english_dict.h"

namespace lexicorn {

std::shared_ptr<HookEnWordExt> HookEnWordExt::initWithCn_en_(QString cn, QString en)
{
    return std::make_shared<HookEnWordExt>(HookEnWordExt{std::move(cn), std::move(en)});
}

std::shared_ptr<HookEnWordDef> HookEnWordDef::initWithExts_def_cn_def_en_pos_cn_pos_en_(
    std::vector<std::shared_ptr<HookEnWordExt>> exts, QString def_cn, QString def_en, QString pos_cn, QString pos_en)
{
    return std::make_shared<HookEnWordDef>(
        HookEnWordDef{std::move(exts), std::move(def_cn), std::move(def_en), std::move(pos_cn), std::move(pos_en)});
}

std::shared_ptr<HookEnWordDef> HookEnWordDef::defaultNull()
{
    return initWithExts_def_cn_def_en_pos_cn_pos_en_({}, QString(""), QString(""), QString(""), QString(""));
}

std::shared_ptr<HookEnWordData> HookEnWordData::initWithWord_defs_readings_star_(
    QString word, std::vector<std::shared_ptr<HookEnWordDef>> defs, QStringList readings, QString star)
{
    auto data = std::make_shared<HookEnWordData>();
    data->formatedWord = HookEnglishDict::shareInstance().formatWord_(word);
    data->word = std::move(word);
    data->defs = std::move(defs);
    data->readings = std::move(readings);
    data->star = std::move(star);
    return data;
}

std::shared_ptr<HookEnWordData> HookEnWordData::initWithWord_(QString word)
{
    return initWithWord_defs_readings_star_(std::move(word), {HookEnWordDef::defaultNull()}, {}, QString(""));
}

std::shared_ptr<HookEnWordData> legacyRecordFor(const QString& word, const DictDataPtr& lookup)
{
    std::vector<std::shared_ptr<HookEnWordDef>> defs;
    QStringList readings;
    for (const EnWordPtr& entry : lookup->enWords()) {
        if (!entry->readings.isEmpty() && !readings.contains(entry->readings))
            readings.append(entry->readings);
        for (const EnWordDefPtr& sense : entry->defs) {
            std::vector<std::shared_ptr<HookEnWordExt>> exts;
            for (const EnWordExtPtr& example : sense->exts)
                exts.push_back(HookEnWordExt::initWithCn_en_(example->cn, example->en));
            defs.push_back(HookEnWordDef::initWithExts_def_cn_def_en_pos_cn_pos_en_(
                std::move(exts), sense->def_cn, sense->def_en, entry->pos_cn, entry->pos_en));
        }
    }
    if (defs.empty())
        return HookEnWordData::initWithWord_(word);
    return HookEnWordData::initWithWord_defs_readings_star_(word, std::move(defs), readings, lookup->enWords().front()->star);
}

}  // namespace lexicorn
