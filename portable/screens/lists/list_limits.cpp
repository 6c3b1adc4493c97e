#include "portable/screens/lists/list_limits.h"

#include "common/instrument/device_values.h"
#include "values/units.h"

#include <limits>

namespace Kavor::HandheldGui {

namespace {

constexpr double Highest = std::numeric_limits<double>::max();

template <typename Limited>
bool published(const Limited& limited) {
    return (limited.minimum != 0 || limited.maximum != 0) && limited.minimum <= limited.maximum;
}

double canonical(UnitQuantity quantity, double value, const std::string& unit) {
    double result = value;
    return unitToCanonical(quantity, value, QString::fromStdString(unit), result) ? result : value;
}

} // namespace

FrequencyListLimits listLimitsOf(const ChannelRecord& record) {
    const list_point blank;
    FrequencyListLimits limits{
        0,        Highest, canonical(UnitQuantity::Frequency, blank.frequency, blank.frequencyUnit),
        -Highest, Highest, blank.power,
        0,        Highest, canonical(UnitQuantity::Time, blank.dwell, blank.dwellUnit)};
    if (published(record.frequency)) {
        limits.minFrequency = record.frequency.minimum;
        limits.maxFrequency = record.frequency.maximum;
        limits.defaultFrequency = record.frequency.defaultValue;
    }
    if (published(record.power)) {
        limits.minPower = record.power.minimum;
        limits.maxPower = record.power.maximum;
        limits.defaultPower = record.power.defaultValue;
    }
    if (published(record.listDwell)) {
        limits.minDwell = secondsToNanoseconds(record.listDwell.minimum);
        limits.maxDwell = secondsToNanoseconds(record.listDwell.maximum);
        limits.defaultDwell = secondsToNanoseconds(record.listDwell.defaultValue);
    }
    return limits;
}

PatternListLimits patternLimitsOf(const ChannelRecord& record) {
    const pattern_point blank;
    PatternListLimits limits{0,
                             Highest,
                             canonical(UnitQuantity::Time, blank.onTime, blank.onTimeUnit),
                             0,
                             std::numeric_limits<std::uint32_t>::max(),
                             blank.loops};
    if (published(record.patternTime)) {
        limits.minTime = secondsToNanoseconds(record.patternTime.minimum);
        limits.maxTime = secondsToNanoseconds(record.patternTime.maximum);
        limits.defaultTime = secondsToNanoseconds(record.patternTime.defaultValue);
    }
    if (published(record.patternRepetitions)) {
        limits.minRepetition = record.patternRepetitions.minimum;
        limits.maxRepetition = record.patternRepetitions.maximum;
        limits.defaultRepetition = record.patternRepetitions.value;
    }
    return limits;
}

} // namespace Kavor::HandheldGui
