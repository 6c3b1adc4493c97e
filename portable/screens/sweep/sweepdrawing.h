#pragma once

#include <QWidget>

namespace Kavor::HandheldGui {

/// A small drawing of a sweep: its ends, its direction, and steps x time = total. GUI thread.
class SweepDrawing : public QWidget {
    Q_OBJECT

public:
    /// Hz or dBm, and nanoseconds.
    struct Sweep {
        double start = 0;
        double stop = 0;
        double steps = 0;
        double stepTime = 0;
        bool isFrequency = true;
        bool upDown = false;
        bool runs = false;

        bool operator==(const Sweep& other) const;
    };

    explicit SweepDrawing(QWidget* parent) : QWidget(parent) {}

    void showSweep(const Sweep& sweep);

    /// "101 × 10 ms = 1.01 s".
    QString sum() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Sweep m_sweep;
};

} // namespace Kavor::HandheldGui
