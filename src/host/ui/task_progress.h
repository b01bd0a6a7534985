#pragma once

// A long task's progress in the window's status line: a turning wheel that
// shows the task is alive, a bar with how many items of how many are done,
// and the task's own words. Hidden while no task reports.

#include <QString>
#include <QWidget>

class QLabel;
class QProgressBar;

namespace lexicorn::host::ui {

class BusyWheel;

class TaskProgress : public QWidget {
    Q_OBJECT
public:
    explicit TaskProgress(QWidget* parent = nullptr);

    // Shows the progress, or updates it when already shown.
    void report(const QString& text, int done, int total);
    void finish();

signals:
    // A report is on screen.
    void reported(int done, int total);

private:
    BusyWheel* wheel_;
    QProgressBar* bar_;
    QLabel* label_;
};

}  // namespace lexicorn::host::ui
