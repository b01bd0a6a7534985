#include "lexicorn/render/dict_data_rows.h"

#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/render/ksw_text_attr.h"
#include "lexicorn/services/ksw_translate.h"

#include <algorithm>

namespace lexicorn {

namespace {

// An example line begins on a line of its own inside the sense's line.
const QString exampleStart = QStringLiteral("\n") + DictData::SEPA_Ext;

std::vector<StyledText> headSection(const DictData& data)
{
    const KSWTextAttr& style = KSWTextAttr::shareInstance();
    std::vector<StyledText> head;
    head.reserve(3);
    head.emplace_back(EnWordServer::shared().dictName(), style.enAttr());

    StyledText quote(data.quoteSentence(), style.enAttr());
    const DictData::Range word = data.rangeOfWord();
    if (word.found())
        quote.addAttributes(word.start, word.length, style.cnAttr());
    head.push_back(std::move(quote));

    const QString translation = KSWTranslate::shareInstance().translatorEn_(data.quoteSentence());
    head.push_back(joined(translation, style.enAttr(), {}, {}, {}, true));
    return head;
}

const StyledText& headerLine(const EnWord& entry)
{
    const KSWTextAttr& style = KSWTextAttr::shareInstance();
    joined(entry.title, style.wordAttr(), DictData::SEPA_Readings, {}, QStringLiteral(";"), true);
    joined(entry.readings, style.readingAttr(), DictData::SEPA_star);
    joined(entry.star, style.starAttr(), DictData::SEPA_Pos);
    return joined(entry.pos_en, style.gramAttr());
}

// Room for the whole sense line (fields, brackets, field markers), so it is
// built without growing; each field and each marker may be a run.
void reserveSenseLine(const EnWordDef& sense, std::size_t shownExamples)
{
    static const qsizetype markers = DictData::SEPA_SP_En.size() + DictData::SEPA_SP_Cn.size() + DictData::SEPA_Gram.size()
                                   + DictData::SEPA_Def.size() + DictData::SEPA_Def_Cn.size() + 2;
    static const qsizetype exampleMarkers = exampleStart.size() + DictData::SEPA_Def_Cn.size();
    qsizetype units = sense.subTitle.size() + sense.signpos_en.size() + sense.signpos_cn.size() + sense.gram.size()
                    + sense.def_en.size() + sense.def_cn.size() + markers;
    for (std::size_t index = 0; index < shownExamples; ++index)
        units += sense.exts[index]->en.size() + sense.exts[index]->cn.size() + exampleMarkers;
    lineStep().reserve(units, 11 + 4 * shownExamples);
}

const StyledText& senseLine(const EnWordDef& sense)
{
    const KSWTextAttr& style = KSWTextAttr::shareInstance();
    const std::size_t shown = std::min(sense.exts.size(), shownExamplesPerSense);
    joined(sense.subTitle, style.subTitleAttr(), DictData::SEPA_SP_En, {}, {}, true);
    reserveSenseLine(sense, shown);
    joined(sense.signpos_en, style.posAttr(), DictData::SEPA_SP_Cn);
    joined(sense.signpos_cn, style.posAttr(), DictData::SEPA_Gram);
    joined(sense.gram, style.gramAttr(), DictData::SEPA_Def, QStringLiteral("["), QStringLiteral("]"));
    joined(sense.def_en, style.enAttr(), DictData::SEPA_Def_Cn);
    joined(sense.def_cn, style.def_cnAttr());
    for (std::size_t index = 0; index < shown; ++index) {
        const EnWordExt& example = *sense.exts[index];
        joined(exampleStart, {});
        joined(example.en, style.enAttr(), DictData::SEPA_Def_Cn);
        joined(example.cn, style.cnAttr());
    }
    return lineStep();
}

}  // namespace

StyledText& lineStep()
{
    static StyledText line;
    return line;
}

StyledText& joined(const QString& self, const TextAttributes& attributes, const QString& separator, const QString& prefix,
                   const QString& suffix, bool isStart)
{
    StyledText& line = lineStep();
    if (isStart)
        line = StyledText();
    if (!self.isEmpty()) {
        if (prefix.isEmpty() && suffix.isEmpty())
            line.append(self, attributes);
        else
            line.append(prefix + self + suffix, attributes);
    }
    line.append(separator);
    return line;
}

StyledSections attrStrings(DictData& data)
{
    StyledSections sections;
    sections.reserve(data.enWords().size() + 1);
    sections.push_back(headSection(data));

    const EnWordList& entries = data.enWords();
    if (entries.empty())
        return sections;
    const QString firstTitle = entries.front()->title;
    const QString firstReadings = entries.front()->readings;
    for (const EnWordPtr& entry : entries) {
        if (entry->defs.empty())
            continue;
        if (entry->readings.isEmpty() && entry->title == firstTitle)
            entry->readings = firstReadings;
        std::vector<StyledText> section;
        section.reserve(entry->defs.size() + 1);
        section.push_back(headerLine(*entry));
        for (const EnWordDefPtr& sense : entry->defs)
            section.push_back(senseLine(*sense));
        sections.push_back(std::move(section));
    }
    return sections;
}

StyledSections modify(StyledSections texts, const StyledText& newLine, int tag)
{
    const int section = tag / 1000;
    const int line = tag - section * 1000;
    if (section < 0 || std::size_t(section) >= texts.size())
        return texts;
    std::vector<StyledText>& lines = texts[std::size_t(section)];
    if (line < 0 || std::size_t(line) + 1 >= lines.size())
        return texts;
    lines.insert(lines.begin() + line + 1, newLine);
    return texts;
}

}  // namespace lexicorn
