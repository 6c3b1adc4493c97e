#pragma once

#include "common/instrument/handlerscpi.h"
#include "common/wire/channel_record.h"
#include "portable/host/panelhost.h"
#include "portable/window/errorreports.h"

#include <array>
#include <memory>

class QLabel;

namespace Kavor::HandheldGui {

class ControlRow;
class dynamicLayout;
class FuncButtonWidget;

/// The one window of the panel: function row, header label, the page of the current screen, output controls and status
/// bar. It keeps the state machine and tells the user about errors; SCPI goes through the EventHandler alone. Lives on
/// the GUI thread until the process ends, and refuses to close.
class MainWindow : public PanelHost {
    Q_OBJECT

public:
    /// handler is not owned and must outlive the window.
    MainWindow(QWidget* parent, EventHandler* handler, const PanelSettings& settings = PanelSettings());
    ~MainWindow() override;

    /// Loads every screen from the cache and shows the CW screen. Once, after construction.
    void postInit();

    /// The modulation text of the status bar for a mask of modEnableBitMask bits.
    QString GetStatusBarMode(unsigned mask) const;

    /// Brings the MOD pair and what it switches into line with what runs.
    void update_modulations();

    EventHandler& handler() override { return *m_handler; }
    const PanelSettings& settings() const override { return m_settings; }
    QWidget* contentArea() override { return m_content; }
    ToastOverlay* toast() override { return m_toast; }
    STATE currentState() const override { return m_state; }
    void setHeaderBar(const QString& title) override;
    void setStatusBar(const QString& text) override;
    void UpdateStatusBar() override;
    void UpdateDeviceState(STATE state) override;
    void change_state(STATE state, STATE previous = STATE_NONE) override;
    void update_from_config(STATE state) override;
    void refreshFromModule() override;
    void switchModulationsOff() override { onModOffButton(true); }
    void selectChannel(unsigned channel) override;
    bool enablesLocked() const override;
    void setModulationLook(bool on) override;
    void SetManualBnEnable(bool enable) override;
    void set_battery_level(unsigned short percent) override;
    void reportScpiError(int requested, int conflict) override;
    void tellUser(const QString& text) override;
    void reportError(const QString& text) override;
    void reportWhenFree(const QString& text) override;
    QString frequencyUnit() const override { return status().unit; }
    void setFrequencyUnit(const QString& unit) override { status().unit = unit; }

public slots:
    void onModOnOff(int on, STATE state) override;
    void UpdateFRSWState() override { change_state(STATE_FRSW); }
    void UpdatePRSWState() override { change_state(STATE_PRSW); }
    void UpdateListState() override { change_state(STATE_LIST); }
    void OnRunModeCont() override;
    void OnRunModeTrig() override;

    /// fromUser: the user pressed the button; otherwise the controls follow what the module does already.
    void onModOnButton(bool fromUser);
    void onModOffButton(bool fromUser);
    void onRfOnButton(bool fromUser);
    void onRfOffButton(bool fromUser);
    void onTrgPress();
    void onTrgRelease();
    void onTrgButton();
    void onFuncBnClicked();

protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void countStarting(int change) override;

private:
    void buildLayout();
    void buildStatusBar();
    void connectControls();
    void followRecord();
    void showOutputs();
    void setRfLook(bool on);
    void showLink();
    void showChannel();
    void toggleChannels();

    /// What the status bar says of a channel, beside what is in its record.
    struct Status {
        QString mode = QStringLiteral("CW");
        QString runMode = QStringLiteral("Continuous");
        QString unit = QStringLiteral("GHz");
    };
    Status& status() { return m_status[m_handler->currentChannel()]; }
    const Status& status() const { return m_status[m_handler->currentChannel()]; }

    ToastOverlay* m_toast = nullptr;
    FuncButtonWidget* m_functions = nullptr;
    std::unique_ptr<dynamicLayout> m_screens;
    EventHandler* m_handler;
    QLabel* m_header = nullptr;
    QWidget* m_content = nullptr;
    ControlRow* m_controls = nullptr;
    QLabel* m_statusFrequency = nullptr;
    QLabel* m_statusPower = nullptr;
    QLabel* m_statusModulation = nullptr;
    QLabel* m_statusRunning = nullptr; ///< a mark before what runs
    QLabel* m_statusRunMode = nullptr;
    STATE m_state = STATE_CW;
    STATE m_stateBefore = STATE_CW; ///< the overview of the channels was opened from
    unsigned m_channels = 1;        ///< of the region, or the last one that was there
    std::array<Status, MaxChannels + 1> m_status;
    bool m_modOffOwed = false; ///< a MOD Off was overtaken by the RF output's Off
    int m_starting = 0;        ///< sequences of starts under way
    PanelSettings m_settings;
    ErrorReports m_errors;
    QString m_keptToast; ///< raised before the window shows
};

} // namespace Kavor::HandheldGui
