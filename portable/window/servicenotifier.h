#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>

class QWidget;

namespace Kavor::HandheldGui {

/// Tells the service manager that started the panel when it can be seen, and from then on that it still paints. Where
/// NOTIFY_SOCKET is not set nobody listens, and nothing is done. GUI thread.
class ServiceNotifier : public QObject {
    Q_OBJECT

public:
    /// Says READY=1 once, when the first paint of any window of the process is over.
    explicit ServiceNotifier(QObject* parent = nullptr);

    /// From now on one pixel of the window is painted anew three times in each WATCHDOG_USEC, and every paint that was
    /// seen done is told as WATCHDOG=1. A panel whose event loop or painting stands still says nothing, and is ended by
    /// its service manager. Without WATCHDOG_USEC nothing is painted. Once.
    void watch(QWidget& window);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void forcePaint();

    QPointer<QWidget> m_pixel;
    QTimer m_period;
    bool m_paintSeen = false;
};

} // namespace Kavor::HandheldGui
