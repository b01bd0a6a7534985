// lexicorn sentences: the sentences or sections of one PDF page, as the
// reader cuts them for the dictionary card's quote.

#include "cli/commands.h"
#include "cli/output.h"

#include "host/pdf/ocr_cache.h"
#include "host/pdf/pdf_objc_api.h"
#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/reader/sentences/broken_words.h"
#include "lexicorn/reader/sentences/hook_pdf_page_text_tool.h"

#include "foundation/paths.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

#include <poppler-qt6.h>

#include <cmath>
#include <cstdio>
#include <memory>

namespace lexicorn::cli {

namespace {

QString bookMD5(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw CommandError(QStringLiteral("cannot read the book %1").arg(path));
    QCryptographicHash hash(QCryptographicHash::Md5);
    hash.addData(&file);
    return QString::fromLatin1(hash.result().toHex());
}

double rounded(double value)
{
    return std::round(value * 100.0) / 100.0;
}

QJsonObject sentenceJson(const Sentence& sentence)
{
    QString text;
    QJsonArray lineEnds;
    QJsonArray rects;
    for (std::size_t i = 0; i < sentence.size(); ++i) {
        const CharRecord& record = sentence[i];
        text.append(QChar(record.ch));
        if (record.lineEnd)
            lineEnds.append(qint64(i));
        rects.append(QJsonArray{rounded(record.rect.x()), rounded(record.rect.y()), rounded(record.rect.width()),
                                rounded(record.rect.height())});
    }
    return QJsonObject{{QStringLiteral("text"), text}, {QStringLiteral("lineEnds"), lineEnds},
                       {QStringLiteral("rects"), rects}};
}

// A sentence on one output line. The page text has no blank where a printed
// line breaks, so one is put there, except after Chinese (which is written
// without blanks) and where a blank already follows.
QString sentenceLine(const Sentence& sentence)
{
    QString text;
    for (std::size_t i = 0; i < sentence.size(); ++i) {
        const CharRecord& record = sentence[i];
        text.append(QChar(record.ch));
        const bool inside = i + 1 < sentence.size();
        if (record.lineEnd && inside && sentence[i + 1].ch != u' ' && record.ch < 0x2E80)
            text.append(u' ');
    }
    return text;
}

// The words of the user's dictionary and word forms, when there is a Dict
// folder; without one, broken words are joined by the case of the next line.
KnownWord dictionaryWords()
{
    if (!QFileInfo(dictDirectory()).isDir())
        return {};
    EnWordServer& server = EnWordServer::shared();
    server.asyncInitDict();
    server.waitForLoadJobs();
    return [&server](const QString& word) { return server.knows(word); };
}

// A scanned page has no text of its own: it is given the text recognised on
// it, from the OCR cache in the home folder or recognised now, as the reader
// does. Without OCR the page stays without text, after one message.
void addRecognisedText(host::PdfObjCAPI& document, const QString& path, const QString& md5, int pageNo)
{
    if (document.hasPopplerText(pageNo))
        return;
    const std::unique_ptr<Poppler::Document> scan = Poppler::Document::load(path);
    if (!scan)
        return;
    QString problem;
    PageLines lines = host::recognisedText(*scan, md5, pageNo, &problem);
    if (!problem.isEmpty()) {
        std::fprintf(stderr, "lexicorn: %s\n", problem.toUtf8().constData());
        return;
    }
    document.setTextLayer(pageNo, std::move(lines));
}

}  // namespace

int runSentences(Arguments& arguments)
{
    applyHomeOption(arguments);
    const std::optional<QString> pdf = arguments.option(QStringLiteral("pdf"));
    const std::optional<QString> pageOption = arguments.option(QStringLiteral("page"));
    const bool sections = arguments.flag(QStringLiteral("sections"));
    const bool json = arguments.flag(QStringLiteral("json"));
    if (!arguments.positionals().isEmpty())
        throw UsageError(QStringLiteral("sentences takes no words; give --pdf FILE --page N"));
    if (!pdf)
        throw UsageError(QStringLiteral("sentences needs --pdf FILE"));
    bool isNumber = false;
    const int pageNo = pageOption ? pageOption->toInt(&isNumber) : 0;
    if (!isNumber || pageNo < 1)
        throw UsageError(QStringLiteral("sentences needs --page N, a page number counting from 1"));

    const QString md5 = bookMD5(*pdf);
    host::PdfObjCAPI document(*pdf);
    if (!document.isOpen())
        throw CommandError(QStringLiteral("cannot open the book %1").arg(*pdf));
    if (pageNo > document.pageCount())
        throw CommandError(QStringLiteral("the book %1 has no page %2 (it has %3)").arg(*pdf).arg(pageNo).arg(document.pageCount()));
    addRecognisedText(document, *pdf, md5, pageNo);

    HookPDFPageTextTool::setPageTextSource([](std::int64_t viewHandle, int page) {
        const host::PdfObjCAPI* opened = host::PdfObjCAPI::withViewHandle(viewHandle);
        return opened ? opened->textContentsForPageNo_(page) : PageLines();
    });
    const Sentences pieces = sections
        ? HookPDFPageTextTool::sectionWithViewHandle_pageNo_bookMD5_(document.viewHandle(), pageNo, md5)
        : HookPDFPageTextTool::sentenceWithViewHandle_pageNo_bookMD5_(document.viewHandle(), pageNo, md5);

    if (json) {
        // One array, one sentence to a line.
        QStringList objects;
        for (const Sentence& piece : pieces)
            objects.append(QString::fromUtf8(QJsonDocument(sentenceJson(piece)).toJson(QJsonDocument::Compact)));
        print(objects.isEmpty() ? QStringLiteral("[]\n") : u'[' + objects.join(QStringLiteral(",\n")) + QStringLiteral("]\n"));
    } else {
        // As the popup quotes them: words broken at a line end whole again.
        const KnownWord known = dictionaryWords();
        for (const Sentence& piece : pieces)
            print(sentenceLine(withBrokenWordsJoined(piece, known)) + u'\n');
    }
    return 0;
}

}  // namespace lexicorn::cli
