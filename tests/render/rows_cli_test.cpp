#include "support/cli_run.h"
#include "support/temp_home.h"

#include "lexicorn/dictionary/records.h"

#include "foundation/user_defaults.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using testing::CliRun;
const auto lexicorn = testing::runLexicorn;

QJsonObject styleJson(int red, int green, int blue, double size, double alpha = 1.0)
{
    return {{"color", QJsonArray{red, green, blue, alpha}}, {"fontSize", size}};
}

// The attribute sets a popup run may carry, from the popup's table.
const QJsonArray popupStyles{
    styleJson(255, 255, 159, 18), styleJson(255, 190, 147, 18), styleJson(226, 121, 166, 18),
    styleJson(146, 255, 255, 16), styleJson(159, 235, 155, 16), styleJson(255, 190, 147, 16),
    styleJson(103, 217, 240, 16, 0.8), styleJson(255, 255, 159, 16),
};

const QStringList fieldMarkers{DictData::SEPA_Readings, DictData::SEPA_star, DictData::SEPA_Pos, DictData::SEPA_SP_En,
                               DictData::SEPA_SP_Cn, DictData::SEPA_Gram, DictData::SEPA_Def, DictData::SEPA_Def_Cn,
                               DictData::SEPA_Ext, QStringLiteral("\n")};

// Every run lies inside its text, after the one before, with one of the
// popup's styles, and no run covers a field marker.
void checkRuns(const QJsonObject& line, const std::string& where)
{
    const QString text = line[QStringLiteral("text")].toString();
    qsizetype end = 0;
    std::vector<bool> styled(std::size_t(text.size()), false);
    for (const QJsonValue& value : line[QStringLiteral("runs")].toArray()) {
        const QJsonObject run = value.toObject();
        const qsizetype start = run[QStringLiteral("start")].toInteger(-1);
        const qsizetype length = run[QStringLiteral("length")].toInteger(-1);
        ASSERT_GE(start, end) << where;
        ASSERT_GT(length, 0) << where;
        ASSERT_LE(start + length, text.size()) << where;
        end = start + length;
        EXPECT_TRUE(popupStyles.contains(run[QStringLiteral("attrs")]))
            << where << ": " << QJsonDocument(run).toJson(QJsonDocument::Compact).toStdString();
        for (qsizetype index = start; index < end; ++index)
            styled[std::size_t(index)] = true;
    }
    for (const QString& marker : fieldMarkers) {
        for (qsizetype at = text.indexOf(marker); at >= 0; at = text.indexOf(marker, at + 1)) {
            for (qsizetype index = at; index < at + marker.size(); ++index)
                EXPECT_FALSE(styled[std::size_t(index)]) << where << ": marker at " << at << " in " << text.toStdString();
        }
    }
}

TEST(RowsCli, JsonSectionsOfSampleLookups)
{
    testing::TempHome home;
    home.copySampleDictionaries();
    UserDefaults::standard().set(QStringLiteral("SPECIAL_ENGINE"), 7);  // no translation request
    struct Case {
        const char* dict;
        const char* word;
        const char* sentence;
        qsizetype wordStart;
        qsizetype wordLength;
        QStringList headers;
    };
    const Case cases[] = {
        {"LDOCE5", "a", "There is a cat in the garden.", 9, 1, {QStringLiteral("a;🗣ə🔝●●●༒determiner")}},
        {"collins", "about", "What is it about?", 11, 5,
         {QStringLiteral("about;🗣/əˈbaʊt/🔝5༒ADV"), QStringLiteral("about;🗣/əˈbaʊt/🔝5༒PREP")}},
    };
    for (const Case& c : cases) {
        const CliRun run = lexicorn({QStringLiteral("rows"), QStringLiteral("--dict"), QString::fromUtf8(c.dict),
                                     QStringLiteral("--sentence"), QString::fromUtf8(c.sentence), QStringLiteral("--json"),
                                     QString::fromUtf8(c.word)});
        ASSERT_EQ(run.status, 0) << c.dict << ": " << run.err.toStdString();
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(run.out.toUtf8(), &error);
        ASSERT_EQ(error.error, QJsonParseError::NoError) << run.out.toStdString();
        const QJsonArray sections = document.array();
        ASSERT_EQ(sections.size(), c.headers.size() + 1) << c.dict;

        const QJsonArray head = sections[0].toArray();
        ASSERT_EQ(head.size(), 3) << c.dict;
        EXPECT_EQ(head[0][QStringLiteral("text")].toString(), QString::fromUtf8(c.dict));
        EXPECT_EQ(head[1][QStringLiteral("text")].toString(), QString::fromUtf8(c.sentence));
        EXPECT_EQ(head[2][QStringLiteral("text")].toString(), QString());
        const QJsonObject wordRun{{"start", c.wordStart}, {"length", c.wordLength}, {"attrs", styleJson(255, 190, 147, 16)}};
        EXPECT_TRUE(head[1][QStringLiteral("runs")].toArray().contains(wordRun)) << c.dict;

        for (qsizetype s = 0; s < sections.size(); ++s) {
            const QJsonArray lines = sections[s].toArray();
            if (s > 0) {
                EXPECT_EQ(lines[0][QStringLiteral("text")].toString(), c.headers[s - 1]) << c.dict;
                EXPECT_GE(lines.size(), 2) << c.dict << " section " << s;
            }
            for (qsizetype l = 0; l < lines.size(); ++l)
                checkRuns(lines[l].toObject(), std::string(c.dict) + " section " + std::to_string(s) + " line " + std::to_string(l));
        }
    }
}

}  // namespace
}  // namespace lexicorn
