#include "portable/widgets/swipe.h"

#include "portable/widgets/scrollhandle.h"

#include <QAbstractItemView>
#include <QCoreApplication>
#include <QMouseEvent>
#include <QPointer>
#include <QScrollEvent>
#include <QScroller>

namespace Kavor::HandheldGui {

namespace {

constexpr qreal FastestRun = 14000; // pixels a second: some 200 rows

QScroller& scrollerOf(const QAbstractItemView& view) {
    return *QScroller::scroller(view.viewport());
}

QWidget* makeMark(QWidget* viewport) {
    auto* mark = new QWidget(viewport);
    mark->setObjectName(QStringLiteral("pressedRow"));
    mark->setAttribute(Qt::WA_TransparentForMouseEvents);
    mark->setStyleSheet(QStringLiteral("QWidget#pressedRow { background-color: rgba(243, 246, 249, 30); }"));
    mark->hide();
    return mark;
}

} // namespace

void Swipe::install(QAbstractItemView& view) {
    new Swipe(view);
}

Swipe::Swipe(QAbstractItemView& view) : QObject(&view), m_view(view), m_mark(makeMark(view.viewport())) {
    auto* handle = new ScrollHandle(&view);
    view.setVerticalScrollBar(handle);
    view.setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    QScroller& scroller = scrollerOf(view);
    const qreal metre = scroller.pixelPerMeter().y(); // what the system takes the screen for
    QScrollerProperties properties = scroller.scrollerProperties();
    const auto set = [&properties](QScrollerProperties::ScrollMetric metric, const QVariant& value) {
        properties.setScrollMetric(metric, value);
    };
    set(QScrollerProperties::DragStartDistance, TapTravel / metre);
    set(QScrollerProperties::MaximumVelocity, FastestRun / metre);
    set(QScrollerProperties::FrameRate, QVariant::fromValue(QScrollerProperties::Fps60));
    for (const auto metric :
         {QScrollerProperties::HorizontalOvershootPolicy, QScrollerProperties::VerticalOvershootPolicy})
        set(metric, QVariant::fromValue(QScrollerProperties::OvershootAlwaysOff));
    scroller.setScrollerProperties(properties);
    view.viewport()->installEventFilter(this);
    connect(handle, &QScrollBar::valueChanged, this, [this] {
        if (!m_scrolls)
            stopRunning();
    });
    connect(handle, &QScrollBar::rangeChanged, this, &Swipe::stopRunning);
}

bool Swipe::eventFilter(QObject*, QEvent* event) {
    if (event == m_passing)
        return false;
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        begin(static_cast<QMouseEvent&>(*event));
        return true;
    case QEvent::MouseMove:
        if (m_isDown)
            follow(static_cast<QMouseEvent&>(*event));
        return m_isDown;
    case QEvent::MouseButtonRelease: {
        const bool isOurs = m_isDown;
        if (isOurs)
            end(static_cast<QMouseEvent&>(*event));
        return isOurs;
    }
    case QEvent::Scroll:
        m_scrolls = true;
        m_view.verticalScrollBar()->setValue(qRound(static_cast<QScrollEvent&>(*event).contentPos().y()));
        m_scrolls = false;
        event->accept();
        return true;
    case QEvent::Hide:
        cancel();
        return false;
    default:
        return false;
    }
}

void Swipe::begin(const QMouseEvent& press) {
    QScroller& scroller = scrollerOf(m_view);
    m_isTap = scroller.state() != QScroller::Scrolling;
    scroller.stop();
    scroller.handleInput(QScroller::InputPress, press.localPos(), static_cast<qint64>(press.timestamp()));
    m_pressed = press.localPos();
    m_isDown = true;
    if (m_isTap)
        markPressed();
}

void Swipe::follow(const QMouseEvent& move) {
    const QPointF way = move.localPos() - m_pressed;
    if (QPointF::dotProduct(way, way) >= TapTravel * TapTravel) {
        m_isTap = false;
        m_mark->hide();
    }
    scrollerOf(m_view).handleInput(QScroller::InputMove, move.localPos(), static_cast<qint64>(move.timestamp()));
}

void Swipe::end(const QMouseEvent& release) {
    follow(release);
    m_isDown = false;
    scrollerOf(m_view).handleInput(QScroller::InputRelease, release.localPos(),
                                   static_cast<qint64>(release.timestamp()));
    m_mark->hide();
    if (!m_isTap)
        return;
    const QPointer<Swipe> alive(this); // what a tap leads to may take the view away
    deliver(QEvent::MouseButtonPress, release);
    if (alive)
        deliver(QEvent::MouseButtonRelease, release);
}

// At the place of the press. The time and the source of the report stay, by which double taps are known.
void Swipe::deliver(QEvent::Type type, const QMouseEvent& like) {
    const QPointF off = m_pressed - like.localPos();
    const bool isPress = type == QEvent::MouseButtonPress;
    QMouseEvent event(type, m_pressed, like.windowPos() + off, like.screenPos() + off, like.button(),
                      isPress ? like.buttons() | like.button() : like.buttons(), like.modifiers(), like.source());
    event.setTimestamp(like.timestamp());
    const QPointer<Swipe> alive(this);
    m_passing = &event;
    QCoreApplication::sendEvent(m_view.viewport(), &event);
    if (alive)
        m_passing = nullptr;
}

void Swipe::cancel() {
    m_isDown = false;
    m_mark->hide();
    scrollerOf(m_view).stop();
}

void Swipe::stopRunning() {
    scrollerOf(m_view).stop();
}

void Swipe::markPressed() {
    const QModelIndex index = m_view.indexAt(m_pressed.toPoint());
    if (!index.isValid())
        return;
    QRect place = m_view.visualRect(index);
    if (m_view.selectionBehavior() == QAbstractItemView::SelectRows) {
        place.setLeft(0);
        place.setRight(m_view.viewport()->width());
    }
    m_mark->setGeometry(place);
    m_mark->show();
}

} // namespace Kavor::HandheldGui
