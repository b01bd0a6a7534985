#include "foundation/alerts.h"

#include "foundation/log.h"

#include <mutex>

namespace lexicorn {

namespace {

std::mutex mutex;
AlertPresenter& presenter()
{
    static AlertPresenter installed;
    return installed;
}

}  // namespace

void setAlertPresenter(AlertPresenter presenter_)
{
    std::lock_guard lock(mutex);
    presenter() = std::move(presenter_);
}

void presentAlert(const QString& title, const QString& message, const QString& button,
                  std::function<void()> acknowledged)
{
    AlertPresenter show;
    {
        std::lock_guard lock(mutex);
        show = presenter();
    }
    if (show) {
        show(title, message, button, std::move(acknowledged));
        return;
    }
    logLine(QStringLiteral("alert: %1%2").arg(title.isEmpty() ? QString() : title + QStringLiteral(": "), message));
    // The log is all a user sees here, and there is no button to wait for.
    if (acknowledged)
        acknowledged();
}

}  // namespace lexicorn
