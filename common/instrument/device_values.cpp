#include "common/instrument/device_values.h"

#include "common/wire/scpi_words.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>

namespace {

using Id = DeviceValueId;
using Kind = DeviceValue::Kind;

constexpr double Exact = 0.0;

// Value, maximum and minimum of a record member that is a LimitedValue, DefaultedValue or LimitedCount.
#define VELDA_FIELDS(member)                                                                                           \
    offsetof(ChannelRecord, member.value), offsetof(ChannelRecord, member.maximum),                                    \
        offsetof(ChannelRecord, member.minimum)

constexpr std::array<DeviceValue, DeviceValueCount> DeviceValues{{
    {Id::Frequency, Scpi::Frequency, 3, Kind::Real, 0.001, VELDA_FIELDS(frequency)},
    {Id::Power, Scpi::Power, 4, Kind::Real, 0.01, VELDA_FIELDS(power)},
    {Id::Phase, Scpi::Phase, 3, Kind::Real, Exact, VELDA_FIELDS(phase)},
    {Id::TriggerCount, Scpi::TriggerCount, 0, Kind::Count, Exact, VELDA_FIELDS(triggerCount)},
    {Id::TriggerTimer, Scpi::TriggerTimer, 10, Kind::Time, Exact, VELDA_FIELDS(triggerTimer)},
    {Id::TriggerDelay, Scpi::TriggerDelay, 10, Kind::Time, Exact, VELDA_FIELDS(triggerDelay)},
    {Id::AmRate, Scpi::AmRate, 3, Kind::Real, Exact, VELDA_FIELDS(amRate)},
    {Id::AmDepth, Scpi::AmDepth, 1, Kind::Real, Exact, VELDA_FIELDS(amDepth)},
    {Id::FmRate, Scpi::FmRate, 0, Kind::Real, Exact, VELDA_FIELDS(fmRate)},
    {Id::FmDeviation, Scpi::FmDeviation, 3, Kind::Real, Exact, VELDA_FIELDS(fmDeviation)},
    {Id::PmRate, Scpi::PmRate, 6, Kind::Real, Exact, VELDA_FIELDS(pmRate)},
    {Id::PmDeviation, Scpi::PmDeviation, 2, Kind::Real, Exact, VELDA_FIELDS(pmDeviation)},
    {Id::PulseFrequency, Scpi::PulseFrequency, 9, Kind::Real, Exact, VELDA_FIELDS(pulseFrequency)},
    {Id::PulseWidth, Scpi::PulseWidth, 9, Kind::Time, Exact, VELDA_FIELDS(pulseWidth)},
    {Id::FrswStart, Scpi::FrswStart, 3, Kind::Real, Exact, VELDA_FIELDS(frswStart)},
    {Id::FrswStop, Scpi::FrswStop, 0, Kind::Real, Exact, VELDA_FIELDS(frswStop)},
    {Id::FrswSteps, Scpi::FrswSteps, 0, Kind::Count, Exact, VELDA_FIELDS(frswSteps)},
    {Id::FrswTime, Scpi::FrswTime, 9, Kind::Time, Exact, VELDA_FIELDS(frswDwell)},
    {Id::PrswStart, Scpi::PrswStart, 2, Kind::Real, Exact, VELDA_FIELDS(prswStart)},
    {Id::PrswStop, Scpi::PrswStop, 2, Kind::Real, Exact, VELDA_FIELDS(prswStop)},
    {Id::PrswSteps, Scpi::PrswSteps, 0, Kind::Count, Exact, VELDA_FIELDS(prswSteps)},
    {Id::PrswTime, Scpi::PrswTime, 9, Kind::Time, Exact, VELDA_FIELDS(prswDwell)},
}};
#undef VELDA_FIELDS

constexpr bool isInEnumerationOrder() {
    for (int i = 0; i < DeviceValueCount; ++i) {
        if (static_cast<int>(DeviceValues[static_cast<std::size_t>(i)].id) != i)
            return false;
    }
    return true;
}
static_assert(isInEnumerationOrder(), "the table is indexed by DeviceValueId");

template <typename T>
T bytesAt(const ChannelRecord& record, std::size_t offset) {
    T value;
    std::memcpy(&value, reinterpret_cast<const char*>(&record) + offset, sizeof value);
    return value;
}

// The field as the record has it: seconds for times.
double rawField(const DeviceValue& item, const ChannelRecord& record, std::size_t offset) {
    return item.kind == Kind::Count ? bytesAt<std::uint32_t>(record, offset) : bytesAt<double>(record, offset);
}

} // namespace

const DeviceValue& deviceValue(DeviceValueId id) {
    return DeviceValues[static_cast<std::size_t>(id)];
}

double secondsToNanoseconds(double seconds) {
    return std::round(seconds * 1e10) / 10.0;
}

std::string fixedText(double number, int decimals) {
    // 309 digits, sign, point and ten decimals are the longest that a double can need.
    std::array<char, 336> text;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed, decimals);
    const bool minusNothing =
        text[0] == '-' && std::all_of(text.data() + 1, end.ptr, [](char c) { return c == '0' || c == '.'; });
    return std::string(text.data() + (minusNothing ? 1 : 0), end.ptr);
}

std::string wireText(const DeviceValue& item, double value) {
    return fixedText(item.kind == DeviceValue::Kind::Time ? value * 1e-9 : value, item.decimals);
}

double wireNumber(const std::string& text) {
    double number = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

double fieldInHandlerUnits(const DeviceValue& item, const ChannelRecord& record, std::size_t offset) {
    const double raw = rawField(item, record, offset);
    return item.kind == Kind::Time ? secondsToNanoseconds(raw) : raw;
}

bool isTaken(const DeviceValue& item, const ChannelRecord& record, double asked, const std::string& sentText) {
    const double held = rawField(item, record, item.valueOffset);
    const double wanted = item.kind == Kind::Time ? wireNumber(sentText) : asked;
    return item.tolerance > 0.0 ? std::fabs(held - wanted) < item.tolerance : held == wanted;
}
