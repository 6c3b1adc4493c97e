#include "lists/table/list_table_delegate.h"

#include <QHeaderView>
#include <QPainter>
#include <QTableView>

namespace {

constexpr int Margin = 16;
constexpr int SmallestText = 22;
constexpr int AccentWidth = 3;
constexpr int Radius = 6;

} // namespace

void applyListViewConfig(QTableView& view, const ListTableViewConfig& config) {
    view.setGeometry(config.geometry);
    view.ensurePolished(); // otherwise the scroll bars keep the rules that they had before this sheet
    view.setStyleSheet(config.tableStyle);
    view.setFrameShape(QFrame::NoFrame);
    view.setShowGrid(false);
    view.setCornerButtonEnabled(false);
    view.setWordWrap(false);
    view.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view.setVerticalScrollBarPolicy(config.verticalScrollBar ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);

    QHeaderView* columns = view.horizontalHeader();
    columns->setStyleSheet(config.horizontalHeaderStyle);
    columns->setVisible(config.header);
    columns->setSectionsClickable(false);
    columns->setHighlightSections(false);
    columns->setSectionResizeMode(QHeaderView::Fixed);
    columns->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    if (config.headerHeight > 0)
        columns->setFixedHeight(config.headerHeight);

    QHeaderView* rows = view.verticalHeader();
    rows->setStyleSheet(config.verticalHeaderStyle);
    rows->setVisible(false);
    rows->setSectionResizeMode(QHeaderView::Fixed);
    const int header = !config.header            ? 0
                       : config.headerHeight > 0 ? config.headerHeight
                                                 : columns->sizeHint().height();
    if (config.rows > 0)
        rows->setDefaultSectionSize((config.geometry.height() - header) / config.rows);

    auto* delegate = qobject_cast<ListCellDelegate*>(view.itemDelegate());
    if (!delegate) {
        delegate = new ListCellDelegate(&view);
        view.setItemDelegate(delegate);
    }
    delegate->setConfig(config);
}

void ListCellDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const auto* view = qobject_cast<const QTableView*>(option.widget);
    painter->save();
    if (view && view->currentIndex().row() == index.row())
        painter->fillRect(option.rect, m_config.row);
    painter->setPen(m_config.line);
    painter->drawLine(option.rect.bottomLeft(), option.rect.bottomRight());

    const QString text = index.data(Qt::DisplayRole).toString();
    const QRect room = option.rect.adjusted(Margin, 0, -Margin / 2, 0);
    QFont font = option.font;
    int width = QFontMetrics(font).horizontalAdvance(text);
    if (width > room.width() && font.pixelSize() > SmallestText) {
        font.setPixelSize(qMax(SmallestText, font.pixelSize() * room.width() / width));
        width = QFontMetrics(font).horizontalAdvance(text);
    }
    painter->setFont(font);
    painter->setPen(index.data(WrongRole).toBool()   ? m_config.wrongText
                    : index.data(QuietRole).toBool() ? m_config.quietText
                                                     : m_config.text);
    painter->drawText(room, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                      width > room.width() ? QFontMetrics(font).elidedText(text, Qt::ElideMiddle, room.width()) : text);
    if (view)
        paintAccent(*painter, option, index);
    painter->restore();
}

// Around the current cell; where whole rows are chosen, around the row, of which each cell paints its part.
void ListCellDelegate::paintAccent(QPainter& painter, const QStyleOptionViewItem& option,
                                   const QModelIndex& index) const {
    const auto* view = qobject_cast<const QTableView*>(option.widget);
    const QModelIndex current = view->currentIndex();
    const bool wholeRow = view->selectionBehavior() == QAbstractItemView::SelectRows;
    if (!current.isValid() || current.row() != index.row() || (!wholeRow && current.column() != index.column()))
        return;
    QRectF frame = option.rect;
    if (wholeRow) {
        frame.setLeft(view->columnViewportPosition(0));
        frame.setRight(view->viewport()->width());
    }
    const qreal inset = AccentWidth / 2.0;
    painter.setClipRect(option.rect);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(m_config.accent, AccentWidth));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(frame.adjusted(inset, inset, -inset, -inset), Radius, Radius);
}
