#include "styled_pieces.h"

#include "support/temp_home.h"
#include "services/translation_server.h"

#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/render/dict_data_rows.h"
#include "lexicorn/services/ksw_translate.h"

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using testing::colourAndSize;
using testing::describe;
using testing::Pieces;

// The popup's styles, written out from its table of colours and sizes.
const TextAttributes yellow18 = colourAndSize(255, 255, 159, 18);  // headword, readings
const TextAttributes peach18 = colourAndSize(255, 190, 147, 18);   // star level
const TextAttributes pink18 = colourAndSize(226, 121, 166, 18);    // subtitle
const TextAttributes cyan16 = colourAndSize(146, 255, 255, 16);    // signposts
const TextAttributes green16 = colourAndSize(159, 235, 155, 16);   // grammar, part of speech
const TextAttributes peach16 = colourAndSize(255, 190, 147, 16);   // Chinese example, the quoted word
const TextAttributes blue16 = colourAndSize(103, 217, 240, 16, 0.8);  // Chinese definition
const TextAttributes yellow16 = colourAndSize(255, 255, 159, 16);  // English texts
const TextAttributes none;                                         // field markers

// The field markers, written out rather than taken from the code under test.
const QString SP_En = QStringLiteral("💫");
const QString SP_Cn = QStringLiteral("🌒");
const QString Gram = QStringLiteral("🌓");
const QString Def = QStringLiteral("🌕");
const QString Cn = QStringLiteral("🇨🇳");
const QString Example = QStringLiteral("\n📌");

struct SenseFields {
    QString subTitle;
    QString signpos_en;
    QString signpos_cn;
    QString gram;
    QString def_en;
    QString def_cn;
};

// A sense with the given number of examples, "Example k." / "例句k。".
EnWordDefPtr sense(const SenseFields& fields, int examples = 0)
{
    auto made = std::make_shared<EnWordDef>();
    made->subTitle = fields.subTitle;
    made->signpos_en = fields.signpos_en;
    made->signpos_cn = fields.signpos_cn;
    made->gram = fields.gram;
    made->def_en = fields.def_en;
    made->def_cn = fields.def_cn;
    for (int k = 1; k <= examples; ++k)
        made->exts.push_back(std::make_shared<EnWordExt>(EnWordExt{QStringLiteral("例句%1。").arg(k), QStringLiteral("Example %1.").arg(k), {}}));
    return made;
}

EnWordPtr entry(const QString& title, const QString& readings, const QString& star, const QString& pos, EnWordDefList defs)
{
    auto made = std::make_shared<EnWord>(title, std::move(defs));
    made->readings = readings;
    made->star = star;
    made->pos_en = pos;
    return made;
}

EnWordDefList oneSense()
{
    return {sense({{}, {}, {}, {}, QStringLiteral("to hold"), QStringLiteral("拿")})};
}

std::vector<std::vector<QString>> textsOf(const StyledSections& sections)
{
    std::vector<std::vector<QString>> texts;
    for (const std::vector<StyledText>& section : sections) {
        texts.emplace_back();
        for (const StyledText& line : section)
            texts.back().push_back(line.string());
    }
    return texts;
}

// Every test gets a scratch home and a translator that asks no service.
class RowsTest : public ::testing::Test {
protected:
    void SetUp() override { KSWTranslate::shareInstance().setEngine(7); }
    void TearDown() override { KSWTranslate::shareInstance().setEngine(7); }

    testing::TempHome home_;
};

TEST_F(RowsTest, HeaderAndSenseLinesOfAnEntry)
{
    const SenseFields full{QStringLiteral("take off"), QStringLiteral("CLOTHES"), QStringLiteral("衣服"), QStringLiteral("T"),
                           QStringLiteral("to remove"), QStringLiteral("脱下")};
    struct Case {
        const char* name;
        EnWordPtr entry;
        Pieces header;
        Pieces senseLine;
    };
    const Case cases[] = {
        {"every field filled, one example",
         entry(QStringLiteral("take"), QStringLiteral("/teɪk/"), QStringLiteral("●●●"), QStringLiteral("verb"), {sense(full, 1)}),
         {{"take;", yellow18}, {"🗣", none}, {"/teɪk/", yellow18}, {"🔝", none}, {"●●●", peach18}, {"༒", none}, {"verb", green16}},
         {{"take off", pink18}, {SP_En, none}, {"CLOTHES", cyan16}, {SP_Cn, none}, {"衣服", cyan16}, {Gram, none},
          {"[T]", green16}, {Def, none}, {"to remove", yellow16}, {Cn, none}, {"脱下", blue16},
          {Example, none}, {"Example 1.", yellow16}, {Cn, none}, {"例句1。", peach16}}},
        {"empty readings and star keep their markers",
         entry(QStringLiteral("take"), {}, {}, QStringLiteral("verb"), oneSense()),
         {{"take;", yellow18}, {"🗣🔝༒", none}, {"verb", green16}},
         {{SP_En + SP_Cn + Gram + Def, none}, {"to hold", yellow16}, {Cn, none}, {"拿", blue16}}},
        {"an empty grammar note has no brackets",
         entry(QStringLiteral("take"), {}, {}, {},
               {sense({QStringLiteral("s"), QStringLiteral("E"), QStringLiteral("中"), {}, QStringLiteral("d"), QStringLiteral("定")})}),
         {{"take;", yellow18}, {"🗣🔝༒", none}},
         {{"s", pink18}, {SP_En, none}, {"E", cyan16}, {SP_Cn, none}, {"中", cyan16}, {Gram + Def, none},
          {"d", yellow16}, {Cn, none}, {"定", blue16}}},
        {"five examples show the first two",
         entry(QStringLiteral("take"), {}, {}, {}, {sense({{}, {}, {}, {}, QStringLiteral("d"), {}}, 5)}),
         {{"take;", yellow18}, {"🗣🔝༒", none}},
         {{SP_En + SP_Cn + Gram + Def, none}, {"d", yellow16}, {Cn + Example, none}, {"Example 1.", yellow16}, {Cn, none},
          {"例句1。", peach16}, {Example, none}, {"Example 2.", yellow16}, {Cn, none}, {"例句2。", peach16}}},
        {"an empty example text still writes its markers",
         entry(QStringLiteral("take"), {}, {}, {},
               {[] {
                   EnWordDefPtr made = sense({});
                   made->exts.push_back(std::make_shared<EnWordExt>(EnWordExt{QStringLiteral("只有中文"), {}, {}}));
                   return made;
               }()}),
         {{"take;", yellow18}, {"🗣🔝༒", none}},
         {{SP_En + SP_Cn + Gram + Def + Cn + Example + Cn, none}, {"只有中文", peach16}}},
    };
    for (const Case& c : cases) {
        DictData data(QStringLiteral("take"), {}, {c.entry});
        const StyledSections sections = attrStrings(data);
        ASSERT_EQ(sections.size(), 2u) << c.name;
        ASSERT_EQ(sections[1].size(), 2u) << c.name;
        EXPECT_EQ(describe(sections[1][0]), describe(c.header)) << c.name;
        EXPECT_EQ(describe(sections[1][1]), describe(c.senseLine)) << c.name;
    }
}

TEST_F(RowsTest, OneSectionPerEntryWithSenses)
{
    const auto senses = [](int count) {
        EnWordDefList defs;
        for (int k = 0; k < count; ++k)
            defs.push_back(sense({{}, {}, {}, {}, QStringLiteral("d%1").arg(k), {}}));
        return defs;
    };
    struct Case {
        const char* name;
        EnWordList entries;
        std::vector<std::size_t> sectionSizes;  // section 0 first
        QStringList headers;                    // of sections 1...
    };
    const Case cases[] = {
        {"no entries: the head alone", {}, {3}, {}},
        {"an entry without senses gives no section",
         {entry(QStringLiteral("a"), {}, {}, {}, senses(2)), entry(QStringLiteral("b"), {}, {}, {}, senses(0)),
          entry(QStringLiteral("c"), {}, {}, {}, senses(1))},
         {3, 3, 2},
         {QStringLiteral("a;🗣🔝༒"), QStringLiteral("c;🗣🔝༒")}},
        {"one line per sense after the header", {entry(QStringLiteral("a"), {}, {}, {}, senses(40))}, {3, 41}, {QStringLiteral("a;🗣🔝༒")}},
    };
    for (const Case& c : cases) {
        DictData data(QStringLiteral("a"), QStringLiteral("A cat."), c.entries);
        const StyledSections sections = attrStrings(data);
        std::vector<std::size_t> sizes;
        QStringList headers;
        for (std::size_t index = 0; index < sections.size(); ++index) {
            sizes.push_back(sections[index].size());
            if (index > 0)
                headers << sections[index][0].string();
        }
        EXPECT_EQ(sizes, c.sectionSizes) << c.name;
        EXPECT_EQ(headers, c.headers) << c.name;
    }
}

TEST_F(RowsTest, EntryWithoutReadingsBorrowsTheFirstEntrysReadings)
{
    struct Case {
        const char* name;
        std::vector<std::pair<QString, QString>> entries;  // title, readings
        QStringList readingsAfter;
    };
    const QString read = QStringLiteral("/rɛd/");
    const QString reed = QStringLiteral("/riːd/");
    const Case cases[] = {
        {"same title, no readings: borrowed", {{"read", read}, {"read", {}}}, {read, read}},
        {"other title: left empty", {{"read", read}, {"reader", {}}}, {read, {}}},
        {"own readings are kept", {{"read", read}, {"read", reed}}, {read, reed}},
        {"the first has none to lend", {{"read", {}}, {"read", reed}, {"read", {}}}, {{}, reed, {}}},
    };
    for (const Case& c : cases) {
        EnWordList entries;
        for (const auto& [title, readings] : c.entries)
            entries.push_back(entry(title, readings, {}, {}, oneSense()));
        DictData data(QStringLiteral("read"), {}, entries);
        const StyledSections sections = attrStrings(data);
        QStringList after;
        QStringList headers;
        QStringList expectedHeaders;
        for (std::size_t index = 0; index < entries.size(); ++index) {
            after << entries[index]->readings;
            headers << sections[index + 1][0].string();
            expectedHeaders << entries[index]->title + QStringLiteral(";🗣") + c.readingsAfter[qsizetype(index)] + QStringLiteral("🔝༒");
        }
        EXPECT_EQ(after, c.readingsAfter) << c.name;
        EXPECT_EQ(headers, expectedHeaders) << c.name;
    }
}

TEST_F(RowsTest, HeadSectionShowsDictionarySentenceAndWord)
{
    struct Case {
        const char* name;
        QString word;
        QString sentence;
        Pieces quote;
    };
    const Case cases[] = {
        {"the word in peach", QStringLiteral("a"), QStringLiteral("There is a cat."),
         {{"There is ", yellow16}, {"a", peach16}, {" cat.", yellow16}}},
        {"only a whole word counts", QStringLiteral("cat"), QStringLiteral("Cats and a cat."),
         {{"Cats and a ", yellow16}, {"cat", peach16}, {".", yellow16}}},
        {"found again without its hyphen", QStringLiteral("well-known"), QStringLiteral("A wellknown fact."),
         {{"A ", yellow16}, {"wellknown", peach16}, {" fact.", yellow16}}},
        {"not found: no peach", QStringLiteral("dog"), QStringLiteral("There is a cat."), {{"There is a cat.", yellow16}}},
        {"no sentence: an empty line", QStringLiteral("a"), QString(), {}},
    };
    for (const Case& c : cases) {
        DictData data(c.word, c.sentence, {entry(c.word, {}, {}, {}, oneSense())});
        const StyledSections sections = attrStrings(data);
        ASSERT_EQ(sections.front().size(), 3u) << c.name;
        EXPECT_EQ(describe(sections[0][0]), describe(Pieces{{EnWordServer::shared().dictName(), yellow16}})) << c.name;
        EXPECT_EQ(describe(sections[0][1]), describe(c.quote)) << c.name;
        // The translator asks no service here, and nothing is an empty line.
        EXPECT_EQ(describe(sections[0][2]), std::string()) << c.name;
    }
}

TEST_F(RowsTest, TranslationLineIsTheEnginesAnswer)
{
    testing::TranslationServer server({{"google_cn", QJsonObject{{"answer", "花园里有一只猫。"}}}});
    ASSERT_TRUE(server.started());
    server.pointHostsHere();
    KSWTranslate::shareInstance().setEngine(KSWTranslate::googleMainland);
    DictData data(QStringLiteral("cat"), QStringLiteral("There is a cat in the garden."), {});
    const StyledSections sections = attrStrings(data);
    ASSERT_EQ(sections.size(), 1u);
    ASSERT_EQ(sections[0].size(), 3u);
    EXPECT_EQ(describe(sections[0][2]), describe(Pieces{{"花园里有一只猫。", yellow16}}));
    EXPECT_EQ(server.rolesAsked(), QStringList{QStringLiteral("google_cn")});
}

TEST(RowsModify, TagAddressesTheLineToInsertAfter)
{
    const auto line = [](const char* text) { return StyledText(QString::fromUtf8(text)); };
    const StyledSections rows{{line("h0"), line("q"), line("t")}, {line("h1"), line("s1"), line("s2")}};
    const StyledText extra(QStringLiteral("new"), yellow16);
    using Texts = std::vector<std::vector<QString>>;
    const Texts unchanged = textsOf(rows);
    const struct {
        int tag;
        Texts expected;
    } cases[] = {
        {1001, {{"h0", "q", "t"}, {"h1", "s1", "new", "s2"}}},
        {1000, {{"h0", "q", "t"}, {"h1", "new", "s1", "s2"}}},
        {1, {{"h0", "q", "new", "t"}, {"h1", "s1", "s2"}}},
        {1002, unchanged},  // after the last line of section 1
        {2000, unchanged},  // no section 2
        {-1, unchanged},
    };
    for (const auto& c : cases) {
        const StyledSections modified = modify(rows, extra, c.tag);
        EXPECT_EQ(textsOf(modified), c.expected) << "tag " << c.tag;
        for (const auto& section : modified) {
            for (const StyledText& text : section) {
                if (text.string() == QStringLiteral("new")) {
                    EXPECT_EQ(text, extra) << "tag " << c.tag;
                }
            }
        }
    }
}

}  // namespace
}  // namespace lexicorn
