#include "portable/widgets/pressfilter.h"

#include <QCoreApplication>
#include <QMouseEvent>
#include <QTouchEvent>

namespace Kavor::HandheldGui {

namespace {
constexpr qreal SamePlace = 24; // pixels: a finger rolls a little
}

PressFilter::PressFilter(QObject* parent, int momentMs) : QObject(parent), m_momentMs(momentMs) {
    QCoreApplication::instance()->installEventFilter(this);
}

bool PressFilter::isRepeated(Source source, const QPointF& place) {
    const bool repeated = m_lastSource != None && m_lastSource != source && m_sinceLast.elapsed() < m_momentMs &&
                          (place - m_lastPlace).manhattanLength() < SamePlace;
    if (!repeated) {
        m_lastSource = source;
        m_lastPlace = place;
        m_sinceLast.start();
    }
    return repeated;
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
        if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick)
            m_dropping[source] = isRepeated(source, mouse->globalPos());
        const bool drop = m_dropping[source];
        if (event->type() == QEvent::MouseButtonRelease)
            m_dropping[source] = false;
        return drop;
    }
    case QEvent::TouchBegin: {
        const auto* touch = static_cast<QTouchEvent*>(event);
        if (!touch->touchPoints().isEmpty())
            m_dropping[Touch] = isRepeated(Touch, touch->touchPoints().first().screenPos());
        return m_dropping[Touch];
    }
    case QEvent::TouchUpdate:
        return m_dropping[Touch];
    case QEvent::TouchEnd:
    case QEvent::TouchCancel: {
        const bool drop = m_dropping[Touch];
        m_dropping[Touch] = false;
        return drop;
    }
    default:
        return false;
    }
}

} // namespace Kavor::HandheldGui
