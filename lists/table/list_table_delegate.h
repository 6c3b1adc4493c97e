#pragma once

#include "lists/table/list_table_view_config.h"

#include <QStyledItemDelegate>

/// Paints the cells of a ListTable or a ListFiles: quiet rows with a line below each, the current row on a ground of
/// its own, the accent around what is chosen. The numbers of a column stand with their points below each other, their
/// units beside them; a number that is too long for that is written smaller, with its unit below. A choice looks like a
/// button. Any other text that is too wide for its cell is written smaller, then elided.
class ListCellDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    /// Of a cell: true when it cannot be edited and steps back.
    static constexpr int QuietRole = Qt::UserRole + 2;

    /// Of a cell: true when its value is not one that the module takes.
    static constexpr int WrongRole = Qt::UserRole + 3;

    /// Of a cell: the ListColumnKind of its column as a number; of a cell that is a text only, nothing.
    static constexpr int KindRole = Qt::UserRole + 4;

    explicit ListCellDelegate(QObject* parent) : QStyledItemDelegate(parent) {}

    void setConfig(const ListTableViewConfig& config) { m_config = config; }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    void paintText(QPainter& painter, const QRect& room, QFont font, const QString& text,
                   Qt::Alignment side = Qt::AlignLeft) const;
    void paintNumber(QPainter& painter, const QRect& cell, const QFont& font, const QString& text) const;
    void paintValue(QPainter& painter, const QRect& cell, QFont font, const QModelIndex& index) const;
    void paintChoice(QPainter& painter, const QRect& cell, QFont font, const QString& text, bool current) const;
    void paintAccent(QPainter& painter, const QStyleOptionViewItem& option, const QModelIndex& index) const;

    ListTableViewConfig m_config;
};
