#pragma once

#include <QFrame>

class QLabel;

namespace Kavor::HandheldGui {

/// A titled group of a page with aligned columns: label, value, unit. Positions are pixels inside the group.
class PageGroup : public QFrame {
    Q_OBJECT

public:
    /// Where the parts of a field of one column stand.
    struct Column {
        int labelX;
        int valueX;
        int valueWidth;
        int unitWidth;
    };

    static constexpr Column Left{24, 200, 228, 128};

    PageGroup(QWidget* parent, const QString& title, const QRect& geometry);

    /// Lays a field out: its label, its value widget and, where there is one, its unit widget, all centred on a line
    /// whose value begins at y. Returns the label.
    QLabel* addField(const Column& column, int y, const QString& label, QWidget* value, QWidget* unit = nullptr,
                     int height = 0);

    /// A caption of the group, as wide as its words, centred on a line of the given height.
    QLabel* addCaption(int x, int y, int height, const QString& text);

    /// A thin line that sets parts of the group off from each other.
    void addLine(const QRect& place);

    /// A label of the group, centred on a line of the given height.
    QLabel* addLabel(int x, int y, int width, int height, const QString& text);
};

} // namespace Kavor::HandheldGui
