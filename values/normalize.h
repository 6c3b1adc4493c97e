#pragma once

#include <QString>
#include <string>

class MessageSink;

/// The outcome of choosing the unit in which a value is shown.
struct CalcResult {
    double value = 0;     ///< in the chosen unit
    int index = 0;        ///< of the chosen unit in the scale table, which is the index in its unit box as well
    double canonical = 0; ///< in hertz or nanoseconds
};

/// Chooses the unit in which a canonical value reads best. scale: four factors to the canonical unit, a zero ends it
/// early. A descending table (frequency) gives the largest unit that keeps the value at 1 or more, its smallest unit
/// otherwise; an ascending one (time) the smallest unit that keeps it below 1000, its largest otherwise.
CalcResult calculateNormalization(double value, const double* scale, bool ascending);

// Normalisation of a value and its unit, for list and pattern steps. value and unit may be the variables that the
// result goes to. The checking forms take limits in canonical units, both inclusive (a NaN lies outside any), tell the
// sink, where there is one, the valid range of what name says, and return whether the value is valid.

/// Re-expresses a frequency in its best unit and returns it in hertz. An unknown unit counts as hertz.
double normalizeListFreq(double& outValue, std::string& outUnit, double value, const std::string& unit);

/// As above; value and unit are written out of range too.
[[nodiscard]] bool normalizeListFreq(double& outValue, std::string& outUnit, double min, double max, double value,
                                     const std::string& unit, MessageSink* toast, const QString& name);

/// Re-expresses a time in its best unit and returns it in nanoseconds. An unknown unit counts as nanoseconds.
double normalizeListTime(double& outValue, std::string& outUnit, double value, const std::string& unit);

/// As above; value and unit are written out of range too.
[[nodiscard]] bool normalizeListTime(double& outValue, std::string& outUnit, double min, double max, double value,
                                     const std::string& unit, MessageSink* toast, const QString& name);

/// Keeps a power in the unit of the user and returns it in dBm; what cannot be converted is returned as it stands.
double normalizeListPower(double& outValue, std::string& outUnit, double value, const std::string& unit);

/// As above with limits in dBm; outDbm may be null and is written as soon as the value could be converted. Value and
/// unit are left alone unless valid.
[[nodiscard]] bool normalizeListPower(double& outValue, std::string& outUnit, double min, double max, double value,
                                      const std::string& unit, MessageSink* toast, double* outDbm, const QString& name);
