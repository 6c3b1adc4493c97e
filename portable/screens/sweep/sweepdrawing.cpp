#include "portable/screens/sweep/sweepdrawing.h"

#include "portable/widgets/freshness.h"
#include "portable/widgets/styles/tokens.h"
#include "values/formatting.h"

#include <QPainter>
#include <QPainterPath>
#include <cmath>

namespace Kavor::HandheldGui {

namespace {

constexpr int EndsWidth = 136; // the texts of the two ends
constexpr int CurveX = 148;
constexpr int CurveWidth = 232;
constexpr int CurveTop = 12;
constexpr int CurveHeight = 46;
constexpr int Periods = 3;
constexpr int MostStairs = 10; // more would be a slope
constexpr int Figures = 5;     // of a number in words

/// A number and its unit, the number to a few figures: a drawing is no readout.
QString brief(const QString& text) {
    const int blank = text.indexOf(QLatin1Char(' '));
    return QString::number(text.left(blank).toDouble(), 'g', Figures) + text.mid(blank);
}

QString endText(double value, bool isFrequency) {
    return brief(isFrequency ? formatFrequency(value, "Hz") : formatNumber(value, 2) + QStringLiteral(" dBm"));
}

/// One period from 0 to 1 in both directions, in stairs.
void addStairs(QPainterPath& path, const QRectF& place, bool rising, int stairs) {
    const qreal from = rising ? place.bottom() : place.top();
    const qreal to = rising ? place.top() : place.bottom();
    for (int i = 0; i < stairs; ++i) {
        const qreal y = stairs > 1 ? from + (to - from) * i / (stairs - 1) : from;
        path.lineTo(place.left() + place.width() * i / stairs, y);
        path.lineTo(place.left() + place.width() * (i + 1) / stairs, y);
    }
}

} // namespace

bool SweepDrawing::Sweep::operator==(const Sweep& other) const {
    return start == other.start && stop == other.stop && steps == other.steps && stepTime == other.stepTime &&
           isFrequency == other.isFrequency && upDown == other.upDown && runs == other.runs;
}

void SweepDrawing::showSweep(const Sweep& sweep) {
    if (sweep == m_sweep)
        return;
    m_sweep = sweep;
    update();
}

QString SweepDrawing::sum() const {
    return QStringLiteral("%1 \u00D7 %2 = %3")
        .arg(QString::number(m_sweep.steps, 'f', 0), brief(formatTime(m_sweep.stepTime, "ns")),
             brief(formatTime(m_sweep.steps * m_sweep.stepTime, "ns")));
}

void SweepDrawing::paintEvent(QPaintEvent*) {
    const Freshness& freshness = Freshness::panel();
    if (!freshness.isKnown())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QFont small(QStringLiteral("Segoe UI"));
    small.setPixelSize(Style::TextGroup);
    painter.setFont(small);
    painter.setPen(QColor(freshness.isStale() ? Style::Stale : Style::Label));
    const QRect upper(0, 0, EndsWidth, 34);
    const double top = qMax(m_sweep.start, m_sweep.stop);
    const double bottom = qMin(m_sweep.start, m_sweep.stop);
    painter.drawText(upper, Qt::AlignRight | Qt::AlignBottom, endText(top, m_sweep.isFrequency));
    painter.drawText(upper.translated(0, 36), Qt::AlignRight | Qt::AlignTop, endText(bottom, m_sweep.isFrequency));

    const QRectF curve(CurveX, CurveTop, CurveWidth, CurveHeight);
    painter.setPen(QPen(QColor(Style::FaintEdge), 1));
    painter.drawLine(curve.topLeft(), curve.topRight());
    painter.drawLine(curve.bottomLeft(), curve.bottomRight());
    const bool rising = m_sweep.stop >= m_sweep.start;
    const int stairs = qBound(1, static_cast<int>(m_sweep.steps), MostStairs);
    const int runs = m_sweep.upDown ? 2 * Periods : Periods;
    QPainterPath path;
    path.moveTo(curve.left(), rising ? curve.bottom() : curve.top());
    for (int i = 0; i < runs; ++i) {
        const QRectF place(curve.left() + curve.width() * i / runs, curve.top(), curve.width() / runs, curve.height());
        addStairs(path, place, rising != (m_sweep.upDown && i % 2 == 1), stairs);
    }
    const bool lit = m_sweep.runs && !freshness.isStale();
    painter.setPen(QPen(QColor(lit ? Style::Active : Style::Edge), 2.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(path);

    QFont strong(small);
    strong.setWeight(QFont::DemiBold);
    painter.setFont(strong);
    painter.setPen(QColor(freshness.isStale() ? Style::Stale : Style::Text));
    const QRect right(CurveX + CurveWidth + 16, 0, width() - CurveX - CurveWidth - 16, height());
    painter.drawText(right, Qt::AlignRight | Qt::AlignVCenter, sum());
}

} // namespace Kavor::HandheldGui
