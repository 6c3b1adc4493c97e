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

constexpr PageGroup::Column RightColumn{592, 840, 232, 124};
constexpr PageGroup::Column LeftColumn{24, 200, 232, 124};
constexpr int TabTop = 56;
constexpr int TabWidth = 140;
constexpr int TabHeight = 64;
constexpr int TabPitch = 148;
constexpr int EnableRow = 144;
constexpr int ParameterRow = 228;
constexpr int SourceWidth = 178;
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
    {STATE_AM, &RightColumn, "Depth (%):", "AM Depth", "amDepth", DeviceValueId::AmDepth, ValueField::Kind::Percent,
     "Range %1% to %2%", false},
    {STATE_FM, &LeftColumn, "Frequency:", "FM Frequency", "fmFrequency", DeviceValueId::FmRate,
     ValueField::Kind::Frequency, "", true},
    {STATE_FM, &RightColumn, "Frequency Deviation:", "FM Deviation", "fmDeviation", DeviceValueId::FmDeviation,
     ValueField::Kind::Frequency, "", false},
    {STATE_PM, &LeftColumn, "Frequency:", "PM Frequency", "pmFrequency", DeviceValueId::PmRate,
     ValueField::Kind::Frequency, "", false},
    {STATE_PM, &RightColumn, "Phase Deviation:", "PM Deviation", "pmDeviation", DeviceValueId::PmDeviation,
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
    auto* line = new QFrame(this);
    line->setGeometry(LeftColumn.labelX, TabTop + TabHeight, width() - 2 * LeftColumn.labelX, 2);
    line->setStyleSheet(QStringLiteral("background-color: %1;").arg(Style::css(Style::Raised)));
    int x = LeftColumn.labelX;
    for (const ModulationTab& tab : ModulationTabs) {
        auto* button = new IntfButtonMod(this, {tab.state}, QString::fromLatin1(tab.text), TabWidth, TabHeight);
        button->setObjectName(QStringLiteral("tab") + QString::fromLatin1(tab.text));
        button->setGeometry(x, TabTop, TabWidth, TabHeight);
        connect(button, &QPushButton::clicked, this, &rfModulationsWidget::onModBnClicked);
        m_tabs.push_back(button);
        x += TabPitch;

        auto* box = new CheckRow(this, QString::fromLatin1(tab.enableText), LeftColumn.valueX - LeftColumn.labelX);
        box->setObjectName(QStringLiteral("enable") + QString::fromLatin1(tab.text));
        box->move(LeftColumn.labelX, EnableRow);
        m_enables.push_back(new EnableBox(m_host, box, tab.bit, QStringLiteral("rfModulationsWidget::"),
                                          QString::fromLatin1(tab.logName)));
    }
}

void rfModulationsWidget::buildParameters() {
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
    m_sourceLabel = group->addLabel(RightColumn.labelX, EnableRow, 200, Style::ButtonHeight, QStringLiteral("Source:"));
    m_source = new ChoiceGroup(this, PRESSED_WIDGET_BTN_STYLE, UNPRESSED_WIDGET_BTN_STYLE,
                               {{QStringLiteral("Internal"), QStringLiteral("sourceInternal"), QString()},
                                {QStringLiteral("External"), QStringLiteral("sourceExternal"), QString()}});
    m_source->place(RightColumn.valueX, EnableRow, SourceWidth, Style::ButtonHeight);
    connect(m_source, &ChoiceGroup::asked, this,
            [this](int index) { index == External ? onSrcExternalButton() : onSrcInternalButton(); });
}

void rfModulationsWidget::buildModulate() {
    auto* group = qobject_cast<PageGroup*>(parentWidget());
    group->addLabel(824, 44, 136, Style::ButtonHeight, QStringLiteral("Modulate:"));
    m_modulate = new ChoiceGroup(this, PRESSED_MOD_BTN_STYLE, UNPRESSED_MOD_BTN_STYLE,
                                 {{QStringLiteral("On"), QStringLiteral("modulateOn"), QString()},
                                  {QStringLiteral("Off"), QStringLiteral("modulateOff"), QStringLiteral("off")}});
    m_modulate->place(968, 44, 114, Style::ButtonHeight);
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
