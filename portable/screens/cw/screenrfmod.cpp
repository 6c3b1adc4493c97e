#include "portable/screens/cw/screenrfmod.h"

#include "common/instrument/handlerscpi.h"
#include "portable/fields/stepkeys.h"
#include "portable/fields/valuefield.h"
#include "portable/host/panelhost.h"
#include "portable/screens/cw/wdgrfmod.h"
#include "portable/widgets/combobox.h"
#include "portable/widgets/pagegroup.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"
#include "portable/widgets/vklineedit.h"

namespace Kavor::HandheldGui {

namespace {

constexpr int FrequencyGroupHeight = 240;
constexpr int ModulationsTop = FrequencyGroupHeight + Style::Gap;
constexpr PageGroup::Column FrequencyColumn{24, 200, 508, 128};
constexpr PageGroup::Column PhaseColumn{460, 592, 256, 0};
constexpr int StepCaptionX = 872;
constexpr int FrequencyRow = 40;
constexpr int PowerRow = 152;

} // namespace

rfmodScreen::rfmodScreen(QWidget* parent, std::vector<STATE> states)
    : IGuiScreen(parent, std::move(states)), m_page(makePage(QStringLiteral("pageCw"))) {
    buildFrequencyGroup();
    auto* group = new PageGroup(
        m_page, QString(),
        QRect(Style::PageMargin, ModulationsTop, Style::ContentWidth, Style::ContentHeight - ModulationsTop));
    m_modulations = new rfModulationsWidget(group, &host(), &handler(), 0);
}

void rfmodScreen::buildFrequencyGroup() {
    auto* group = new PageGroup(m_page, QStringLiteral("Frequency Settings"),
                                QRect(Style::PageMargin, 0, Style::ContentWidth, FrequencyGroupHeight));

    ValueField frequency{ValueField::Kind::Frequency, ValueModel::device(handler(), DeviceValueId::Frequency)};
    frequency.editStyle = WIDGET_EDIT_LARGE_STYLE;
    frequency.wrongStyle = WIDGET_EDIT_LARGE_STYLE_RED;
    const BoundField bound =
        addValueField(*group, host(), FrequencyColumn, FrequencyRow,
                      {QStringLiteral("Frequency:"), QStringLiteral("cwFrequency"), QStringLiteral("CW frequency")},
                      frequency, Style::FrequencyHeight);
    bound.edit->setGrouped(true);
    m_frequency = bound.entry;
    m_frequencyUnit = bound.unit;
    // The entry path redraws the status bar after this: the bar shows the frequency in the unit that was chosen here.
    connect(m_frequency, &ValueEntry::accepted, this,
            [this] { host().setFrequencyUnit(m_frequencyUnit->currentText()); });

    ValueField power{ValueField::Kind::Power, ValueModel::device(handler(), DeviceValueId::Power)};
    power.decimals = 2;
    m_power =
        addValueField(*group, host(), PageGroup::Left, PowerRow,
                      {QStringLiteral("Power (dBm):"), QStringLiteral("cwPower"), QStringLiteral("CW Power")}, power)
            .entry;

    ValueField phase{ValueField::Kind::Phase, ValueModel::device(handler(), DeviceValueId::Phase)};
    phase.decimals = 3;
    phase.rangeText = QStringLiteral("Range %1° to %2°");
    m_phase =
        addValueField(*group, host(), PhaseColumn, PowerRow,
                      {QStringLiteral("Phase (°):"), QStringLiteral("cwPhase"), QStringLiteral("CW Phase")}, phase)
            .entry;

    group->addCaption(StepCaptionX, 0, Style::CaptionHeight, QStringLiteral("Step"));
    m_frequencySteps = new StepKeys(
        *group, host(), *m_frequency,
        {QStringLiteral("frequencyStep"), QStringLiteral("Frequency step"), UnitQuantity::Frequency, 1e6, 1e-3, 1e9},
        FrequencyRow, Style::FrequencyHeight);
    m_powerSteps =
        new StepKeys(*group, host(), *m_power,
                     {QStringLiteral("powerStep"), QStringLiteral("Power step"), UnitQuantity::Power, 1, 0.01, 50},
                     PowerRow, Style::EntryHeight);
}

void rfmodScreen::update_from_config(STATE state) {
    m_frequency->reload();
    // Another client's frequency may have brought another unit; the bar goes with the field.
    if (m_frequency->showsModule() && host().frequencyUnit() != m_frequencyUnit->currentText()) {
        host().setFrequencyUnit(m_frequencyUnit->currentText());
        host().UpdateStatusBar();
    }
    m_power->reload();
    m_phase->reload();
    m_frequencySteps->reload();
    m_powerSteps->reload();
    m_modulations->update_from_config(state);
}

void rfmodScreen::show() {
    host().setHeaderBar(QStringLiteral("   CW & Modulations Mode - Set the RF output and modulation Settings"));
    m_page->show();
}

void rfmodScreen::hide() {
    m_page->hide();
}

void rfmodScreen::postInit() {
    update_from_config(static_cast<STATE>(m_subState));
}

} // namespace Kavor::HandheldGui
