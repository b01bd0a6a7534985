#include "reader_session.h"

#include "support/server_process.h"

#include "foundation/alerts.h"
#include "foundation/user_defaults.h"

#include "host/ui/page_canvas.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <gtest/gtest.h>

namespace lexicorn::testing {

void ReaderSession::start(const TempHome& home, ReaderOptions options)
{
    QDir().mkpath(home.path() + QStringLiteral("/Dict"));
    const QString samples = QStringLiteral(LEXICORN_SAMPLE_DIR "/Dict/");
    for (const QString& name : QDir(samples).entryList(QDir::Files)) {
        if (options.collins || !name.startsWith(QStringLiteral("collins")))
            QFile::copy(samples + name, home.dictPath(name));
    }
    UserDefaults& defaults = UserDefaults::standard();
    if (options.engineOff) {
        defaults.set(QStringLiteral("SPECIAL_ENGINE"), 5);
    } else {
        const QString closed = QStringLiteral("http://127.0.0.1:%1").arg(closedPort());
        for (const char* key : {"SPECIAL_HOST_GOOGLE_CN", "SPECIAL_HOST_GOOGLE", "SPECIAL_HOST_YOUDAO", "SPECIAL_HOST_EUDIC",
                                "SPECIAL_HOST_DEEPL", "SPECIAL_HOST_VOICE"})
            defaults.set(QString::fromLatin1(key), closed);
    }
    setAlertPresenter([this](const QString&, const QString& message, const QString&, std::function<void()> done) {
        alerts << message;
        if (done)
            done();
    });
    app = host::ui::launchReader(!options.pluginFile.isEmpty() ? options.pluginFile
                                 : options.plugin            ? QStringLiteral(LEXICORN_PLUGIN_PATH)
                                                             : QString());
    window = std::make_unique<host::ui::ReaderWindow>(app);
    window->resize(1400, 900);
    if (options.plugin)
        runtime::send<void>(*app.bookView, "setEnableDict:", true);
    window->show();
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    ASSERT_TRUE(window->openFile(sampleBook));
    ASSERT_TRUE(QTest::qWaitFor([this] { return window->isBookReady(); }, 10000));
    alerts.clear();
}

std::shared_ptr<runtime::Object> ReaderSession::popupTable() const
{
    const auto container = runtime::send<std::shared_ptr<runtime::Object>>(*app.bookView, "enDictContainer");
    if (!container || runtime::send<bool>(*container, "isHidden"))
        return nullptr;
    return runtime::send<std::vector<std::shared_ptr<runtime::Object>>>(*container, "subviews").front();
}

void ReaderSession::dragOver(const QRectF& area)
{
    QWidget* viewport = window->canvas().viewport();
    const QPoint from = window->pageToViewport(1, QPointF(area.left() + 1, area.center().y())).toPoint();
    const QPoint to = window->pageToViewport(1, QPointF(area.right() - 1, area.center().y())).toPoint();
    QTest::mousePress(viewport, Qt::LeftButton, {}, from);
    for (int step = 1; step <= 4; ++step)
        QTest::mouseMove(viewport, from + (to - from) * step / 4);
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, to);
}

bool ReaderSession::lookUp(const QRectF& area, int attempts)
{
    for (int attempt = 0; attempt < attempts; ++attempt) {
        dragOver(area);
        QTest::qWait(20);
        if (popupTable())
            return true;
        QTest::qWait(100);
    }
    return false;
}

void ReaderSession::stop()
{
    window.reset();
    setAlertPresenter({});
}

}  // namespace lexicorn::testing
