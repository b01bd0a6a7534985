#include "host/pdf/ocr_cache.h"

#include "foundation/log.h"
#include "foundation/paths.h"
#include "host/pdf/ocr_page_file.h"
#include "host/pdf/page_ocr.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSaveFile>

namespace lexicorn::host {

namespace {

bool isBookMD5(const QString& text)
{
    static const QRegularExpression md5(QStringLiteral("^[0-9A-Fa-f]{32}$"));
    return md5.match(text).hasMatch();
}

}  // namespace

QString ocrCacheFolder(const QString& bookMD5)
{
    return homeDirectory() + QStringLiteral("/Lexicorn/ocr/") + bookMD5;
}

QString ocrCacheFile(const QString& bookMD5, int pageNo)
{
    if (!isBookMD5(bookMD5) || pageNo < 1)
        return {};
    return ocrCacheFolder(bookMD5) + u'/' + QString::number(pageNo) + QStringLiteral(".json");
}

std::optional<PageLines> cachedPageText(const QString& bookMD5, int pageNo)
{
    const QString path = ocrCacheFile(bookMD5, pageNo);
    if (path.isEmpty())
        return std::nullopt;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > largestOcrPageFile)
        return std::nullopt;
    return decodeOcrPage(file.readAll(), pageNo);
}

bool storePageText(const QString& bookMD5, int pageNo, const PageLines& lines)
{
    const QString path = ocrCacheFile(bookMD5, pageNo);
    if (path.isEmpty() || !QDir().mkpath(ocrCacheFolder(bookMD5)))
        return false;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(encodeOcrPage(pageNo, lines));
    return file.commit();
}

PageLines recognisedText(Poppler::Document& document, const QString& bookMD5, int pageNo, QString* problem)
{
    if (problem)
        problem->clear();
    if (std::optional<PageLines> kept = cachedPageText(bookMD5, pageNo))
        return std::move(*kept);
    QString why;
    PageLines lines = recognisePage(document, pageNo, &why);
    if (!why.isEmpty()) {
        if (problem)
            *problem = why;
        return {};
    }
    if (!storePageText(bookMD5, pageNo, lines))
        logLine(QStringLiteral("OCR: could not keep the text of page %1 in %2").arg(pageNo).arg(ocrCacheFolder(bookMD5)));
    return lines;
}

}  // namespace lexicorn::host
