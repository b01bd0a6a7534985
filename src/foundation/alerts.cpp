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

void presentAlert(const QString& title, const QString& message, const QString& button)
{
    AlertPresenter show;
    {
        std::lock_guard lock(mutex);
        show = presenter();
    }
    if (show)
        show(title, message, button);
    else
        logLine(QStringLiteral("alert: %1%2").arg(title.isEmpty() ? QString() : title + QStringLiteral(": "), message));
}

}  // namespace lexicorn
