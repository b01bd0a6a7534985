// lexicorn-bench-ocr: the text layer of a scanned page.
//
//   recognisePage      a full US-letter page of prose, scanned at 300 dpi:
//                      rendered by Poppler and read by Tesseract (goal <= 3 s)
//   renderPage         the rendering alone, for the share of the above
//   cachedPage         the same page answered from the disk cache, as the
//                      reader asks for it (goal <= 20 ms)
//
// The scan is made in the set-up as a scanned book comes about: groff
// typesets the prose, pdftoppm turns the page into a 300 dpi grey picture and
// img2pdf binds it into a PDF without text. Tools from scripts/setup.
// The cache lives in a scratch home folder (LEXICORN_HOME).

#include "host/pdf/ocr_cache.h"
#include "host/pdf/page_ocr.h"

#include <benchmark/benchmark.h>

#include <poppler-qt6.h>

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>
#include <memory>

namespace {

using namespace lexicorn;

// Sentences of ordinary prose, repeated in varied order until a page is full.
const char* const sentences[] = {
    "Reading in a second language is slow at first.",
    "Every page brings words that the reader has never met, and each one asks for a decision.",
    "Good readers guess when the meaning is clear and look a word up when it keeps coming back.",
    "The old harbour town had three bakeries, a small library and a market that opened before dawn.",
    "Fishermen mended their nets on the wall while children ran along the beach.",
    "In the evening the lamps were lit one by one, and the boats came home with the tide.",
    "A scanned book is a set of pictures, so nothing on its pages can be selected.",
    "Optical character recognition turns the pictures back into text with the place of every letter.",
    "She wrote each new word in a notebook, with the sentence it came from and its meaning.",
    "By the end of the winter the notebook was full and the stories read much faster.",
};

struct Scan {
    std::unique_ptr<QTemporaryDir> folder;
    QString path;
    QString md5;
    QString error;  // empty when the scan was made
};

bool run(const QString& program, const QStringList& arguments, const QString& folder, QString& error,
         const QString& output = QString())
{
    QProcess process;
    process.setWorkingDirectory(folder);
    if (!output.isEmpty())
        process.setStandardOutputFile(output);
    process.start(program, arguments);
    if (!process.waitForStarted(10000) || !process.waitForFinished(120000) || process.exitCode() != 0) {
        error = program + QStringLiteral(" failed (scripts/setup installs it): ")
            + QString::fromLocal8Bit(process.readAllStandardError());
        return false;
    }
    return true;
}

const Scan& letterScan()
{
    static Scan scan = [] {
        Scan made;
        made.folder = std::make_unique<QTemporaryDir>();
        const QDir dir(made.folder->path());
        QByteArray source = ".ds CH\n.LP\n";
        for (int n = 0; n < 48; ++n) {
            source += sentences[(n * 7) % 10];
            source += '\n';
            if (n % 6 == 5)
                source += ".PP\n";
        }
        QFile file(dir.filePath(QStringLiteral("page.ms")));
        if (!file.open(QIODevice::WriteOnly)) {
            made.error = QStringLiteral("cannot write the page source");
            return made;
        }
        file.write(source);
        file.close();
        const QString folder = made.folder->path();
        if (!run(QStringLiteral("groff"), {"-ms", "-Tpdf", "-P-pletter", "page.ms"}, folder, made.error,
                 dir.filePath(QStringLiteral("text.pdf")))
            || !run(QStringLiteral("pdftoppm"), {"-r", "300", "-gray", "-f", "1", "-l", "1", "-singlefile", "text.pdf", "page"},
                    folder, made.error)
            || !run(QStringLiteral("img2pdf"), {"--imgsize", "300dpix300dpi", "page.pgm", "-o", "scan.pdf"}, folder,
                    made.error))
            return made;
        made.path = dir.filePath(QStringLiteral("scan.pdf"));
        QFile pdf(made.path);
        pdf.open(QIODevice::ReadOnly);
        made.md5 = QString::fromLatin1(QCryptographicHash::hash(pdf.readAll(), QCryptographicHash::Md5).toHex());
        qputenv("LEXICORN_HOME", made.folder->path().toUtf8());
        return made;
    }();
    return scan;
}

std::size_t characters(const PageLines& lines)
{
    std::size_t count = 0;
    for (const CharLine& line : lines)
        count += line.size();
    return count;
}

void recognisePage(benchmark::State& state)
{
    const Scan& scan = letterScan();
    if (!scan.error.isEmpty()) {
        state.SkipWithError(scan.error.toStdString().c_str());
        return;
    }
    const std::unique_ptr<Poppler::Document> document = Poppler::Document::load(scan.path);
    PageLines lines;
    QString problem;
    for (auto _ : state) {
        lines = host::recognisePage(*document, 1, &problem);
        benchmark::DoNotOptimize(lines.data());
    }
    if (!problem.isEmpty())
        state.SkipWithError(problem.toStdString().c_str());
    state.counters["lines"] = double(lines.size());
    state.counters["characters"] = double(characters(lines));
}
BENCHMARK(recognisePage)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

void renderPage(benchmark::State& state)
{
    const Scan& scan = letterScan();
    if (!scan.error.isEmpty()) {
        state.SkipWithError(scan.error.toStdString().c_str());
        return;
    }
    const std::unique_ptr<Poppler::Document> document = Poppler::Document::load(scan.path);
    for (auto _ : state) {
        const std::unique_ptr<Poppler::Page> page = document->page(0);
        const QImage image = page->renderToImage(host::ocrResolution, host::ocrResolution)
                                 .convertToFormat(QImage::Format_Grayscale8);
        benchmark::DoNotOptimize(image.constBits());
    }
}
BENCHMARK(renderPage)->Unit(benchmark::kMillisecond)->UseRealTime();

void cachedPage(benchmark::State& state)
{
    const Scan& scan = letterScan();
    if (!scan.error.isEmpty()) {
        state.SkipWithError(scan.error.toStdString().c_str());
        return;
    }
    const std::unique_ptr<Poppler::Document> document = Poppler::Document::load(scan.path);
    QString problem;
    host::recognisedText(*document, scan.md5, 1, &problem);  // recognised and kept, once
    if (!host::cachedPageText(scan.md5, 1)) {
        state.SkipWithError(("the page was not kept: " + problem).toStdString().c_str());
        return;
    }
    PageLines lines;
    for (auto _ : state) {
        lines = host::recognisedText(*document, scan.md5, 1, &problem);
        benchmark::DoNotOptimize(lines.data());
    }
    state.counters["characters"] = double(characters(lines));
    state.counters["file_KB"] = double(QFile(host::ocrCacheFile(scan.md5, 1)).size()) / 1024.0;
}
BENCHMARK(cachedPage)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
