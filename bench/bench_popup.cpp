// lexicorn-bench-popup: mouse release to dictionary popup painted, in the
// whole reader with the plug-in, offscreen, 1400 × 900.
//
// Each iteration drags over the next word of the book with mouse events and
// times from the release until the popup shows the word's entries and has
// been painted. The dictionary is loaded before timing starts; the
// translation engine is 5 (no service), so the translation row is the one a
// reader gets when the sentence is answered from memory or by no engine.
//
//   popup_sample_dictionary     the sample book with the sample dictionaries
//   popup_generated_dictionary  a book of headwords from a generated raw
//                               dictionary of --raw-mb 250 (collins.json),
//                               written once into $LEXICORN_BENCH_DATA/popup
//
// Counters: p50_ms, p95_ms, max_ms over the iterations; the Time column is
// their mean. The plug-in loads once per process: run one benchmark per
// process (--benchmark_filter=sample or =generated), as bench/run does.

#include "dict_generator.h"

#include "host/kit/view_kit.h"
#include "host/ui/reader_tour.h"
#include "host/ui/reader_window.h"

#include "foundation/alerts.h"
#include "foundation/user_defaults.h"

#include "support/typeset.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QTest>
#include <QElapsedTimer>
#include <QFile>
#include <QPainter>
#include <QPdfWriter>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <functional>

namespace {

using namespace lexicorn;
using ObjectRef = std::shared_ptr<runtime::Object>;

constexpr int lookups = 200;

QString benchData()
{
    const QByteArray env = qgetenv("LEXICORN_BENCH_DATA");
    return env.isEmpty() ? QStringLiteral(LEXICORN_BENCH_DEFAULT_DATA) : QString::fromLocal8Bit(env);
}

bool waitFor(const std::function<bool()>& condition, int milliseconds)
{
    QDeadlineTimer deadline(milliseconds);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QApplication::processEvents(QEventLoop::AllEvents, 5);
    }
    return true;
}

// The generated raw dictionary (250 MB) and a book of its headwords.
struct GeneratedBook {
    QString dict;  // folder with collins.json
    QString pdf;
};

// Single words of four to twelve letters from the start of the raw file,
// whose top-level keys are the headwords.
QStringList headwordsOf(const QString& rawPath, int count)
{
    QFile file(rawPath);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QString head = QString::fromUtf8(file.read(8 << 20));
    static const QRegularExpression key(QStringLiteral("[{,]\"([a-z]{4,12})\":\\{\"star\""));
    QStringList words;
    for (auto match = key.globalMatch(head); match.hasNext() && words.size() < count;)
        words << match.next().captured(1);
    return words;
}

void writeBook(const QString& path, const QStringList& words)
{
    const QString partial = path + QStringLiteral(".part");
    {
        QPdfWriter writer(partial);
        writer.setResolution(72);
        writer.setPageSize(QPageSize(QPageSize::A4));
        QPainter painter(&writer);
        QFont font(QStringLiteral("DejaVu Serif"));
        font.setPixelSize(12);
        painter.setFont(font);
        // Sentences of six headwords, a line each.
        for (int line = 0; line * 6 < words.size() && line < 40; ++line) {
            const QString sentence = QStringList(words.mid(line * 6, 6)).join(u' ') + u'.';
            painter.drawText(QPointF(40, 60 + 18 * line), sentence.left(1).toUpper() + sentence.mid(1));
        }
    }
    QFile::rename(partial, path);
}

GeneratedBook generatedBook()
{
    const QString root = benchData() + QStringLiteral("/popup");
    bench::DataPaths paths(root.toStdString());
    if (!bench::dataIsComplete(paths)) {
        std::fprintf(stderr, "generating a 250 MB raw dictionary in %s\n", qPrintable(root));
        bench::generateData(paths, {.cacheMb = 1, .rawMb = 250, .forms = 1000, .lookups = 1000});
    }
    const QString pdf = root + QStringLiteral("/headwords.pdf");
    if (!QFile::exists(pdf))
        writeBook(pdf, headwordsOf(QString::fromStdString(paths.raw.string()), 240));
    return {QString::fromStdString(paths.dict.string()), pdf};
}

class PopupReader {
public:
    PopupReader(const QString& dictFolder, const QString& book) : book_(book)
    {
        qputenv("LEXICORN_HOME", home_.path().toUtf8());
        QDir().mkpath(home_.path() + QStringLiteral("/Dict"));
        for (const QString& name : QDir(dictFolder).entryList({QStringLiteral("*.json")}, QDir::Files))
            QFile::link(dictFolder + u'/' + name, home_.path() + QStringLiteral("/Dict/") + name);
        UserDefaults::standard().set(QStringLiteral("SPECIAL_ENGINE"), 5);
        // The start-up notice is answered at once.
        setAlertPresenter([](const QString&, const QString&, const QString&, std::function<void()> done) {
            if (done)
                done();
        });
        app_ = host::ui::launchReader(QStringLiteral(LEXICORN_PLUGIN_PATH));
        window_ = std::make_unique<host::ui::ReaderWindow>(app_);
        window_->resize(1400, 900);
        window_->show();
        ok_ = window_->openFile(book) && QTest::qWaitFor([this] { return window_->isBookReady(); }, 10000);
        runtime::send<void>(*app_.bookView, "setEnableDict:", true);
        words_ = host::ui::wordsOnPage(book, 1, 4);
    }

    bool ok() const { return ok_ && !words_.empty(); }

    // Selects the next word; the time from release to the popup painted
    // with entries, or a negative number when no popup with entries came.
    double lookUpNext(int waitMs = 2000)
    {
        const host::ui::PageWord& word = words_[next_++ % words_.size()];
        QWidget& viewport = *window_->canvas().viewport();
        const QPointF from = window_->pageToViewport(1, QPointF(word.area.left() + 1, word.area.center().y()));
        const QPointF to = window_->pageToViewport(1, QPointF(word.area.right() - 1, word.area.center().y()));
        hidePopup();
        QElapsedTimer timer;
        host::ui::dragWithMouse(viewport, from, to, [&timer] { timer.start(); });
        if (!waitFor([this] { return shownTable() != nullptr; }, waitMs))
            return -1;
        host::ui::widgetOf(*popupContainer())->repaint();
        const double ms = timer.nsecsElapsed() / 1e6;
        return runtime::send<int>(*shownTable(), "numberOfSections") > 1 ? ms : -1;
    }

    // Looks words up until the dictionary answers (it loads in the background).
    bool waitForDictionary()
    {
        QDeadlineTimer deadline(180000);
        while (!deadline.hasExpired())
            if (lookUpNext(500) >= 0)
                return true;
        return false;
    }

private:
    ObjectRef popupContainer() { return runtime::send<ObjectRef>(*app_.bookView, "enDictContainer"); }
    ObjectRef shownTable()
    {
        const ObjectRef container = popupContainer();
        if (!container || runtime::send<bool>(*container, "isHidden"))
            return nullptr;
        return runtime::send<std::vector<ObjectRef>>(*container, "subviews").front();
    }
    void hidePopup()
    {
        if (const ObjectRef container = popupContainer())
            runtime::send<void>(*container, "setHidden:", true);
    }

    QTemporaryDir home_;
    QString book_;
    host::HostApplication app_;
    std::unique_ptr<host::ui::ReaderWindow> window_;
    std::vector<host::ui::PageWord> words_;
    std::size_t next_ = 0;
    bool ok_ = false;
};

void measure(benchmark::State& state, const QString& dictFolder, const QString& book)
{
    PopupReader reader(dictFolder, book);
    if (!reader.ok() || !reader.waitForDictionary()) {
        state.SkipWithError("the reader did not show the popup");
        return;
    }
    std::vector<double> times;
    int misses = 0;
    for (auto _ : state) {
        const double ms = reader.lookUpNext();
        if (ms < 0) {
            ++misses;
            state.SetIterationTime(0);
            continue;
        }
        times.push_back(ms);
        state.SetIterationTime(ms / 1000);
    }
    if (times.empty()) {
        state.SkipWithError("no lookup showed entries");
        return;
    }
    std::sort(times.begin(), times.end());
    const auto at = [&times](double fraction) { return times[std::min(times.size() - 1, std::size_t(fraction * times.size()))]; };
    state.counters["p50_ms"] = at(0.50);
    state.counters["p95_ms"] = at(0.95);
    state.counters["max_ms"] = times.back();
    state.counters["words_without_entries"] = misses;
}

void popup_sample_dictionary(benchmark::State& state)
{
    measure(state, QStringLiteral(LEXICORN_SAMPLE_DIR "/Dict"), QStringLiteral(LEXICORN_SAMPLE_DIR "/books/sample-book.pdf"));
}
BENCHMARK(popup_sample_dictionary)->Iterations(lookups)->UseManualTime()->Unit(benchmark::kMillisecond);

// A two-column page set by groff, the words of its first page looked up.
void popup_two_column_page(benchmark::State& state)
{
    const QString folder = benchData() + QStringLiteral("/popup");
    QDir().mkpath(folder);
    const QString pdf = testing::typesetPdf(folder, QStringLiteral("two-columns"), testing::twoColumnSource(true));
    measure(state, QStringLiteral(LEXICORN_SAMPLE_DIR "/Dict"), pdf);
}
BENCHMARK(popup_two_column_page)->Iterations(lookups)->UseManualTime()->Unit(benchmark::kMillisecond);

void popup_generated_dictionary(benchmark::State& state)
{
    const GeneratedBook book = generatedBook();
    measure(state, book.dict, book.pdf);
}
BENCHMARK(popup_generated_dictionary)->Iterations(lookups)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
