#include "portable/update/marks.h"

#include <QPainter>
#include <QPainterPath>

namespace Kavor::HandheldGui {

namespace {

constexpr double LineWidth = 0.09; ///< of the side

// In a square from 0 to 1.
QPainterPath shield() {
    QPainterPath path(QPointF(0.5, 0.04));
    path.lineTo(0.9, 0.18);
    path.lineTo(0.9, 0.5);
    path.cubicTo(0.9, 0.74, 0.72, 0.9, 0.5, 0.98);
    path.cubicTo(0.28, 0.9, 0.1, 0.74, 0.1, 0.5);
    path.lineTo(0.1, 0.18);
    path.closeSubpath();
    return path;
}

QPainterPath check(double inset) {
    QPainterPath path(QPointF(inset, 0.52));
    path.lineTo(0.42, 1 - inset);
    path.lineTo(1 - inset, inset + 0.06);
    return path;
}

QPainterPath cross(double inset) {
    QPainterPath path(QPointF(inset, inset));
    path.lineTo(1 - inset, 1 - inset);
    path.moveTo(1 - inset, inset);
    path.lineTo(inset, 1 - inset);
    return path;
}

QPainterPath clock() {
    QPainterPath path;
    path.addEllipse(QPointF(0.5, 0.5), 0.42, 0.42);
    path.moveTo(0.5, 0.24);
    path.lineTo(0.5, 0.52);
    path.lineTo(0.68, 0.64);
    return path;
}

QPainterPath pathOf(Mark mark) {
    constexpr double Whole = 0.12;
    constexpr double InShield = 0.32;
    QPainterPath path = mark >= Mark::ShieldCheck ? shield() : QPainterPath();
    switch (mark) {
    case Mark::Check:
        return check(Whole);
    case Mark::Cross:
        return cross(Whole);
    case Mark::Clock:
        return clock();
    case Mark::ShieldCheck:
        path.addPath(check(InShield));
        break;
    case Mark::ShieldDash:
        path.moveTo(InShield, 0.5);
        path.lineTo(1 - InShield, 0.5);
        break;
    case Mark::ShieldCross:
        path.addPath(cross(InShield));
        break;
    }
    return path;
}

} // namespace

void drawMark(QPainter& painter, Mark mark, const QRectF& place, const QColor& colour) {
    const double side = qMin(place.width(), place.height());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(place.center() - QPointF(side / 2, side / 2));
    painter.scale(side, side);
    painter.setPen(QPen(colour, LineWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(pathOf(mark));
    painter.restore();
}

} // namespace Kavor::HandheldGui
