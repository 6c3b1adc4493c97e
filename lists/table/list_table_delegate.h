#pragma once

#include "lists/table/list_table_view_config.h"

#include <QStyledItemDelegate>

/// Paints the cells of a ListTable or a ListFiles: quiet rows with a line below each, the current row on a ground of
/// its own, the accent around what is chosen. A text that is too wide for its cell is written smaller, then elided.
class ListCellDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    /// Of a cell: true when it cannot be edited and steps back.
    static constexpr int QuietRole = Qt::UserRole + 2;

    /// Of a cell: true when its value is not one that the module takes.
    static constexpr int WrongRole = Qt::UserRole + 3;

    explicit ListCellDelegate(QObject* parent) : QStyledItemDelegate(parent) {}

    void setConfig(const ListTableViewConfig& config) { m_config = config; }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    void paintAccent(QPainter& painter, const QStyleOptionViewItem& option, const QModelIndex& index) const;

    ListTableViewConfig m_config;
};
