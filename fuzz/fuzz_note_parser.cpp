// Arbitrary dictionary notes to the note reader: it gives a card or the card
// error, never crashes, never hangs. The HTML helpers the card goes through
// must leave no markup but bold tags in what they make of any text.
//
// Input: parts separated by a zero byte: the title, the excerpt, then one
// comment per part. Bytes 1 to 11 stand for the eleven field markers, so the
// fuzzer reaches deep into the grammar without having to find the emoji; all
// other bytes are read as UTF-8. A comment whose first byte is 14 is an
// "HtmlNote" (the rest its HTML), one whose first byte is 15 has no text.

#include "lexicorn/render/html_text.h"
#include "lexicorn/render/note_format.h"

#include <cstdint>
#include <cstdlib>

namespace {

using lexicorn::DictData;

QString decoded(const uint8_t* data, size_t size)
{
    static const QString* const markers[] = {&DictData::SEPA_End,    &DictData::SEPA_Index, &DictData::SEPA_Pos,
                                             &DictData::SEPA_star,   &DictData::SEPA_Readings, &DictData::SEPA_SP_En,
                                             &DictData::SEPA_SP_Cn,  &DictData::SEPA_Gram,  &DictData::SEPA_Def,
                                             &DictData::SEPA_Def_Cn, &DictData::SEPA_Ext};
    QString text;
    size_t start = 0;
    for (size_t at = 0; at <= size; ++at) {
        const bool marker = at < size && data[at] >= 1 && data[at] <= 11;
        if (at < size && !marker)
            continue;
        text += QString::fromUtf8(reinterpret_cast<const char*>(data + start), qsizetype(at - start));
        if (marker)
            text += *markers[data[at] - 1];
        start = at + 1;
    }
    return text;
}

// Nothing but <b> and </b> may stand as markup in HTML made from a text.
void checkOnlyBoldTags(QString html)
{
    html.remove(QStringLiteral("<b>"));
    html.remove(QStringLiteral("</b>"));
    if (html.contains(u'<') || html.contains(u'>') || html.contains(u'"') || html.contains(u'\''))
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::vector<std::pair<const uint8_t*, size_t>> parts;
    size_t start = 0;
    for (size_t at = 0; at <= size; ++at) {
        if (at == size || data[at] == 0) {
            parts.emplace_back(data + start, at - start);
            start = at + 1;
        }
    }

    lexicorn::NoteRecord record;
    record.notetitle = decoded(parts[0].first, parts[0].second);
    if (parts.size() > 1)
        record.highlight_text = decoded(parts[1].first, parts[1].second);
    for (size_t index = 2; index < parts.size(); ++index) {
        const auto [bytes, length] = parts[index];
        QJsonObject comment;
        if (length > 0 && bytes[0] == 14) {
            comment.insert(QStringLiteral("type"), QStringLiteral("HtmlNote"));
            comment.insert(QStringLiteral("html"), decoded(bytes + 1, length - 1));
        } else if (!(length > 0 && bytes[0] == 15)) {
            comment.insert(QStringLiteral("type"), QStringLiteral("TextNote"));
            comment.insert(QStringLiteral("text"), decoded(bytes, length));
        }
        record.notes.append(comment);
    }

    const lexicorn::CardResult<lexicorn::ParsedCard> card = lexicorn::parseDictNote(lexicorn::JsonDictNote(record));
    if (card) {
        // A card always has a word, a sense, and the examples of its lines.
        if (card->word.isEmpty() || card->headword.isEmpty() || !card->sense)
            std::abort();
    } else if (card.error().code != 10000 || card.error().domain != lexicorn::ERROR_DOMIN || card.error().message().isEmpty()) {
        std::abort();
    }

    checkOnlyBoldTags(lexicorn::htmlBoldWord(record.notetitle, record.highlight_text));
    checkOnlyBoldTags(lexicorn::htmlEscapeEliminateB(record.highlight_text));
    checkOnlyBoldTags(lexicorn::markTohtmlBold(lexicorn::htmlEscape(lexicorn::markBold(record.notetitle, record.highlight_text))));
    return 0;
}
