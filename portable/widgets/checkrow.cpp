#include "portable/widgets/checkrow.h"

#include "portable/widgets/freshness.h"
#include "portable/widgets/lineicons.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"

#include <QPainter>
#include <QPainterPath>

namespace Kavor::HandheldGui {

namespace {
constexpr int BoxSize = 48;
constexpr int LockGap = 12;
} // namespace

CheckRow::CheckRow(QWidget* parent, const QString& label, int boxX) : QCheckBox(label, parent), m_boxX(boxX) {
    setStyleSheet(WIDGET_CHKBOX_STYLE);
    setFocusPolicy(Qt::NoFocus);
    resize(CheckRow::sizeHint());
    connect(&Freshness::panel(), &Freshness::changed, this, QOverload<>::of(&CheckRow::update));
}

QSize CheckRow::sizeHint() const {
    return {m_boxX + BoxSize + LockGap + LineIconSize, Style::EntryHeight};
}

int CheckRow::narrowWidth(int boxX) {
    return boxX + BoxSize;
}

bool CheckRow::hitButton(const QPoint& position) const {
    return rect().contains(position);
}

void CheckRow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool on = checkState() == Qt::Checked;
    painter.setPen(QColor(isEnabled() || on ? Style::Label : Style::Disabled));
    painter.setFont(font());
    painter.drawText(QRect(0, 0, m_boxX, height()), Qt::AlignVCenter | Qt::AlignLeft, text());

    const double inset = isDown() ? 4 : 1; // under the finger the box shrinks
    const QRectF box =
        QRectF(m_boxX, (height() - BoxSize) / 2.0, BoxSize, BoxSize).adjusted(inset, inset, -inset, -inset);
    // Locked while it runs, it keeps its colour: it is on, and the lock says why it does not change.
    const bool lit = on && !Freshness::panel().isStale();
    const QRgb fill = lit            ? (isDown() ? Style::ActiveDown : Style::Active)
                      : on           ? Style::FaintEdge
                      : !isEnabled() ? Style::Panel
                                     : (isDown() ? Style::RaisedDown : Style::Field);
    const QRgb edge = on ? fill : isEnabled() ? Style::Edge : Style::FaintEdge;
    painter.setPen(QPen(QColor(edge), 2));
    painter.setBrush(QColor(fill));
    painter.drawRoundedRect(box, Style::Radius, Style::Radius);
    const QRgb inside = lit ? Style::OnActive : on ? Style::Text : Style::Label;
    if (!isEnabled()) {
        const bool narrow = width() < CheckRow::sizeHint().width();
        const int x = m_boxX + (narrow ? (BoxSize - LineIconSize) / 2 : BoxSize + LockGap);
        painter.drawPixmap(x, (height() - LineIconSize) / 2,
                           linePixmap(LineIcon::Lock, narrow ? inside : Style::Label));
        if (narrow)
            return;
    }
    if (!on)
        return;
    QPainterPath tick;
    const QPointF middle = box.center();
    tick.moveTo(middle + QPointF(-13, 1));
    tick.lineTo(middle + QPointF(-4, 11));
    tick.lineTo(middle + QPointF(14, -11));
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(inside), 5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(tick);
}

} // namespace Kavor::HandheldGui
