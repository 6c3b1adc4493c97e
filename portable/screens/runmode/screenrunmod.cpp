#include "portable/screens/runmode/screenrunmod.h"

#include "common/instrument/handlerscpi.h"
#include "portable/fields/valueentry.h"
#include "portable/host/panelhost.h"
#include "portable/host/screentexts.h"
#include "portable/widgets/choicegroup.h"
#include "portable/widgets/pagegroup.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"

#include <QLabel>

namespace Kavor::HandheldGui {

/// Buttons and words of a parameter, in the order of the buttons. A word that matches none presses the fallback.
struct runmodeScreen::WordChoice {
    const char* label;
    std::vector<ChoiceGroup::Button> buttons;
    std::vector<const char*> words;
    int fallback;
    char (ChannelRecord::*field)[32];
    void (EventHandler::*setCached)(const char*);
    int (EventHandler::*send)(bool);
};

namespace {

enum SourceButton { Internal, External, Bus };
enum AdvanceButton { Once, Step };
enum SlopeButton { Positive, Negative };
enum RunModeButton { Continuous, Triggered };

constexpr PageGroup::Column EntryColumn{660, 836, 236, 128};
constexpr int ChoiceX = 228;
constexpr int ChoiceWidth = 130;
constexpr int FirstRow = 60;
constexpr int RowPitch = 88;

} // namespace

const runmodeScreen::WordChoice& runmodeScreen::wordChoice(Parameter parameter) {
    static const WordChoice choices[ParameterCount] = {
        {"Trigger Source:",
         {{"Internal", "sourceTimer", ""}, {"External", "sourceExt", ""}, {"Bus", "sourceBus", ""}},
         {TriggerSourceToString[2], TriggerSourceToString[0], TriggerSourceToString[1]},
         External,
         &ChannelRecord::triggerSource,
         &EventHandler::setCachedTriggerSource,
         &EventHandler::setTriggerSource},
        {"Trigger Advance:",
         {{"Once", "advanceOnce", ""}, {"Step", "advanceStep", ""}},
         {TriggerAdvToString[0], TriggerAdvToString[1]},
         -1,
         &ChannelRecord::triggerAdvance,
         &EventHandler::setCachedTriggerAdvance,
         &EventHandler::setTRGadv},
        {"Trigger Slope:",
         {{"Positive", "slopePositive", ""}, {"Negative", "slopeNegative", ""}},
         {TriggerEdgeToString[0], TriggerEdgeToString[1]},
         -1,
         &ChannelRecord::triggerEdge,
         &EventHandler::setCachedTriggerEdge,
         &EventHandler::setTRGedge},
    };
    return choices[parameter];
}

runmodeScreen::runmodeScreen(QWidget* parent, std::vector<STATE> states)
    : IGuiScreen(parent, std::move(states)), m_page(makePage(QStringLiteral("pageRunMode"))) {
    buildRunMode();
    buildParameters();
}

void runmodeScreen::buildRunMode() {
    const int width = Style::WindowWidth - 2 * Style::PageMargin;
    auto* group = new PageGroup(m_page, QStringLiteral("Run mode Settings"), QRect(Style::PageMargin, 0, width, 136));
    group->addLabel(PageGroup::Left.labelX, 52, ChoiceX - PageGroup::Left.labelX, Style::ButtonHeight,
                    QStringLiteral("Run Mode:"));
    m_runMode = new ChoiceGroup(group, PRESSED_WIDGET_BTN_STYLE, UNPRESSED_WIDGET_BTN_STYLE,
                                {{QStringLiteral("Continous"), QStringLiteral("runContinuous"), QString()},
                                 {QStringLiteral("Trigger"), QStringLiteral("runTrigger"), QString()}});
    m_runMode->place(ChoiceX, 52, 201, Style::ButtonHeight);
    connect(m_runMode, &ChoiceGroup::asked, this, [this](int index) {
        if (index == Continuous)
            onContButton();
        else
            onTrigButton();
    });
}

void runmodeScreen::buildParameters() {
    const int width = Style::WindowWidth - 2 * Style::PageMargin;
    m_parameters = new PageGroup(m_page, QStringLiteral("Trigger Parameters"),
                                 QRect(Style::PageMargin, 146, width, Style::PageHeight - 154));
    for (int i = 0; i < ParameterCount; ++i) {
        const auto parameter = static_cast<Parameter>(i);
        const WordChoice& choice = wordChoice(parameter);
        const int y = FirstRow + i * RowPitch;
        m_parameters->addLabel(PageGroup::Left.labelX, y, ChoiceX - PageGroup::Left.labelX, Style::ButtonHeight,
                               QString::fromLatin1(choice.label));
        m_choices[i] =
            new ChoiceGroup(m_parameters, PRESSED_WIDGET_BTN_STYLE, UNPRESSED_WIDGET_BTN_STYLE, choice.buttons);
        m_choices[i]->place(ChoiceX, y, ChoiceWidth, Style::ButtonHeight);
        connect(m_choices[i], &ChoiceGroup::asked, this,
                [this, parameter](int index) { chooseWord(parameter, index); });
    }

    const auto timeEntry = [this](int row, const char* label, const char* name, const char* title, DeviceValueId id) {
        return addValueField(*m_parameters, host(), EntryColumn, FirstRow + row * RowPitch,
                             {QString::fromLatin1(label), QString::fromLatin1(name), QString::fromLatin1(title)},
                             ValueField{ValueField::Kind::Time, ValueModel::device(handler(), id)});
    };
    m_delay = timeEntry(0, "Trigger Delay:", "trigDelay", "Trigger Delay", DeviceValueId::TriggerDelay);
    m_timer = timeEntry(1, "Trigger Timer:", "trigTimer", "Trigger Timer time", DeviceValueId::TriggerTimer);
    ValueField count{ValueField::Kind::Number, ValueModel::device(handler(), DeviceValueId::TriggerCount)};
    count.whole = true;
    count.rangeText = QStringLiteral("Range %1 to %2");
    m_count = addValueField(
        *m_parameters, host(), EntryColumn, FirstRow + 2 * RowPitch,
        {QStringLiteral("Once Count:"), QStringLiteral("trigCount"), QStringLiteral("Trigger Count")}, count);
}

void runmodeScreen::chooseRunMode(bool continuous) {
    if (handler().setRunMode(continuous) != 0) {
        showCommandFailure(host());
        return;
    }
    showRunMode(continuous);
    showRunModeText(continuous);
}

void runmodeScreen::showRunMode(bool continuous) {
    m_runMode->choose(continuous ? Continuous : Triggered);
    m_parameters->setVisible(!continuous);
    host().SetManualBnEnable(!continuous);
    showRows();
}

void runmodeScreen::showRunModeText(bool continuous) {
    m_continuousSeen = continuous;
    if (continuous)
        host().OnRunModeCont();
    else
        host().OnRunModeTrig();
}

void runmodeScreen::chooseWord(Parameter parameter, int button) {
    const WordChoice& choice = wordChoice(parameter);
    (handler().*choice.setCached)(choice.words[static_cast<std::size_t>(button)]);
    if ((handler().*choice.send)(false) != 0) {
        showCommandFailure(host());
        return;
    }
    showWord(parameter);
    showRows();
}

void runmodeScreen::showWord(Parameter parameter) {
    const WordChoice& choice = wordChoice(parameter);
    const std::string word = recordText(handler().snapshot().*choice.field);
    int pressed = choice.fallback;
    for (std::size_t i = 0; i < choice.words.size(); ++i) {
        if (word == choice.words[i])
            pressed = static_cast<int>(i);
    }
    m_choices[parameter]->choose(pressed);
}

void runmodeScreen::showRows() {
    m_timer.setVisible(m_choices[Source]->chosen() == Internal);
    m_count.setVisible(m_choices[Advance]->chosen() == Once);
}

void runmodeScreen::update_from_config(STATE) {
    for (const Parameter parameter : {Source, Advance, Slope})
        showWord(parameter);
    for (const BoundField& row : {m_delay, m_timer, m_count})
        row.entry->reload();
    const bool continuous = handler().snapshot().runMode == 1;
    showRunMode(continuous);
    // The function button has its own word for the run mode, which stays until the module's run mode changes.
    if (m_continuousSeen != continuous)
        showRunModeText(continuous);
}

void runmodeScreen::update_controls(STATE) {}

void runmodeScreen::show() {
    host().setHeaderBar(QStringLiteral("   Run Mode"));
    m_page->show();
}

void runmodeScreen::hide() {
    m_page->hide();
}

} // namespace Kavor::HandheldGui
