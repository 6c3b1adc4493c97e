#pragma once

#include "common/wire/channel_record.h"

#include <cstddef>
#include <string>

/// Every number that the panel can set on the module. Sweep times are the dwell of one step.
enum class DeviceValueId {
    Frequency,
    Power,
    Phase,
    TriggerCount,
    TriggerTimer,
    TriggerDelay,
    AmRate,
    AmDepth,
    FmRate,
    FmDeviation,
    PmRate,
    PmDeviation,
    PulseFrequency,
    PulseWidth,
    FrswStart,
    FrswStop,
    FrswSteps,
    FrswTime,
    PrswStart,
    PrswStop,
    PrswSteps,
    PrswTime
};

constexpr int DeviceValueCount = static_cast<int>(DeviceValueId::PrswTime) + 1;

/// What the panel knows of a device value: how it is sent, where the record holds it, and when it counts as taken.
/// "Handler units" are those of EventHandler: Hz, dBm, degrees, percent, counts, and nanoseconds for every time.
struct DeviceValue {
    enum class Kind {
        Real,  ///< float64 in the record, in handler units
        Time,  ///< float64 in the record, in seconds
        Count, ///< uint32 in the record
    };

    DeviceValueId id;
    const char* header; ///< SCPI header with its blank
    int decimals;       ///< of the argument text, fixed notation
    Kind kind;
    double tolerance; ///< a read-back nearer than this is taken; 0: it must be equal
    std::size_t valueOffset;
    std::size_t maximumOffset;
    std::size_t minimumOffset;

    std::size_t fieldSize() const { return kind == Kind::Count ? sizeof(std::uint32_t) : sizeof(double); }
};

/// The one table of device values.
const DeviceValue& deviceValue(DeviceValueId id);

/// Seconds as the record and the wire have them to nanoseconds, rounded to a tenth of a nanosecond.
double secondsToNanoseconds(double seconds);

/// A number in fixed notation, whatever the locale.
std::string fixedText(double number, int decimals);

/// The argument text that a setter sends for a value in handler units.
std::string wireText(const DeviceValue& item, double value);

/// The number that an argument text carries, on the wire's scale (seconds for times).
double wireNumber(const std::string& text);

/// A field of a record at one of the item's offsets, in handler units.
double fieldInHandlerUnits(const DeviceValue& item, const ChannelRecord& record, std::size_t offset);

/// True when the record holds the value that was asked for. A time is compared with the number that its text carried,
/// because that is what the module was told; everything else with what the caller asked.
bool isTaken(const DeviceValue& item, const ChannelRecord& record, double asked, const std::string& sentText);
