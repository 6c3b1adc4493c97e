#include "portable/window/focustrace.h"

#include "platform/logger.h"

#include <QApplication>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QMetaEnum>
#include <QMouseEvent>
#include <QTouchEvent>
#include <QWidget>

namespace Kavor::HandheldGui {

namespace {

QString at(const QPointF& point) {
    return QStringLiteral("at %1,%2").arg(qRound(point.x())).arg(qRound(point.y()));
}

/// What is worth a word about an event, positions inside its widget; null for an event that is not traced.
QString detailOf(const QEvent& event) {
    switch (event.type()) {
    case QEvent::FocusIn:
    case QEvent::FocusOut:
        return QStringLiteral("reason %1")
            .arg(QLatin1String(
                QMetaEnum::fromType<Qt::FocusReason>().valueToKey(static_cast<const QFocusEvent&>(event).reason())));
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick: {
        const auto& mouse = static_cast<const QMouseEvent&>(event);
        return at(mouse.localPos()) +
               (mouse.source() == Qt::MouseEventNotSynthesized ? QString() : QStringLiteral(" from touch"));
    }
    case QEvent::TouchBegin:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel: {
        const auto& points = static_cast<const QTouchEvent&>(event).touchPoints();
        return points.isEmpty() ? QStringLiteral("no point") : at(points.first().pos());
    }
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
        return QStringLiteral("key %1").arg(static_cast<const QKeyEvent&>(event).key());
    default:
        return QString();
    }
}

} // namespace

FocusTrace::FocusTrace(QApplication* application) : QObject(application) {
    application->installEventFilter(this);
}

void FocusTrace::startIfAsked(QApplication* application) {
    if (!qEnvironmentVariableIsEmpty("VELDA_FOCUS_TRACE"))
        new FocusTrace(application);
}

bool FocusTrace::eventFilter(QObject* watched, QEvent* event) {
    // The same input passes the window's own object first; only what a widget sees counts.
    if (watched->isWidgetType()) {
        const QString detail = detailOf(*event);
        if (!detail.isNull())
            VELDA_LOG("focus", QtInfoMsg, "[FOCUS] %s %s \"%s\" %s",
                      QString::fromLatin1(QMetaEnum::fromType<QEvent::Type>().valueToKey(event->type())),
                      QString::fromLatin1(watched->metaObject()->className()), watched->objectName(), detail);
    }
    return QObject::eventFilter(watched, event);
}

} // namespace Kavor::HandheldGui
