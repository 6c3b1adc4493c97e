#include "portable/widgets/busybar.h"

#include "portable/widgets/styles/tokens.h"

#include <QPainter>
#include <QTimer>
#include <cmath>

namespace Kavor::HandheldGui {

namespace {

constexpr int FrameMs = 50;
constexpr double ThereAndBackMs = 2400;
constexpr double PieceOfWidth = 0.25;
constexpr double Radius = 6;

} // namespace

BusyBar::BusyBar(QWidget* parent) : QWidget(parent) {
    m_since.start();
    auto* timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, QOverload<>::of(&QWidget::update));
    timer->start(FrameMs);
}

void BusyBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(Style::FaintEdge), 2));
    painter.setBrush(QColor(Style::Field));
    const QRectF frame = QRectF(rect()).adjusted(1, 1, -1, -1);
    painter.drawRoundedRect(frame, Radius, Radius);
    const double turn = std::fmod(static_cast<double>(m_since.elapsed()) / ThereAndBackMs, 1.0);
    const double at = 1 - std::abs(2 * turn - 1);
    const QRectF room = frame.adjusted(4, 4, -4, -4);
    const double width = room.width() * PieceOfWidth;
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(Style::Active));
    painter.drawRoundedRect(QRectF(room.left() + at * (room.width() - width), room.top(), width, room.height()), Radius,
                            Radius);
}

} // namespace Kavor::HandheldGui
