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

    {
        const TempHome home;
        const CliRun run = runLexicorn({"sentences", "--pdf", books.scan, "--page", page});
        EXPECT_EQ(run.status, 0) << run.err.toStdString();
        EXPECT_TRUE(run.err.isEmpty()) << run.err.toStdString();
        const QStringList got = outputLines(run.out);
        ASSERT_EQ(got.size(), expected.size()) << run.out.toStdString();
        int same = 0;
        for (qsizetype i = 0; i < got.size(); ++i)
            same += lettersOf(got[i]) == lettersOf(expected[i]);
        EXPECT_GE(same, expected.size() * 9 / 10) << run.out.toStdString();
        EXPECT_TRUE(QFileInfo::exists(host::ocrCacheFile(md5Of(books.scan), prosePage)));
    }

    // Without language data the one problem (its text checked by OcrCache) reaches standard error.
    const TempHome home;
    const QTemporaryDir noData;
    const ScopedEnvironment tessdata("TESSDATA_PREFIX", noData.path());
    const CliRun run = runLexicorn({"sentences", "--pdf", books.scan, "--page", page});
    EXPECT_EQ(run.status, 0) << run.err.toStdString();
    EXPECT_TRUE(run.out.isEmpty()) << run.out.toStdString();
    EXPECT_EQ(outputLines(run.err).size(), 1) << run.err.toStdString();
    EXPECT_TRUE(run.err.contains(QStringLiteral("eng.traineddata"))) << run.err.toStdString();
}

}  // namespace
