#include "host/kit/kit_images.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

#include <cmath>
#include <functional>
#include <map>
#include <numbers>

namespace lexicorn::host::ui {

using runtime::makeImp;
using ObjectRef = std::shared_ptr<runtime::Object>;

namespace {

// Icons are drawn on a 64-pixel square and shown as 32 points.
constexpr int canvasSide = 64;

QPen strokePen(double width)
{
    return QPen(Qt::black, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
}

// Makes a shape's inside transparent again (holes in filled shapes).
void clearPath(QPainter& painter, const QPainterPath& path)
{
    painter.save();
    painter.setCompositionMode(QPainter::CompositionMode_Clear);
    painter.fillPath(path, Qt::black);
    painter.restore();
}

void drawDictionary(QPainter& painter)
{
    painter.setPen(strokePen(5));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(14, 7, 38, 50), 5, 5);
    painter.drawLine(QPointF(22, 8), QPointF(22, 56));
    painter.setPen(strokePen(4));
    painter.drawLine(QPointF(29, 22), QPointF(44, 22));
    painter.drawLine(QPointF(29, 31), QPointF(44, 31));
}

void drawLock(QPainter& painter)
{
    QPainterPath shackle;
    shackle.moveTo(21, 30);
    shackle.lineTo(21, 22);
    shackle.arcTo(QRectF(21, 9, 22, 26), 180, -180);
    shackle.lineTo(43, 30);
    painter.setPen(strokePen(5));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(shackle);
    QPainterPath body;
    body.addRoundedRect(QRectF(12, 28, 40, 29), 6, 6);
    painter.fillPath(body, Qt::black);
    QPainterPath keyhole;
    keyhole.addEllipse(QPointF(32, 39), 4.5, 4.5);
    keyhole.addRect(QRectF(30, 40, 4, 9));
    clearPath(painter, keyhole);
}

// A five-pointed star around the centre.
QPainterPath star(QPointF centre, double outer, double inner)
{
    QPainterPath path;
    for (int i = 0; i < 10; ++i) {
        const double radius = i % 2 ? inner : outer;
        const double angle = -std::numbers::pi / 2 + i * std::numbers::pi / 5;
        const QPointF point = centre + QPointF(std::cos(angle) * radius, std::sin(angle) * radius);
        if (i == 0)
            path.moveTo(point);
        else
            path.lineTo(point);
    }
    path.closeSubpath();
    return path;
}

// The flash-card icon keeps its own colours: a blue card with white stars.
void drawAnki(QPainter& painter)
{
    QLinearGradient blue(0, 4, 0, 60);
    blue.setColorAt(0, QColor(74, 144, 226));
    blue.setColorAt(1, QColor(32, 86, 170));
    painter.setPen(Qt::NoPen);
    painter.setBrush(blue);
    painter.drawRoundedRect(QRectF(4, 4, 56, 56), 13, 13);
    painter.fillPath(star(QPointF(28, 34), 17, 7), Qt::white);
    painter.fillPath(star(QPointF(46, 17), 8, 3.3), QColor(255, 255, 255, 200));
}

void drawCopy(QPainter& painter)
{
    painter.setPen(strokePen(5));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(10, 8, 30, 36), 5, 5);
    QPainterPath front;
    front.addRoundedRect(QRectF(22, 19, 32, 38), 5, 5);
    clearPath(painter, front);
    painter.drawPath(front);
}

void drawSpeech(QPainter& painter)
{
    const QPolygonF speaker({{8, 25}, {18, 25}, {31, 13}, {31, 51}, {18, 39}, {8, 39}});
    painter.setPen(strokePen(3));
    painter.setBrush(Qt::black);
    painter.drawPolygon(speaker);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(strokePen(4.5));
    painter.drawArc(QRectF(26, 20, 24, 24), -50 * 16, 100 * 16);
    painter.drawArc(QRectF(20, 10, 42, 44), -50 * 16, 100 * 16);
}

// Two speech bubbles: one with a letter A, one with lines of text.
void drawTranslation(QPainter& painter)
{
    QPainterPath first;
    first.addRoundedRect(QRectF(4, 6, 34, 28), 6, 6);
    first.moveTo(10, 33);
    first.lineTo(10, 42);
    first.lineTo(19, 33);
    painter.fillPath(first.simplified(), Qt::black);
    QPainterPathStroker stroker;
    stroker.setWidth(3.5);
    QPainterPath strokes;
    strokes.moveTo(13, 29);
    strokes.lineTo(21, 11);
    strokes.lineTo(29, 29);
    strokes.moveTo(16.5, 22);
    strokes.lineTo(25.5, 22);
    clearPath(painter, stroker.createStroke(strokes));

    QPainterPath second;
    second.addRoundedRect(QRectF(26, 26, 34, 26), 6, 6);
    second.moveTo(52, 51);
    second.lineTo(54, 60);
    second.lineTo(44, 51);
    second = second.simplified();
    clearPath(painter, second);
    painter.setPen(strokePen(4));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(second);
    painter.drawLine(QPointF(34, 35), QPointF(52, 35));
    painter.drawLine(QPointF(34, 43), QPointF(47, 43));
}

void drawDrag(QPainter& painter)
{
    painter.setPen(strokePen(5));
    painter.drawLine(QPointF(32, 12), QPointF(32, 52));
    painter.drawLine(QPointF(12, 32), QPointF(52, 32));
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    painter.drawPolygon(QPolygonF({{32, 3}, {42, 15}, {22, 15}}));
    painter.drawPolygon(QPolygonF({{32, 61}, {22, 49}, {42, 49}}));
    painter.drawPolygon(QPolygonF({{3, 32}, {15, 22}, {15, 42}}));
    painter.drawPolygon(QPolygonF({{61, 32}, {49, 42}, {49, 22}}));
}

const std::map<QString, std::function<void(QPainter&)>>& drawings()
{
    static const std::map<QString, std::function<void(QPainter&)>> table{
        {QStringLiteral("dictionary"), drawDictionary}, {QStringLiteral("lock"), drawLock},
        {QStringLiteral("anki64"), drawAnki},           {QStringLiteral("copy"), drawCopy},
        {QStringLiteral("speech"), drawSpeech},         {QStringLiteral("translation"), drawTranslation},
        {QStringLiteral("drag"), drawDrag},
    };
    return table;
}

ObjectRef imageObject(runtime::Class& cls, QPixmap pixmap, const QString& name)
{
    return pixmap.isNull() ? nullptr : std::make_shared<ImageObject>(cls, std::move(pixmap), name);
}

}  // namespace

QColor defaultTintColor()
{
    return QColor(0, 122, 255);
}

QPixmap drawnImage(const QString& name)
{
    const auto found = drawings().find(name);
    if (found == drawings().end())
        return {};
    QPixmap pixmap(canvasSide, canvasSide);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    found->second(painter);
    painter.end();
    pixmap.setDevicePixelRatio(2.0);
    return pixmap;
}

QPixmap tintedImage(const QPixmap& image, const QColor& colour)
{
    QPixmap tinted = image;
    QPainter painter(&tinted);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(QRectF(QPointF(0, 0), tinted.deviceIndependentSize()), colour);
    painter.end();
    return tinted;
}

void registerImageClass(runtime::Runtime& runtime)
{
    runtime::Class& image = runtime.registerClass(imageClassName, "NSObject");
    runtime.addClassMethod(image, "imageNamed:", makeImp([](runtime::Class& cls, QString name) {
        return imageObject(cls, drawnImage(name), name);
    }));
    runtime.addMethod(image, "imageWithTintColor:", makeImp([](ImageObject& self, QColor colour) {
        return imageObject(self.objectClass(), tintedImage(self.pixmap(), colour), self.name());
    }));
    runtime.addMethod(image, "size", makeImp([](ImageObject& self) { return self.pixmap().deviceIndependentSize(); }));
}

}  // namespace lexicorn::host::ui
