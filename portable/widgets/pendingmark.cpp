#include "portable/widgets/pendingmark.h"

#include "portable/widgets/styles/tokens.h"

#include <QPainter>
#include <QTimer>

namespace Kavor::HandheldGui {

namespace {

constexpr QSize MarkSize(56, 16);
constexpr int Dots = 3;
constexpr int DotSize = 8;
constexpr int DotPitch = 16;
constexpr int StepMs = 200;
constexpr int EdgeWidth = 2; ///< of the control

} // namespace

PendingMark::PendingMark(QWidget* control) : QWidget(control) {
    setObjectName(QStringLiteral("pendingMark"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    resize(MarkSize);
    move((control->width() - width()) / 2, control->height() - height() - EdgeWidth);
    m_since.start();
    auto* timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, QOverload<>::of(&QWidget::update));
    timer->start(StepMs);
    show();
    raise();
}

// On a ground of its own, so that it is seen on the accent as well as on a dark button.
void PendingMark::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(Style::Black));
    painter.drawRoundedRect(rect(), MarkSize.height() / 2.0, MarkSize.height() / 2.0);
    const int large = static_cast<int>(m_since.elapsed() / StepMs) % Dots;
    const double left = (width() - (Dots - 1) * DotPitch) / 2.0;
    painter.setBrush(QColor(Style::Text));
    for (int dot = 0; dot < Dots; ++dot) {
        const double radius = dot == large ? DotSize / 2.0 : DotSize / 4.0;
        painter.drawEllipse(QPointF(left + dot * DotPitch, height() / 2.0), radius, radius);
    }
}

} // namespace Kavor::HandheldGui
