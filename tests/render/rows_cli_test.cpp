// lexicorn rows prints the popup's sections as JSON; what the sections hold
// is checked in rows_test.cpp, here only that the command runs the lookup in
// the dictionary asked for and writes texts and runs out.

#include "support/cli_run.h"
#include "support/temp_home.h"

#include "foundation/user_defaults.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

TEST(RowsCli, PrintsTheSectionsOfALookupAsJson)
{
    testing::TempHome home;
    home.copySampleDictionaries();
    UserDefaults::standard().set(QStringLiteral("SPECIAL_ENGINE"), 7);  // no translation request
    const testing::CliRun run = testing::runLexicorn(
        {QStringLiteral("rows"), QStringLiteral("--dict"), QStringLiteral("LDOCE5"), QStringLiteral("--sentence"),
         QStringLiteral("There is a cat in the garden."), QStringLiteral("--json"), QStringLiteral("a")});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    QJsonParseError error;
    const QJsonArray sections = QJsonDocument::fromJson(run.out.toUtf8(), &error).array();
    ASSERT_EQ(error.error, QJsonParseError::NoError) << run.out.toStdString();
    ASSERT_EQ(sections.size(), 2);

    const QJsonArray head = sections[0].toArray();
    ASSERT_EQ(head.size(), 3);
    EXPECT_EQ(head[0][QStringLiteral("text")].toString(), QStringLiteral("LDOCE5"));
    EXPECT_EQ(head[1][QStringLiteral("text")].toString(), QStringLiteral("There is a cat in the garden."));
    // The quoted word's run, with its colour as red, green, blue and alpha.
    const QJsonObject wordRun{{"start", 9},
                              {"length", 1},
                              {"attrs", QJsonObject{{"color", QJsonArray{255, 190, 147, 1.0}}, {"fontSize", 16}}}};
    EXPECT_TRUE(head[1][QStringLiteral("runs")].toArray().contains(wordRun)) << run.out.toStdString();
    EXPECT_EQ(sections[1][0][QStringLiteral("text")].toString(), QStringLiteral("a;🗣ə🔝●●●༒determiner"));
    // A Chinese definition's run keeps its colour's fractional alpha.
    const QJsonObject chinese{{"color", QJsonArray{103, 217, 240, 0.8}}, {"fontSize", 16}};
    bool found = false;
    for (const QJsonValue& run : sections[1][1][QStringLiteral("runs")].toArray())
        found = found || run[QStringLiteral("attrs")].toObject() == chinese;
    EXPECT_TRUE(found) << run.out.toStdString();
}

}  // namespace
}  // namespace lexicorn
