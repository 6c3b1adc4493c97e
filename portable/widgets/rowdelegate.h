#pragma once

#include <QStyledItemDelegate>

namespace Kavor::HandheldGui {

/// Paints the rows of a table of which whole rows are chosen: a frame of three pixels in the accent colour stands
/// around the chosen one, as in the file browser of the lists.
class RowDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    /// A cell's part of the frame of a selected row; nothing of another one.
    static void paintFrame(QPainter& painter, const QStyleOptionViewItem& option);
};

} // namespace Kavor::HandheldGui
