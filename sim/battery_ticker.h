#pragma once

#include "sim/module_state.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

namespace Sim {

/// Lets the module's battery follow its curve, ten times a second, on the thread that made it.
class BatteryTicker : public QObject {
    Q_OBJECT

public:
    explicit BatteryTicker(ModuleState& state);

    /// The battery stays as it is from now on.
    void end() { m_timer.stop(); }

private:
    void tick();

    ModuleState& m_state;
    QElapsedTimer m_sinceStart;
    QTimer m_timer;
};

} // namespace Sim
