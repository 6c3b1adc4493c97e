#include "sim/battery_ticker.h"

#include "sim/factory_values.h"

namespace Sim {
namespace {
constexpr int TickMs = 100;
}

BatteryTicker::BatteryTicker(ModuleState& state) : m_state(state) {
    if (state.options().battery.isSteady())
        return;
    m_sinceStart.start();
    connect(&m_timer, &QTimer::timeout, this, &BatteryTicker::tick);
    m_timer.start(TickMs);
}

void BatteryTicker::tick() {
    const BatteryPoint battery = m_state.options().battery.at(static_cast<double>(m_sinceStart.elapsed()) / 1000);
    m_state.change([&battery](ModuleData& data) {
        for (ChannelRecord& record : data.records)
            setBattery(battery, record);
    });
}

} // namespace Sim
