#include "portable/screens/screensystem.h"

#include "common/instrument/handlerscpi.h"
#include "portable/panelhost.h"

#include <QTimer>

namespace Kavor::HandheldGui {

systemScreen::systemScreen(QWidget* parent, std::vector<STATE> states)
    : ReadoutScreen(parent, std::move(states), QStringLiteral("pageSystem"), QString(),
                    QStringLiteral("System Information"),
                    {
                        {QStringLiteral("Model"),
                         [](const ChannelRecord& r) {
                             return recordQText(r.model);
                         }},
                        {QStringLiteral("Serial"),
                         [](const ChannelRecord& r) {
                             return recordQText(r.serial);
                         }},
                        {QStringLiteral("Temperature"),
                         [](const ChannelRecord& r) {
                             return QString::number(r.temperature, 'f', 1) + QStringLiteral(" °C");
                         }},
                        {QStringLiteral("Options"),
                         [](const ChannelRecord& r) {
                             return recordQText(r.options);
                         }},
                        {QStringLiteral("FW/FPGA Version"),
                         [](const ChannelRecord& r) {
                             return recordQText(r.firmwareVersion);
                         }},
                        {QStringLiteral("Calibration Date"),
                         [](const ChannelRecord& r) {
                             return recordQText(r.calibrationDate);
                         }},
                    }),
      m_timer(new QTimer(this)) {
    connect(m_timer, &QTimer::timeout, this, &systemScreen::updateValues);
    m_timer->start(host().settings().refreshMs);
}

void systemScreen::postInit() {
    updateValues();
}

void systemScreen::updateValues() {
    host().refreshFromModule();
    ReadoutScreen::update_from_config(STATE_SYSTEM);
    handOnBattery();
}

void systemScreen::update_from_config(STATE state) {
    ReadoutScreen::update_from_config(state);
    handOnBattery();
}

void systemScreen::handOnBattery() {
    const ChannelRecord& record = handler().snapshot();
    const bool discharging = record.batteryCurrent < 0;
    const unsigned threshold = record.lowBatteryThreshold;
    if (m_batterySeen && record.batteryCharge == m_charge && discharging == m_discharging && threshold == m_threshold)
        return;
    m_batterySeen = true;
    m_charge = record.batteryCharge;
    m_discharging = discharging;
    m_threshold = threshold;
    // Outside 0 to 100 there is no battery to show.
    const bool known = record.batteryCharge >= 0 && record.batteryCharge <= 100;
    host().set_battery_level(known ? static_cast<unsigned short>(record.batteryCharge) : 101);
}

} // namespace Kavor::HandheldGui
