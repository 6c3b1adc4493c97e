#include "portable/widgets/rowdelegate.h"

#include "portable/widgets/styles/tokens.h"

#include <QPainter>
#include <QTableView>

namespace Kavor::HandheldGui {

namespace {
constexpr int FrameWidth = 3;
constexpr int Radius = 6;
} // namespace

void RowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    QStyledItemDelegate::paint(painter, option, index);
    paintFrame(*painter, option);
}

void RowDelegate::paintFrame(QPainter& painter, const QStyleOptionViewItem& option) {
    const auto* view = qobject_cast<const QTableView*>(option.widget);
    if (!view || !(option.state & QStyle::State_Selected))
        return;
    // Each cell paints its part of the frame.
    QRectF frame = option.rect;
    frame.setLeft(view->columnViewportPosition(0));
    frame.setRight(view->viewport()->width());
    const qreal inset = FrameWidth / 2.0;
    painter.save();
    painter.setClipRect(option.rect);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(Style::Active), FrameWidth));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(frame.adjusted(inset, inset, -inset, -inset), Radius, Radius);
    painter.restore();
}

} // namespace Kavor::HandheldGui
