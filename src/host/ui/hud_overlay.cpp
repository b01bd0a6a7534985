#include "host/ui/hud_overlay.h"

#include <QEvent>
#include <QGraphicsOpacityEffect>
#include <QPainter>
#include <QPropertyAnimation>

#include <algorithm>

namespace lexicorn::host::ui {

namespace {
constexpr int fadeMilliseconds = 250;
constexpr int padding = 16;
}  // namespace

HudOverlay::HudOverlay(QWidget* parent) : QWidget(parent)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
    opacity_ = new QGraphicsOpacityEffect(this);
    opacity_->setOpacity(1.0);
    setGraphicsEffect(opacity_);
    fade_ = new QPropertyAnimation(opacity_, "opacity", this);
    fade_->setDuration(fadeMilliseconds);
    fade_->setStartValue(1.0);
    fade_->setEndValue(0.0);
    connect(fade_, &QPropertyAnimation::finished, this, [this] {
        showing_ = false;
        hide();
    });
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, &HudOverlay::fadeOut);
    if (parent) {
        parent->installEventFilter(this);
        setGeometry(parent->rect());
    }
    hide();
}

void HudOverlay::showMessage(const QString& text, double seconds)
{
    fade_->stop();
    opacity_->setOpacity(1.0);
    text_ = text;
    showing_ = true;
    if (parentWidget())
        setGeometry(parentWidget()->rect());
    show();
    raise();
    update();
    timer_.start(std::max(0, static_cast<int>(seconds * 1000)));
}

void HudOverlay::fadeOut()
{
    fade_->stop();
    fade_->start();
}

bool HudOverlay::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == parentWidget() && event->type() == QEvent::Resize)
        setGeometry(parentWidget()->rect());
    return QWidget::eventFilter(watched, event);
}

QRect HudOverlay::boxRect() const
{
    const int maxWidth = std::max(80, width() * 2 / 3);
    const QFontMetrics metrics(font());
    QRect text = metrics.boundingRect(QRect(0, 0, maxWidth - 2 * padding, 10000), Qt::AlignCenter | Qt::TextWordWrap, text_);
    QRect box(0, 0, text.width() + 2 * padding, text.height() + 2 * padding);
    box.moveCenter(QPoint(width() / 2, height() / 3));
    return box;
}

void HudOverlay::paintEvent(QPaintEvent*)
{
    if (text_.isEmpty())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRect box = boxRect();
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(30, 30, 30, 220));
    painter.drawRoundedRect(box, 10, 10);
    painter.setPen(Qt::white);
    painter.drawText(box.adjusted(padding, padding, -padding, -padding), Qt::AlignCenter | Qt::TextWordWrap, text_);
}

}  // namespace lexicorn::host::ui
