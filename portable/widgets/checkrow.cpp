#include "portable/widgets/checkrow.h"

#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"

#include <QPainter>
#include <QPainterPath>

namespace Kavor::HandheldGui {

namespace {
constexpr int BoxSize = 44;
}

CheckRow::CheckRow(QWidget* parent, const QString& label, int boxX) : QCheckBox(label, parent), m_boxX(boxX) {
    setStyleSheet(WIDGET_CHKBOX_STYLE);
    setFocusPolicy(Qt::NoFocus);
    resize(CheckRow::sizeHint());
}

QSize CheckRow::sizeHint() const {
    return {m_boxX + BoxSize + 32, Style::EntryHeight};
}

bool CheckRow::hitButton(const QPoint& position) const {
    return rect().contains(position);
}

void CheckRow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QColor(isEnabled() ? Style::Label : Style::Disabled));
    painter.setFont(font());
    painter.drawText(QRect(0, 0, m_boxX, height()), Qt::AlignVCenter | Qt::AlignLeft, text());

    const double inset = isDown() ? 4 : 1; // under the finger the box shrinks
    const QRectF box =
        QRectF(m_boxX, (height() - BoxSize) / 2.0, BoxSize, BoxSize).adjusted(inset, inset, -inset, -inset);
    const bool on = checkState() == Qt::Checked;
    const QRgb fill = !isEnabled() ? (on ? Style::FaintEdge : Style::Panel)
                      : on         ? (isDown() ? Style::ActiveDown : Style::Active)
                                   : (isDown() ? Style::RaisedDown : Style::Field);
    const QRgb edge = !isEnabled() ? Style::FaintEdge : on ? fill : Style::Edge;
    painter.setPen(QPen(QColor(edge), 2));
    painter.setBrush(QColor(fill));
    painter.drawRoundedRect(box, Style::Radius, Style::Radius);
    if (!on)
        return;
    QPainterPath tick;
    const QPointF middle = box.center();
    tick.moveTo(middle + QPointF(-12, 1));
    tick.lineTo(middle + QPointF(-4, 10));
    tick.lineTo(middle + QPointF(13, -10));
    painter.setBrush(Qt::NoBrush);
    painter.setPen(
        QPen(QColor(isEnabled() ? Style::OnActive : Style::Label), 5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(tick);
}

} // namespace Kavor::HandheldGui
