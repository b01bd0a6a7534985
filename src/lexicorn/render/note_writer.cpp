#include "lexicorn/render/note_writer.h"

#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/render/anki_fields.h"
#include "lexicorn/render/dict_data_rows.h"

#include <QJsonObject>

namespace lexicorn {

namespace {

// The entry the popup shows in a section: it leaves out entries without senses.
const EnWord* entryInSection(const EnWordList& entries, int section)
{
    int shown = 0;
    for (const EnWordPtr& entry : entries) {
        if (entry->defs.empty())
            continue;
        if (++shown == section)
            return entry.get();
    }
    return nullptr;
}

}  // namespace

std::optional<NoteRecord> makeDictNote(DictData& data, int section, int row, const QString& translation)
{
    if (section < 1 || row < 0)
        return std::nullopt;
    const StyledSections texts = attrStrings(data);
    if (std::size_t(section) >= texts.size() || std::size_t(row) + 1 >= texts[std::size_t(section)].size())
        return std::nullopt;
    const EnWord* entry = entryInSection(data.enWords(), section);
    if (!entry)
        return std::nullopt;
    const std::vector<StyledText>& lines = texts[std::size_t(section)];

    QString head = lines.front().string();
    if (data.word() != entry->title)
        head = formatWithObjects(QStringLiteral("%@; %@"), {data.word(), head});
    // The index suffix: section "-" row, and "-" dictionary number when that
    // number is 1 or more (the popup's formats "%@%@%ld-%ld%@" and
    // "%@%@%ld-%ld-%ld%@").
    QString index = QString::number(section) + u'-' + QString::number(row);
    if (const int dictionary = EnWordServer::shared().dictTypeNumber(); dictionary >= 1)
        index += u'-' + QString::number(dictionary);
    NoteRecord note;
    note.notetitle = head + DictData::SEPA_Index + index + DictData::SEPA_End;
    note.highlight_text = data.quoteSentence();
    note.notes = QJsonArray{
        QJsonObject{{comment::text, translation}, {comment::type, comment::textNote}, {comment::group, comment::sentenceCN}},
        QJsonObject{{comment::text, lines[std::size_t(row) + 1].string()}, {comment::type, comment::textNote}, {comment::group, comment::exts}},
    };
    return note;
}

}  // namespace lexicorn
