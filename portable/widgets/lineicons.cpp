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

void shield(QPainterPath& path) {
    line(path, {{16, 4}, {26, 8}, {26, 16}, {22, 23}, {16, 28}, {10, 23}, {6, 16}, {6, 8}, {16, 4}});
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
    case LineIcon::Lock:
        path.addRoundedRect(5, 15, 22, 14, 3, 3);
        path.moveTo(10, 15);
        path.lineTo(10, 10);
        path.arcTo(10, 4, 12, 12, 180, -180);
        path.lineTo(22, 15);
        break;
    case LineIcon::Tick:
        line(path, {{6, 17}, {13, 24}, {26, 8}});
        break;
    case LineIcon::Run:
        line(path, {{9, 7}, {25, 16}, {9, 25}, {9, 7}});
        break;
    case LineIcon::StepDown:
        line(path, {{4, 11}, {16, 22}, {28, 11}});
        break;
    case LineIcon::StepUp:
        line(path, {{4, 22}, {16, 11}, {28, 22}});
        break;
    case LineIcon::Download:
        tray(path, 20, 5);
        break;
    case LineIcon::Undo:
        line(path, {{7, 5}, {7, 13}, {15, 13}});
        path.moveTo(7, 13);
        path.arcTo(5, 6, 22, 22, 160, -290);
        break;
    case LineIcon::Network:
        path.addRect(12, 4, 8, 7);
        path.addRect(3, 21, 8, 7);
        path.addRect(21, 21, 8, 7);
        line(path, {{16, 11}, {16, 16}});
        line(path, {{7, 21}, {7, 16}, {25, 16}, {25, 21}});
        break;
    case LineIcon::Forward:
        line(path, {{12, 6}, {22, 16}, {12, 26}});
        break;
    case LineIcon::Shield:
        shield(path);
        line(path, {{11, 16}, {15, 20}, {21, 12}});
        break;
    case LineIcon::ShieldDash:
        shield(path);
        line(path, {{11, 16}, {21, 16}});
        break;
    case LineIcon::ShieldCross:
        shield(path);
        line(path, {{12, 12}, {20, 20}});
        line(path, {{20, 12}, {12, 20}});
        break;
    case LineIcon::Cross:
        line(path, {{7, 7}, {25, 25}});
        line(path, {{25, 7}, {7, 25}});
        break;
    case LineIcon::Clock:
        path.addEllipse(QPointF(16, 16), 11, 11);
        line(path, {{16, 9}, {16, 17}, {21, 20}});
        break;
    case LineIcon::SweepUp:
        line(path, {{4, 26}, {27, 7}, {27, 26}});
        break;
    case LineIcon::SweepUpDown:
        line(path, {{3, 26}, {16, 7}, {29, 26}});
        break;
    case LineIcon::EdgeRising:
        line(path, {{4, 26}, {16, 26}, {16, 6}, {28, 6}});
        break;
    case LineIcon::EdgeFalling:
        line(path, {{4, 6}, {16, 6}, {16, 26}, {28, 26}});
        break;
    }
    return path;
}

} // namespace

QPixmap linePixmap(LineIcon icon, QRgb colour, int size) {
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size / qreal(LineIconSize), size / qreal(LineIconSize));
    painter.setPen(QPen(QColor(colour), Stroke, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    if (icon == LineIcon::Run)
        painter.setBrush(QColor(colour));
    painter.drawPath(pathOf(icon));
    if (icon == LineIcon::Lock)
        painter.fillRect(5, 15, 22, 14, QColor(colour));
    return pixmap;
}

QPixmap withGap(const QPixmap& picture) {
    QPixmap wider(picture.width() + LineIconRoom.width() - LineIconSize, picture.height());
    wider.fill(Qt::transparent);
    QPainter(&wider).drawPixmap(0, 0, picture);
    return wider;
}

QIcon lineIcon(LineIcon icon, QRgb colour) {
    QIcon result(withGap(linePixmap(icon, colour)));
    result.addPixmap(withGap(linePixmap(icon, Style::Disabled)), QIcon::Disabled);
    return result;
}

} // namespace Kavor::HandheldGui
