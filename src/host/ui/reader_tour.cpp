#include "host/ui/reader_tour.h"

#include "host/kit/view_kit.h"
#include "host/ui/hud_overlay.h"
#include "host/ui/notebook_panel.h"
#include "host/ui/reader_window.h"

#include "foundation/index_path.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QMouseEvent>
#include <QThread>

#include <cstdio>
#include <functional>

namespace lexicorn::host::ui {

namespace {

void sendMouse(QWidget& widget, QEvent::Type type, const QPointF& at, Qt::MouseButtons buttons)
{
    QMouseEvent event(type, at, widget.mapToGlobal(at), Qt::LeftButton, buttons, Qt::NoModifier);
    QApplication::sendEvent(&widget, &event);
}

// Runs the event loop until the condition holds or the time is up.
bool waitFor(const std::function<bool()>& condition, int milliseconds)
{
    QDeadlineTimer deadline(milliseconds);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QApplication::processEvents(QEventLoop::AllEvents, 50);
        QThread::msleep(10);
    }
    return true;
}

// The popup's container once it is on screen, else null.
QWidget* shownPopup(ReaderWindow& window)
{
    const auto container = runtime::send<std::shared_ptr<runtime::Object>>(window.bookView(), "enDictContainer");
    QWidget* widget = container ? widgetOf(*container) : nullptr;
    return widget && widget->isVisible() ? widget : nullptr;
}

QString save(QWidget& widget, const QString& folder, const QString& name)
{
    const QString path = QDir(folder).filePath(name + QStringLiteral(".png"));
    widget.grab().save(path);
    std::printf("screenshot: %s\n", qPrintable(path));
    return path;
}

}  // namespace

void dragWithMouse(QWidget& widget, const QPointF& from, const QPointF& to, const std::function<void()>& beforeRelease)
{
    sendMouse(widget, QEvent::MouseButtonPress, from, Qt::LeftButton);
    for (int step = 1; step <= 4; ++step)
        sendMouse(widget, QEvent::MouseMove, from + (to - from) * step / 4.0, Qt::LeftButton);
    if (beforeRelease)
        beforeRelease();
    sendMouse(widget, QEvent::MouseButtonRelease, to, Qt::NoButton);
}

void clickWithMouse(QWidget& widget, const QPointF& at)
{
    sendMouse(widget, QEvent::MouseButtonPress, at, Qt::LeftButton);
    sendMouse(widget, QEvent::MouseButtonRelease, at, Qt::NoButton);
}

std::vector<PageWord> wordsOnPage(const QString& pdfPath, int pageNo, int minLetters)
{
    std::vector<PageWord> words;
    const PdfObjCAPI document(pdfPath);
    for (const CharLine& line : document.textContentsForPageNo_(pageNo)) {
        PageWord current;
        for (std::size_t i = 0; i <= line.size(); ++i) {
            if (i < line.size() && QChar(line[i].ch).isLetter()) {
                current.text.append(QChar(line[i].ch));
                current.area = current.area.united(line[i].rect);
                continue;
            }
            if (current.text.size() >= minLetters)
                words.push_back(current);
            current = PageWord();
        }
    }
    return words;
}

int runReaderTour(ReaderWindow& window, const QString& book, const QString& folder)
{
    QDir().mkpath(folder);
    window.resize(1400, 900);
    window.show();
    if (!window.openFile(book) || !waitFor([&window] { return window.isBookReady(); }, 10000))
        return 1;
    waitFor([] { return false; }, 300);  // the first page arrives
    save(window, folder, QStringLiteral("1-book"));

    window.canvas().goToPage(0);
    QWidget& viewport = *window.canvas().viewport();
    // Selects a word as a user would; true once the popup shows entries for it.
    const auto lookUp = [&](const PageWord& candidate) {
        const QPointF from = window.pageToViewport(1, QPointF(candidate.area.left() + 1, candidate.area.center().y()));
        const QPointF to = window.pageToViewport(1, QPointF(candidate.area.right() - 1, candidate.area.center().y()));
        dragWithMouse(viewport, from, to);
        if (!waitFor([&] { return shownPopup(window) != nullptr; }, 500))
            return false;
        const auto tables = runtime::send<std::vector<std::shared_ptr<runtime::Object>>>(*viewObjectOf(shownPopup(window)), "subviews");
        return runtime::send<int>(*tables.front(), "numberOfSections") > 1;
    };
    QString word;
    // The dictionary loads in the background: the first word is tried until it is ready.
    for (const PageWord& candidate : wordsOnPage(book, 1, 5)) {
        if (waitFor([&] { return lookUp(candidate) || shownPopup(window); }, 60000) && lookUp(candidate)) {
            word = candidate.text;
            break;
        }
    }
    if (word.isEmpty()) {
        std::fprintf(stderr, "tour: no word of page 1 opened the popup with an entry\n");
        return 1;
    }
    std::printf("selected: %s\n", qPrintable(word));
    save(window, folder, QStringLiteral("2-popup"));

    // The first sense of the first entry: section 1, row 0.
    const auto table = runtime::send<std::vector<std::shared_ptr<runtime::Object>>>(
        *viewObjectOf(shownPopup(window)), "subviews");
    runtime::send<void>(*table.front(), "scrollToRowAtIndexPath:atScrollPosition:animated:", lexicorn::IndexPath{1, 0}, 1, false);
    QApplication::processEvents();
    const auto cell = runtime::send<std::shared_ptr<runtime::Object>>(*table.front(), "cellForRowAtIndexPath:", lexicorn::IndexPath{1, 0});
    QWidget* sense = cell ? widgetOf(*runtime::send<std::shared_ptr<runtime::Object>>(*cell, "textView")) : nullptr;
    if (!sense) {
        std::fprintf(stderr, "tour: the popup has no sense to tap\n");
        return 1;
    }
    clickWithMouse(*sense, QPointF(sense->width() / 2.0, sense->height() / 2.0));
    waitFor([] { return false; }, 300);
    save(window, folder, QStringLiteral("3-card"));
    return 0;
}

}  // namespace lexicorn::host::ui
