#pragma once

#include <QElapsedTimer>
#include <QWidget>

namespace Kavor::HandheldGui {

/// Three dots that run along the lower edge of a control for as long as what was asked of it has not been done. It
/// takes no input. GUI thread.
class PendingMark : public QWidget {
    Q_OBJECT

public:
    /// Shows itself on the control, which owns it.
    explicit PendingMark(QWidget* control);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QElapsedTimer m_since;
};

} // namespace Kavor::HandheldGui
