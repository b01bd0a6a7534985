#pragma once

// A heads-up message over a window's content: a rounded dark box with white
// text in the upper third of its parent, fading out when its time is up.
// It lets every click through to what lies below.

#include <QString>
#include <QTimer>
#include <QWidget>

class QGraphicsOpacityEffect;
class QPropertyAnimation;

namespace lexicorn::host::ui {

class HudOverlay : public QWidget {
    Q_OBJECT
public:
    explicit HudOverlay(QWidget* parent);

    // Shows the text at once for this many seconds, replacing any message shown.
    void showMessage(const QString& text, double seconds);
    QString currentText() const { return text_; }
    // From showMessage until the fade-out has ended.
    bool isShowing() const { return showing_; }

protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void fadeOut();
    QRect boxRect() const;

    QString text_;
    bool showing_ = false;
    QTimer timer_;
    QGraphicsOpacityEffect* opacity_;
    QPropertyAnimation* fade_;
};

}  // namespace lexicorn::host::ui
