#include "common/instrument/handlerscpi_check.h"

#include <cmath>

// The device values: one algorithm over their table, and the texts that are only read.

using Id = DeviceValueId;

EventHandler::EventHandler(const InstrumentSettings& settings, QObject* parent) : InstrumentLink(settings, parent) {}

int EventHandler::setDeviceValue(DeviceValueId id, double value) {
    if (!std::isfinite(value))
        return -1;
    const DeviceValue& item = deviceValue(id);
    const std::string text = wireText(item, value);
    return sendChecked(item.header, text, [&] {
        deviceField(id);
        return isTaken(item, snapshot(), value, text);
    });
}

double EventHandler::cachedValue(DeviceValueId id) const {
    const DeviceValue& item = deviceValue(id);
    return fieldInHandlerUnits(item, snapshot(), item.valueOffset);
}

ValueLimits EventHandler::cachedLimits(DeviceValueId id) const {
    const DeviceValue& item = deviceValue(id);
    return {fieldInHandlerUnits(item, snapshot(), item.maximumOffset),
            fieldInHandlerUnits(item, snapshot(), item.minimumOffset)};
}

double EventHandler::roundedToWire(DeviceValueId id, double value) const {
    if (!std::isfinite(value))
        return value;
    const DeviceValue& item = deviceValue(id);
    const double onWire = wireNumber(wireText(item, value));
    return item.kind == DeviceValue::Kind::Time ? secondsToNanoseconds(onWire) : onWire;
}

double EventHandler::deviceField(DeviceValueId id) {
    const DeviceValue& item = deviceValue(id);
    fetchBytes(reinterpret_cast<char*>(&cachedRecord()) + item.valueOffset, item.fieldSize());
    return cachedValue(id);
}

double EventHandler::totalSweepTime(DeviceValueId steps, DeviceValueId dwell) {
    const double count = deviceField(steps);
    const double time = deviceField(dwell);
    return count > 1.0 ? (count - 1.0) * time : 0.0;
}

double EventHandler::get_frequency() {
    return deviceField(Id::Frequency);
}
double EventHandler::get_frequency_def() {
    return fetch(cachedRecord().frequency.defaultValue);
}
double EventHandler::get_frequency_max() {
    return fetch(cachedRecord().frequency.maximum);
}
double EventHandler::get_frequency_min() {
    return fetch(cachedRecord().frequency.minimum);
}
double EventHandler::get_power() {
    return deviceField(Id::Power);
}
double EventHandler::get_power_def() {
    return fetch(cachedRecord().power.defaultValue);
}
double EventHandler::get_power_max() {
    return fetch(cachedRecord().power.maximum);
}
double EventHandler::get_power_min() {
    return fetch(cachedRecord().power.minimum);
}
double EventHandler::get_phase() {
    return deviceField(Id::Phase);
}
unsigned EventHandler::get_trig_count() {
    return fetch(cachedRecord().triggerCount.value);
}
double EventHandler::get_trig_timer_time() {
    return deviceField(Id::TriggerTimer);
}
double EventHandler::get_trig_delay() {
    return deviceField(Id::TriggerDelay);
}
unsigned EventHandler::get_trig_impedance() {
    return fetch(cachedRecord().triggerImpedance) == 50 ? 50 : 10000;
}
double EventHandler::get_am_freq() {
    return deviceField(Id::AmRate);
}
double EventHandler::get_am_depth() {
    return deviceField(Id::AmDepth);
}
double EventHandler::get_fm_freq() {
    return deviceField(Id::FmRate);
}
double EventHandler::get_fm_dev() {
    return deviceField(Id::AmRate);
}
double EventHandler::get_pm_freq() {
    return deviceField(Id::PmRate);
}
double EventHandler::get_pm_dev() {
    return deviceField(Id::PmDeviation);
}
double EventHandler::get_pulsem_freq() {
    return deviceField(Id::PulseFrequency);
}
double EventHandler::get_pulsem_width() {
    return deviceField(Id::PulseWidth);
}
double EventHandler::get_frsw_start() {
    return deviceField(Id::FrswStart);
}
double EventHandler::get_frsw_stop() {
    return deviceField(Id::FrswStop);
}
unsigned EventHandler::get_frsw_steps() {
    return fetch(cachedRecord().frswSteps.value);
}
double EventHandler::get_frsw_time() {
    return totalSweepTime(Id::FrswSteps, Id::FrswTime);
}
double EventHandler::get_prsw_start() {
    return deviceField(Id::PrswStart);
}
double EventHandler::get_prsw_stop() {
    return deviceField(Id::PrswStart);
}
unsigned EventHandler::get_prsw_steps() {
    return fetch(cachedRecord().prswSteps.value);
}
double EventHandler::get_prsw_time() {
    return totalSweepTime(Id::PrswSteps, Id::PrswTime);
}

int EventHandler::set_frequency(double hz) {
    return setDeviceValue(Id::Frequency, hz);
}
int EventHandler::set_power(double dbm) {
    return setDeviceValue(Id::Power, dbm);
}
int EventHandler::set_phase(double degrees) {
    return setDeviceValue(Id::Phase, degrees);
}
int EventHandler::set_trig_count(double count) {
    return setDeviceValue(Id::TriggerCount, count);
}
int EventHandler::set_trig_timer_time(double ns) {
    return setDeviceValue(Id::TriggerTimer, ns);
}
int EventHandler::set_trig_delay(double ns) {
    return setDeviceValue(Id::TriggerDelay, ns);
}
int EventHandler::set_am_freq(double hz) {
    return setDeviceValue(Id::AmRate, hz);
}
int EventHandler::set_am_depth(double percent) {
    return setDeviceValue(Id::AmDepth, percent);
}
int EventHandler::set_fm_freq(double hz) {
    return setDeviceValue(Id::FmRate, hz);
}
int EventHandler::set_fm_dev(double hz) {
    return setDeviceValue(Id::FmDeviation, hz);
}
int EventHandler::set_pm_freq(double hz) {
    return setDeviceValue(Id::PmRate, hz);
}
int EventHandler::set_pm_dev(double deviation) {
    return setDeviceValue(Id::PmDeviation, deviation);
}
int EventHandler::set_pulsem_freq(double hz) {
    return setDeviceValue(Id::PulseFrequency, hz);
}
int EventHandler::set_pulsem_width(double ns) {
    return setDeviceValue(Id::PulseWidth, ns);
}
int EventHandler::set_frsw_start(double hz) {
    return setDeviceValue(Id::FrswStart, hz);
}
int EventHandler::set_frsw_stop(double hz) {
    return setDeviceValue(Id::FrswStop, hz);
}
int EventHandler::set_frsw_steps(unsigned steps) {
    return setDeviceValue(Id::FrswSteps, steps);
}
int EventHandler::set_frsw_time(double ns) {
    return setDeviceValue(Id::FrswTime, ns);
}
int EventHandler::set_prsw_start(double dbm) {
    return setDeviceValue(Id::PrswStart, dbm);
}
int EventHandler::set_prsw_stop(double dbm) {
    return setDeviceValue(Id::PrswStop, dbm);
}
int EventHandler::set_prsw_steps(unsigned steps) {
    return setDeviceValue(Id::PrswSteps, steps);
}
int EventHandler::set_prsw_time(double ns) {
    return setDeviceValue(Id::PrswTime, ns);
}

std::string EventHandler::get_sys_opt() {
    return recordText(fetch(cachedRecord().options));
}
std::string EventHandler::get_sys_ip() {
    return recordText(fetch(cachedRecord().ipAddress));
}
std::string EventHandler::get_sys_mask() {
    return recordText(fetch(cachedRecord().networkMask));
}
std::string EventHandler::getIP() {
    return recordText(peekRecord().ipAddress);
}
std::string EventHandler::getMask() {
    return recordText(peekRecord().networkMask);
}
std::string EventHandler::getGateway() {
    return recordText(peekRecord().gateway);
}
std::string EventHandler::getPort() {
    return recordText(peekRecord().scpiPort);
}
unsigned EventHandler::getDhcpMode() {
    return peekRecord().dhcp;
}
std::string EventHandler::getSysModel() const {
    return recordText(snapshot().model);
}
std::string EventHandler::get_sys_temp() {
    return fixedText(fetch(cachedRecord().temperature), 6);
}

std::string EventHandler::get_sys_bat() {
    fetch(cachedRecord().batteryCompanion);
    return std::to_string(fetch(cachedRecord().batteryCharge));
}

std::string EventHandler::get_sys_identification() {
    return recordText(fetch(cachedRecord().model)) + ' ' + recordText(fetch(cachedRecord().serial)) + ' ' +
           recordText(fetch(cachedRecord().firmwareVersion));
}

std::string EventHandler::getModelInternalInf() {
    std::string reply;
    if (veldaScpiTrans(Scpi::DeviceArchitectureQuery, std::string(), reply) != 0 || reply.empty())
        return "NMX4000A,20000,1,usb,2001,168c,benchtop";
    return reply;
}
