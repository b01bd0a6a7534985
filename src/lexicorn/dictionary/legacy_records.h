#pragma once

// The records of the older dictionary front end (HookEnglishDict).

#include "lexicorn/dictionary/records.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace lexicorn {

struct HookEnWordExt {
    QString cn;
    QString en;

    static std::shared_ptr<HookEnWordExt> initWithCn_en_(QString cn, QString en);
};

struct HookEnWordDef {
    std::vector<std::shared_ptr<HookEnWordExt>> exts;
    QString def_cn;
    QString def_en;
    QString pos_cn;
    QString pos_en;

    static std::shared_ptr<HookEnWordDef> initWithExts_def_cn_def_en_pos_cn_pos_en_(
        std::vector<std::shared_ptr<HookEnWordExt>> exts, QString def_cn, QString def_en, QString pos_cn, QString pos_en);
    // A sense with no examples and all four texts empty.
    static std::shared_ptr<HookEnWordDef> defaultNull();
};

struct HookEnWordData {
    QString word;
    QString formatedWord;  // the misspelt name is part of the interface
    QString quoteSentence;
    QString star;
    QStringList readings;
    std::vector<std::shared_ptr<HookEnWordDef>> defs;

    // Sets the four fields and formatedWord to HookEnglishDict's formatWord: of the word.
    static std::shared_ptr<HookEnWordData> initWithWord_defs_readings_star_(
        QString word, std::vector<std::shared_ptr<HookEnWordDef>> defs, QStringList readings, QString star);
    // The word with one empty sense, no readings and an empty star.
    static std::shared_ptr<HookEnWordData> initWithWord_(QString word);
};

// The legacy record for a lookup made by the dictionary engine: every sense of
// every entry in order, each carrying its entry's part of speech; the readings
// of the entries (each distinct text once, empty ones left out) and the first
// entry's star. A lookup without senses gives initWithWord_ of the word.
std::shared_ptr<HookEnWordData> legacyRecordFor(const QString& word, const DictDataPtr& lookup);

}  // namespace lexicorn
