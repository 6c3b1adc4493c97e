#pragma once

#include "common/instrument/handlerscpi.h"
#include "portable/window/mainwindow.h"
#include "rig/scripteddialogs.h"
#include "sim/module_simulator.h"

#include <QTemporaryDir>
#include <memory>

/// The real window, 1280 x 800 and offscreen, on a simulated module of its own: a free port and a region name that no
/// other process uses. Widgets are found by name and pressed as a finger would.
class PanelFixture {
public:
    struct Setup {
        unsigned channels = 1;
        unsigned disconnected = 0;
        bool startModule = true;
        int commandTimeoutMs = 2000;
        int refreshMs = 100;
        QString configurationFolder; ///< where the module keeps stored configurations; empty: in memory
        std::function<Kavor::HandheldGui::NetworkFacts()> readNetwork;
        Kavor::HandheldGui::UpdateEntry* updateEntry = nullptr;
    };

    PanelFixture();
    explicit PanelFixture(const Setup& setup);
    ~PanelFixture();

    Sim::ModuleSimulator& module() { return *m_module; }
    EventHandler& handler() { return *m_handler; }
    Kavor::HandheldGui::MainWindow& window() { return *m_window; }
    ScriptedDialogs& dialogs() { return m_dialogs; }

    /// A copy of the current channel's record as the module holds it.
    ChannelRecord record() const;

    template <typename T>
    T* widget(const QString& name) {
        return m_window->findChild<T*>(name);
    }

    /// Waits until nothing that was asked for is under way or waits; false when that takes too long.
    bool settle();

    /// Presses a widget in its middle; false when it is not there, not visible or disabled.
    bool press(const QString& name);
    /// Touches it with a finger instead of a mouse.
    bool touch(const QString& name);

    /// Opens an editor, types a number and ends with the named key.
    bool enter(const QString& editor, const QString& number, const QString& endKey = QStringLiteral("keyEnter"));

    /// The text of a label, editor, button or unit box.
    QString text(const QString& name);
    /// The message on show, empty when there is none.
    QString toast();
    bool hasStyle(const QString& name, const QString& sheet);

    /// Where the screens show something else than the module holds, once nothing is under way; empty when all agree or
    /// the module was never started.
    QStringList disagreements();

    /// The lines that the module received since the last call.
    QStringList sent();

    /// The data root: the one that the environment names, otherwise a folder that lasts as long as the panel.
    QString home() const;

private:
    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<Sim::ModuleSimulator> m_module;
    std::unique_ptr<EventHandler> m_handler;
    ScriptedDialogs m_dialogs;
    std::unique_ptr<Kavor::HandheldGui::MainWindow> m_window;
};
