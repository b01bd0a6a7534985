#pragma once

#include <QDir>
#include <QString>
#include <QWidget>

namespace lexicorn::test {

// Saves what the widget shows as LEXICORN_SCREENSHOT_DIR/NAME.png and returns
// the path (empty when it could not be written).
inline QString saveScreenshot(QWidget& widget, const QString& name)
{
    QDir().mkpath(QStringLiteral(LEXICORN_SCREENSHOT_DIR));
    const QString path = QStringLiteral(LEXICORN_SCREENSHOT_DIR "/") + name + QStringLiteral(".png");
    return widget.grab().save(path) ? path : QString();
}

}  // namespace lexicorn::test
