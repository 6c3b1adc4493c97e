#include "portable/widgets/touchpress.h"

#include <QAbstractButton>
#include <QTouchEvent>
#include <algorithm>

namespace Kavor::HandheldGui {

TouchPress::TouchPress(QAbstractButton* button) : QObject(button), m_button(button) {
    button->setAttribute(Qt::WA_AcceptTouchEvents);
    button->installEventFilter(this);
}

bool TouchPress::eventFilter(QObject*, QEvent* event) {
    switch (event->type()) {
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
        if (!m_button->isEnabled())
            return false;
        event->accept();
        handle(*static_cast<QTouchEvent*>(event));
        return true;
    case QEvent::Hide:
        m_finger = -1;
        m_button->setDown(false);
        return false;
    default:
        return false;
    }
}

void TouchPress::handle(const QTouchEvent& touch) {
    const auto& points = touch.touchPoints();
    if (touch.type() == QEvent::TouchBegin) {
        // A press whose end never came here is over.
        if (points.isEmpty() || (m_button->isDown() && m_finger < 0))
            return;
        m_finger = points.first().id();
        setDown(true);
        return;
    }
    if (m_finger < 0)
        return;
    const auto finger = std::find_if(points.begin(), points.end(),
                                     [this](const QTouchEvent::TouchPoint& point) { return point.id() == m_finger; });
    if (finger != points.end())
        setDown(m_button->rect().contains(finger->pos().toPoint()));
    const bool lifted =
        touch.type() == QEvent::TouchEnd || (finger != points.end() && finger->state() == Qt::TouchPointReleased);
    if (!lifted && touch.type() != QEvent::TouchCancel)
        return;
    const bool act = lifted && m_button->isDown();
    m_finger = -1;
    setDown(false);
    if (act)
        emit m_button->clicked();
}

void TouchPress::setDown(bool down) {
    if (down == m_button->isDown())
        return;
    m_button->setDown(down);
    if (down)
        emit m_button->pressed();
    else
        emit m_button->released();
}

} // namespace Kavor::HandheldGui
