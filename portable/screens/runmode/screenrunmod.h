#pragma once

#include "portable/fields/valuefield.h"
#include "portable/host/iguiscreen.h"

#include <optional>

namespace Kavor::HandheldGui {

class ChoiceGroup;
class PageGroup;

/// Continuous or triggered operation, and the trigger's source, advance, slope, delay, timer and count.
class runmodeScreen : public IGuiScreen {
    Q_OBJECT

public:
    runmodeScreen(QWidget* parent, std::vector<STATE> states);

    /// Sets every control from the cache, with them the manual trigger button and, when the run mode is another one
    /// than was seen last, its text in the status bar.
    void update_from_config(STATE state) override;
    void show() override;
    void hide() override;

    /// Does nothing: the screen has no sub-views.
    void update_controls(STATE state);

public slots:
    void onContButton() { chooseRunMode(true); }
    void onTrigButton() { chooseRunMode(false); }

    // By name, for whoever drives the screen from outside: its own controls do without.
    void onTimerButton() { chooseWord(Source, 0); }
    void onExtButton() { chooseWord(Source, 1); }
    void onBusButton() { chooseWord(Source, 2); }
    void onOnceButton() { chooseWord(Advance, 0); }
    void onStepButton() { chooseWord(Advance, 1); }
    void onPosButton() { chooseWord(Slope, 0); }
    void onNegButton() { chooseWord(Slope, 1); }
    void setTrigDelay() { m_delay.entry->enter(); }
    void setTrigTimerTime() { m_timer.entry->enter(); }
    void setTrigCount() { m_count.entry->enter(); }

private:
    /// One parameter that is a choice of words of the module.
    struct WordChoice;
    enum Parameter { Source, Advance, Slope, ParameterCount };

    static const WordChoice& wordChoice(Parameter parameter);
    void buildRunMode();
    void buildParameters();
    void chooseRunMode(bool continuous);
    void chooseWord(Parameter parameter, int button);
    void showRunMode(bool continuous);
    void showRunModeText(bool continuous);
    void showWord(Parameter parameter);
    void showRows();

    QWidget* m_page;
    std::optional<bool> m_continuousSeen; ///< the module's run mode that the status bar was last told
    PageGroup* m_parameters = nullptr;
    ChoiceGroup* m_runMode = nullptr;
    PageGroup* m_runModeGroup = nullptr;
    QLabel* m_runModeLabel = nullptr;
    ChoiceGroup* m_choices[ParameterCount] = {};
    BoundField m_delay;
    BoundField m_timer;
    BoundField m_count;
};

} // namespace Kavor::HandheldGui
