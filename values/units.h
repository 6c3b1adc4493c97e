#pragma once

#include <QString>
#include <QStringList>
#include <string>

/// What a value measures. Inside the panel a frequency is held in hertz, a time in nanoseconds, a power in dBm.
enum class UnitQuantity { Frequency = 0, Time = 1, Power = 2, Unitless = 3 };

/// Which row of kScale and kDec a frequency field offers: from GHz (the carrier), from MHz or from KHz down to Hz.
enum class translations { GHzToHz = 0, MHzToHz = 1, KHzToHz = 2 };

/// Hertz per unit for each row of frequency units, largest unit first; a zero ends a row early.
inline constexpr double kScale[3][4] = {{1e9, 1e6, 1e3, 1}, {1e6, 1e3, 1, 0}, {1e3, 1, 0, 0}};

/// Decimals that show a frequency to a millihertz, parallel to kScale.
inline constexpr int kDec[3][4] = {{12, 9, 6, 3}, {9, 6, 3, 0}, {6, 3, 0, 0}};

/// Nanoseconds per unit of time, smallest unit first: "ns", "µs", "ms", "s".
inline constexpr double timeScales[4] = {1, 1e3, 1e6, 1e9};

/// Decimals that show a time to a nanosecond, parallel to timeScales.
inline constexpr int timeDec[4] = {0, 3, 6, 9};

/// The units of a quantity in the order of its table: frequency from "GHz" down, time from "ns" up, power "dBm",
/// "dBµV", "µV", "mV", unitless none. Spelling and case are exact: "KHz", and the micro sign U+00B5. Any thread.
const QStringList& unitNames(UnitQuantity quantity);

/// Power of ten from the unit to the canonical unit; 0 for a unit that the quantity does not know.
int unitExponent(UnitQuantity quantity, const QString& unit);

/// Decimals that show a value of this unit to a millihertz, a nanosecond or a hundredth of a dBm.
int unitPrecision(UnitQuantity quantity, const QString& unit);

/// As unitPrecision, but a frequency is shown to a hertz.
int unitDisplayPrecision(UnitQuantity quantity, const QString& unit);

/// Power of ten of the smallest step that can be entered in this unit.
int unitMinOrder(UnitQuantity quantity, const QString& unit);

/// The double that is nearest to the product of the decimal number that the value stands for: 1e-7 in MHz is 0.1 Hz,
/// and not a little less. factor: 1 or a power of ten above it.
double timesPowerOfTen(double value, double factor);

/// Converts a value of a unit into hertz, nanoseconds or dBm. Unitless takes the empty unit only. False, with out equal
/// to value, for a unit that the quantity does not know and for a voltage that is not above zero.
[[nodiscard]] bool unitToCanonical(UnitQuantity quantity, double value, const QString& unit, double& out);

/// The inverse of unitToCanonical. False, with out equal to canonical, for a unit that the quantity does not know.
[[nodiscard]] bool canonicalToUnit(UnitQuantity quantity, double canonical, const QString& unit, double& out);

/// Converts a level in "dBm", "dBµV", "µV" or "mV" (RMS, 50 ohm) into dBm. False, with dBm equal to value, for any
/// other unit and for a voltage that is not above zero.
[[nodiscard]] bool powerToDbm(double value, const std::string& unit, double& dBm);

/// The inverse of powerToDbm; never fails for a unit that it knows.
[[nodiscard]] bool dbmToPower(double dBm, const std::string& unit, double& value);
