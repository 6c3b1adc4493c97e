#include "portable/window/controlrow.h"

#include "portable/widgets/choicegroup.h"
#include "portable/widgets/scrim.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"
#include "portable/widgets/touchpress.h"

#include <QLabel>
#include <QPushButton>

namespace Kavor::HandheldGui {

namespace {

constexpr int ButtonTop = 12;
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

    addLabel(QStringLiteral("Modulation:"), 24, 148);
    m_modulation =
        new ChoiceGroup(this, PRESSED_MOD_BTN_STYLE, UNPRESSED_MOD_BTN_STYLE, onOff(QStringLiteral("mod"), QString()));
    m_modulation->place(176, ButtonTop, 112, Style::ButtonHeight);

    addLabel(QStringLiteral("Trigger:"), 484, 100);
    m_trigger = new QPushButton(QStringLiteral("Manual"), this);
    m_trigger->setObjectName(QStringLiteral("trigger"));
    m_trigger->setFocusPolicy(Qt::NoFocus);
    m_trigger->setGeometry(588, ButtonTop, 144, Style::ButtonHeight);
    m_trigger->setStyleSheet(UNPRESSED_MOD_BTN_STYLE);

    addLabel(QStringLiteral("RF OUT:"), 836, 112);
    m_rf = new ChoiceGroup(this, PRESSED_MOD_BTN_STYLE, UNPRESSED_MOD_BTN_STYLE,
                           onOff(QStringLiteral("rf"), QStringLiteral("rf")));
    m_rf->place(952, ButtonTop, 144, Style::ButtonHeight);

    keepUndimmed(this, UndimmedFrom);
    keepLive(m_rf->button(Off));
    new TouchPress(m_rf->button(Off)); // a second finger reaches it
}

void ControlRow::addLabel(const QString& text, int x, int width) {
    auto* label = new QLabel(text, this);
    label->setGeometry(x, ButtonTop, width, Style::ButtonHeight);
    label->setStyleSheet(WIDGET_LBL_STYLE);
}

void ControlRow::setTriggerPressed(bool pressed) {
    applySheet(m_trigger, pressed ? PRESSED_MOD_BTN_STYLE : UNPRESSED_MOD_BTN_STYLE);
}

} // namespace Kavor::HandheldGui
