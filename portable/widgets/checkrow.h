#pragma once

#include <QCheckBox>

namespace Kavor::HandheldGui {

/// A check box that is touched on its whole row: its label at the left, the box where the values of the page stand.
/// On, off and disabled differ in fill, tick and outline, not in colour alone.
class CheckRow : public QCheckBox {
    Q_OBJECT

public:
    /// boxX: distance of the box from the left edge of the row, in pixels.
    CheckRow(QWidget* parent, const QString& label, int boxX);

    QSize sizeHint() const override;

    /// Without room for the lock beside the box: it then takes the tick's place.
    static int narrowWidth(int boxX);

protected:
    bool hitButton(const QPoint& position) const override;
    void paintEvent(QPaintEvent* event) override;

private:
    int m_boxX;
};

} // namespace Kavor::HandheldGui
