#pragma once

#include "portable/widgets/rowdelegate.h"

namespace Kavor::HandheldGui {

/// Paints the rows of the package list: a text and a smaller one below it, or a mark before a word. The chosen row has
/// a frame. Texts are broken where they hold places for it, see breakable().
class PackageRowDelegate : public RowDelegate {
    Q_OBJECT

public:
    /// Beside Qt::DisplayRole, of an item.
    enum Role {
        SecondLine = Qt::UserRole, ///< a text
        Strong,                    ///< bool: the first text is bold
        MarkRole,                  ///< an int of LineIcon, before the text
        ManifestPath               ///< a text, not shown
    };

    using RowDelegate::RowDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    /// The height that an item needs in a column of that width.
    static int heightOf(const QModelIndex& index, int width);

    /// A text that fits a column of that width when it is broken where it must be.
    static QString fitted(const QString& text, int width, bool strong);
};

} // namespace Kavor::HandheldGui
