#include "portable/widgets/vkbutton.h"

#include "portable/widgets/styles/tokens.h"

#include <QPainter>
#include <QTouchEvent>
#include <algorithm>

namespace Kavor::HandheldGui {

namespace {

// Two reports of one press come within this time; a finger and a mouse never meet on one key that fast.
constexpr qint64 SamePressMs = 300;

struct KeyColours {
    QRgb fill;
    QRgb fillDown;
    QRgb edge;
    QRgb text;
};

KeyColours coloursOf(VKButton::Look look, bool enabled) {
    if (!enabled)
        return {Style::Panel, Style::Panel, Style::PanelEdge, Style::Disabled};
    if (look == VKButton::Look::Enter)
        return {Style::Active, Style::ActiveDown, Style::Active, Style::OnActive};
    const bool quiet = look == VKButton::Look::Function;
    return {Style::Raised, Style::RaisedDown, Style::FaintEdge, quiet ? Style::Label : Style::Text};
}

int pixelsOf(VKButton::Look look, int length) {
    switch (look) {
    case VKButton::Look::Character:
        return length == 1 ? 38 : 26;
    case VKButton::Look::Unit:
    case VKButton::Look::Enter:
        return 30;
    case VKButton::Look::Function:
    case VKButton::Look::Escape:
        break;
    }
    return 26;
}

bool recent(const QElapsedTimer& timer) {
    return timer.isValid() && timer.elapsed() < SamePressMs;
}

} // namespace

VKButton::VKButton(QWidget* parent, Look look) : QPushButton(parent), m_look(look) {
    setFocusPolicy(Qt::NoFocus);
    setAutoDefault(false);
    setAttribute(Qt::WA_AcceptTouchEvents);
    connect(this, &QPushButton::pressed, this, &VKButton::onPress);
    connect(this, &QPushButton::released, this, &VKButton::onRelease);
}

void VKButton::setCaption(const QString& caption) {
    m_caption = caption;
    update();
}

QFont VKButton::captionFont() const {
    QFont font(QStringLiteral("Segoe UI"));
    font.setPixelSize(pixelsOf(m_look, caption().length()));
    font.setWeight(m_chosen || m_look == Look::Enter ? QFont::Bold : QFont::Normal);
    return font;
}

void VKButton::setChosen(bool chosen) {
    m_chosen = chosen;
    update();
}

void VKButton::onPress() {
    m_pressedLook = true;
    update();
}

void VKButton::onRelease() {
    m_pressedLook = false;
    update();
}

bool VKButton::event(QEvent* event) {
    if (!isEnabled())
        return QPushButton::event(event);
    switch (event->type()) {
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
        handleTouch(*static_cast<QTouchEvent*>(event));
        event->accept();
        return true;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        if (m_touchId >= 0 || recent(m_sinceTouch)) {
            event->accept();
            return true;
        }
        m_mouseHeld = true;
        m_sinceMouse.start();
        break;
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease:
        if (!m_mouseHeld) {
            event->accept();
            return true;
        }
        m_mouseHeld = event->type() == QEvent::MouseMove;
        m_sinceMouse.start();
        break;
    default:
        break;
    }
    const bool handled = QPushButton::event(event);
    if (m_pressedLook && !isDown()) // a finger lifted elsewhere emits nothing
        onRelease();
    return handled;
}

void VKButton::handleTouch(const QTouchEvent& touch) {
    const auto& points = touch.touchPoints();
    if (touch.type() == QEvent::TouchBegin) {
        if (points.isEmpty() || isDown() || recent(m_sinceMouse))
            return;
        m_touchId = points.first().id();
        m_sinceTouch.start();
        setTouchDown(true);
        return;
    }
    if (m_touchId < 0)
        return;
    const auto finger = std::find_if(points.begin(), points.end(),
                                     [this](const QTouchEvent::TouchPoint& point) { return point.id() == m_touchId; });
    if (finger != points.end())
        setTouchDown(rect().contains(finger->pos().toPoint()));
    const bool lifted =
        touch.type() == QEvent::TouchEnd || (finger != points.end() && finger->state() == Qt::TouchPointReleased);
    if (!lifted && touch.type() != QEvent::TouchCancel)
        return;
    const bool act = lifted && isDown();
    m_touchId = -1;
    m_sinceTouch.start();
    setTouchDown(false);
    if (act)
        emit clicked();
}

void VKButton::setTouchDown(bool down) {
    if (down == isDown())
        return;
    setDown(down);
    if (down)
        emit pressed();
    else
        emit released();
}

void VKButton::paintEvent(QPaintEvent*) {
    const KeyColours colours = coloursOf(m_look, isEnabled());
    const int edge = m_chosen ? 4 : 2;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(m_chosen || m_pressedLook ? Style::Active : colours.edge), edge));
    painter.setBrush(QColor(m_pressedLook ? colours.fillDown : colours.fill));
    const double inset = edge / 2.0;
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), Style::Radius, Style::Radius);

    painter.setFont(captionFont());
    painter.setPen(QColor(colours.text));
    painter.drawText(rect().translated(0, m_pressedLook ? 2 : 0), Qt::AlignCenter, caption());
}

} // namespace Kavor::HandheldGui
