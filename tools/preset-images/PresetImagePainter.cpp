#include "PresetImagePainter.h"

#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>
#include <QVector>

namespace {

const int kSize = 256;
const qreal kLeft = 14;
const qreal kRight = 242;
// Trigger signal track.
const qreal kHigh = 30;
const qreal kLow = 102;
// Exposure track.
const qreal kExposureTop = 150;
const qreal kExposureBase = 226;

const QColor kSignal(20, 60, 130);
const QColor kExposureFill(245, 150, 30);
const QColor kExposureLine(150, 75, 0);
const QColor kGuide(120, 120, 120);
const QColor kBaseline(170, 170, 170);

// The trigger signal: starts at level high (true) or low and toggles at each x.
void DrawSignal(QPainter& painter, bool startHigh, const QVector<qreal>& toggles)
{
    QPainterPath path;
    bool high = startHigh;
    path.moveTo(kLeft, high ? kHigh : kLow);
    for (qreal x : toggles) {
        path.lineTo(x, high ? kHigh : kLow);
        high = !high;
        path.lineTo(x, high ? kHigh : kLow);
    }
    path.lineTo(kRight, high ? kHigh : kLow);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(kSignal, 14, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawPath(path);
}

// A filled arrow head on a vertical edge at x, pointing down (falling edge).
void DrawFallingArrow(QPainter& painter, qreal x)
{
    const qreal middle = (kHigh + kLow) / 2 + 12;
    QPolygonF head;
    head << QPointF(x - 19, middle - 18) << QPointF(x + 19, middle - 18) << QPointF(x, middle + 10);
    painter.setPen(QPen(kSignal, 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(kSignal);
    painter.drawPolygon(head);
}

// Thin dashed line from the signal down to the exposure track, tying an edge
// to the exposure it starts or ends.
void DrawGuide(QPainter& painter, qreal x)
{
    QPen pen(kGuide, 3, Qt::DashLine, Qt::FlatCap);
    painter.setPen(pen);
    painter.drawLine(QPointF(x, kLow + 8), QPointF(x, kExposureTop - 4));
}

void DrawExposureBaseline(QPainter& painter)
{
    painter.setPen(QPen(kBaseline, 6, Qt::SolidLine, Qt::SquareCap));
    painter.drawLine(QPointF(kLeft, kExposureBase), QPointF(kRight, kExposureBase));
}

// One exposure as a filled pulse from x0 to x1.
void DrawExposure(QPainter& painter, qreal x0, qreal x1)
{
    painter.setPen(QPen(kExposureLine, 5, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.setBrush(kExposureFill);
    painter.drawRect(QRectF(QPointF(x0, kExposureTop), QPointF(x1, kExposureBase)));
}

void PaintEdge(QPainter& painter)
{
    // Each falling edge starts an exposure of fixed length, however long the
    // signal then stays low.
    const QVector<qreal> toggles = {44, 112, 156, 226};
    DrawExposureBaseline(painter);
    DrawGuide(painter, 44);
    DrawGuide(painter, 156);
    DrawExposure(painter, 44, 86);
    DrawExposure(painter, 156, 198);
    DrawSignal(painter, true, toggles);
    DrawFallingArrow(painter, 44);
    DrawFallingArrow(painter, 156);
}

void PaintLevel(QPainter& painter)
{
    // The exposure lasts exactly as long as the signal is low (active).
    const QVector<qreal> toggles = {40, 120, 160, 222};
    DrawExposureBaseline(painter);
    for (qreal x : toggles) {
        DrawGuide(painter, x);
    }
    DrawExposure(painter, 40, 120);
    DrawExposure(painter, 160, 222);
    DrawSignal(painter, true, toggles);
}

void PaintBulk(QPainter& painter)
{
    // One falling edge starts a burst of frames.
    const QVector<qreal> toggles = {44, 120};
    DrawExposureBaseline(painter);
    DrawGuide(painter, 44);
    const qreal width = 22;
    const qreal gap = 16;
    for (int frame = 0; frame < 5; ++frame) {
        const qreal x0 = 44 + frame * (width + gap);
        DrawExposure(painter, x0, x0 + width);
    }
    DrawSignal(painter, true, toggles);
    DrawFallingArrow(painter, 44);
}

}  // namespace

QImage PresetImagePainter::Paint(Preset preset)
{
    QImage image(kSize, kSize, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    switch (preset) {
        case Preset::Edge:
            PaintEdge(painter);
            break;
        case Preset::Level:
            PaintLevel(painter);
            break;
        case Preset::Bulk:
            PaintBulk(painter);
            break;
    }
    return image;
}

QString PresetImagePainter::FileName(Preset preset)
{
    switch (preset) {
        case Preset::Edge:
            return QStringLiteral("triggering_edge_256.png");
        case Preset::Level:
            return QStringLiteral("triggering_level_256.png");
        case Preset::Bulk:
            break;
    }
    return QStringLiteral("triggering_bulk_256.png");
}
