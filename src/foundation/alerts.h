#pragma once

#include <QString>

#include <functional>

namespace lexicorn {

// Shows an alert with one button. The reader installs a presenter that opens
// a real dialog; without one (command line, tests) the alert is logged.
//
// The presenter gets the caller's completion (possibly empty) and calls it
// once the user has dismissed the alert, so that whatever depends on the user
// having seen it happens only then. A presenter may return before that.
using AlertPresenter = std::function<void(const QString& title, const QString& message, const QString& button,
                                          std::function<void()> acknowledged)>;

void setAlertPresenter(AlertPresenter presenter);

// Call on the main thread. acknowledged runs once the alert was dismissed;
// without a presenter nobody can dismiss it, so it runs right after the alert
// is logged.
void presentAlert(const QString& title, const QString& message, const QString& button,
                  std::function<void()> acknowledged = {});

}  // namespace lexicorn
