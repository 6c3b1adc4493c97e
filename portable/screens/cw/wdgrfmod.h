#pragma once

#include "portable/fields/valuefield.h"
#include "portable/widgets/state.h"

#include <QWidget>
#include <array>
#include <vector>

class EventHandler;
class QLabel;

namespace Kavor::HandheldGui {

class ChoiceGroup;
class EnableBox;
class IntfButtonMod;
class PanelHost;
struct ModulationTab;

/// The modulations of the CW screen: five tabs, each with its enable box and parameters, their source, and the pair
/// that switches the enabled set on and off. GUI thread.
class rfModulationsWidget : public QWidget {
    Q_OBJECT

public:
    /// parent: the group to fill. mainWindow: a PanelHost. The last argument is not used.
    rfModulationsWidget(QWidget* parent, QWidget* mainWindow, EventHandler* handler, int);

    /// Shows a tab: its labels, editors and enable box.
    void update_static_controls(STATE tab);

    /// Reloads boxes, editors and source from the cache.
    void update_from_config(STATE state);

    /// Sets the five check boxes from the cached enable mask.
    void setChecksFromConfig();

public slots:
    /// Starts what is enabled and does not run yet, until an Off is asked for or a command times out.
    void onModOnButton();
    /// Stops what runs, enabled or not.
    void onModOffButton();
    void onModsOff();
    void onModBnClicked();
    void onSrcInternalButton() { selectSource(false); }
    void onSrcExternalButton() { selectSource(true); }

signals:
    void ModStatusBarSignal(int on, STATE tab);

public:
    // By name, for whoever drives the widget from outside: its own controls do without.

    /// Disables (true) or enables (false) the five check boxes, until the next look at what runs.
    void updateEnableSatus(bool disable);

    /// Checks and rounds an entry and sends it; true when the module took it. Pulse width and rate in the units shown,
    /// percent, degrees.
    bool onSetTimePulse(double value) { return enter(PulseWidth, value); }
    bool onSetPulseFrequency(double value) { return enter(PulseRate, value); }
    bool onSetDepthAM(double value) { return enter(AmDepth, value); }
    bool onSetDeviationPM(double value) { return enter(PmDeviation, value); }

public slots:
    /// Act on an enable box: a Qt check state.
    void onAMCheckboxClicked(int state) { toggleEnable(0, state); }
    void onFMCheckboxClicked(int state) { toggleEnable(1, state); }
    void onPMCheckboxClicked(int state) { toggleEnable(2, state); }
    void onPulseCheckboxClicked(int state) { toggleEnable(3, state); }
    void onPattCheckboxClicked(int state) { toggleEnable(4, state); }

    // Take what the editor holds, in the unit that its box shows.
    void bnSetFrequencyAM() { enter(AmRate); }
    void bnSetFrequencyAMUnitsChanged(int) { enter(AmRate); }
    void bnSetDepthAM() { enter(AmDepth); }
    void bnSetFrequencyFM() { enter(FmRate); }
    void bnSetFrequencyFMUnitsChanged(int) { enter(FmRate); }
    void bnSetDeviationFM() { enter(FmDeviation); }
    void bnSetDeviationFMUnitsChanged(int) { enter(FmDeviation); }
    void bnSetFrequencyPM() { enter(PmRate); }
    void bnSetFrequencyPMUnitsChanged(int) { enter(PmRate); }
    void bnSetDeviationPM() { enter(PmDeviation); }
    void bnSetTimePulse() { enter(PulseWidth); }
    void bnSetTimePulseUnitsChanged(int) { enter(PulseWidth); }
    void onSetPulseFrequency() { enter(PulseRate); }
    void onSetPulseFrequencyUnitsChanged(int) { enter(PulseRate); }

private:
    /// The parameters, in the order of the tabs.
    enum Parameter { AmRate, AmDepth, FmRate, FmDeviation, PmRate, PmDeviation, PulseWidth, PulseRate, ParameterCount };

    void buildTabs();
    void buildParameters();
    void buildSource();
    void buildModulate();
    void selectSource(bool externalSource);
    void showSource(const ModulationTab& tab);
    bool isRunning(const ModulationTab& tab) const;
    bool switchState(const ModulationTab& tab, bool on);
    bool enter(Parameter parameter);
    bool enter(Parameter parameter, double value);
    void toggleEnable(std::size_t tab, int state);

    PanelHost& m_host;
    EventHandler& m_handler;
    std::vector<IntfButtonMod*> m_tabs;
    std::vector<EnableBox*> m_enables;
    std::array<BoundField, ParameterCount> m_fields{};
    QLabel* m_sourceLabel = nullptr;
    ChoiceGroup* m_source = nullptr;
    ChoiceGroup* m_modulate = nullptr;
    STATE m_tab = STATE_AM;
};

} // namespace Kavor::HandheldGui
