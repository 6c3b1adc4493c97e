#include "portable/widgets/pressfilter.h"

#include <QCoreApplication>
#include <QMouseEvent>
#include <QPointer>
#include <QTouchEvent>
#include <QVariant>
#include <QWidget>

namespace Kavor::HandheldGui {

namespace {

constexpr qreal SamePlace = 24; // pixels: a finger rolls a little
constexpr char EveryPress[] = "takesEveryPress";

QPointer<PressFilter> filterInForce;

} // namespace

PressFilter::PressFilter(QObject* parent, int momentMs) : QObject(parent), m_momentMs(momentMs) {
    filterInForce = this;
    QCoreApplication::instance()->installEventFilter(this);
}

void PressFilter::noteChange() {
    if (filterInForce)
        filterInForce->m_changer = filterInForce->m_last;
}

void PressFilter::takeEveryPress(QWidget* control) {
    control->setProperty(EveryPress, true);
}

bool PressFilter::isRepeated(Source source, const QPointF& place) const {
    return m_last.source != None && m_last.source != source && m_last.age.elapsed() < m_momentMs &&
           (place - m_last.place).manhattanLength() < SamePlace;
}

bool PressFilter::isSecondTap(Source source, const QPointF& place, ulong time) const {
    const QPointF off = place - m_changer.place;
    return m_changer.source == source && m_changer.time != 0 && time > m_changer.time &&
           time - m_changer.time < DoubleTapMs && QPointF::dotProduct(off, off) < DoubleTapPixels * DoubleTapPixels;
}

// A press that a widget ignores comes again to its parents, with the same time.
bool PressFilter::isDropped(const QObject& watched, Source source, const QPointF& place, ulong time) {
    const bool second = isSecondTap(source, place, time) && !watched.property(EveryPress).toBool();
    const bool dropped = second || isRepeated(source, place);
    if (!dropped) {
        m_last = {source, place, time, {}};
        m_last.age.start();
    }
    return dropped;
}

bool PressFilter::eventFilter(QObject* watched, QEvent* event) {
    if (!watched->isWidgetType())
        return false;
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseMove: {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        const Source source = mouse->source() == Qt::MouseEventNotSynthesized ? Mouse : Touch;
        const bool begins = event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick;
        if (begins)
            return m_dropping[source] = isDropped(*watched, source, mouse->globalPos(), mouse->timestamp());
        const bool drop = m_dropping[source];
        if (event->type() == QEvent::MouseButtonRelease)
            m_dropping[source] = false;
        return drop;
    }
    case QEvent::TouchBegin: {
        const auto* touch = static_cast<QTouchEvent*>(event);
        const bool drop = !touch->touchPoints().isEmpty() &&
                          isDropped(*watched, Touch, touch->touchPoints().first().screenPos(), touch->timestamp());
        if (drop)
            m_droppedTouches.insert(watched);
        else
            m_droppedTouches.remove(watched);
        return drop;
    }
    case QEvent::TouchUpdate:
        return m_droppedTouches.contains(watched);
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
        return m_droppedTouches.remove(watched);
    default:
        return false;
    }
}

} // namespace Kavor::HandheldGui
