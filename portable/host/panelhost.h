#pragma once

#include "platform/networkfacts.h"
#include "portable/widgets/state.h"

#include <QMainWindow>
#include <functional>

class EventHandler;

namespace Kavor::HandheldGui {

class ToastOverlay;
class UpdateEntry;

/// What the panel is given by whoever puts it together.
struct PanelSettings {
    int refreshMs = 1000; ///< period of the record refresh, in milliseconds

    /// Reads the network of the device, on a thread of its own; null reads the operating system's.
    std::function<NetworkFacts()> readNetwork;

    /// The list of update packages; not owned. Without one "Update SW" is disabled.
    UpdateEntry* updateEntry = nullptr;
};

/// What a screen may ask of the window that holds it. The panel's main window implements it; a test may put a small
/// host in its place. GUI thread.
class PanelHost : public QMainWindow {
    Q_OBJECT

public:
    using QMainWindow::QMainWindow;

    /// The one instrument-control object; it outlives the host.
    virtual EventHandler& handler() = 0;
    virtual const PanelSettings& settings() const = 0;

    /// Where a screen puts its page: the area below the header label, Style::PageHeight high.
    virtual QWidget* contentArea() = 0;

    /// Null before the window has made it.
    virtual ToastOverlay* toast() = 0;

    virtual void setHeaderBar(const QString& title) = 0;
    virtual void setStatusBar(const QString& text) = 0;
    virtual void UpdateStatusBar() = 0;
    virtual void UpdateDeviceState(STATE state) = 0;

    /// The state that was last switched to.
    virtual STATE currentState() const = 0;

    /// Switches the screen; the second argument is ignored.
    virtual void change_state(STATE state, STATE previous = STATE_NONE) = 0;

    /// Reloads every screen and the output controls from the cache, as at power-on: with the RF output on, what is
    /// enabled is started if anything runs; with it off, what still runs is stopped.
    virtual void update_from_config(STATE state) = 0;

    /// Copies the current channel's record and lets everything that is shown compare itself with it: once a second,
    /// after every action, when a dialog or a list has closed. Sends nothing; does nothing while a command waits or a
    /// dialog is open.
    virtual void refreshFromModule() = 0;

    /// Shows another channel on every screen; starts and stops nothing. The user is told when it fails.
    virtual void selectChannel(unsigned channel) = 0;

    /// Stops whatever modulation, sweep or list runs, enabled or not, as MOD Off does; the user is told what goes on.
    virtual void switchModulationsOff() = 0;

    /// The enable boxes are locked: something runs, or is about to be started.
    virtual bool enablesLocked() const = 0;

    /// The time in which modulations are being started, for as long as this object lives: the enable boxes are locked
    /// before the first command goes out.
    class Starting {
    public:
        explicit Starting(PanelHost& host) : m_host(host) { m_host.countStarting(1); }
        ~Starting() { m_host.countStarting(-1); }
        Starting(const Starting&) = delete;
        Starting& operator=(const Starting&) = delete;

    private:
        PanelHost& m_host;
    };

    /// Gives the MOD pair (and whatever follows it) the look of modulation running or not.
    virtual void setModulationLook(bool on) = 0;

    /// Enables or disables the manual trigger button.
    virtual void SetManualBnEnable(bool enable) = 0;

    virtual void set_battery_level(unsigned short percent) = 0;

    /// A toast for a refused combination: the requested modEnableBitMask bits and those in the way (negative: none
    /// set).
    virtual void reportScpiError(int requested, int conflict) = 0;

    /// Shows a toast, or keeps it until the window shows.
    virtual void tellUser(const QString& text) = 0;

    /// A modal box. Nothing for an empty text or while such a box is open; kept while the window is not shown yet.
    virtual void reportError(const QString& text) = 0;

    /// A box like that of reportError(), as soon as the event loop is back and no other dialog is open; returns at
    /// once.
    virtual void reportWhenFree(const QString& text) = 0;

    /// The unit in which the status bar shows the frequency: "GHz", "MHz", "KHz" or "Hz".
    virtual QString frequencyUnit() const = 0;
    virtual void setFrequencyUnit(const QString& unit) = 0;

public slots:
    virtual void onModOnOff(int on, STATE state) = 0;
    virtual void UpdateFRSWState() = 0;
    virtual void UpdatePRSWState() = 0;
    virtual void UpdateListState() = 0;
    virtual void OnRunModeCont() = 0;
    virtual void OnRunModeTrig() = 0;

signals:
    void MainModOnSignal();
    void MainModOffSignal();
    void SweepModOnSignal();
    void SweepModOffSignal();
    void ListOnOffSignal(int on);

    /// What the enable boxes show, or whether they are locked, may have changed.
    void enablesChanged();

    /// The screens show another channel.
    void channelChanged();

    /// The look of the MOD pair changed: whether modulation shows as running, and whether it can be switched.
    void modulationLookChanged(bool on, bool enabled);

protected:
    virtual void countStarting(int change) = 0;
};

} // namespace Kavor::HandheldGui
