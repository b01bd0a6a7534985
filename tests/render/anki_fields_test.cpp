#include "card_fixtures.h"

#include "lexicorn/anki/ksw_ankiconnect.h"
#include "lexicorn/render/anki_fields.h"

#include "foundation/user_defaults.h"

#include <QCryptographicHash>
#include <QDir>
#include <QJsonArray>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using testing::AnkiCollection;

EnWordExtPtr example(const QString& en, const QString& cn, const QString& speaker)
{
    return std::make_shared<EnWordExt>(EnWordExt{cn, en, speaker});
}

// "take" with one full sense; its sounds are files of the Dict folder.
EnWordPtr takeEntry()
{
    auto sense = std::make_shared<EnWordDef>();
    sense->subTitle = QStringLiteral("take sth away");
    sense->signpos_en = QStringLiteral("MOVE");
    sense->signpos_cn = QStringLiteral("带走");
    sense->gram = QStringLiteral("T");
    sense->def_en = QStringLiteral("to move sth <b>from</b> one place");
    sense->def_cn = QStringLiteral("拿走");
    sense->exts = {example(QStringLiteral("<b>Take</b> the chair away."), QStringLiteral("把椅子拿走。"), QStringLiteral("take_ex1.mp3")),
                   example(QStringLiteral("She'll take it home."), QStringLiteral("她会把它带回家。"), QStringLiteral("sound://ex/take_2.mp3"))};
    auto entry = std::make_shared<EnWord>(QStringLiteral("take"), EnWordDefList{sense});
    entry->star = QStringLiteral("●●●");
    entry->readings = QStringLiteral("teɪk");
    entry->pos_en = QStringLiteral("verb");
    entry->amePron = QStringLiteral("sound://take_us.mp3");
    return entry;
}

class AnkiFields : public testing::CardHome {
protected:
    void SetUp() override
    {
        QDir(home_.path()).mkpath(QStringLiteral("Dict/ex"));
        home_.writeDict(QStringLiteral("take_ex1.mp3"), "first example");
        home_.writeDict(QStringLiteral("ex/take_2.mp3"), "second example");
        home_.writeDict(QStringLiteral("take_us.mp3"), "take, American");
    }

    CardResult<QJsonObject> fields(const DictData& data, SenseIndex path = {0, 0}, std::optional<QJsonValue> ankiID = std::nullopt)
    {
        return noteAsAsked(draftForAnki(data, QStringLiteral("took"), QStringLiteral("Book <1>"), path,
                                        QStringLiteral("她<b>拿</b>了。"), ankiID, QStringLiteral("<div>extra</div>"),
                                        QStringLiteral("N-1")));
    }

    // The note of a draft whose sounds Anki stored under the names asked for.
    static CardResult<QJsonObject> noteAsAsked(const CardResult<AnkiCardDraft>& draft)
    {
        if (!draft)
            return draft.error();
        std::vector<StoredMedia> stored;
        for (const MediaFile& file : draft->soundFiles())
            stored.push_back({file.name, {}});
        return draft->noteWith(stored);
    }

    DictData take_{QStringLiteral("took"), QStringLiteral("She took the chair & left."), EnWordList{takeEntry()}};
};

TEST_F(AnkiFields, EveryFieldAndTheNoteAroundThem)
{
    const CardResult<QJsonObject> note = fields(take_, {0, 0}, QJsonValue(1700000000123.0));
    ASSERT_TRUE(note) << note.error().message().toStdString();
    const QJsonObject fields{
        {"AUDIO", "[sound:MN3_LW_take_us.mp3]"},
        {"DEFINITION",
         "<span class='star'>●●●</span><span class='pos en'>verb</span><span class='gram'>[T]</span>"
         "<br></style><span class='subTitle'>take sth away</span>"
         "<span class='tran'><span class='signpos en'>MOVE<span class='signpos cn'>带走</span></span>"
         "<span class='eng_tran'>to move sth <b>from</b> one place</span><span class='chn_tran'>拿走</span></span>"
         "<ul class='sents'>"
         "<li class='sent'><span class='speak_sent'>[sound:MN3_LW_take_ex1.mp3]</span>"
         "<span class='eng_sent'><b><b>Take</b></b> the chair away.</span><span class='chn_sent'>把椅子拿走。</span></li>"
         "<li class='sent'><span class='speak_sent'>[sound:MN3_LW_ex_take_2.mp3]</span>"
         "<span class='eng_sent'>She&#39;ll <b>take</b> it home.</span><span class='chn_sent'>她会把它带回家。</span></li>"
         "</ul>"},
        {"DEFINITIONS",
         cardStyle
             + QStringLiteral("<span class='pos'>verb</span><span class='tran'><span class='eng_tran'>to move sth <b>from</b> one place\u00a0 "
                              "</span><span class='chn_tran'>拿走</span></span>")},
        {"EXPRESSION", "took"},
        {"EXTRAINFO", "《Book &lt;1&gt;》<br>她<b>拿</b>了。<br><div>extra</div>"},
        {"READING", "teɪk"},
        {"SENTENCE", "She <b>took</b> the chair &amp; left."},
        {"URL", "laiskemprabapp://note/N-1"},
    };
    EXPECT_EQ(*note, (QJsonObject{{"deckName", "Default"},
                                  {"fields", fields},
                                  {"id", 1700000000123.0},
                                  {"modelName", "Lexicorn card"},
                                  {"options", QJsonObject{{"allowDuplicate", false}, {"duplicateScope", "deck"}}},
                                  {"tags", QJsonArray{"Lexicorn"}}}));

    // A card rebuilt from a note brings its sentence with the word in bold
    // already; nothing else to add leaves the extra information empty.
    const DictData rebuilt(QStringLiteral("took"), QStringLiteral("She <b>took</b> it & left."), EnWordList{takeEntry()});
    const CardResult<QJsonObject> plain
        = noteAsAsked(draftForAnki(rebuilt, QStringLiteral("took"), {}, {0, 0}, {}, std::nullopt, std::nullopt));
    ASSERT_TRUE(plain);
    const QJsonObject plainFields = plain->value("fields").toObject();
    EXPECT_EQ((QStringList{plainFields.value("SENTENCE").toString(), plainFields.value("EXTRAINFO").toString(),
                           plainFields.value("URL").toString()}),
              (QStringList{"She <b>took</b> it &amp; left.", "", ""}));
    EXPECT_FALSE(plain->contains("id"));
}

TEST_F(AnkiFields, SettingsAndIndexDecideTheNoteOrTheError)
{
    const char* deck = "Default";
    const char* type = "Lexicorn card";
    const char* sectionError = "索引 section 超出范围";
    const char* sectionLog = "🌀🌀🌀 section 超出范围！";
    struct Case {
        const char* name;
        const char* deck;
        const char* type;
        const char* duplicate;  // nullptr: not set
        SenseIndex path;
        const char* error;      // nullptr: a note
        const char* log;
        bool allowDuplicate;
    };
    const Case cases[] = {
        {"duplicates allowed", deck, type, "YES", {0, 0}, nullptr, nullptr, true},
        {"lower-case yes", deck, type, "yes", {0, 0}, nullptr, nullptr, false},
        {"YES with a blank", deck, type, "YES ", {0, 0}, nullptr, nullptr, false},
        {"not set", deck, type, nullptr, {0, 0}, nullptr, nullptr, false},
        {"no deck", "", type, nullptr, {0, 0}, "未设置正确的 Deck、Type 名称！", nullptr, false},
        {"no note type", deck, "", nullptr, {0, 0}, "未设置正确的 Deck、Type 名称！", nullptr, false},
        {"section past the end", deck, type, nullptr, {1, 0}, sectionError, sectionLog, false},
        {"negative section", deck, type, nullptr, {-1, 0}, sectionError, sectionLog, false},
        {"item past the end", deck, type, nullptr, {0, 1}, "索引 item 超出范围", "🌀🌀🌀 item 超出范围！", false},
        {"item and deck both wrong: the index first", "", type, nullptr, {0, 1}, "索引 item 超出范围", "🌀🌀🌀 item 超出范围！", false},
    };

    UserDefaults& defaults = UserDefaults::standard();
    for (const Case& c : cases) {
        defaults.set(ankiset::deckName, QString::fromUtf8(c.deck));
        defaults.set(ankiset::typeName, QString::fromUtf8(c.type));
        if (c.duplicate)
            defaults.set(ankiset::duplicate, QString::fromUtf8(c.duplicate));
        else
            defaults.remove(ankiset::duplicate);

        ::testing::internal::CaptureStderr();
        const CardResult<QJsonObject> note = fields(take_, c.path);
        const QString log = QString::fromStdString(::testing::internal::GetCapturedStderr());

        if (!c.error) {
            ASSERT_TRUE(note) << c.name << ": " << note.error().message().toStdString();
            EXPECT_EQ(note->value("options").toObject().value("allowDuplicate").toBool(), c.allowDuplicate) << c.name;
            continue;
        }
        ASSERT_FALSE(note) << c.name;
        EXPECT_EQ(note.error().domain, QStringLiteral("com.ksw.hookNM")) << c.name;
        EXPECT_EQ(note.error().code, 10000) << c.name;
        EXPECT_EQ(note.error().message(), QString::fromUtf8(c.error)) << c.name;
        if (c.log) {
            EXPECT_TRUE(log.contains(QString::fromUtf8(c.log))) << c.name << "\n" << log.toStdString();
        }
    }
}

TEST_F(AnkiFields, FieldNamesDecideWhereEachItemGoes)
{
    UserDefaults& defaults = UserDefaults::standard();
    for (const QString& item : testing::contentItems)
        defaults.remove(QStringLiteral("ANKISET_") + item);
    // With no names every item goes under the empty name and the last one, the sound, stays.
    CardResult<QJsonObject> note = fields(take_);
    ASSERT_TRUE(note);
    EXPECT_EQ(note->value("fields").toObject(), (QJsonObject{{"", "[sound:MN3_LW_take_us.mp3]"}}));

    // Two items under one name: the later one in the fixed order wins.
    for (const auto& [item, name] : {std::pair{"EXPRESSION", "Front"}, {"AUDIO", "Front"}, {"READING", "Back"},
                                     {"SENTENCE", "Back"}, {"DEFINITIONS", "Extra"}, {"URL", "Extra"}, {"EXTRAINFO", "Info"}})
        defaults.set(QStringLiteral("ANKISET_") + QLatin1StringView(item), QString::fromUtf8(name));
    note = fields(take_);
    ASSERT_TRUE(note);
    EXPECT_EQ(note->value("fields").toObject(),
              (QJsonObject{{"Front", "[sound:MN3_LW_take_us.mp3]"},
                           {"Back", "teɪk"},
                           {"Extra", "laiskemprabapp://note/N-1"},
                           {"Info", "《Book &lt;1&gt;》<br>她<b>拿</b>了。<br><div>extra</div>"},
                           {"", note->value("fields").toObject().value("").toString()}}));
    EXPECT_TRUE(note->value("fields").toObject().value("").toString().startsWith(QStringLiteral("<span class='star'>")));
}

TEST_F(AnkiFields, SensesWithoutExamplesOrGrammar)
{
    EnWordPtr entry = takeEntry();
    entry->defs.front()->exts.clear();
    entry->defs.front()->gram.clear();
    const DictData data(QStringLiteral("take"), {}, EnWordList{entry});
    const CardResult<QJsonObject> note = fields(data);
    ASSERT_TRUE(note);
    const QString html = note->value("fields").toObject().value("DEFINITION").toString();
    EXPECT_FALSE(html.contains(QStringLiteral("<ul"))) << html.toStdString();
    EXPECT_FALSE(html.contains(QStringLiteral("<li"))) << html.toStdString();
    EXPECT_TRUE(html.contains(QStringLiteral("<span class='gram'></span>"))) << html.toStdString();
    EXPECT_TRUE(html.endsWith(QStringLiteral("<span class='chn_tran'>拿走</span></span>"))) << html.toStdString();
}

TEST_F(AnkiFields, NoDictionaryOrPageTextBecomesLiveHtml)
{
    const QString evil = QStringLiteral("<script>alert(\"x\")</script><img src=x onerror='y'>");
    auto sense = std::make_shared<EnWordDef>();
    sense->subTitle = sense->signpos_en = sense->signpos_cn = sense->gram = sense->def_en = sense->def_cn = evil;
    sense->exts = {example(evil, evil, evil)};
    auto entry = std::make_shared<EnWord>(evil, EnWordDefList{sense});
    entry->star = entry->readings = entry->pos_en = entry->amePron = evil;
    const DictData data(evil, evil + QStringLiteral(" and more"), EnWordList{entry});

    const CardResult<QJsonObject> note = noteAsAsked(draftForAnki(data, evil, evil, {0, 0}, evil, std::nullopt, std::nullopt, evil));
    ASSERT_TRUE(note) << note.error().message().toStdString();
    const QJsonObject fields = note->value("fields").toObject();
    ASSERT_EQ(fields.size(), testing::contentItems.size());
    const QRegularExpression live(QStringLiteral("<script|<img|onerror='"), QRegularExpression::CaseInsensitiveOption);
    for (auto field = fields.begin(); field != fields.end(); ++field) {
        const QString value = field.value().toString();
        EXPECT_FALSE(value.contains(live)) << field.key().toStdString() << ": " << value.toStdString();
    }
    EXPECT_TRUE(fields.value("EXPRESSION").toString().startsWith(QStringLiteral("&lt;script&gt;alert(&quot;x&quot;)")));
}

TEST_F(AnkiFields, SoundTagsNameTheFilesAsAnkiHoldsThem)
{
    const CardResult<AnkiCardDraft> draft = draftForAnki(take_, QStringLiteral("took"), {}, {0, 0}, {}, std::nullopt, std::nullopt);
    ASSERT_TRUE(draft);
    ASSERT_EQ(draft->soundFiles().size(), 3u);  // the word, then the two examples
    struct Case {
        const char* name;
        std::vector<StoredMedia> stored;
        int code;  // 0: a note
        QString text;  // in the note's fields, or in the error's message
    };
    const Case cases[] = {
        {"renamed by Anki", {{"mn3_lw_take_us.mp3", {}}, {"a.mp3", {}}, {"b.mp3", {}}}, 0, "[sound:mn3_lw_take_us.mp3]"},
        {"an example refused", {{"w.mp3", {}}, {{}, "disk full"}, {"b.mp3", {}}}, 10000, "MN3_LW_take_ex1.mp3（disk full）"},
        {"no answer", {{"w.mp3", {}}, {{}, "no answer", false}, {"b.mp3", {}}}, 20000, "Ankiconnect 连接失败！"},
    };
    for (const Case& c : cases) {
        const CardResult<QJsonObject> note = draft->noteWith(c.stored);
        if (c.code == 0) {
            ASSERT_TRUE(note) << c.name;
            EXPECT_EQ(note->value("fields").toObject().value("AUDIO").toString(), c.text) << c.name;
            continue;
        }
        ASSERT_FALSE(note) << c.name;
        EXPECT_EQ(note.error().code, c.code) << c.name;
        EXPECT_TRUE(note.error().message().contains(c.text)) << c.name << ": " << note.error().message().toStdString();
    }
}

// The file name the first sound tag gives.
QString taggedFile(const QString& html)
{
    return QRegularExpression(QStringLiteral("\\[sound:([^\\]]+)\\]")).match(html).captured(1);
}

QString sentenceKey(const QString& sentence)
{
    return QString::fromLatin1(QCryptographicHash::hash(sentence.toUtf8(), QCryptographicHash::Sha1).toHex().left(12));
}

TEST_F(AnkiFields, SoundFilesReachAnkisMediaFolder)
{
    AnkiCollection anki(home_);
    ASSERT_TRUE(anki.ready()) << anki.problem().toStdString();
    testing::ServerProcess voice(QStringLiteral("python3"), {QStringLiteral(LEXICORN_TESTS_DIR "/services/voice_server.py")});
    ASSERT_TRUE(voice.started());
    setVoiceHost(voice.address());

    struct Case {
        const char* name;
        const char* word;
        const char* amePron;
        const char* speaker;      // of the one example
        const char* wordFile;     // as asked for; Anki may change the case
        QByteArray wordBytes;     // empty: a WAV file from the offline voice
        QString exampleFile;
        QByteArray exampleBytes;
    };
    const QString spoken = QStringLiteral("She took it.");
    const Case cases[] = {
        {"voice service", "took", "", "", "MN3_YD_took_1.mp3", "ID3 fake mp3 for took",
         QStringLiteral("MN3_YD_ex_%1_1.mp3").arg(sentenceKey(spoken)), "ID3 fake mp3 for She%20took%20it."},
        {"local files", "took", "sound://take_us.mp3", "take_ex1.mp3", "MN3_LW_take_us.mp3", "take, American",
         QStringLiteral("MN3_LW_take_ex1.mp3"), "first example"},
        {"local file in a sub-folder", "took", "", "sound://ex/take_2.mp3", "MN3_YD_took_1.mp3", "ID3 fake mp3 for took",
         QStringLiteral("MN3_LW_ex_take_2.mp3"), "second example"},
        // The stand-in service has no file for "missing": the offline voice speaks it.
        {"no voice file", "missing", "sound://no_such.mp3", "no_such.mp3", "MN3_LW_missing.wav", {},
         QStringLiteral("MN3_YD_ex_%1_1.mp3").arg(sentenceKey(spoken)), "ID3 fake mp3 for She%20took%20it."},
    };
    for (const Case& c : cases) {
        EnWordPtr entry = takeEntry();
        entry->amePron = QString::fromUtf8(c.amePron);
        entry->defs.front()->exts = {example(QStringLiteral("She took <b>it</b>."), QStringLiteral("她拿了。"), QString::fromUtf8(c.speaker))};
        const DictData data(QString::fromUtf8(c.word), {}, EnWordList{entry});
        const CardResult<QJsonObject> note = wordDictForAnki(data, QString::fromUtf8(c.word), {}, {0, 0}, {}, std::nullopt, std::nullopt);
        ASSERT_TRUE(note) << c.name;
        const QJsonObject fields = note->value("fields").toObject();

        const QString wordFile = taggedFile(fields.value("AUDIO").toString());
        EXPECT_EQ(wordFile.toLower(), QString::fromUtf8(c.wordFile).toLower()) << c.name;
        EXPECT_TRUE(anki.mediaNames().contains(wordFile)) << c.name << ": " << wordFile.toStdString();
        const QByteArray wordBytes = anki.mediaFile(wordFile);
        if (c.wordBytes.isEmpty())
            EXPECT_TRUE(wordBytes.startsWith("RIFF")) << c.name;
        else
            EXPECT_EQ(wordBytes, c.wordBytes) << c.name;

        const QString exampleFile = taggedFile(fields.value("DEFINITION").toString());
        EXPECT_EQ(exampleFile.toLower(), c.exampleFile.toLower()) << c.name;
        EXPECT_EQ(anki.mediaFile(exampleFile), c.exampleBytes) << c.name;
    }
}

}  // namespace
}  // namespace lexicorn
