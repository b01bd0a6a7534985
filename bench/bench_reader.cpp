// lexicorn-bench-reader: the book canvas, offscreen, in a 1920 × 1080 window.
//
//   render_page_fit_width   one sample-book page drawn by Poppler at the zoom
//                           the canvas uses to fit the width (the worker's
//                           render call alone)
//   request_to_image        a zoom change to the page image painted: the
//                           request crosses to the worker, the page is drawn
//                           and comes back to the event loop
//   open_1000_pages         a 1000-page PDF opened to its first page painted
//                           (counter open_call_ms: the openDocument call alone)
//
//   lexicorn-bench-reader --scroll-memory
//                           the whole reader (window, plug-in, sample
//                           dictionaries) opens the 1000-page PDF, goes to
//                           every page in turn letting its image arrive, and
//                           prints the peak resident memory (VmHWM).
//
// The 1000-page PDF is written once with QPdfWriter into $LEXICORN_BENCH_DATA
// (else the build's bench-data folder) as reader-1000.pdf.

#include "host/ui/page_canvas.h"
#include "host/ui/reader_window.h"

#include "foundation/alerts.h"

#include "support/typeset.h"

#include <benchmark/benchmark.h>
#include <poppler-qt6.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QPainter>
#include <QPdfWriter>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>
#include <cstring>
#include <memory>

namespace {

using lexicorn::host::ui::PageCanvas;
using lexicorn::host::ui::PageRenderer;
using lexicorn::host::ui::RenderRequest;

const QString kSampleBook = QStringLiteral(LEXICORN_SAMPLE_DIR "/books/sample-book.pdf");
constexpr QSize kWindow(1920, 1080);

// Where generated books are kept between runs.
QString benchDataFolder()
{
    const QByteArray env = qgetenv("LEXICORN_BENCH_DATA");
    return env.isEmpty() ? QStringLiteral(LEXICORN_BENCH_DEFAULT_DATA) : QString::fromLocal8Bit(env);
}

QString bookOf1000Pages()
{
    const QString dir = benchDataFolder();
    const QString path = dir + QStringLiteral("/reader-1000.pdf");
    if (QFile::exists(path))
        return path;
    QDir().mkpath(dir);
    const QString partial = path + QStringLiteral(".part");
    {
        QPdfWriter writer(partial);
        writer.setResolution(72);
        writer.setPageSize(QPageSize(QPageSize::A4));
        writer.setPageMargins(QMarginsF(0, 0, 0, 0));
        QPainter painter(&writer);
        QFont font(QStringLiteral("DejaVu Serif"));
        font.setPixelSize(12);
        painter.setFont(font);
        for (int page = 0; page < 1000; ++page) {
            if (page > 0)
                writer.newPage();
            painter.drawText(QPointF(72, 80), QStringLiteral("Chapter %1, page %2").arg(page / 20 + 1).arg(page + 1));
            for (int line = 0; line < 6; ++line)
                painter.drawText(QPointF(72, 120 + 18 * line),
                                 QStringLiteral("Line %1: every morning the reader opens the book where it was left.")
                                     .arg(line + 1));
        }
    }
    QFile::rename(partial, path);
    return path;
}

bool waitRendered(PageCanvas& canvas, int timeoutMs = 5000)
{
    QSignalSpy rendered(&canvas, &PageCanvas::pagesRendered);
    return rendered.wait(timeoutMs);
}

void showCanvas(PageCanvas& canvas)
{
    canvas.resize(kWindow);
    canvas.show();
    (void)QTest::qWaitForWindowExposed(&canvas);
}

void render_page_fit_width(benchmark::State& state)
{
    PageCanvas canvas;
    showCanvas(canvas);
    canvas.openDocument(kSampleBook);
    const double zoom = canvas.zoom();
    auto document = Poppler::Document::load(kSampleBook);
    document->setRenderHint(Poppler::Document::Antialiasing, true);
    document->setRenderHint(Poppler::Document::TextAntialiasing, true);
    const auto page = document->page(0);
    const RenderRequest request{0, zoom, QRectF(QPointF(0, 0), page->pageSizeF()), 1.0};
    QSize size;
    for (auto _ : state) {
        const QImage image = PageRenderer::renderPage(*page, request);
        size = image.size();
        benchmark::DoNotOptimize(image.constBits());
    }
    state.counters["zoom"] = zoom;
    state.counters["width_px"] = size.width();
    state.counters["height_px"] = size.height();
}
BENCHMARK(render_page_fit_width)->Unit(benchmark::kMillisecond);

void request_to_image(benchmark::State& state)
{
    PageCanvas canvas;
    showCanvas(canvas);
    canvas.openDocument(kSampleBook);
    if (!waitRendered(canvas)) {
        state.SkipWithError("the first page never arrived");
        return;
    }
    const double fit = canvas.zoom();
    bool odd = false;
    for (auto _ : state) {
        odd = !odd;
        canvas.setZoom(odd ? fit * 0.999 : fit);
        if (!waitRendered(canvas)) {
            state.SkipWithError("a page image never arrived");
            return;
        }
    }
}
BENCHMARK(request_to_image)->Unit(benchmark::kMillisecond)->UseRealTime();

void open_1000_pages(benchmark::State& state)
{
    const QString path = bookOf1000Pages();
    PageCanvas canvas;
    showCanvas(canvas);
    double openCallMs = 0;
    int pages = 0;
    for (auto _ : state) {
        QSignalSpy rendered(&canvas, &PageCanvas::pagesRendered);
        QElapsedTimer timer;
        timer.start();
        if (!canvas.openDocument(path)) {
            state.SkipWithError("could not open the 1000-page PDF");
            return;
        }
        openCallMs += timer.nsecsElapsed() / 1e6;
        pages = canvas.pageCount();
        if (!rendered.wait(5000)) {
            state.SkipWithError("the first page never arrived");
            return;
        }
        state.PauseTiming();
        canvas.closeDocument();
        QCoreApplication::processEvents();
        state.ResumeTiming();
    }
    state.counters["pages"] = pages;
    state.counters["open_call_ms"] = benchmark::Counter(openCallMs, benchmark::Counter::kAvgIterations);
}
BENCHMARK(open_1000_pages)->Unit(benchmark::kMillisecond)->UseRealTime();

// The whole reader with the plug-in, as a user runs it, in a scratch home
// (with the sample dictionaries when asked); alerts are answered at once.
class WholeReader {
public:
    explicit WholeReader(bool sampleDictionaries)
    {
        qputenv("LEXICORN_HOME", home_.path().toUtf8());
        if (sampleDictionaries) {
            QDir().mkpath(home_.path() + QStringLiteral("/Dict"));
            const QString samples = QStringLiteral(LEXICORN_SAMPLE_DIR "/Dict/");
            for (const QString& name : QDir(samples).entryList(QDir::Files))
                QFile::copy(samples + name, home_.path() + QStringLiteral("/Dict/") + name);
        }
        lexicorn::setAlertPresenter([](const QString&, const QString&, const QString&, std::function<void()> done) {
            if (done)
                done();
        });
        app_ = lexicorn::host::ui::launchReader(QStringLiteral(LEXICORN_PLUGIN_PATH));
        window_ = std::make_unique<lexicorn::host::ui::ReaderWindow>(app_);
        window_->resize(kWindow);
        window_->show();
        (void)QTest::qWaitForWindowExposed(window_.get());
    }
    lexicorn::host::ui::ReaderWindow& window() { return *window_; }

private:
    QTemporaryDir home_;
    lexicorn::host::HostApplication app_;
    std::unique_ptr<lexicorn::host::ui::ReaderWindow> window_;
};

// A scanned book of 1000 pages (a page image each, no text), made once in
// the data folder: a typeset page rasterised by pdftoppm, wrapped by img2pdf.
QString scannedBookOf1000Pages()
{
    const QString dir = benchDataFolder();
    const QString path = dir + QStringLiteral("/scanned-1000.pdf");
    if (QFile::exists(path))
        return path;
    QDir().mkpath(dir);
    const QString text = lexicorn::testing::typesetPdf(dir, QStringLiteral("scan-source"), lexicorn::testing::twoColumnSource(false));
    const QString image = dir + QStringLiteral("/scan-page");
    if (text.isEmpty() || QProcess::execute(QStringLiteral("pdftoppm"), {"-r", "150", "-gray", "-png", "-singlefile", text, image}) != 0)
        return {};
    const QStringList pages(1000, image + QStringLiteral(".png"));
    const QString partial = path + QStringLiteral(".part");
    if (QProcess::execute(QStringLiteral("img2pdf"), pages + QStringList{"-o", partial}) != 0)
        return {};
    QFile::rename(partial, path);
    return path;
}

// The whole window, plug-in loaded: File › Open of a 1000-page book until its
// first page is painted (the second, below it, follows); the MD5 (book ready for notes and lookups) follows
// in the background. A scanned book of some 350 MB against a text book.
void openBookInWindow(benchmark::State& state, const QString& path)
{
    if (path.isEmpty()) {
        state.SkipWithError("could not make the book (pdftoppm, img2pdf)");
        return;
    }
    WholeReader reader(false);
    lexicorn::host::ui::ReaderWindow& window = reader.window();
    double readyMs = 0;
    double openCallMs = 0;
    for (auto _ : state) {
        QSignalSpy rendered(&window.canvas(), &PageCanvas::pagesRendered);
        QElapsedTimer timer;
        timer.start();
        if (!window.openFile(path)) {
            state.SkipWithError("could not open the book");
            return;
        }
        openCallMs = timer.nsecsElapsed() / 1e6;
        while (!window.canvas().pageRendered(0))
            rendered.wait(1000);
        state.SetIterationTime(timer.nsecsElapsed() / 1e9);
        (void)QTest::qWaitFor([&window] { return window.isBookReady(); }, 60000);
        readyMs = timer.nsecsElapsed() / 1e6;
    }
    state.counters["book_ready_ms"] = readyMs;
    state.counters["open_call_ms"] = openCallMs;
    state.counters["file_mb"] = double(QFileInfo(path).size()) / 1048576.0;
}

void open_scanned_book_in_window(benchmark::State& state)
{
    openBookInWindow(state, scannedBookOf1000Pages());
}
BENCHMARK(open_scanned_book_in_window)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(5);

void open_text_book_in_window(benchmark::State& state)
{
    openBookInWindow(state, bookOf1000Pages());
}
BENCHMARK(open_text_book_in_window)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(5);

long statusKb(const char* key)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith(key))
            return line.mid(qsizetype(std::strlen(key))).trimmed().split(' ').first().toLong();
    return -1;
}

// Scrolls a 1000-page book from its first page to its last in the whole
// reader with the sample dictionaries.
int scrollMemory()
{
    WholeReader reader(true);
    lexicorn::host::ui::ReaderWindow& window = reader.window();
    const QString path = bookOf1000Pages();
    QElapsedTimer timer;
    timer.start();
    if (!window.openFile(path)) {
        std::fprintf(stderr, "could not open %s\n", qPrintable(path));
        return 1;
    }
    PageCanvas& canvas = window.canvas();
    waitRendered(canvas);
    // A step often finds its page drawn ahead of time; otherwise it waits
    // for the image to arrive.
    int waited = 0, missed = 0;
    std::size_t peakCache = 0;
    for (int page = 1; page < canvas.pageCount(); ++page) {
        canvas.goToPage(page);
        QCoreApplication::processEvents();
        if (!canvas.visiblePagesRendered()) {
            ++waited;
            QSignalSpy rendered(&canvas, &PageCanvas::pagesRendered);
            for (int tries = 0; tries < 50 && !canvas.visiblePagesRendered(); ++tries)
                rendered.wait(100);
            missed += !canvas.visiblePagesRendered();
        }
        peakCache = std::max(peakCache, canvas.cachedImageBytes());
    }
    std::printf("pages %d\n", canvas.pageCount());
    std::printf("zoom %.3f\n", canvas.zoom());
    std::printf("steps_waiting_for_an_image %d\n", waited);
    std::printf("steps_without_image_after_5s %d\n", missed);
    std::printf("scroll_s %.1f\n", timer.elapsed() / 1000.0);
    std::printf("peak_image_cache_mb %.1f\n", peakCache / 1048576.0);
    std::printf("rss_mb %.1f\n", statusKb("VmRSS:") / 1024.0);
    std::printf("peak_rss_mb %.1f\n", statusKb("VmHWM:") / 1024.0);
    return 0;
}

}  // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    for (int i = 1; i < argc; ++i)
        if (std::strcmp(argv[i], "--scroll-memory") == 0)
            return scrollMemory();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
