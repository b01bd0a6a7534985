#include "host/ui/task_progress.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QProgressBar>
#include <QTimer>

#include <algorithm>

namespace lexicorn::host::ui {

namespace {
constexpr int spokes = 12;
constexpr int stepMilliseconds = 80;
}  // namespace

// Twelve spokes, one drawn darkest, that turn a step at a time while shown:
// it keeps moving only while the window's event loop runs.
class BusyWheel : public QWidget {
public:
    explicit BusyWheel(QWidget* parent) : QWidget(parent)
    {
        setFixedSize(18, 18);
        timer_.setInterval(stepMilliseconds);
        connect(&timer_, &QTimer::timeout, this, [this] {
            ++steps_;
            update();
        });
    }
    void start()
    {
        steps_ = 0;
        timer_.start();
    }
    void stop() { timer_.stop(); }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(width() / 2.0, height() / 2.0);
        const double radius = std::min(width(), height()) / 2.0;
        for (int spoke = 0; spoke < spokes; ++spoke) {
            // The darkest spoke leads; those behind it fade.
            const int behind = (steps_ - spoke + spokes) % spokes;
            QColor colour(0x4a, 0x4f, 0x57);
            colour.setAlphaF(1.0 - behind / double(spokes + 2));
            painter.setPen(QPen(colour, 2.0, Qt::SolidLine, Qt::RoundCap));
            painter.save();
            painter.rotate(spoke * 360.0 / spokes);
            painter.drawLine(QPointF(0, -radius * 0.45), QPointF(0, -radius * 0.9));
            painter.restore();
        }
    }

private:
    QTimer timer_;
    int steps_ = 0;
};

TaskProgress::TaskProgress(QWidget* parent) : QWidget(parent)
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(4, 0, 4, 0);
    layout->setSpacing(6);
    wheel_ = new BusyWheel(this);
    bar_ = new QProgressBar(this);
    bar_->setFixedWidth(140);
    // The counts are in the task's own words beside it.
    bar_->setTextVisible(false);
    label_ = new QLabel(this);
    layout->addWidget(wheel_);
    layout->addWidget(bar_);
    layout->addWidget(label_);
    hide();
}

void TaskProgress::report(const QString& text, int done, int total)
{
    if (isHidden()) {
        wheel_->start();
        show();
    }
    bar_->setRange(0, total);
    bar_->setValue(done);
    label_->setText(text);
    emit reported(done, total);
}

void TaskProgress::finish()
{
    wheel_->stop();
    hide();
}

}  // namespace lexicorn::host::ui
