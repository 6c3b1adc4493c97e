#include "portable/window/controlrow.h"

#include "portable/widgets/choicegroup.h"
#include "portable/widgets/freshness.h"
#include "portable/widgets/scrim.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"
#include "portable/widgets/touchpress.h"

#include <QLabel>
#include <QPushButton>

namespace Kavor::HandheldGui {

namespace {

constexpr int ButtonTop = 9;
constexpr int LineHeight = 4;
constexpr int UndimmedFrom = 784; ///< the RF pair stays in sight beside a dialog

std::vector<ChoiceGroup::Button> onOff(const QString& name, const QString& toneOn) {
    return {{QStringLiteral("On"), name + QStringLiteral("On"), toneOn},
            {QStringLiteral("Off"), name + QStringLiteral("Off"), QStringLiteral("off")}};
}

} // namespace

ControlRow::ControlRow(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("controlRow"));
    setFixedHeight(Style::ControlRowHeight);
    setAttribute(Qt::WA_StyledBackground);
    setStyleSheet(QStringLiteral("QWidget#controlRow { background-color: %1; border-top: 1px solid %2; }")
                      .arg(Style::css(Style::Panel), Style::css(Style::PanelEdge)));

    m_line = new QFrame(this);
    m_line->setObjectName(QStringLiteral("rfLine"));
    m_line->setGeometry(0, 0, Style::WindowWidth, LineHeight);

    addLabel(QStringLiteral("Modulation:"), 24, 156);
    m_modulation =
        new ChoiceGroup(this, PRESSED_MOD_BTN_STYLE, UNPRESSED_MOD_BTN_STYLE, onOff(QStringLiteral("mod"), QString()));
    m_modulation->followModule();
    m_modulation->place(184, ButtonTop, 104, Style::ButtonHeight);

    addLabel(QStringLiteral("Trigger:"), 452, 108);
    m_trigger = new QPushButton(QStringLiteral("Manual"), this);
    m_trigger->setObjectName(QStringLiteral("trigger"));
    m_trigger->setFocusPolicy(Qt::NoFocus);
    m_trigger->setGeometry(564, ButtonTop, 152, Style::ButtonHeight);
    m_trigger->setStyleSheet(UNPRESSED_MOD_BTN_STYLE);

    m_rfLabel = addLabel(QStringLiteral("RF OUT:"), 812, 124);
    m_rf = new ChoiceGroup(this, PRESSED_MOD_BTN_STYLE, UNPRESSED_MOD_BTN_STYLE,
                           onOff(QStringLiteral("rf"), QStringLiteral("rf")));
    m_rf->followModule();
    m_rf->place(940, ButtonTop, 152, Style::ButtonHeight);
    connect(&Freshness::panel(), &Freshness::changed, this, &ControlRow::showRf);
    setRf(false);

    keepUndimmed(this, UndimmedFrom);
    keepLive(m_rf->button(Off));
    new TouchPress(m_rf->button(Off)); // a second finger reaches it
}

QLabel* ControlRow::addLabel(const QString& text, int x, int width) {
    auto* label = new QLabel(text, this);
    label->setGeometry(x, ButtonTop, width, Style::ButtonHeight);
    label->setStyleSheet(WIDGET_LBL_STYLE);
    return label;
}

void ControlRow::setRf(bool on) {
    m_rfOn = on;
    showRf();
}

// Nobody knows what an output does that cannot be reached: it is shown as it was, in grey.
void ControlRow::showRf() {
    const bool stale = Freshness::panel().isStale();
    m_rf->choose(m_rfOn ? On : Off);
    applySheet(m_rfLabel, m_rfOn && !stale ? WIDGET_LBL_BOLD_STYLE : WIDGET_LBL_STYLE);
    m_line->setVisible(m_rfOn);
    applySheet(m_line, QStringLiteral("background-color: %1;").arg(Style::css(stale ? Style::Edge : Style::RfOn)));
}

void ControlRow::setTriggerPressed(bool pressed) {
    applySheet(m_trigger, pressed ? PRESSED_MOD_BTN_STYLE : UNPRESSED_MOD_BTN_STYLE);
}

} // namespace Kavor::HandheldGui
