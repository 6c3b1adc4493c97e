#include "portable/screens/lists/screenlist.h"

#include "common/instrument/handlerscpi.h"
#include "portable/host/panelhost.h"
#include "portable/host/screentexts.h"
#include "portable/screens/lists/list_limits.h"
#include "portable/widgets/ToastOverlay.h"
#include "portable/widgets/actiongate.h"
#include "portable/widgets/choicegroup.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"
#include "values/normalize.h"

#include <QLabel>
#include <QPushButton>

namespace Kavor::HandheldGui {

namespace {

constexpr int RunTypeX = 180;
constexpr int DwellX = 412;
constexpr PageGroup::Column FixedColumn{DwellX, 592, 252, 108};

// Buttons as wide as their words: the row holds more than the grid's equal widths would let it.
void placeButton(ChoiceGroup& group, int index, int x, int y, int width) {
    group.button(index)->setGeometry(x, y, width, Style::ButtonHeight);
}

} // namespace

listScreen::listScreen(QWidget* parent, std::vector<STATE> states)
    : StepListScreen(parent, std::move(states), FrequencyList),
      m_fixedDwell(listLimitsOf(handler().snapshot()).defaultDwell) {
    buildRunType();
    buildDwell();
    showList();
    setDwellMode(Step);
    connect(&host(), &PanelHost::ListOnOffSignal, this, &listScreen::onRunButton);
}

listScreen::~listScreen() {
    table().setListConfig(nullptr); // the widgets outlive the screen and its lists
}

void listScreen::buildRunType() {
    addCaption(RunTypeX, QStringLiteral("Run Type"));
    m_runType = new ChoiceGroup(&settingsGroup(), PRESSED_WIDGET_BTN_STYLE, UNPRESSED_WIDGET_BTN_STYLE,
                                {{QStringLiteral("List"), named("RunList"), QString()},
                                 {QStringLiteral("Selection"), named("RunSelection"), QString()}});
    placeButton(*m_runType, List, RunTypeX, SettingsRow, 72);
    placeButton(*m_runType, Selection, RunTypeX + 72 + Style::Gap, SettingsRow, 132);
    m_runType->choose(List);
    connect(m_runType, &ChoiceGroup::clicked, m_runType, &ChoiceGroup::choose);
}

void listScreen::buildDwell() {
    addCaption(DwellX, QStringLiteral("Dwell time"));
    m_dwellMode = new ChoiceGroup(&settingsGroup(), PRESSED_WIDGET_BTN_STYLE, UNPRESSED_WIDGET_BTN_STYLE,
                                  {{QStringLiteral("Step"), named("DwellStep"), QString()},
                                   {QStringLiteral("Fixed"), named("DwellFixed"), QString()}});
    placeButton(*m_dwellMode, Step, DwellX, SettingsRow, 76);
    placeButton(*m_dwellMode, Fixed, DwellX + 76 + Style::Gap, SettingsRow, 80);
    connect(m_dwellMode, &ChoiceGroup::clicked, this, [this](int index) { setDwellMode(DwellMode(index)); });

    ValueField field;
    field.kind = ValueField::Kind::Time;
    field.timeUnits = unitNames(UnitQuantity::Time).size();
    field.namedInRange = false;
    field.restoredDecimals = 3;
    field.model = {[this] { return m_fixedDwell; },
                   [this] {
                       const FrequencyListLimits& limits = frequencies().limits();
                       return ValueLimits{limits.maxDwell, limits.minDwell};
                   },
                   [this](double ns) {
                       return applyFixedDwell(ns);
                   }};
    m_fixed = addValueField(settingsGroup(), host(), FixedColumn, SettingsRow,
                            {QString(), named("FixedDwell"), QStringLiteral("Dwell time")}, field);
    m_fixed.label->hide();
    m_fixed.entry->reload();
}

FrequencyListConfig& listScreen::frequencies() {
    FrequencyListLimits limits = listLimitsOf(handler().snapshot());
    const bool fixed = m_dwellMode && m_dwellMode->chosen() == Fixed;
    if (fixed)
        limits.defaultDwell = m_fixedDwell; // a step that is added later is like the others
    FrequencyListConfig& list = m_lists.at(handler().currentChannel(), limits);
    list.setDwellEditable(!fixed);
    return list;
}

void listScreen::setDwellMode(DwellMode mode) {
    m_dwellMode->choose(mode);
    m_fixed.entry->setCalculated(mode == Step);
    frequencies();
    if (mode == Fixed)
        setFixedTime();
    table().refresh();
}

void listScreen::setFixedTime() {
    m_fixed.entry->enter();
}

EntryResult listScreen::applyFixedDwell(double ns) {
    FrequencyListConfig& list = frequencies();
    double value = ns;
    std::string unit = "ns";
    // The one that was held may be no dwell of the module that is there now.
    if (!normalizeListTime(value, unit, list.limits().minDwell, list.limits().maxDwell, ns, unit, host().toast(),
                           QString()))
        return EntryResult::Refused;
    m_fixedDwell = ns;
    list.setFixedDwell(value, unit);
    table().refresh();
    showOrigin();
    return EntryResult::Taken;
}

void listScreen::onRunButton(int on) {
    const ActionGate& gate = ActionGate::panel();
    const bool start = on != 0;
    const bool due = start ? isEnabled() && !isRunning() && gate.maySwitchOn()
                           : (handler().mayRun() & LIST_MOD_BIT) != 0 && gate.mayStop();
    if (!due)
        return;
    if (handler().setStateList(start ? OnOff::on : OnOff::off) != 0)
        showCommandFailure(host());
    handler().isModulationsOn();
    host().UpdateStatusBar();
}

int listScreen::upload() {
    return handler().sendListDATAX(frequencies().points());
}

} // namespace Kavor::HandheldGui
