#pragma once

#include <QColor>
#include <QRect>
#include <QString>

class QTableView;

/// How a screen wants a ListTable or a ListFiles to look. Sizes in pixels.
struct ListTableViewConfig {
    QRect geometry;
    int rows = 0; ///< rows to show below the header; they share the height that it leaves
    int firstColumnWidth = 0;
    int headerHeight = 0; ///< 0: as high as its text asks for
    bool verticalScrollBar = true;
    bool header = true;
    QString tableStyle;
    QString horizontalHeaderStyle;
    QString verticalHeaderStyle; ///< and the corner's

    QColor text;
    QColor quietText; ///< cells that cannot be edited
    QColor wrongText; ///< values that the module would not take
    QColor line;      ///< between rows
    QColor row;       ///< ground of the current row
    QColor accent;    ///< around the current cell, and the bar at the left of its row
    QColor button;    ///< ground of what looks like a button
    QColor edge;      ///< around it

    // Heights of text, of which the view's own font gives the usual one.
    int unitText = 24;  ///< units, and words on what looks like a button
    int smallText = 22; ///< a number that its cell has no room for otherwise
};

/// What the table and the file browser have in common: gives a view everything of a configuration but the widths of its
/// columns, and the rows one fixed height. The view's cells are painted by a ListCellDelegate.
void applyListViewConfig(QTableView& view, const ListTableViewConfig& config);
