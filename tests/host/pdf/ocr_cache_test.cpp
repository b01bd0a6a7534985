// The disk cache of recognised pages: a page is recognised once, a file that
// is not sound is never trusted, and without language data nothing is kept.

#include "scan_books.h"

#include "support/temp_home.h"

#include "host/pdf/ocr_cache.h"
#include "host/pdf/page_ocr.h"

#include <poppler-qt6.h>

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace lexicorn;
using namespace lexicorn::testing;

QString allLetters(const PageLines& lines)
{
    QString text;
    for (const CharLine& line : lines)
        text += textOf(line);
    return lettersOf(text);
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.toStdString();
    file.write(bytes);
}

// The same file with one change made to its JSON.
template <typename Change>
QByteArray edited(const QByteArray& bytes, Change change)
{
    QJsonObject root = QJsonDocument::fromJson(bytes).object();
    change(root);
    return QJsonDocument(root).toJson(QJsonDocument::Compact);
}

TEST(OcrCache, APageIsRecognisedOnceADamagedFileAgainAndWithoutLanguageDataNever)
{
    const ScanBooks& books = scanBooks();
    ASSERT_FALSE(HasFailure());
    const TempHome home;
    const std::unique_ptr<Poppler::Document> document = Poppler::Document::load(books.scan);
    ASSERT_TRUE(document);
    const QString md5 = md5Of(books.scan);

    struct Page {
        const char* name;
        int pageNo;
        QString letters;  // what it says
    };
    const std::vector<Page> pages{
        {"short page", shortPage, lettersOf(QStringLiteral("Small steps add up."))},
        {"blank page", blankPage, QString()},
    };
    PageLines shortLines;
    for (const Page& page : pages) {
        SCOPED_TRACE(page.name);
        const QString path = host::ocrCacheFile(md5, page.pageNo);
        EXPECT_EQ(path, home.path() + QStringLiteral("/Lexicorn/ocr/%1/%2.json").arg(md5).arg(page.pageNo));

        QString problem;
        const PageLines first = host::recognisedText(*document, md5, page.pageNo, &problem);
        EXPECT_TRUE(problem.isEmpty()) << problem.toStdString();
        EXPECT_TRUE(allLetters(first).startsWith(page.letters)) << allLetters(first).toStdString();
        EXPECT_EQ(first.empty(), page.letters.isEmpty());
        ASSERT_TRUE(QFileInfo::exists(path));
        const QDateTime written = QFileInfo(path).lastModified();

        // The second time the file answers, as it was written, untouched.
        const PageLines second = host::recognisedText(*document, md5, page.pageNo, &problem);
        EXPECT_TRUE(sameLines(second, first));
        EXPECT_EQ(QFileInfo(path).lastModified(), written);
        if (page.pageNo == shortPage)
            shortLines = first;
    }
    ASSERT_FALSE(shortLines.empty());

    // What the file says is what is given: the page is not read again.
    const QString path = host::ocrCacheFile(md5, shortPage);
    const QByteArray sound = readFile(path);
    PageLines altered = shortLines;
    altered.front().front().ch = u'#';
    ASSERT_TRUE(host::storePageText(md5, shortPage, altered));
    EXPECT_TRUE(sameLines(host::recognisedText(*document, md5, shortPage), altered));

    // A file that is not sound is recognised again and replaced.
    struct Damage {
        const char* name;
        QByteArray bytes;
    };
    const std::vector<Damage> damages{
        {"cut short", sound.left(sound.size() / 2)},
        {"of another version", edited(sound, [](QJsonObject& root) { root[QStringLiteral("version")] = 2; })},
        {"a rectangle short",
         edited(sound,
                [](QJsonObject& root) {
                    QJsonArray lines = root[QStringLiteral("lines")].toArray();
                    QJsonObject line = lines[0].toObject();
                    QJsonArray rects = line[QStringLiteral("rects")].toArray();
                    rects.removeLast();
                    line[QStringLiteral("rects")] = rects;
                    lines[0] = line;
                    root[QStringLiteral("lines")] = lines;
                })},
    };
    for (const Damage& damage : damages) {
        SCOPED_TRACE(damage.name);
        ASSERT_NE(damage.bytes, sound);
        writeFile(path, damage.bytes);
        EXPECT_FALSE(host::cachedPageText(md5, shortPage));
        QString problem;
        EXPECT_TRUE(sameLines(host::recognisedText(*document, md5, shortPage, &problem), shortLines));
        EXPECT_TRUE(problem.isEmpty()) << problem.toStdString();
        const std::optional<PageLines> kept = host::cachedPageText(md5, shortPage);
        ASSERT_TRUE(kept);
        EXPECT_TRUE(sameLines(*kept, shortLines));
    }

    // Without language data there is one problem and no file.
    const QTemporaryDir noData;
    {
        const ScopedEnvironment tessdata("TESSDATA_PREFIX", noData.path());
        const host::OcrAvailability availability = host::ocrAvailability();
        EXPECT_FALSE(availability.available);
        EXPECT_TRUE(availability.problem.contains(QStringLiteral("eng.traineddata"))) << availability.problem.toStdString();
        EXPECT_TRUE(availability.problem.contains(noData.path())) << availability.problem.toStdString();

        QString problem;
        EXPECT_TRUE(host::recognisedText(*document, md5, prosePage, &problem).empty());
        EXPECT_EQ(problem, availability.problem);
        EXPECT_FALSE(QFileInfo::exists(host::ocrCacheFile(md5, prosePage)));
    }
    const host::OcrAvailability availability = host::ocrAvailability();
    EXPECT_TRUE(availability.available) << availability.problem.toStdString();
}

}  // namespace
