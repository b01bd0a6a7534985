#pragma once

class QWidget;

namespace lexicorn::host::ui {

// Makes presentAlert open a message box over the window (modal to it, not
// blocking the caller) whose one button dismisses it; the alert's completion
// runs only once the box is closed.
void installDialogAlertPresenter(QWidget* parent);

}  // namespace lexicorn::host::ui
