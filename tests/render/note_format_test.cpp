#include "card_fixtures.h"

#include "lexicorn/render/note_format.h"

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using testing::commentRecord;
using testing::noteWith;

const QString definitionLine = QStringLiteral("💫MOVE🌒带走🌓[T]🌕get hold of🇨🇳拿；带走");
const QString titleStructure = QStringLiteral("。\n标题结构为：\n原词; 字典中的词；🗣音标🔝星级༒词性📇索引(不要改！)🔚;添加的其他标题");
const QString lineStructure = QStringLiteral("。\n行结构为：\n子标题💫signpos_en🌒signpos_cn🌓grm🌕英文定义🇨🇳中文定义");

CardResult<ParsedCard> parse(const NoteRecord& record)
{
    return parseDictNote(JsonDictNote(record));
}

CardResult<ParsedCard> parseTitle(const QString& title)
{
    return parse(noteWith(title, {}, {QStringLiteral("翻译"), definitionLine}));
}

TEST(NoteFormat, TitlesParseFromTheRight)
{
    // Each row: the title, then word, headword, section, item, readings, star, part of speech.
    const std::vector<QStringList> cases = {
        {"take;🗣/teɪk/🔝3༒verb📇0-1🔚;", "take", "take", "0", "1", "/teɪk/", "3", "verb"},
        // The head's last character is dropped whatever it is.
        {"take🗣/teɪk/🔝3༒verb📇0-1🔚;", "tak", "tak", "0", "1", "/teɪk/", "3", "verb"},
        {"took; take;🗣🔝༒📇2-0-1🔚;my note", "took", "take", "2", "0", "", "", ""},
        {" took ;\ttake ;🗣 /tʊk/ 🔝 ●● ༒ verb \t📇 12-7 🔚;", "took", "take", "12", "7", "/tʊk/", "●●", "verb"},
        // Readings may hold semicolons: the head is what stands before "🗣".
        {"a lot of;🗣/ə; lɒt/🔝༒📇1-1🔚; 🔚 x", "a lot of", "a lot of", "1", "1", "/ə; lɒt/", "", ""},
        // A piece that is empty after trimming does not count.
        {"take;;🗣🔝༒📇1-0🔚;", "take", "take", "1", "0", "", "", ""},
    };
    for (const QStringList& c : cases) {
        const CardResult<ParsedCard> card = parseTitle(c[0]);
        ASSERT_TRUE(card) << c[0].toStdString() << "\n" << card.error().message().toStdString();
        EXPECT_EQ((QStringList{c[0], card->word, card->headword, QString::number(card->section), QString::number(card->item),
                               card->readings, card->star, card->pos}),
                  c);
    }
}

TEST(NoteFormat, ABrokenTitleNamesThePieceAndShowsTheStructure)
{
    struct Case {
        const char* title;
        const char* piece;  // the part of the title the message quotes
    };
    const Case cases[] = {
        {"take;🗣/teɪk/🔝3༒verb📇0-1", "take;🗣/teɪk/🔝3༒verb📇0-1"},
        {"take;🗣/teɪk/🔝3༒verb📇0-1🔚;x🔚;", "take;🗣/teɪk/🔝3༒verb📇0-1🔚;x🔚;"},
        {"take;🗣/teɪk/🔝3༒verb📇0📇1🔚;", "take;🗣/teɪk/🔝3༒verb📇0📇1"},
        {"take;🗣/teɪk/🔝3༒verb📇a-1🔚;", "a-1"},
        {"take;🗣/teɪk/🔝3༒verb📇3🔚;", "3"},
        {"take;🗣/teɪk/🔝3༒verb📇1-x🔚;", "1-x"},
        {"take;🗣/teɪk/🔝3༒verb📇-1-2🔚;", "-1-2"},
        {"take;🗣/teɪk/🔝3verb📇0-1🔚;", "take;🗣/teɪk/🔝3verb"},
        {"take;🗣/teɪk/3༒verb📇0-1🔚;", "take;🗣/teɪk/3"},
        {"take;🗣/teɪk/🔝3🔝༒verb📇0-1🔚;", "take;🗣/teɪk/🔝3🔝"},
        {"take;/teɪk/🔝3༒verb📇0-1🔚;", "take;/teɪk/"},
        {"a; b; c;🗣🔝༒📇0-1🔚;", "a; b; c;"},
        {";🗣🔝༒📇0-1🔚;", ";"},
        {"🗣🔝༒📇0-1🔚;", ""},
    };
    for (const Case& c : cases) {
        const CardResult<ParsedCard> card = parseTitle(QString::fromUtf8(c.title));
        ASSERT_FALSE(card) << c.title;
        EXPECT_EQ(card.error().domain, QStringLiteral("com.ksw.hookNM"));
        EXPECT_EQ(card.error().code, 10000) << c.title;
        EXPECT_EQ(card.error().message(), QStringLiteral("标题结构错误: ") + QString::fromUtf8(c.piece) + titleStructure) << c.title;
    }
}

TEST(NoteFormat, DefinitionLinesAndTheirErrors)
{
    const QString title = QStringLiteral("take;🗣🔝༒📇1-0🔚;");
    struct Case {
        const char* name;
        NoteRecord note;
        const char* failingLine;  // nullptr: parses
    };
    NoteRecord notText = noteWith(title, {}, {QStringLiteral("翻译")});
    notText.notes.append(QJsonObject{{"type", "TextNote"}, {"text", 3}});
    NoteRecord noTranslation = noteWith(title, {}, {});
    noTranslation.notes.append(QJsonObject{{"type", "TextNote"}});
    noTranslation.notes.append(commentRecord("TextNote", definitionLine));
    const Case cases[] = {
        {"one comment", noteWith(title, {}, {QStringLiteral("翻译")}), ""},
        {"no comment", noteWith(title, {}, {}), ""},
        {"comment 0 without text", noTranslation, ""},
        {"comment 1 text not a string", notText, ""},
        {"no 🌓", noteWith(title, {}, {"", "💫MOVE🌒带走[T]🌕get🇨🇳拿"}), "💫MOVE🌒带走[T]🌕get🇨🇳拿"},
        {"no 🇨🇳", noteWith(title, {}, {"", "💫🌒🌓🌕get 拿"}), "💫🌒🌓🌕get 拿"},
        {"two 🌕", noteWith(title, {}, {"", "💫🌒🌓🌕a🌕b🇨🇳拿"}), "💫🌒🌓🌕a🌕b🇨🇳拿"},
        {"no 💫", noteWith(title, {}, {"", "🌒🌓🌕get🇨🇳拿"}), "🌒🌓🌕get🇨🇳拿"},
        {"no 🌒", noteWith(title, {}, {"", "💫🌓🌕get🇨🇳拿"}), "💫🌓🌕get🇨🇳拿"},
        {"fields empty", noteWith(title, {}, {"", "💫🌒🌓🌕🇨🇳"}), nullptr},
    };
    for (const Case& c : cases) {
        const CardResult<ParsedCard> card = parse(c.note);
        if (!c.failingLine) {
            EXPECT_TRUE(card) << c.name;
            continue;
        }
        ASSERT_FALSE(card) << c.name;
        EXPECT_EQ(card.error().code, 10000) << c.name;
        EXPECT_EQ(card.error().message(), QStringLiteral("定义行结构错误: ") + QString::fromUtf8(c.failingLine) + lineStructure) << c.name;
    }

    const CardResult<ParsedCard> card
        = parse(noteWith(title, {}, {QStringLiteral("她<b>拿</b>了。"), QStringLiteral(" sub \t💫 MOVE 🌒 带走 🌓 [T] 🌕 get hold of \t🇨🇳 拿；带走 ")}));
    ASSERT_TRUE(card) << card.error().message().toStdString();
    const EnWordDef& sense = *card->sense;
    EXPECT_EQ((QStringList{card->sentenceCN, sense.subTitle, sense.signpos_en, sense.signpos_cn, sense.gram, sense.def_en,
                           sense.def_cn}),
              (QStringList{"她<b>拿</b>了。", "sub", "MOVE", "带走", "T", "get hold of", "拿；带走"}));
    EXPECT_TRUE(sense.exts.empty());
    EXPECT_FALSE(card->appendHtml);

    struct Gram {
        const char* written;
        const char* read;
    };
    for (const Gram& g : {Gram{"[T]", "T"}, Gram{"[T", "[T"}, Gram{"T]", "T]"}, Gram{"[]", ""}, Gram{"[[T]]", "[T]"}}) {
        const CardResult<ParsedCard> withGram
            = parse(noteWith(title, {}, {"", QStringLiteral("💫🌒🌓%1🌕a🇨🇳b").arg(QString::fromUtf8(g.written))}));
        ASSERT_TRUE(withGram) << g.written;
        EXPECT_EQ(withGram->sense->gram, QString::fromUtf8(g.read)) << g.written;
    }
}

TEST(NoteFormat, ExampleLinesKeepTheirOrder)
{
    const QString title = QStringLiteral("run;🗣🔝༒📇1-0🔚;");
    struct Case {
        const char* block;
        QStringList examples;  // English, Chinese and speaker of each
        const char* failingLine;
    };
    const Case cases[] = {
        {"💫🌒🌓🌕move fast🇨🇳跑\n📌He ran.🇨🇳他跑了。", {"He ran.", "他跑了。", ""}, nullptr},
        {"💫🌒🌓🌕move fast🇨🇳跑\n📌 He ran. \t🇨🇳 他跑了。 \n📌Run!🇨🇳跑！", {"He ran.", "他跑了。", "", "Run!", "跑！", ""}, nullptr},
        {"💫🌒🌓🌕move fast🇨🇳跑\n(1) 📌He ran.🇨🇳他跑了。", {"He ran.", "他跑了。", ""}, nullptr},
        {"💫🌒🌓🌕move fast🇨🇳跑\n📌<b>Run</b>, Forrest!🇨🇳跑！", {"<b>Run</b>, Forrest!", "跑！", ""}, nullptr},
        {"💫🌒🌓🌕move fast🇨🇳跑\nHe ran.🇨🇳他跑了。", {}, "He ran.🇨🇳他跑了。"},
        {"💫🌒🌓🌕move fast🇨🇳跑\n📌He ran.", {}, "📌He ran."},
        {"💫🌒🌓🌕move fast🇨🇳跑\n📌He ran.🇨🇳他🇨🇳跑了。", {}, "📌He ran.🇨🇳他🇨🇳跑了。"},
        {"💫🌒🌓🌕move fast🇨🇳跑\n📌A📌B🇨🇳跑", {}, "📌A📌B🇨🇳跑"},
        {"💫🌒🌓🌕move fast🇨🇳跑\n📌He ran.🇨🇳他跑了。\n", {}, ""},
    };
    for (const Case& c : cases) {
        const CardResult<ParsedCard> card = parse(noteWith(title, {}, {"", QString::fromUtf8(c.block)}));
        if (c.failingLine) {
            ASSERT_FALSE(card) << c.block;
            EXPECT_EQ(card.error().code, 10000);
            EXPECT_EQ(card.error().message(), QStringLiteral("例句错误: ") + QString::fromUtf8(c.failingLine)) << c.block;
            continue;
        }
        ASSERT_TRUE(card) << c.block << "\n" << card.error().message().toStdString();
        QStringList read;
        for (const EnWordExtPtr& example : card->sense->exts)
            read << example->en << example->cn << example->speaker;
        EXPECT_EQ(read, c.examples) << c.block;
    }
}

TEST(NoteFormat, LaterCommentsBecomeExtraHtml)
{
    const QString title = QStringLiteral("run;🗣🔝༒📇1-0🔚;");
    NoteRecord note = noteWith(title, {}, {"", "💫🌒🌓🌕a🇨🇳b", "abc"});
    note.notes.append(commentRecord("HtmlNote", "plain", "<p style='x'>rich <i>text</i></p>"));
    note.notes.append(commentRecord("LinkNote", "<script>x</script> & <b>bold</b>"));
    note.notes.append(QJsonObject{{"type", "HtmlNote"}});
    note.notes.append(QJsonValue(5));
    const CardResult<ParsedCard> card = parse(note);
    ASSERT_TRUE(card) << card.error().message().toStdString();
    ASSERT_TRUE(card->appendHtml);
    EXPECT_EQ(*card->appendHtml, QStringLiteral("<div>abc</div>"
                                                "<p style='x'>rich <i>text</i></p>"
                                                "<div>&lt;script&gt;x&lt;/script&gt; &amp; <b>bold</b></div>"
                                                "<div></div>"));
}

TEST(NoteFormat, TheExcerptBecomesTheQuoteWithTheWordInBold)
{
    struct Case {
        const char* title;
        const char* excerpt;
        const char* quote;
    };
    const Case cases[] = {
        {"took; take;🗣🔝༒📇1-0🔚;", "  She took it, and Took more. \t", "She <b>took</b> it, and <b>Took</b> more."},
        {"take;🗣🔝༒📇1-0🔚;", "She took it.", "She took it."},
        {"take;🗣🔝༒📇1-0🔚;", "", ""},
    };
    for (const Case& c : cases) {
        const CardResult<ParsedCard> card
            = parse(noteWith(QString::fromUtf8(c.title), QString::fromUtf8(c.excerpt), {"", "💫🌒🌓🌕a🇨🇳b"}));
        ASSERT_TRUE(card) << c.title;
        EXPECT_EQ(card->quoteSentence, QString::fromUtf8(c.quote)) << c.excerpt;
    }
}

}  // namespace
}  // namespace lexicorn
