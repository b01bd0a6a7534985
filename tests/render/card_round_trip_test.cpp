// Every sense of both sample dictionaries, written into a note as the popup
// writes it and read back: the card must come back as the dictionary has it.

#include "card_fixtures.h"

#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/render/dict_data_rows.h"
#include "lexicorn/render/note_format.h"
#include "lexicorn/render/note_writer.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

// Blanks (tabs and space characters) around a field do not survive the note:
// the reader trims them. The sample data has none; a dictionary may.
QString trimmed(QString text)
{
    static const QRegularExpression ends(QStringLiteral("^[\\t\\p{Zs}]+|[\\t\\p{Zs}]+\\z"));
    return text.remove(ends);
}

class CardRoundTrip : public testing::CardHome, public ::testing::WithParamInterface<int> {};

TEST_P(CardRoundTrip, EverySenseComesBackAsTheDictionaryHasIt)
{
    const int dictionary = GetParam();
    testing::loadSampleDictionary(dictionary);
    EnWordServer& server = EnWordServer::shared();

    // Every headword, and every word form (looked up, it differs from the
    // headword, so the title carries both).
    QStringList words = QJsonDocument::fromJson(testing::sampleFile(dictionary == 0 ? "LDOCE5_html.json" : "collins.json")).object().keys();
    words += QJsonDocument::fromJson(testing::sampleFile("wordforms.json")).object().keys();

    int senses = 0;
    int twoWordTitles = 0;
    for (const QString& word : words) {
        const QString sentence = QStringLiteral("«%1»").arg(word);
        DictDataPtr lookup = server.query(word, sentence);
        // The popup's rows may fill in an entry's readings; the note is
        // written from the rows, so compare with the entries as shown.
        const StyledSections rows = attrStrings(*lookup);
        int section = 0;
        for (const EnWordPtr& entry : lookup->enWords()) {
            if (entry->defs.empty())
                continue;
            ++section;
            for (std::size_t row = 0; row < entry->defs.size(); ++row) {
                const EnWordDef& sense = *entry->defs[row];
                const std::string where = QStringLiteral("%1 (%2) %3-%4").arg(word, entry->title).arg(section).arg(row).toStdString();
                const std::optional<NoteRecord> note = makeDictNote(*lookup, section, int(row), QStringLiteral("译文"));
                ASSERT_TRUE(note) << where;
                // The two comments' groups and types mark the note as a dictionary card.
                for (const auto& [at, group] : {std::pair{0, "sentenceCN"}, std::pair{1, "exts"}}) {
                    EXPECT_EQ(note->notes[at].toObject().value("group").toString(), QString::fromLatin1(group)) << where;
                    EXPECT_EQ(note->notes[at].toObject().value("type").toString(), QStringLiteral("TextNote")) << where;
                }
                const CardResult<ParsedCard> card = parseDictNote(JsonDictNote(*note));
                ASSERT_TRUE(card) << where << "\n" << card.error().message().toStdString();
                ++senses;
                twoWordTitles += card->word != card->headword;

                const EnWordDef& read = *card->sense;
                EXPECT_EQ((QStringList{card->word, card->headword, QString::number(card->section), QString::number(card->item),
                                       card->readings, card->star, card->pos, card->sentenceCN, card->quoteSentence, read.subTitle,
                                       read.signpos_en, read.signpos_cn, read.gram, read.def_en, read.def_cn}),
                          (QStringList{word, entry->title, QString::number(section), QString::number(row), trimmed(entry->readings),
                                       trimmed(entry->star), trimmed(entry->pos_en), QStringLiteral("译文"),
                                       QStringLiteral("«<b>%1</b>»").arg(word), trimmed(sense.subTitle), trimmed(sense.signpos_en),
                                       trimmed(sense.signpos_cn), trimmed(sense.gram), trimmed(sense.def_en), trimmed(sense.def_cn)}))
                    << where;
                // The popup shows, and so the note holds, the first two examples.
                const std::size_t shown = std::min<std::size_t>(sense.exts.size(), shownExamplesPerSense);
                ASSERT_EQ(card->sense->exts.size(), shown) << where;
                for (std::size_t k = 0; k < shown; ++k) {
                    EXPECT_EQ(card->sense->exts[k]->en, trimmed(sense.exts[k]->en)) << where;
                    EXPECT_EQ(card->sense->exts[k]->cn, trimmed(sense.exts[k]->cn)) << where;
                }
                EXPECT_FALSE(card->appendHtml) << where;

                // The card finds its own sense again in the dictionary.
                const std::optional<CardSense> found = lookUpCardSense(*card, server);
                ASSERT_TRUE(found) << where;
                EXPECT_EQ(found->sense->def_en, sense.def_en) << where;
                EXPECT_EQ(found->sense->def_cn, sense.def_cn) << where;
                EXPECT_EQ(found->entry->amePron, entry->amePron) << where;
            }
        }
    }
    // Both dictionaries have a few hundred senses; word forms give two-word titles.
    EXPECT_GT(senses, 500);
    EXPECT_GT(twoWordTitles, 300);
    std::printf("%d senses, %d with the word and its headword in the title\n", senses, twoWordTitles);
}

INSTANTIATE_TEST_SUITE_P(SampleDictionaries, CardRoundTrip, ::testing::Values(0, 1), [](const auto& info) {
    return std::string(info.param == 0 ? "LDOCE5" : "collins");
});

}  // namespace
}  // namespace lexicorn
