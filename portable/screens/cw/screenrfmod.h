#pragma once

#include "portable/fields/valueentry.h"
#include "portable/host/iguiscreen.h"

namespace Kavor::HandheldGui {

class ComboBox;
class StepKeys;
class rfModulationsWidget;

/// The first screen: CW frequency, power and phase, and the modulations.
class rfmodScreen : public IGuiScreen {
    Q_OBJECT

public:
    rfmodScreen(QWidget* parent, std::vector<STATE> states);

    void update_from_config(STATE state) override;
    void show() override;
    void hide() override;

    /// Reloads the screen with the state that it keeps.
    virtual void postInit();

    // By name, for whoever drives the screen from outside: its own controls do without.

    /// Takes a CW frequency in the unit of the unit box, a power in dBm, a phase in degrees.
    void setFrequency(double value) { m_frequency->enter(value); }
    void setPower(double value) { m_power->enter(value); }
    void setPhase(double value) { m_phase->enter(value); }

public slots:
    void onFreqEditChanged() { m_frequency->enter(); }
    void freqUnitsChanged(int) { m_frequency->enter(); }
    void onPowerEditChanged() { m_power->enter(); }
    void onPhaseEditChanged() { m_phase->enter(); }

private:
    void buildFrequencyGroup();

    QWidget* m_page;
    ValueEntry* m_frequency = nullptr;
    ComboBox* m_frequencyUnit = nullptr;
    ValueEntry* m_power = nullptr;
    ValueEntry* m_phase = nullptr;
    StepKeys* m_frequencySteps = nullptr;
    StepKeys* m_powerSteps = nullptr;
    rfModulationsWidget* m_modulations = nullptr;
};

} // namespace Kavor::HandheldGui
