#include "portable/widgets/scrollhandle.h"

#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionSlider>

namespace Kavor::HandheldGui {

namespace {

constexpr int GripWidth = 20;
constexpr int GripLines = 3;
constexpr int GripStep = 10;
constexpr qreal Stroke = 2.5;

} // namespace

ScrollHandle::ScrollHandle(QWidget* parent) : QScrollBar(Qt::Vertical, parent) {
    setStyleSheet(LIST_SCROLL_STYLE);
    setContextMenuPolicy(Qt::NoContextMenu);
}

void ScrollHandle::follow(QScrollBar& other) {
    const auto measure = [this, &other] {
        setRange(other.minimum(), other.maximum());
        setPageStep(other.pageStep());
        setSingleStep(other.singleStep());
        setValue(other.value());
        setVisible(other.maximum() > other.minimum());
    };
    connect(&other, &QScrollBar::rangeChanged, this, measure);
    connect(&other, &QScrollBar::valueChanged, this, &QScrollBar::setValue);
    connect(this, &QScrollBar::valueChanged, &other, &QScrollBar::setValue);
    measure();
}

void ScrollHandle::paintEvent(QPaintEvent* event) {
    QScrollBar::paintEvent(event);
    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRect handle = style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(Style::Ground), Stroke, Qt::SolidLine, Qt::RoundCap));
    const QPointF middle = QRectF(handle).center();
    for (int i = 0; i < GripLines; ++i) {
        const qreal y = middle.y() + (i - (GripLines - 1) / 2.0) * GripStep;
        painter.drawLine(QPointF(middle.x() - GripWidth / 2.0, y), QPointF(middle.x() + GripWidth / 2.0, y));
    }
}

} // namespace Kavor::HandheldGui
