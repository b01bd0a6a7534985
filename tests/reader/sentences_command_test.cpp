// `lexicorn sentences`: the sentences and sections of a PDF page, as text
// and as JSON with line ends and character rectangles.

#include "support/cli_run.h"
#include "support/temp_home.h"
#include "support/typeset.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

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

TEST(SentencesCommand, JsonGivesLineEndsAndOneRectanglePerCharacter)
{
    const auto run = runLexicorn({"sentences", "--pdf", sampleBook, "--page", "2", "--json"});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(run.out.toUtf8(), &error);
    ASSERT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString();
    ASSERT_TRUE(document.isArray());
    const QJsonArray sentences = document.array();
    ASSERT_FALSE(sentences.isEmpty());
    bool sawVocabulary = false;
    for (const QJsonValue& value : sentences) {
        const QJsonObject sentence = value.toObject();
        const QString text = sentence.value(QStringLiteral("text")).toString();
        const QJsonArray rects = sentence.value(QStringLiteral("rects")).toArray();
        const QJsonArray lineEnds = sentence.value(QStringLiteral("lineEnds")).toArray();
        ASSERT_EQ(rects.size(), text.size()) << text.toStdString();
        ASSERT_FALSE(lineEnds.isEmpty()) << text.toStdString();
        // A sentence always ends on a flagged character.
        EXPECT_EQ(lineEnds.last().toInt(), text.size() - 1) << text.toStdString();
        for (const QJsonValue& rect : rects) {
            const QJsonArray box = rect.toArray();
            ASSERT_EQ(box.size(), 4);
            EXPECT_GE(box[0].toDouble(), 0.0);
            EXPECT_LE(box[0].toDouble() + box[2].toDouble(), 420.0);  // an A5 page is 419.5 points wide
            EXPECT_GT(box[3].toDouble(), 5.0);
        }
        if (text == QStringLiteral("Slowly, page after page and note after note, my vocab-ulary grew.")) {
            sawVocabulary = true;
            EXPECT_EQ(lineEnds, (QJsonArray{text.indexOf(u'-'), text.size() - 1}));
        }
    }
    EXPECT_TRUE(sawVocabulary) << run.out.toStdString();
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
