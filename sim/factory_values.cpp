#include "sim/factory_values.h"

#include "common/wire/scpi_words.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

namespace Sim {
namespace {

constexpr double Hz = 1e3;
constexpr double MHz = 1e6;
constexpr double GHz = 1e9;
constexpr double Ms = 1e-3;

constexpr double LowestFrequency = 9 * Hz;
constexpr double HighestFrequency = 6 * GHz;
constexpr double LowestPower = -60;
constexpr double HighestPower = 20;

// In the order in which people read a range; the record has the maximum first.
constexpr LimitedValue limited(double value, double minimum, double maximum) {
    return {value, maximum, minimum};
}
constexpr LimitedCount counted(std::uint32_t value, std::uint32_t minimum, std::uint32_t maximum) {
    return {value, maximum, minimum};
}

constexpr LimitedValue frequency(double value) {
    return limited(value, LowestFrequency, HighestFrequency);
}
constexpr LimitedValue power(double value) {
    return limited(value, LowestPower, HighestPower);
}
constexpr LimitedValue rate() {
    return limited(1 * Hz, 0.1, 1 * MHz);
}

void fillCarrierAndTrigger(ChannelRecord& record) {
    record.runMode = 1;
    setRecordText(record.triggerSource, TriggerSourceToString[0]);
    setRecordText(record.triggerEdge, TriggerEdgeToString[0]);
    setRecordText(record.triggerAdvance, TriggerAdvToString[0]);
    record.triggerCount = counted(1, 1, 1000000);
    record.triggerDelay = limited(0, 0, 10);
    record.triggerTimer = limited(100 * Ms, 1e-6, 100);
    record.triggerImpedance = 50;
    record.frequency = {1 * GHz, 1 * GHz, HighestFrequency, LowestFrequency};
    record.power = {-10, -10, HighestPower, LowestPower};
    record.phase = limited(0, 0, 360);
    setRecordText(record.referenceOscillator, ReferenceOscillatorToString[0]);
}

void fillModulations(ChannelRecord& record) {
    for (auto* source : {&record.amSource, &record.fmSource, &record.pmSource, &record.pulseSource})
        setRecordText(*source, ModSrcModeToString[ModSrcMode::internal]);
    record.amRate = record.fmRate = record.pmRate = rate();
    record.amDepth = limited(50, 0, 100);
    record.fmDeviation = limited(10 * Hz, 1, 20 * MHz);
    record.pmDeviation = limited(45, 0, 360);
    record.pulseFrequency = limited(1 * Hz, 0.1, 5 * MHz);
    record.pulseWidth = limited(100e-6, 50e-9, 10);
}

void fillSweepsAndSteps(ChannelRecord& record) {
    record.frswStart = frequency(1 * GHz);
    record.frswStop = frequency(2 * GHz);
    record.prswStart = power(-20);
    record.prswStop = power(0);
    record.frswSteps = record.prswSteps = counted(11, 2, 65535);
    record.frswDwell = record.prswDwell = limited(1 * Ms, 10e-6, 100);
    record.frswTotalTime = record.prswTotalTime = {3600, 20e-6};
    setRecordText(record.frswDirection, SweepDirectionToString[SweepDirection::normal]);
    setRecordText(record.prswDirection, SweepDirectionToString[SweepDirection::normal]);
    record.listDwell = {1 * Ms, 100, 10e-6};
    record.patternTime = {1 * Ms, 10, 100e-9};
    record.patternRepetitions = counted(1, 1, 65535);
}

void fillIdentity(ChannelRecord& record, unsigned channel, const Options& options) {
    setRecordText(record.model, "KV-6000");
    setRecordText(record.serial, "KV60-000101-" + std::to_string(channel + 1));
    setRecordText(record.firmwareVersion, "1.4.2/2.07");
    setRecordText(record.options, "PM,SWEEP,LIST");
    setRecordText(record.calibrationDate, "2026-03-14");
    record.temperature = 38.5;
    setBattery(options.battery.at(0), record);
    record.batteryCompanion = 1;
    record.lowBatteryThreshold = 15;
    record.batteryProtection = 1;
    setRecordText(record.ipAddress, "192.168.1.50");
    setRecordText(record.networkMask, "255.255.255.0");
    setRecordText(record.gateway, "192.168.1.1");
}

} // namespace

ChannelRecord factoryRecord(unsigned channel, const Options& options) {
    ChannelRecord record{};
    record.connected = ((options.disconnectedChannels >> channel) & 1U) == 0 ? 1 : 0;
    fillCarrierAndTrigger(record);
    fillModulations(record);
    fillSweepsAndSteps(record);
    fillIdentity(record, channel, options);
    return record;
}

void copySettings(const ChannelRecord& from, ChannelRecord& to) {
    constexpr std::size_t begin = offsetof(ChannelRecord, rfOutput);
    constexpr std::size_t end = offsetof(ChannelRecord, model);
    std::memcpy(reinterpret_cast<char*>(&to) + begin, reinterpret_cast<const char*>(&from) + begin, end - begin);
}

void setBattery(const BatteryPoint& battery, ChannelRecord& record) {
    record.batteryCharge = static_cast<std::int32_t>(std::lround(battery.charge));
    record.batteryCurrent = static_cast<std::int16_t>(std::lround(battery.current));
}

void setRecordText(char (&field)[32], const std::string& text) {
    std::memset(field, 0, sizeof field);
    std::memcpy(field, text.data(), std::min(text.size(), sizeof field - 1));
}

} // namespace Sim
