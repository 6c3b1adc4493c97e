#include "portable/window/servicenotifier.h"

#include <QCoreApplication>
#include <QEvent>
#include <QWidget>
#include <cstdint>
#include <systemd/sd-daemon.h>

namespace Kavor::HandheldGui {

namespace {

constexpr int PaintsPerInterval = 3;

} // namespace

ServiceNotifier::ServiceNotifier(QObject* parent) : QObject(parent) {
    if (qEnvironmentVariableIsSet("NOTIFY_SOCKET"))
        QCoreApplication::instance()->installEventFilter(this);
    connect(&m_period, &QTimer::timeout, this, &ServiceNotifier::forcePaint);
}

void ServiceNotifier::watch(QWidget& window) {
    std::uint64_t intervalUs = 0;
    if (sd_watchdog_enabled(0, &intervalUs) <= 0)
        return;
    m_pixel = new QWidget(&window);
    m_pixel->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_pixel->setFixedSize(1, 1);
    m_pixel->show();
    m_pixel->installEventFilter(this);
    m_period.start(static_cast<int>(intervalUs / 1000 / PaintsPerInterval));
    forcePaint();
}

// What lies above it would keep it from being painted.
void ServiceNotifier::forcePaint() {
    if (!m_pixel)
        return;
    m_pixel->raise();
    m_pixel->update();
}

bool ServiceNotifier::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::Paint)
        return false;
    // From the event loop: by then what is being painted now has reached the screen.
    if (watched == m_pixel)
        QTimer::singleShot(0, this, [] { sd_notify(0, "WATCHDOG=1"); });
    else if (!m_paintSeen && watched->isWidgetType()) {
        m_paintSeen = true;
        QTimer::singleShot(0, this, [] { sd_notify(0, "READY=1"); });
        QCoreApplication::instance()->removeEventFilter(this);
    }
    return false;
}

} // namespace Kavor::HandheldGui
