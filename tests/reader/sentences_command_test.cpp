// `lexicorn sentences`: the sentences and sections of a PDF page, as text
// and as JSON with line ends and character rectangles.

#include "support/cli_run.h"
#include "support/temp_home.h"
#include "support/typeset.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using lexicorn::testing::runLexicorn;

const QString sampleBook = QStringLiteral(LEXICORN_SAMPLE_DIR "/books/sample-book.pdf");

TEST(SentencesCommand, PrintsOneSentenceOrSectionPerLine)
{
    struct Case {
        QStringList extra;
        int page;
        QString line;  // a whole output line that must be there
    };
    const std::vector<Case> cases{
        // Printed lines are joined with a blank; Chinese without one.
        // A word broken at a line end is whole again.
        {{}, 2, "Slowly, page after page and note after note, my vocabulary grew."},
        {{}, 3, "遇到不认识的词，我先猜一猜，然后再查词典。"},
        {{"--sections"}, 3, "我每天读十页英文书。遇到不认识的词，我先猜一猜，然后再查词典。一本旧词典，也可以是一位新老师。"},
    };
    for (const Case& c : cases) {
        const auto run = runLexicorn(QStringList{"sentences", "--pdf", sampleBook, "--page", QString::number(c.page)} + c.extra);
        ASSERT_EQ(run.status, 0) << run.err.toStdString();
        EXPECT_TRUE(run.out.split(u'\n').contains(c.line)) << c.line.toStdString() << "\ngot:\n" << run.out.toStdString();
    }
}

// Where lines end and where characters sit is checked on the library's sentences; this checks what the JSON carries.
TEST(SentencesCommand, JsonGivesLineEndsAndOneRectanglePerCharacter)
{
    const auto run = runLexicorn({"sentences", "--pdf", sampleBook, "--page", "2", "--json"});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    const QString vocabulary = QStringLiteral("Slowly, page after page and note after note, my vocab-ulary grew.");
    const QJsonArray sentences = QJsonDocument::fromJson(run.out.toUtf8()).array();
    const auto found = std::find_if(sentences.begin(), sentences.end(), [&](const QJsonValue& value) {
        return value[QStringLiteral("text")].toString() == vocabulary;
    });
    ASSERT_NE(found, sentences.end()) << run.out.toStdString();
    EXPECT_EQ((*found)[QStringLiteral("lineEnds")].toArray(), (QJsonArray{vocabulary.indexOf(u'-'), vocabulary.size() - 1}));
    const QJsonArray rects = (*found)[QStringLiteral("rects")].toArray();
    ASSERT_EQ(rects.size(), vocabulary.size());
    for (const QJsonValue& rect : rects) {
        // x, y, width, height: on an A5 page, 419.5 points wide, and as tall as a character.
        const QJsonArray box = rect.toArray();
        ASSERT_EQ(box.size(), 4);
        EXPECT_GE(box[0].toDouble(), 0.0);
        EXPECT_LE(box[0].toDouble() + box[2].toDouble(), 420.0);
        EXPECT_GT(box[3].toDouble(), 5.0);
    }
}

// A typeset two-column page reads as its prose, sentence for sentence: the
// columns one after the other, words broken at line ends whole again, and
// compounds the dictionary knows ("second-hand") keeping their hyphen.
TEST(SentencesCommand, ATwoColumnPageReadsAsItsProse)
{
    lexicorn::testing::TempHome home;
    home.copySampleDictionaries();
    const QString pdf = lexicorn::testing::typesetPdf(home.path(), QStringLiteral("paper"),
                                                      lexicorn::testing::twoColumnSource(false));
    const auto run = runLexicorn({"sentences", "--pdf", pdf, "--page", "1"});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    const QStringList expected = QStringList{lexicorn::testing::twoColumnTitle} + lexicorn::testing::twoColumnProse();
    EXPECT_EQ(run.out.trimmed().split(u'\n'), expected);
}

}  // namespace
