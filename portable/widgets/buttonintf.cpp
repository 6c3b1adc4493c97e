#include "portable/widgets/buttonintf.h"

#include "portable/widgets/freshness.h"
#include "portable/widgets/lineicons.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"

#include <algorithm>

namespace Kavor::HandheldGui {

namespace {
constexpr QSize TickRoom = {35, 28};
}

IntfButton::IntfButton(QWidget* parent, const std::vector<STATE>& states, const QString& text, int width, int height)
    : QPushButton(text, parent), m_states(states) {
    setMaximumSize(width, height);
    setBaseSize(width, height);
    resize(width, height);
    setFlat(true);
    setFocusPolicy(Qt::NoFocus);
    setStyles(PRESSED_TAB_BTN_STYLE2, UNPRESSED_TAB_BTN_STYLE2);
}

void IntfButton::setStyles(const QString& pressed, const QString& unpressed) {
    m_pressed = pressed;
    m_unpressed = unpressed;
    applySheet(this, m_unpressed);
}

void IntfButton::toggleButton(STATE state) {
    const bool pressed = std::find(m_states.begin(), m_states.end(), state) != m_states.end();
    applySheet(this, pressed ? m_pressed : m_unpressed);
}

IntfButtonMod::IntfButtonMod(QWidget* parent, const std::vector<STATE>& states, const QString& text, int width,
                             int height)
    : IntfButton(parent, states, text, width, height) {
    setFocusPolicy(Qt::StrongFocus);
    setStyles(PRESSED_TAB_BTN_STYLE3, UNPRESSED_TAB_BTN_STYLE3);
    setIconSize(TickRoom);
    connect(&Freshness::panel(), &Freshness::changed, this, &IntfButtonMod::showTick);
}

void IntfButtonMod::setTicked(bool ticked) {
    if (ticked == m_ticked)
        return;
    m_ticked = ticked;
    showTick();
}

void IntfButtonMod::showTick() {
    setIcon(m_ticked ? lineIcon(LineIcon::Tick, Freshness::panel().isStale() ? Style::Disabled : Style::Active)
                     : QIcon());
}

} // namespace Kavor::HandheldGui
