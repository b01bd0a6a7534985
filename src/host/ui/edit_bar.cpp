#include "host/ui/edit_bar.h"

#include <QPainter>

namespace lexicorn::host::ui {

namespace {
const QColor background(0xe9, 0xeb, 0xee);
const QColor borderLine(0xc8, 0xc8, 0xc8);
const QColor captionColour(0x4a, 0x4f, 0x57);
const QString caption = QStringLiteral("Notes");
constexpr int captionInset = 10;
}  // namespace

EditBar::EditBar(QWidget* parent) : QWidget(parent)
{
    setFixedHeight(height);
}

void EditBar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), background);
    painter.setPen(borderLine);
    painter.drawLine(0, height - 1, width(), height - 1);
    QFont bold = font();
    bold.setWeight(QFont::DemiBold);
    painter.setFont(bold);
    painter.setPen(captionColour);
    painter.drawText(rect().adjusted(captionInset, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter, caption);
}

}  // namespace lexicorn::host::ui
