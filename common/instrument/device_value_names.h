#pragma once

#include "common/instrument/device_values.h"

/// The part of EventHandler in which each device value has a getter and a setter by its name; thin, with the handler's
/// units, results and thread. The panel itself works with setDeviceValue(), cachedValue() and the snapshot.
class DeviceValueNames {
    using Id = DeviceValueId;

public:
    double get_frequency() { return deviceField(Id::Frequency); }
    double get_power() { return deviceField(Id::Power); }
    double get_phase() { return deviceField(Id::Phase); }
    unsigned get_trig_count() { return countField(Id::TriggerCount); }
    double get_trig_timer_time() { return deviceField(Id::TriggerTimer); }
    double get_trig_delay() { return deviceField(Id::TriggerDelay); }
    double get_am_freq() { return deviceField(Id::AmRate); }
    double get_am_depth() { return deviceField(Id::AmDepth); }
    double get_fm_freq() { return deviceField(Id::FmRate); }
    double get_fm_dev() { return deviceField(Id::AmRate); } ///< deliberate; the deviation is cachedValue(FmDeviation)
    double get_pm_freq() { return deviceField(Id::PmRate); }
    double get_pm_dev() { return deviceField(Id::PmDeviation); }
    double get_pulsem_freq() { return deviceField(Id::PulseFrequency); }
    double get_pulsem_width() { return deviceField(Id::PulseWidth); }
    double get_frsw_start() { return deviceField(Id::FrswStart); }
    double get_frsw_stop() { return deviceField(Id::FrswStop); }
    unsigned get_frsw_steps() { return countField(Id::FrswSteps); }
    double get_frsw_time() { return totalSweepTime(Id::FrswSteps, Id::FrswTime); } ///< first point to last
    double get_prsw_start() { return deviceField(Id::PrswStart); }
    double get_prsw_stop() { return deviceField(Id::PrswStart); } ///< deliberate; the stop is cachedValue(PrswStop)
    unsigned get_prsw_steps() { return countField(Id::PrswSteps); }
    double get_prsw_time() { return totalSweepTime(Id::PrswSteps, Id::PrswTime); } ///< first point to last

    int set_frequency(double hz) { return setDeviceValue(Id::Frequency, hz); }
    int set_power(double dbm) { return setDeviceValue(Id::Power, dbm); }
    int set_phase(double degrees) { return setDeviceValue(Id::Phase, degrees); }
    int set_trig_count(double count) { return setDeviceValue(Id::TriggerCount, count); }
    int set_trig_timer_time(double ns) { return setDeviceValue(Id::TriggerTimer, ns); }
    int set_trig_delay(double ns) { return setDeviceValue(Id::TriggerDelay, ns); }
    int set_am_freq(double hz) { return setDeviceValue(Id::AmRate, hz); }
    int set_am_depth(double percent) { return setDeviceValue(Id::AmDepth, percent); }
    int set_fm_freq(double hz) { return setDeviceValue(Id::FmRate, hz); }
    int set_fm_dev(double hz) { return setDeviceValue(Id::FmDeviation, hz); }
    int set_pm_freq(double hz) { return setDeviceValue(Id::PmRate, hz); }
    int set_pm_dev(double deviation) { return setDeviceValue(Id::PmDeviation, deviation); }
    int set_pulsem_freq(double hz) { return setDeviceValue(Id::PulseFrequency, hz); }
    int set_pulsem_width(double ns) { return setDeviceValue(Id::PulseWidth, ns); }
    int set_frsw_start(double hz) { return setDeviceValue(Id::FrswStart, hz); }
    int set_frsw_stop(double hz) { return setDeviceValue(Id::FrswStop, hz); }
    int set_frsw_steps(unsigned steps) { return setDeviceValue(Id::FrswSteps, steps); }
    int set_frsw_time(double ns) { return setDeviceValue(Id::FrswTime, ns); } ///< dwell of one step
    int set_prsw_start(double dbm) { return setDeviceValue(Id::PrswStart, dbm); }
    int set_prsw_stop(double dbm) { return setDeviceValue(Id::PrswStop, dbm); }
    int set_prsw_steps(unsigned steps) { return setDeviceValue(Id::PrswSteps, steps); }
    int set_prsw_time(double ns) { return setDeviceValue(Id::PrswTime, ns); } ///< dwell of one step

protected:
    ~DeviceValueNames() = default;

    virtual double deviceField(DeviceValueId id) = 0;
    virtual int setDeviceValue(DeviceValueId id, double value) = 0;

private:
    unsigned countField(DeviceValueId id) { return static_cast<unsigned>(deviceField(id)); }
    double totalSweepTime(DeviceValueId steps, DeviceValueId dwell) {
        const double count = deviceField(steps);
        const double time = deviceField(dwell);
        return count > 1.0 ? (count - 1.0) * time : 0.0;
    }
};
