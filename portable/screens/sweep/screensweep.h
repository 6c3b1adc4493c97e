#pragma once

#include "portable/host/iguiscreen.h"
#include "portable/screens/sweep/sweeppage.h"

namespace Kavor::HandheldGui {

class IntfButtonMod;

/// Frequency and power sweeps, one page each.
class sweepScreen : public IGuiScreen {
    Q_OBJECT

public:
    sweepScreen(QWidget* parent, std::vector<STATE> states);

    void update_from_config(STATE state) override;
    void show() override;
    void hide() override;

    /// Shows the page of STATE_FRSW or STATE_PRSW; any other state leaves the page as it is.
    void update_controls(STATE state);

public slots:
    void onFrswButton();
    void onPrswButton();
    /// Start and stop what is enabled or runs; the window's MOD On and Off.
    void onStartButton();
    void onStopButton();
    void onModOffButton();
    void sweep_export_list();

signals:
    /// Marks a planned export; nothing is connected to it.
    void qwerty(int);

    // By name, for whoever drives the screen from outside: the pages' own controls do without.

public slots:
    /// Acts on the frequency sweep's enable box: a Qt check state.
    void onCheckboxClicked(int state);
    /// The lock toggle of the page on show, and its two ends: the stop (sweep) or the step size (step) is entered.
    void onCalculateButton();
    void onSweepButton();
    void onStepButton();
    void frswDirChanged(int index) { m_frsw->chooseDirection(index); }
    void prswDirChanged(int index) { m_prsw->chooseDirection(index); }
    /// Shows the calculated step size of the frequency sweep anew.
    void updateFRSWFreqCalculatedData() { m_frsw->entry(SweepPage::StepSize).reload(); }

    // For each value: take what the editor holds, in the unit that its box shows, or a number in that unit.
    void onFRSWFreqStart() { m_frsw->entry(SweepPage::Start).enter(); }
    void onFRSWFreqStartUnitsChanged(int) { onFRSWFreqStart(); }
    void setFRSWFreqStart(double value) { m_frsw->entry(SweepPage::Start).enter(value); }
    void onFRSWFreqStop() { m_frsw->entry(SweepPage::Stop).enter(); }
    void onFRSWFreqStopUnitsChanged(int) { onFRSWFreqStop(); }
    void setFRSWFreqStop(double value) { m_frsw->entry(SweepPage::Stop).enter(value); }
    void onFRSWFreqStepSize() { m_frsw->entry(SweepPage::StepSize).enter(); }
    void onFRSWFreqStepSizeUnitsChanged(int) { onFRSWFreqStepSize(); }
    void setFRSWFreqStepSize(double value) { m_frsw->entry(SweepPage::StepSize).enter(value); }
    void onFRSWFreqSteps() { m_frsw->entry(SweepPage::Steps).enter(); }
    void setFRSWFreqSteps(double value) { m_frsw->entry(SweepPage::Steps).enter(value); }
    void onFRSWTotalTime() { m_frsw->entry(SweepPage::TotalTime).enter(); }
    void onFRSWTotalTimeUnitsChanged(int) { onFRSWTotalTime(); }
    void setFRSWTotalTime(double value) { m_frsw->entry(SweepPage::TotalTime).enter(value); }
    void onFRSWStepTime() { m_frsw->entry(SweepPage::StepTime).enter(); }
    void onFRSWStepTimeUnitsChanged(int) { onFRSWStepTime(); }
    void setFRSWStepTime(double value) { m_frsw->entry(SweepPage::StepTime).enter(value); }
    void onFRSWPower() { m_frsw->entry(SweepPage::Fixed).enter(); }
    void setFRSWPower(double value) { m_frsw->entry(SweepPage::Fixed).enter(value); }
    void onPRSWPowStart() { m_prsw->entry(SweepPage::Start).enter(); }
    void setPRSWPowStart(double value) { m_prsw->entry(SweepPage::Start).enter(value); }
    void onPRSWPowStop() { m_prsw->entry(SweepPage::Stop).enter(); }
    void setPRSWPowStop(double value) { m_prsw->entry(SweepPage::Stop).enter(value); }
    void onPRSWPowStepSize() { m_prsw->entry(SweepPage::StepSize).enter(); }
    void setPRSWPowStepSize(double value) { m_prsw->entry(SweepPage::StepSize).enter(value); }
    void onPRSWPowSteps() { m_prsw->entry(SweepPage::Steps).enter(); }
    void setPRSWPowSteps(double value) { m_prsw->entry(SweepPage::Steps).enter(value); }
    void onPRSWTotalTime() { m_prsw->entry(SweepPage::TotalTime).enter(); }
    void onPRSWTotalTimeUnitsChanged(int) { onPRSWTotalTime(); }
    void setPRSWTotalTime(double value) { m_prsw->entry(SweepPage::TotalTime).enter(value); }
    void onPRSWStepTime() { m_prsw->entry(SweepPage::StepTime).enter(); }
    void onPRSWStepTimeUnitsChanged(int) { onPRSWStepTime(); }
    void setPRSWStepTime(double value) { m_prsw->entry(SweepPage::StepTime).enter(value); }
    void onPRSWFrequency() { m_prsw->entry(SweepPage::Fixed).enter(); }
    void onPRSWFrequencyUnitsChanged(int) { onPRSWFrequency(); }
    void setPRSWFrequency(double value) { m_prsw->entry(SweepPage::Fixed).enter(value); }

private:
    SweepPage& current() const { return m_subState == STATE_PRSW ? *m_prsw : *m_frsw; }

    QWidget* m_page;
    IntfButtonMod* m_frswTab;
    IntfButtonMod* m_prswTab;
    SweepPage* m_frsw;
    SweepPage* m_prsw;
};

} // namespace Kavor::HandheldGui
