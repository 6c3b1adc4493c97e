#pragma once

#include <QElapsedTimer>
#include <QWidget>

namespace Kavor::HandheldGui {

/// A bar with a piece that wanders to and fro: work goes on, and nobody knows how much of it there is. GUI thread.
class BusyBar : public QWidget {
    Q_OBJECT

public:
    explicit BusyBar(QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QElapsedTimer m_since;
};

} // namespace Kavor::HandheldGui
