#include "portable/widgets/scrim.h"

#include <QEvent>
#include <QPainter>
#include <QVariant>

namespace Kavor::HandheldGui {

namespace {

constexpr char Live[] = "keptLive";
constexpr char UndimmedFrom[] = "undimmedFrom";
constexpr int Darkness = 190;

QRect placeIn(const QWidget& window, const QWidget& widget) {
    return QRect(widget.mapTo(&window, QPoint()), widget.size());
}

QList<QWidget*> liveControls(const QWidget& window) {
    QList<QWidget*> live;
    for (QWidget* widget : window.findChildren<QWidget*>()) {
        if (widget->property(Live).toBool() && widget->isVisible() && widget->isEnabled())
            live << widget;
    }
    return live;
}

class Cover : public QWidget {
public:
    Cover(QWidget& window, bool live) : QWidget(&window), m_dimmed(window.rect()) {
        setObjectName(QStringLiteral("scrim"));
        setAttribute(Qt::WA_AcceptTouchEvents);
        setGeometry(window.rect());
        if (live)
            leaveOut(window);
        show();
        raise();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setClipRegion(m_dimmed);
        painter.fillRect(rect(), QColor(0, 0, 0, Darkness));
    }

    bool event(QEvent* event) override {
        switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseMove:
        case QEvent::TouchBegin:
        case QEvent::TouchUpdate:
        case QEvent::TouchEnd:
        case QEvent::Wheel:
            event->accept();
            return true;
        default:
            return QWidget::event(event);
        }
    }

private:
    void leaveOut(const QWidget& window) {
        for (const QWidget* widget : window.findChildren<QWidget*>()) {
            const QVariant from = widget->property(UndimmedFrom);
            if (from.isValid() && widget->isVisible())
                m_dimmed -= placeIn(window, *widget).adjusted(from.toInt(), 0, 0, 0);
        }
        QRegion covered(window.rect());
        for (const QWidget* control : liveControls(window))
            covered -= placeIn(window, *control);
        setMask(covered);
    }

    QRegion m_dimmed;
};

} // namespace

void keepLive(QWidget* control) {
    control->setProperty(Live, true);
}

void keepUndimmed(QWidget* widget, int fromX) {
    widget->setProperty(UndimmedFrom, fromX);
}

QWidget* liveControlIn(const QWidget& beside, const QRect& area) {
    for (QWidget* control : liveControls(*beside.window())) {
        if (area.intersects(QRect(control->mapToGlobal(QPoint()), control->size())))
            return control;
    }
    return nullptr;
}

Scrim::Scrim(QWidget& window, bool live) : m_cover(new Cover(window, live)) {}

Scrim::~Scrim() {
    delete m_cover;
}

} // namespace Kavor::HandheldGui
