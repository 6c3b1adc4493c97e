#include "lists/table/list_table_delegate.h"

#include "lists/list_config.h"

#include <QHeaderView>
#include <QPainter>
#include <QTableView>

namespace {

constexpr int Margin = 16;
constexpr int NumberMargin = 24; ///< behind the number of a step
constexpr int AccentWidth = 3;
constexpr int Radius = 6;
constexpr int BarWidth = 5;
constexpr int UnitGap = 8;
constexpr int SmallLead = 4; ///< by which the line below a long number comes nearer to it
constexpr int PillInset = 8;
constexpr int PillHeight = 50;
constexpr int SignX = 16;

/// What the numbers of a column mostly are made of.
struct Digits {
    const char* before; ///< the point, with the sign
    const char* behind; ///< with the point
    const char* widestUnit;
};

Digits usualDigits(ListColumnKind kind) {
    switch (kind) {
    case ListColumnKind::Frequency:
        return {"000", ".000", "MHz"};
    case ListColumnKind::Power:
        return {"-000", ".00", "dBm"};
    case ListColumnKind::Time:
        return {"000", "", "ms"};
    case ListColumnKind::Count:
        return {"00000", "", ""};
    case ListColumnKind::Step:
    case ListColumnKind::Choice:
        break;
    }
    return {"", "", ""};
}

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
    const bool currentRow = view && view->currentIndex().row() == index.row();
    painter->save();
    if (currentRow)
        painter->fillRect(option.rect, m_config.row);
    painter->setPen(m_config.line);
    painter->drawLine(option.rect.bottomLeft(), option.rect.bottomRight());

    const QVariant kind = index.data(KindRole);
    const bool quiet = index.data(QuietRole).toBool();
    painter->setPen(index.data(WrongRole).toBool() ? m_config.wrongText : quiet ? m_config.quietText : m_config.text);
    painter->setRenderHint(QPainter::Antialiasing);
    QFont font = option.font;
    switch (kind.isValid() ? static_cast<ListColumnKind>(kind.toInt()) : ListColumnKind::Step) {
    case ListColumnKind::Frequency:
    case ListColumnKind::Power:
    case ListColumnKind::Time:
    case ListColumnKind::Count:
        paintValue(*painter, option.rect, font, index);
        break;
    case ListColumnKind::Choice:
        paintChoice(*painter, option.rect, font, index.data().toString(), view && view->currentIndex() == index);
        break;
    case ListColumnKind::Step:
        if (kind.isValid() && currentRow) {
            painter->fillRect(QRect(option.rect.topLeft(), QSize(BarWidth, option.rect.height())), m_config.accent);
            painter->setPen(m_config.text);
            font.setWeight(QFont::DemiBold);
        }
        if (kind.isValid())
            paintNumber(*painter, option.rect.adjusted(BarWidth + 2, 0, 0, 0), font, index.data().toString());
        else
            paintText(*painter, option.rect.adjusted(Margin, 0, -Margin / 2, 0), font, index.data().toString());
        break;
    }
    if (view)
        paintAccent(*painter, option, index);
    painter->restore();
}

void ListCellDelegate::paintText(QPainter& painter, const QRect& room, QFont font, const QString& text,
                                 Qt::Alignment side) const {
    int width = QFontMetrics(font).horizontalAdvance(text);
    if (width > room.width() && font.pixelSize() > m_config.smallText) {
        font.setPixelSize(qMax(m_config.smallText, font.pixelSize() * room.width() / width));
        width = QFontMetrics(font).horizontalAdvance(text);
    }
    painter.setFont(font);
    painter.drawText(room, static_cast<int>(side | Qt::AlignVCenter) | Qt::TextSingleLine,
                     width > room.width() ? QFontMetrics(font).elidedText(text, Qt::ElideMiddle, room.width()) : text);
}

// Below the title of its column where there is room for that.
void ListCellDelegate::paintNumber(QPainter& painter, const QRect& cell, const QFont& font, const QString& text) const {
    const bool fits = QFontMetrics(font).horizontalAdvance(text) <= cell.width() - NumberMargin;
    paintText(painter, cell.adjusted(0, 0, fits ? -NumberMargin : -Margin / 2, 0), font, text, Qt::AlignRight);
}

void ListCellDelegate::paintValue(QPainter& painter, const QRect& cell, QFont font, const QModelIndex& index) const {
    const QString text = index.data().toString();
    const auto kind = static_cast<ListColumnKind>(index.data(KindRole).toInt());
    const int blank = text.lastIndexOf(QLatin1Char(' '));
    const QString number = text.left(blank);
    const QString unit = blank < 0 ? QString() : text.mid(blank + 1);
    const QFontMetrics figures(font);
    QFont unitFont = font;
    unitFont.setPixelSize(m_config.unitText);
    const QFontMetrics words(unitFont);
    QRect room = cell.adjusted(Margin, 0, -Margin / 2, 0);
    // The units stand beside the decimals that a value mostly has, the points below each other.
    const Digits digits = usualDigits(kind);
    const int point = room.left() + figures.horizontalAdvance(QLatin1String(digits.before));
    const int width = figures.horizontalAdvance(number);
    const int wanted = point - figures.horizontalAdvance(number.section(QLatin1Char('.'), 0, 0));
    const int unitX =
        qMin(qMax(point + figures.horizontalAdvance(QLatin1String(digits.behind)), wanted + width) + UnitGap,
             room.right() - words.horizontalAdvance(QLatin1String(digits.widestUnit)));
    const int left = qMin(wanted, unitX - UnitGap - width);
    const QColor colour = painter.pen().color();
    if (left >= room.left() - Margin / 2) {
        painter.setFont(font);
        painter.drawText(QRect(left, cell.top(), width, cell.height()), Qt::AlignLeft | Qt::AlignVCenter, number);
        painter.setFont(unitFont);
        painter.setPen(colour == m_config.text ? m_config.quietText : colour);
        painter.drawText(QRect(unitX, cell.top(), room.right() - unitX + Margin / 2, cell.height()),
                         Qt::AlignLeft | Qt::AlignVCenter, unit);
        return;
    }
    room.setLeft(cell.left() + Margin / 2);
    font.setPixelSize(m_config.smallText);
    painter.setFont(font);
    const int half = cell.height() / 2;
    painter.drawText(room.adjusted(0, 0, 0, -half), Qt::AlignRight | Qt::AlignBottom,
                     QFontMetrics(font).elidedText(number, Qt::ElideMiddle, room.width()));
    painter.setPen(colour == m_config.text ? m_config.quietText : colour);
    painter.drawText(room.adjusted(0, half - SmallLead, 0, 0), Qt::AlignRight | Qt::AlignTop, unit);
}

// As a button: with the sign of running or waiting, and the word.
void ListCellDelegate::paintChoice(QPainter& painter, const QRect& cell, QFont font, const QString& text,
                                   bool current) const {
    const QColor colour = painter.pen().color();
    const QRectF pill(cell.left() + PillInset, cell.center().y() - PillHeight / 2.0, cell.width() - PillInset - 3,
                      PillHeight);
    painter.setPen(QPen(current ? m_config.accent : m_config.edge, current ? AccentWidth : 2));
    painter.setBrush(m_config.button);
    painter.drawRoundedRect(pill, PillHeight / 2.0, PillHeight / 2.0);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    const QPointF sign(pill.left() + SignX, pill.center().y());
    if (text == QLatin1String("Run")) {
        painter.drawPolygon(QPolygonF({sign + QPointF(0, -9), sign + QPointF(15, 0), sign + QPointF(0, 9)}));
    } else {
        for (const int x : {1, 10})
            painter.drawRect(QRectF(sign.x() + x, sign.y() - 9, 4, 18));
    }
    painter.setPen(colour);
    font.setPixelSize(m_config.unitText);
    paintText(painter, pill.adjusted(SignX + 24, 0, -8, 0).toRect(), font, text);
}

// Around the current cell; where whole rows are chosen, around the row, of which each cell paints its part.
void ListCellDelegate::paintAccent(QPainter& painter, const QStyleOptionViewItem& option,
                                   const QModelIndex& index) const {
    const auto* view = qobject_cast<const QTableView*>(option.widget);
    const QModelIndex current = view->currentIndex();
    const bool wholeRow = view->selectionBehavior() == QAbstractItemView::SelectRows;
    if (!current.isValid() || current.row() != index.row() || (!wholeRow && current.column() != index.column()))
        return;
    // A number of a step is not edited, and a choice has an edge of its own.
    const QVariant kind = index.data(KindRole);
    if (kind == static_cast<int>(ListColumnKind::Step) || kind == static_cast<int>(ListColumnKind::Choice))
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
