#include "portable/widgets/lineicons.h"

#include "portable/widgets/styles/tokens.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <initializer_list>

namespace Kavor::HandheldGui {

namespace {

constexpr qreal Stroke = 2.5;

void line(QPainterPath& path, std::initializer_list<QPointF> points) {
    const QPointF* point = points.begin();
    path.moveTo(*point);
    while (++point != points.end())
        path.lineTo(*point);
}

// A tray, with an arrow above it whose head is at headY.
void tray(QPainterPath& path, qreal headY, qreal tailY) {
    const qreal barb = headY < tailY ? 5 : -5;
    line(path, {{5, 20}, {5, 27}, {27, 27}, {27, 20}});
    line(path, {{16, tailY}, {16, headY}});
    line(path, {{11, headY + barb}, {16, headY}, {21, headY + barb}});
}

void arrow(QPainterPath& path, const QPointF& tail, const QPointF& head, const QPointF& side) {
    const QPointF back = (tail - head) * (7.0 / 20);
    line(path, {tail, head});
    line(path, {head + back + side, head, head + back - side});
}

// In a square of 32 by 32.
QPainterPath pathOf(LineIcon icon) {
    QPainterPath path;
    switch (icon) {
    case LineIcon::Plus:
        line(path, {{16, 6}, {16, 26}});
        [[fallthrough]];
    case LineIcon::Minus:
        line(path, {{6, 16}, {26, 16}});
        break;
    case LineIcon::Page:
        line(path, {{18, 5}, {8, 5}, {8, 27}, {24, 27}, {24, 11}, {18, 5}, {18, 11}, {24, 11}});
        break;
    case LineIcon::Upload:
        tray(path, 5, 20);
        break;
    case LineIcon::Save:
        tray(path, 20, 5);
        break;
    case LineIcon::Folder:
        line(path, {{4, 25}, {4, 7}, {12, 7}, {15, 11}, {25, 11}, {25, 15}});
        line(path, {{4, 25}, {9, 15}, {29, 15}, {24, 25}, {4, 25}});
        break;
    case LineIcon::Bin:
        line(path, {{5, 9}, {27, 9}});
        line(path, {{12, 9}, {12, 5}, {20, 5}, {20, 9}});
        line(path, {{8, 9}, {9, 27}, {23, 27}, {24, 9}});
        line(path, {{13, 14}, {13, 22}});
        line(path, {{19, 14}, {19, 22}});
        break;
    case LineIcon::Back:
        arrow(path, {27, 16}, {5, 16}, {0, 7});
        break;
    case LineIcon::InsertBelow:
        line(path, {{3, 5}, {29, 5}});
        line(path, {{3, 12}, {29, 12}});
        line(path, {{16, 17}, {16, 29}});
        line(path, {{10, 23}, {22, 23}});
        break;
    case LineIcon::Copy:
        path.addRect(12, 12, 15, 15);
        line(path, {{8, 20}, {5, 20}, {5, 5}, {20, 5}, {20, 8}});
        break;
    case LineIcon::Up:
        arrow(path, {16, 27}, {16, 5}, {7, 0});
        break;
    case LineIcon::Down:
        arrow(path, {16, 5}, {16, 27}, {7, 0});
        break;
    case LineIcon::Device:
        path.addRect(3, 8, 26, 16);
        path.addRect(7, 12, 9, 8);
        path.addEllipse(QPointF(22, 16), 2, 2);
        break;
    case LineIcon::Stick:
        path.addRect(11, 4, 10, 8);
        path.addRoundedRect(8, 12, 16, 16, 3, 3);
        break;
    }
    return path;
}

QPixmap pixmapOf(LineIcon icon, QRgb colour, int behind) {
    QPixmap pixmap(LineIconSize + behind, LineIconSize);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(colour), Stroke, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(pathOf(icon));
    return pixmap;
}

} // namespace

QIcon lineIcon(LineIcon icon, QRgb colour, int behind) {
    QIcon result(pixmapOf(icon, colour, behind));
    result.addPixmap(pixmapOf(icon, Style::Disabled, behind), QIcon::Disabled);
    return result;
}

} // namespace Kavor::HandheldGui
