// Which notes are dictionary cards, and whether a card's dictionary is the
// one selected: decided from the note alone, before anything is sent.

#include "card_fixtures.h"  // prints failing texts as text

#include "lexicorn/anki/sync/card_sync.h"

#include <QJsonArray>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <optional>

namespace lexicorn {
namespace {

QJsonObject inGroup(const QJsonValue& group)
{
    QJsonObject comment{{"type", "TextNote"}, {"text", "x"}};
    if (!group.isUndefined())
        comment.insert("group", group);
    return comment;
}

TEST(DictMatch, ADictNoteHasTranslationThenSenseComments)
{
    struct Case {
        const char* name;
        QJsonArray notes;
        bool dictNote;
    };
    const Case cases[] = {
        {"translation then sense", {inGroup("sentenceCN"), inGroup("exts")}, true},
        {"extra comments after them", {inGroup("sentenceCN"), inGroup("exts"), inGroup("extra"), inGroup({})}, true},
        {"groups swapped", {inGroup("exts"), inGroup("sentenceCN")}, false},
        {"one comment only", {inGroup("sentenceCN")}, false},
        {"first without a group", {inGroup({}), inGroup("exts")}, false},
        {"second without a group", {inGroup("sentenceCN"), inGroup({})}, false},
        {"group that is not text", {inGroup(1), inGroup("exts")}, false},
        {"group names differ in case", {inGroup("SentenceCN"), inGroup("exts")}, false},
    };
    for (const Case& c : cases) {
        const JsonDictNote note(NoteRecord{"N", "plain", {}, c.notes});
        EXPECT_EQ(isDictNote(note), c.dictNote) << c.name;
    }
}

TEST(DictMatch, ADictTitleHoldsAllFourMarkers)
{
    struct Case {
        const char* title;
        bool dictTitle;
    };
    const Case cases[] = {
        {"took; take 🗣/teɪk/🔝★★★༒verb📇1-0🔚; my words", true},
        {"take 🗣🔝📇🔚;", true},
        {"🔚;📇🔝🗣 markers in another order", true},
        {"take /teɪk/🔝★★★༒verb📇1-0🔚;", false},
        {"take 🗣/teɪk/★★★༒verb📇1-0🔚;", false},
        {"take 🗣/teɪk/🔝★★★༒verb1-0🔚;", false},
        {"take 🗣/teɪk/🔝★★★༒verb📇1-0🔚", false},
    };
    for (const Case& c : cases) {
        const JsonDictNote note(NoteRecord{"N", QString::fromUtf8(c.title), {}, {}});
        EXPECT_EQ(isDictTitle(note), c.dictTitle) << c.title;
    }
}

TEST(DictMatch, TheIndexNamesTheCardsDictionary)
{
    const QString indexError = QStringLiteral("❌ 标题中的索引错误！");
    const auto mismatch = [](const char* name) { return QStringLiteral("❌ 字典不匹配无法同步，请选择：") + QString::fromUtf8(name); };
    struct Case {
        const char* title;
        int selected;
        std::optional<QString> message;
    };
    const Case cases[] = {
        {"take 🗣/teɪk/🔝★༒verb📇1-0🔚;", 0, std::nullopt},
        {"take 🗣/teɪk/🔝★༒verb📇1-0🔚;", 1, mismatch("LDOCE5")},
        {"take 🗣/teɪk/🔝★༒verb📇2-3-1🔚;", 1, std::nullopt},
        {"take 🗣/teɪk/🔝★༒verb📇2-3-1🔚;", 0, mismatch("collins")},
        // A number no dictionary has is named by its digits.
        {"take 🗣/teɪk/🔝★༒verb📇2-3-2🔚;", 1, mismatch("2")},
        {"take 🗣/teɪk/🔝★༒verb📇1-0-0🔚;", 0, indexError},
        {"take 🗣/teɪk/🔝★༒verb📇1-0-1x🔚;", 1, indexError},
        {"take 🗣/teɪk/🔝★༒verb📇1-0--1🔚;", 1, indexError},
        {"take 🗣/teɪk/🔝★༒verb📇1🔚;", 0, indexError},
        {"take 🗣/teɪk/🔝★༒verb📇1-0-1-1🔚;", 1, indexError},
        // Only the text between the last index marker and the first end counts.
        {"take 🗣/teɪk/🔝★༒verb📇1-0🔚; my note 1-2-3", 0, std::nullopt},
        {"see 📇9 take 🗣/teɪk/🔝★༒verb📇1-0-1🔚;", 1, std::nullopt},
        {"take 🗣/teɪk/🔝★༒verb📇1-0-1", 1, std::nullopt},
        // Without an index marker the whole text before the end is read.
        {"1-0🔚;", 0, std::nullopt},
        {"take🔚;", 0, indexError},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(dictMatchForTitle(QString::fromUtf8(c.title), c.selected), c.message) << c.title << " with " << c.selected;
    }
}

TEST(DictMatch, TheShortNameEndsAtTheFirstSemicolon)
{
    const char* cases[][2] = {
        {"took; take 🗣/tʊk/🔝★༒verb📇1-0🔚;", "took"},
        {"take 🗣/teɪk/🔝★༒verb📇1-0🔚;", "take 🗣/teɪk/🔝★༒verb📇1-0🔚"},
        {"no separator at all", "no separator at all"},
        {";starts with one", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(cardShortName(QString::fromUtf8(c[0])), QString::fromUtf8(c[1])) << c[0];
}

}  // namespace
}  // namespace lexicorn
