// `lexicorn sentences` on a scanned page: the sentences of the typeset page,
// read by OCR; without language data, one message and no sentences.

#include "scan_books.h"

#include "support/cli_run.h"
#include "support/temp_home.h"

#include "host/pdf/ocr_cache.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using namespace lexicorn;
using namespace lexicorn::testing;

QStringList outputLines(const QString& out)
{
    return out.split(u'\n', Qt::SkipEmptyParts);
}

TEST(OcrCommand, SentencesOfAScanAreThoseOfTheTypesetPage)
{
    const ScanBooks& books = scanBooks();
    ASSERT_FALSE(HasFailure());
    const QString page = QString::number(prosePage);
    const CliRun typeset = runLexicorn({"sentences", "--pdf", books.text, "--page", page});
    ASSERT_EQ(typeset.status, 0) << typeset.err.toStdString();
    const QStringList expected = outputLines(typeset.out);
    ASSERT_GE(expected.size(), 8);

    const QTemporaryDir noData;
    struct Case {
        const char* name;
        QString tessdata;  // null: Tesseract's own
        bool recognised;
    };
    const std::vector<Case> cases{
        {"with OCR", QString(), true},
        {"without language data", noData.path(), false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const TempHome home;
        const ScopedEnvironment tessdata("TESSDATA_PREFIX", c.tessdata);
        const CliRun run = runLexicorn({"sentences", "--pdf", books.scan, "--page", page});
        EXPECT_EQ(run.status, 0) << run.err.toStdString();
        const QString kept = host::ocrCacheFile(md5Of(books.scan), prosePage);
        if (c.recognised) {
            EXPECT_TRUE(run.err.isEmpty()) << run.err.toStdString();
            const QStringList got = outputLines(run.out);
            ASSERT_EQ(got.size(), expected.size()) << run.out.toStdString();
            int same = 0;
            for (qsizetype i = 0; i < got.size(); ++i)
                same += lettersOf(got[i]) == lettersOf(expected[i]);
            EXPECT_GE(same, expected.size() * 9 / 10) << run.out.toStdString();
            EXPECT_TRUE(QFileInfo::exists(kept));
        } else {
            EXPECT_TRUE(run.out.isEmpty()) << run.out.toStdString();
            EXPECT_EQ(outputLines(run.err).size(), 1) << run.err.toStdString();
            EXPECT_TRUE(run.err.contains(QStringLiteral("eng.traineddata"))) << run.err.toStdString();
            EXPECT_FALSE(QFileInfo::exists(kept));
        }
    }
}

}  // namespace
