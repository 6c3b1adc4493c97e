#include "portable/screens/cw/wdgrfmod.h"

#include "platform/logger.h"
#include "portable/fields/enablebox.h"
#include "portable/host/panelhost.h"
#include "portable/host/screentexts.h"
#include "portable/screens/cw/wdgrfmod_table.h"
#include "portable/widgets/actiongate.h"
#include "portable/widgets/buttonintf.h"
#include "portable/widgets/checkrow.h"
#include "portable/widgets/choicegroup.h"
#include "portable/widgets/pagegroup.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"

#include <QLabel>
#include <QPushButton>

namespace Kavor::HandheldGui {

namespace {

constexpr PageGroup::Column RightColumn{592, 872, 196, 128}; ///< with a unit
constexpr PageGroup::Column RightWideColumn{592, 872, 336, 0};
constexpr PageGroup::Column LeftColumn = PageGroup::Left;
constexpr int TabTop = Style::Gap;
constexpr int TabsEnd = 848;
constexpr int EnableRow = TabTop + Style::RowPitch;
constexpr int ParameterRow = EnableRow + Style::RowPitch;
constexpr int SourceWidth = 162;
constexpr int ModulateX = 1004;
constexpr int ModulateWidth = 96;
enum Source { Internal = 0, External = 1 };
enum Modulate { On = 0, Off = 1 };

const ModulationTab* tabOf(STATE state) {
    for (const ModulationTab& tab : ModulationTabs) {
        if (tab.state == state)
            return &tab;
    }
    return nullptr;
}

/// What the editors of the tabs differ in, in the order of rfModulationsWidget::Parameter.
struct ParameterRowText {
    STATE tab;
    const PageGroup::Column* column;
    const char* label;
    const char* title;
    const char* name;
    DeviceValueId id;
    ValueField::Kind kind;
    const char* rangeText;
    bool internalOnly; ///< belongs to the internal modulating signal
};

const std::array<ParameterRowText, 8> ParameterRows{{
    {STATE_AM, &LeftColumn, "Frequency:", "AM Frequency", "amFrequency", DeviceValueId::AmRate,
     ValueField::Kind::Frequency, "", true},
    {STATE_AM, &RightWideColumn, "Depth (%):", "AM Depth", "amDepth", DeviceValueId::AmDepth, ValueField::Kind::Percent,
     "Range %1% to %2%", false},
    {STATE_FM, &LeftColumn, "Frequency:", "FM Frequency", "fmFrequency", DeviceValueId::FmRate,
     ValueField::Kind::Frequency, "", true},
    {STATE_FM, &RightColumn, "Frequency Deviation:", "FM Deviation", "fmDeviation", DeviceValueId::FmDeviation,
     ValueField::Kind::Frequency, "", false},
    {STATE_PM, &LeftColumn, "Frequency:", "PM Frequency", "pmFrequency", DeviceValueId::PmRate,
     ValueField::Kind::Frequency, "", false},
    {STATE_PM, &RightWideColumn, "Phase Deviation:", "PM Deviation", "pmDeviation", DeviceValueId::PmDeviation,
     ValueField::Kind::Phase, "Range %1° to %2°", false},
    {STATE_PULSE, &LeftColumn, "Pulse Width:", "Pulse width", "pulseWidth", DeviceValueId::PulseWidth,
     ValueField::Kind::Time, "", true},
    {STATE_PULSE, &RightColumn, "Pulse repetition rate:", "Pulse rate", "pulseRate", DeviceValueId::PulseFrequency,
     ValueField::Kind::Frequency, "", true},
}};

} // namespace

rfModulationsWidget::rfModulationsWidget(QWidget* parent, QWidget* mainWindow, EventHandler* handler, int)
    : QWidget(parent), m_host(*qobject_cast<PanelHost*>(mainWindow)), m_handler(*handler) {
    setGeometry(0, 0, parent->width(), parent->height());
    lower(); // the group's own title stays in front
    buildTabs();
    buildParameters();
    buildSource();
    buildModulate();
    connect(this, &rfModulationsWidget::ModStatusBarSignal, &m_host, &PanelHost::onModOnOff);
    connect(&m_host, &PanelHost::MainModOnSignal, this, &rfModulationsWidget::onModOnButton);
    connect(&m_host, &PanelHost::MainModOffSignal, this, &rfModulationsWidget::onModOffButton);
    update_static_controls(STATE_AM);
}

void rfModulationsWidget::buildTabs() {
    auto* group = qobject_cast<PageGroup*>(parentWidget());
    group->addCaption(LeftColumn.labelX, TabTop, Style::ButtonHeight, QStringLiteral("Modulations"));
    group->addLine({LeftColumn.labelX, TabTop + Style::ButtonHeight, TabsEnd - LeftColumn.labelX, 2});
    int x = LeftColumn.valueX;
    for (const ModulationTab& tab : ModulationTabs) {
        auto* button =
            new IntfButtonMod(this, {tab.state}, QString::fromLatin1(tab.text), tab.tabWidth, Style::ButtonHeight);
        button->setObjectName(QStringLiteral("tab") + QString::fromLatin1(tab.text));
        button->setGeometry(x, TabTop, tab.tabWidth, Style::ButtonHeight);
        connect(button, &QPushButton::clicked, this, &rfModulationsWidget::onModBnClicked);
        m_tabs.push_back(button);
        x += tab.tabWidth + Style::Gap;

        auto* box = new CheckRow(this, QString::fromLatin1(tab.enableText), LeftColumn.valueX - LeftColumn.labelX);
        box->setObjectName(QStringLiteral("enable") + QString::fromLatin1(tab.text));
        box->move(LeftColumn.labelX, EnableRow);
        m_enables.push_back(new EnableBox(m_host, box, tab.bit, QStringLiteral("rfModulationsWidget::"),
                                          QString::fromLatin1(tab.logName)));
    }
}

void rfModulationsWidget::buildParameters() {
    static_assert(ParameterRows.size() == ParameterCount, "a row for each parameter");
    auto* group = qobject_cast<PageGroup*>(parentWidget());
    for (std::size_t i = 0; i < ParameterRows.size(); ++i) {
        const ParameterRowText& row = ParameterRows[i];
        ValueField field{row.kind, ValueModel::device(m_handler, row.id)};
        field.row = translations::MHzToHz;
        field.decimals = 1;
        field.mostDecimals = deviceValue(row.id).decimals;
        field.rangeText = QString::fromUtf8(row.rangeText);
        m_fields[i] = addValueField(
            *group, m_host, *row.column, ParameterRow,
            {QString::fromLatin1(row.label), QString::fromLatin1(row.name), QString::fromLatin1(row.title)}, field);
    }
}

void rfModulationsWidget::buildSource() {
    auto* group = qobject_cast<PageGroup*>(parentWidget());
    m_sourceLabel = group->addLabel(RightColumn.labelX, EnableRow, RightColumn.valueX - RightColumn.labelX,
                                    Style::ButtonHeight, QStringLiteral("Source:"));
    m_source = new ChoiceGroup(this, PRESSED_WIDGET_BTN_STYLE, UNPRESSED_WIDGET_BTN_STYLE,
                               {{QStringLiteral("Internal"), QStringLiteral("sourceInternal"), QString()},
                                {QStringLiteral("External"), QStringLiteral("sourceExternal"), QString()}});
    m_source->followModule();
    m_source->place(RightColumn.valueX, EnableRow, SourceWidth, Style::ButtonHeight);
    connect(m_source, &ChoiceGroup::asked, this,
            [this](int index) { index == External ? onSrcExternalButton() : onSrcInternalButton(); });
}

void rfModulationsWidget::buildModulate() {
    auto* group = qobject_cast<PageGroup*>(parentWidget());
    group->addLabel(RightColumn.valueX, TabTop, ModulateX - RightColumn.valueX, Style::ButtonHeight,
                    QStringLiteral("Modulate:"));
    m_modulate = new ChoiceGroup(this, PRESSED_MOD_BTN_STYLE, UNPRESSED_MOD_BTN_STYLE,
                                 {{QStringLiteral("On"), QStringLiteral("modulateOn"), QString()},
                                  {QStringLiteral("Off"), QStringLiteral("modulateOff"), QStringLiteral("off")}});
    m_modulate->followModule();
    m_modulate->place(ModulateX, TabTop, ModulateWidth, Style::ButtonHeight);
    connect(m_modulate->button(On), &QPushButton::clicked, this, [this] {
        ActionGate::panel().ask(
            m_modulate->button(On), [this] { onModOnButton(); }, ActionGate::Kind::SwitchOn);
    });
    connect(m_modulate->button(Off), &QPushButton::clicked, this, [this] {
        ActionGate::panel().ask(
            m_modulate->button(Off), [this] { m_host.switchModulationsOff(); }, ActionGate::Kind::Off);
    });
    connect(&m_host, &PanelHost::modulationLookChanged, this, [this](bool on, bool enabled) {
        m_modulate->choose(on ? On : Off);
        m_modulate->setEnabled(enabled);
    });
}

bool rfModulationsWidget::isRunning(const ModulationTab& tab) const {
    return m_handler.snapshot().*tab.running == 1;
}

bool rfModulationsWidget::switchState(const ModulationTab& tab, bool on) {
    VELDA_LOG("screens", QtInfoMsg, "%s Modulation checked", tab.startName);
    if ((m_handler.*tab.setState)(on ? OnOff::on : OnOff::off) == 0)
        return true;
    showCommandFailure(m_host);
    return false;
}

bool rfModulationsWidget::enter(Parameter parameter) {
    return m_fields[parameter].entry->enter();
}

bool rfModulationsWidget::enter(Parameter parameter, double value) {
    return m_fields[parameter].entry->enter(value);
}

void rfModulationsWidget::toggleEnable(std::size_t tab, int state) {
    m_enables[tab]->onStateChanged(state);
}

void rfModulationsWidget::onModOnButton() {
    const ActionGate& gate = ActionGate::panel();
    {
        const PanelHost::Starting starting(m_host);
        for (const ModulationTab& tab : ModulationTabs) {
            if ((m_handler.snapshot().modulationEnable & tab.bit) == 0 || isRunning(tab))
                continue;
            // The pulse starts with what the screen shows.
            if (tab.state == STATE_PULSE) {
                if (gate.maySwitchOn())
                    enter(PulseWidth);
                if (gate.maySwitchOn())
                    enter(PulseRate);
            }
            if (gate.maySwitchOn())
                switchState(tab, true);
        }
    }
    if (m_handler.isModulationsOn() != 0)
        m_host.setModulationLook(true);
    m_host.UpdateStatusBar();
}

void rfModulationsWidget::onModOffButton() {
    onModsOff();
    emit ModStatusBarSignal(0, m_tab);
}

void rfModulationsWidget::onModsOff() {
    const ActionGate& gate = ActionGate::panel();
    for (const ModulationTab& tab : ModulationTabs) {
        if ((m_handler.mayRun() & tab.bit) != 0 && gate.mayStop())
            switchState(tab, false);
    }
    m_host.setModulationLook(m_handler.isModulationsOn() != 0);
    m_host.UpdateStatusBar();
}

void rfModulationsWidget::updateEnableSatus(bool disable) {
    for (EnableBox* enable : m_enables)
        enable->box()->setEnabled(!disable);
}

void rfModulationsWidget::setChecksFromConfig() {
    for (EnableBox* enable : m_enables)
        enable->setFromConfig();
    for (std::size_t i = 0; i < ModulationTabs.size(); ++i)
        m_tabs[i]->setTicked((m_handler.snapshot().modulationEnable & ModulationTabs[i].bit) != 0);
}

void rfModulationsWidget::onModBnClicked() {
    const auto* button = qobject_cast<IntfButtonMod*>(sender());
    if (!button || button->states().empty())
        return;
    const STATE tab = button->states().front();
    if (tab == STATE_PATTERN)
        m_host.change_state(STATE_PATTERN);
    else
        update_static_controls(tab);
}

void rfModulationsWidget::update_static_controls(STATE tab) {
    m_tab = tab;
    for (std::size_t i = 0; i < ModulationTabs.size(); ++i) {
        m_tabs[i]->toggleButton(tab);
        m_enables[i]->box()->setVisible(ModulationTabs[i].state == tab);
    }
    for (std::size_t i = 0; i < ParameterRows.size(); ++i) {
        const bool shown = ParameterRows[i].tab == tab;
        m_fields[i].setVisible(shown);
    }
    const ModulationTab* row = tabOf(tab);
    const bool hasSource = row && row->source;
    m_sourceLabel->setVisible(hasSource);
    m_source->setVisible(hasSource);
    setChecksFromConfig();
    if (hasSource)
        showSource(*row);
}

void rfModulationsWidget::update_from_config(STATE) {
    setChecksFromConfig();
    for (const BoundField& field : m_fields)
        field.entry->reload();
    for (const ModulationTab& tab : ModulationTabs) {
        if (tab.source)
            showSource(tab);
    }
}

void rfModulationsWidget::showSource(const ModulationTab& tab) {
    const std::string word = recordText(m_handler.snapshot().*tab.source);
    const bool externalSource = word == ModSrcModeToString[ModSrcMode::external];
    for (std::size_t i = 0; i < ParameterRows.size(); ++i) {
        if (ParameterRows[i].tab == tab.state && ParameterRows[i].internalOnly)
            m_fields[i].entry->setEnabled(!externalSource);
    }
    if (tab.state == m_tab)
        m_source->choose(externalSource ? External : Internal);
}

void rfModulationsWidget::selectSource(bool externalSource) {
    const ModulationTab* tab = tabOf(m_tab);
    if (!tab || !tab->setSource)
        return;
    if ((m_handler.*tab->setSource)(externalSource ? ModSrcMode::external : ModSrcMode::internal) != 0)
        showCommandFailure(m_host);
    showSource(*tab);
}

} // namespace Kavor::HandheldGui
