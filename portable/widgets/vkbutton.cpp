#include "portable/widgets/vkbutton.h"

#include "portable/widgets/styles/tokens.h"
#include "portable/widgets/touchpress.h"

#include <QEvent>
#include <QPainter>

namespace Kavor::HandheldGui {

namespace {

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
    return {quiet ? Style::Field : Style::Raised, Style::RaisedDown, Style::Edge, Style::Text};
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

} // namespace

VKButton::VKButton(QWidget* parent, Look look) : QPushButton(parent), m_look(look) {
    setFocusPolicy(Qt::NoFocus);
    setAutoDefault(false);
    new TouchPress(this);
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
    const bool handled = QPushButton::event(event);
    if (m_pressedLook && !isDown()) // a finger lifted elsewhere emits nothing
        onRelease();
    return handled;
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
