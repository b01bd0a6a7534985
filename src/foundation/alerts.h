#pragma once

#include <QString>

#include <functional>

namespace lexicorn {

// Shows an alert with one button. The reader installs a presenter that opens
// a real dialog; without one (command line, tests) the alert is logged.
using AlertPresenter = std::function<void(const QString& title, const QString& message, const QString& button)>;

void setAlertPresenter(AlertPresenter presenter);

// Call on the main thread.
void presentAlert(const QString& title, const QString& message, const QString& button);

}  // namespace lexicorn
