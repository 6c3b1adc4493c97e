#include "portable/screens/lists/screenlist.h"

#include "common/instrument/handlerscpi.h"
#include "portable/host/panelhost.h"
#include "portable/host/screentexts.h"
#include "portable/screens/lists/list_limits.h"
#include "portable/widgets/ToastOverlay.h"
#include "portable/widgets/actiongate.h"
#include "portable/widgets/choicegroup.h"
#include "portable/widgets/combobox.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"
#include "portable/widgets/vklineedit.h"
#include "values/normalize.h"

#include <QFontMetrics>
#include <QLabel>
#include <QPushButton>

namespace Kavor::HandheldGui {

namespace {

constexpr int RunTypeX = 184;
constexpr int GroupGap = 12;
constexpr int SideRoom = 20; // so that the entry has room for nanoseconds of 100 s
constexpr int UnitWidth = 88;
constexpr int RightMargin = 12;

/// Buttons side by side, each as wide as its word needs. Returns where the next one would begin.
int placeButtons(ChoiceGroup& group, int x, int y) {
    QFont font(QStringLiteral("Segoe UI"));
    font.setPixelSize(Style::TextLabel);
    font.setWeight(QFont::DemiBold); // the chosen one's
    for (int i = 0; i < 2; ++i) {
        QPushButton* button = group.button(i);
        const int width = QFontMetrics(font).horizontalAdvance(button->text()) + 2 * SideRoom;
        button->setGeometry(x, y, width, Style::ButtonHeight);
        x += width + Style::Gap;
    }
    return x;
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
    m_dwellX = placeButtons(*m_runType, RunTypeX, SettingsRow) - Style::Gap + GroupGap;
    m_runType->choose(List);
    connect(m_runType, &ChoiceGroup::clicked, m_runType, &ChoiceGroup::choose);
}

void listScreen::buildDwell() {
    addCaption(m_dwellX, QStringLiteral("Dwell time"));
    m_dwellMode = new ChoiceGroup(&settingsGroup(), PRESSED_WIDGET_BTN_STYLE, UNPRESSED_WIDGET_BTN_STYLE,
                                  {{QStringLiteral("Step"), named("DwellStep"), QString()},
                                   {QStringLiteral("Fixed"), named("DwellFixed"), QString()}});
    const int entryX = placeButtons(*m_dwellMode, m_dwellX, SettingsRow);
    const int entryWidth = settingsGroup().width() - RightMargin - UnitWidth - Style::Gap - entryX;
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
    m_fixed = addValueField(settingsGroup(), host(), {m_dwellX, entryX, entryWidth, UnitWidth}, SettingsRow,
                            {QString(), named("FixedDwell"), QStringLiteral("Dwell time")}, field);
    m_fixed.label->hide();
    m_fixed.edit->setProperty("compact", true);
    m_fixed.unit->setProperty("compact", true);
    m_fixed.unit->setStyleSheet(WIDGET_COMBO_STYLE); // which reads the property
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
    m_fixed.entry->setEnabled(mode == Fixed);
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
