#include "lexicorn/render/note_format.h"

#include "lexicorn/anki/ksw_ankiconnect.h"
#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/render/anki_fields.h"
#include "lexicorn/render/card_lookup.h"
#include "lexicorn/render/html_text.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace lexicorn {

QString cardmessage::titleError(const QString& piece)
{
    return QStringLiteral("标题结构错误: ") + piece + QStringLiteral("。\n标题结构为：\n原词; 字典中的词；") + DictData::SEPA_Readings
        + QStringLiteral("音标") + DictData::SEPA_star + QStringLiteral("星级") + DictData::SEPA_Pos + QStringLiteral("词性")
        + DictData::SEPA_Index + QStringLiteral("索引(不要改！)") + DictData::SEPA_End + QStringLiteral("添加的其他标题");
}

QString cardmessage::definitionLineError(const QString& line)
{
    return QStringLiteral("定义行结构错误: ") + line + QStringLiteral("。\n行结构为：\n子标题") + DictData::SEPA_SP_En
        + QStringLiteral("signpos_en") + DictData::SEPA_SP_Cn + QStringLiteral("signpos_cn") + DictData::SEPA_Gram
        + QStringLiteral("grm") + DictData::SEPA_Def + QStringLiteral("英文定义") + DictData::SEPA_Def_Cn + QStringLiteral("中文定义");
}

namespace {

bool isBlank(QChar c)
{
    return c == u'\t' || c.category() == QChar::Separator_Space;
}

// Spaces and tabs off both ends; line breaks stay.
QString trimmedBlanks(QStringView text)
{
    qsizetype start = 0;
    qsizetype end = text.size();
    while (start < end && isBlank(text[start]))
        ++start;
    while (end > start && isBlank(text[end - 1]))
        --end;
    return text.mid(start, end - start).toString();
}

// The text before and after the one occurrence of separator; nothing when it
// occurs no time or more than once.
std::optional<std::pair<QStringView, QStringView>> splitInTwo(QStringView text, const QString& separator)
{
    const qsizetype at = text.indexOf(separator);
    if (at < 0 || text.indexOf(separator, at + separator.size()) >= 0)
        return std::nullopt;
    return std::pair{text.left(at), text.mid(at + separator.size())};
}

// A decimal number of digits only, small enough for an int.
std::optional<int> decimal(QStringView text)
{
    if (text.isEmpty() || text.size() > 9)
        return std::nullopt;
    int value = 0;
    for (const QChar c : text) {
        if (c < u'0' || c > u'9')
            return std::nullopt;
        value = value * 10 + (c.unicode() - u'0');
    }
    return value;
}

// Drops the last character (a whole surrogate pair when it is one).
QStringView withoutLastCharacter(QStringView text)
{
    if (text.isEmpty())
        return text;
    qsizetype cut = 1;
    if (text.size() >= 2 && text.back().isLowSurrogate() && text[text.size() - 2].isHighSurrogate())
        cut = 2;
    return text.chopped(cut);
}

QString withoutBoldTags(QString text)
{
    text.remove(QStringLiteral("<b>"));
    text.remove(QStringLiteral("</b>"));
    return text;
}

CardError titleError(QStringView piece)
{
    return CardError::make(ErrorCode::structure, cardmessage::titleError(piece.toString()));
}

CardError definitionLineError(const QString& line)
{
    return CardError::make(ErrorCode::structure, cardmessage::definitionLineError(line));
}

// Title steps: fills word, headword, readings, star, pos, section, item.
std::optional<CardError> parseTitle(const QString& title, ParsedCard& card)
{
    const auto ended = splitInTwo(title, DictData::SEPA_End);
    if (!ended)
        return titleError(title);
    const auto indexed = splitInTwo(ended->first, DictData::SEPA_Index);
    if (!indexed)
        return titleError(ended->first);

    const QString index = trimmedBlanks(indexed->second);
    const QList<QStringView> numbers = QStringView(index).split(u'-');
    const std::optional<int> section = decimal(numbers.front());
    const std::optional<int> item = numbers.size() >= 2 ? decimal(numbers[1]) : std::nullopt;
    if (!section || !item)
        return titleError(index);
    card.section = *section;
    card.item = *item;

    const auto posSplit = splitInTwo(indexed->first, DictData::SEPA_Pos);
    if (!posSplit)
        return titleError(indexed->first);
    card.pos = trimmedBlanks(posSplit->second);
    const auto starSplit = splitInTwo(posSplit->first, DictData::SEPA_star);
    if (!starSplit)
        return titleError(posSplit->first);
    card.star = trimmedBlanks(starSplit->second);
    const auto readingsSplit = splitInTwo(starSplit->first, DictData::SEPA_Readings);
    if (!readingsSplit)
        return titleError(starSplit->first);
    card.readings = trimmedBlanks(readingsSplit->second);

    const QStringView head = readingsSplit->first;
    QStringList words;
    for (const QStringView piece : withoutLastCharacter(head).split(u';')) {
        QString word = trimmedBlanks(piece);
        if (!word.isEmpty())
            words.push_back(std::move(word));
    }
    if (words.isEmpty() || words.size() > 2)
        return titleError(head);
    card.word = words.front();
    card.headword = words.back();
    return std::nullopt;
}

// The definition line, right to left.
std::optional<CardError> parseDefinitionLine(const QString& line, EnWordDef& sense)
{
    const auto cn = splitInTwo(line, DictData::SEPA_Def_Cn);
    if (!cn)
        return definitionLineError(line);
    const auto en = splitInTwo(cn->first, DictData::SEPA_Def);
    if (!en)
        return definitionLineError(line);
    const auto gram = splitInTwo(en->first, DictData::SEPA_Gram);
    if (!gram)
        return definitionLineError(line);
    const auto signCn = splitInTwo(gram->first, DictData::SEPA_SP_Cn);
    if (!signCn)
        return definitionLineError(line);
    const auto signEn = splitInTwo(signCn->first, DictData::SEPA_SP_En);
    if (!signEn)
        return definitionLineError(line);

    sense.def_cn = trimmedBlanks(cn->second);
    sense.def_en = trimmedBlanks(en->second);
    QString grammar = trimmedBlanks(gram->second);
    if (grammar.size() >= 2 && grammar.front() == u'[' && grammar.back() == u']')
        grammar = grammar.mid(1, grammar.size() - 2);
    sense.gram = grammar;
    sense.signpos_cn = trimmedBlanks(signCn->second);
    sense.signpos_en = trimmedBlanks(signEn->second);
    sense.subTitle = trimmedBlanks(signEn->first);
    return std::nullopt;
}

std::optional<CardError> parseExampleLine(QStringView line, EnWordExtList& examples)
{
    const auto cn = splitInTwo(line, DictData::SEPA_Def_Cn);
    const auto en = cn ? splitInTwo(cn->first, DictData::SEPA_Ext) : std::nullopt;
    if (!en)
        return CardError::make(ErrorCode::structure, cardmessage::exampleError + line.toString());
    auto example = std::make_shared<EnWordExt>();
    example->en = trimmedBlanks(en->second);
    example->cn = trimmedBlanks(cn->second);
    examples.push_back(std::move(example));
    return std::nullopt;
}

// The entry the popup shows in a section: it leaves out entries without senses.
EnWordPtr entryInPopupSection(const EnWordList& entries, int section)
{
    int shown = 0;
    for (const EnWordPtr& entry : entries) {
        if (entry->defs.empty())
            continue;
        if (++shown == section)
            return entry;
    }
    return nullptr;
}

std::optional<CardSense> senseAt(const DictData& lookup, const ParsedCard& card)
{
    const EnWordPtr entry = entryInPopupSection(lookup.enWords(), card.section);
    if (!entry || card.item < 0 || std::size_t(card.item) >= entry->defs.size())
        return std::nullopt;
    const EnWordDefPtr& sense = entry->defs[std::size_t(card.item)];
    if (trimmedBlanks(sense->def_en) != card.sense->def_en || trimmedBlanks(sense->def_cn) != card.sense->def_cn)
        return std::nullopt;
    return CardSense{entry, sense};
}

}  // namespace

CardResult<ParsedCard> parseDictNote(const DictNote& note)
{
    ParsedCard card;
    if (std::optional<CardError> error = parseTitle(note.notetitle(), card))
        return *error;

    const QString excerpt = note.highlight_text();
    if (!excerpt.isEmpty())
        card.quoteSentence = markTohtmlBold(markBold(trimmedBlanks(excerpt), card.word));

    const QJsonArray comments = note.notes();
    const QJsonValue translation = comments.isEmpty() ? QJsonValue() : comments[0].toObject().value(comment::text);
    if (!translation.isString())
        return definitionLineError(QString());
    card.sentenceCN = translation.toString();
    if (comments.size() < 2)
        return definitionLineError(QString());
    const QJsonValue block = comments[1].toObject().value(comment::text);
    if (!block.isString())
        return definitionLineError(QString());

    const QString text = block.toString();
    const QList<QStringView> lines = QStringView(text).split(u'\n');
    card.sense = std::make_shared<EnWordDef>();
    const QString definitionLine = lines.front().toString();
    if (std::optional<CardError> error = parseDefinitionLine(definitionLine, *card.sense))
        return *error;
    for (qsizetype index = 1; index < lines.size(); ++index) {
        if (std::optional<CardError> error = parseExampleLine(lines[index], card.sense->exts))
            return *error;
    }

    if (comments.size() >= 3) {
        QString html;
        for (qsizetype index = 2; index < comments.size(); ++index) {
            const QJsonObject extra = comments[index].toObject();
            if (extra.value(comment::type).toString() == comment::htmlNote)
                html += extra.value(comment::html).toString();
            else
                html += QStringLiteral("<div>") + htmlEscapeEliminateB(extra.value(comment::text).toString()) + QStringLiteral("</div>");
        }
        card.appendHtml = html;
    }
    return card;
}

std::optional<CardSense> lookUpCardSense(const ParsedCard& card, EnWordServer& server)
{
    if (const std::optional<CardSense> found = senseAt(*server.query(card.headword, QString()), card))
        return found;
    if (card.word != card.headword)
        return senseAt(*server.query(card.word, QString()), card);
    return std::nullopt;
}

CardResult<AnkiCardDraft> draftFromNote(const DictNote& note, const QString& bookTitle, std::optional<QJsonValue> ankiID)
{
    CardResult<ParsedCard> parsed = parseDictNote(note);
    if (!parsed)
        return parsed.error();
    ParsedCard& card = parsed.value();

    const std::optional<CardSense> dictionarySense = lookUpCardSense(card, EnWordServer::shared());
    if (!dictionarySense)
        KSWAnkiconnect::showeAlertWithMessage_(cardmessage::indexErrorHead + card.word + cardmessage::indexErrorTail);

    if (dictionarySense) {
        for (const EnWordExtPtr& example : card.sense->exts) {
            for (const EnWordExtPtr& own : dictionarySense->sense->exts) {
                if (trimmedBlanks(withoutBoldTags(own->en)) == withoutBoldTags(example->en)) {
                    example->speaker = own->speaker;
                    break;
                }
            }
        }
    }
    auto entry = std::make_shared<EnWord>(card.headword, EnWordDefList{card.sense});
    entry->readings = card.readings;
    entry->star = card.star;
    entry->pos_en = card.pos;
    if (dictionarySense)
        entry->amePron = dictionarySense->entry->amePron;
    const DictData data(card.word, card.quoteSentence, EnWordList{entry});
    return draftForAnki(data, card.word, bookTitle, SenseIndex{0, 0}, card.sentenceCN, std::move(ankiID), card.appendHtml,
                        note.noteid());
}

CardResult<QJsonObject> makeWith(const DictNote& note, const QString& bookTitle)
{
    const AnkiNoteLookup found = findAnkiNote(note.noteid(), noteLinkField());
    if (!found)
        return found.error();
    const CardResult<AnkiCardDraft> draft = draftFromNote(note, bookTitle, found.value());
    if (!draft)
        return draft.error();
    CardResult<QJsonObject> ankiNote = draft->noteWith(storeMediaFiles(draft->soundFiles()));
    if (!ankiNote)
        return ankiNote.error();
    return QJsonObject{{QStringLiteral("note"), ankiNote.value()}};
}

}  // namespace lexicorn
