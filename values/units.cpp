#include "values/units.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace {

struct UnitRow {
    const char* name;
    double factor;
    int exponent;
    int precision;
};

constexpr UnitRow FrequencyRows[] = {{"GHz", 1e9, 9, 12}, {"MHz", 1e6, 6, 9}, {"KHz", 1e3, 3, 6}, {"Hz", 1, 0, 3}};
constexpr UnitRow TimeRows[] = {{"s", 1e9, 9, 9}, {"ms", 1e6, 6, 6}, {"\u00B5s", 1e3, 3, 3}, {"ns", 1, 0, 0}};
constexpr UnitRow PowerRow = {"", 1, 0, 2};
constexpr UnitRow UnitlessRow = {"", 1, 0, 0};

// 10 log10(50) and sqrt(50): all voltages are RMS across 50 ohm.
constexpr double LoadDecibel = 16.989700043360187;
constexpr double LoadRoot = 7.0710678118654755;

// Null for a unit that the quantity does not scale by a factor.
const UnitRow* findScaled(UnitQuantity quantity, const QString& unit) {
    if (quantity != UnitQuantity::Frequency && quantity != UnitQuantity::Time)
        return nullptr;
    for (const UnitRow& row : quantity == UnitQuantity::Frequency ? FrequencyRows : TimeRows) {
        if (unit == QString::fromUtf8(row.name))
            return &row;
    }
    return nullptr;
}

// The row that describes a unit; the smallest unit stands in for one that is not known.
const UnitRow& describe(UnitQuantity quantity, const QString& unit) {
    if (const UnitRow* row = findScaled(quantity, unit))
        return *row;
    switch (quantity) {
    case UnitQuantity::Frequency:
        return FrequencyRows[3];
    case UnitQuantity::Time:
        return TimeRows[3];
    case UnitQuantity::Power:
        return PowerRow;
    case UnitQuantity::Unitless:
        break;
    }
    return UnitlessRow;
}

} // namespace

const QStringList& unitNames(UnitQuantity quantity) {
    static const QStringList frequency{"GHz", "MHz", "KHz", "Hz"};
    static const QStringList time{"ns", "\u00B5s", "ms", "s"};
    static const QStringList power{"dBm", "dB\u00B5V", "\u00B5V", "mV"};
    static const QStringList none;
    switch (quantity) {
    case UnitQuantity::Frequency:
        return frequency;
    case UnitQuantity::Time:
        return time;
    case UnitQuantity::Power:
        return power;
    case UnitQuantity::Unitless:
        break;
    }
    return none;
}

int unitExponent(UnitQuantity quantity, const QString& unit) {
    return describe(quantity, unit).exponent;
}

int unitPrecision(UnitQuantity quantity, const QString& unit) {
    return describe(quantity, unit).precision;
}

int unitDisplayPrecision(UnitQuantity quantity, const QString& unit) {
    return quantity == UnitQuantity::Frequency ? unitExponent(quantity, unit) : unitPrecision(quantity, unit);
}

int unitMinOrder(UnitQuantity quantity, const QString& unit) {
    return -unitPrecision(quantity, unit);
}

double timesPowerOfTen(double value, double factor) {
    if (!std::isfinite(value) || value == 0 || factor == 1)
        return value * factor;
    std::array<char, 40> text;
    char* const end =
        std::to_chars(text.data(), text.data() + text.size() - 8, value, std::chars_format::scientific).ptr;
    char* const mark = std::find(text.data(), end, 'e');
    int exponent = 0;
    std::from_chars(mark[1] == '+' ? mark + 2 : mark + 1, end, exponent);
    exponent += static_cast<int>(std::lround(std::log10(factor)));
    char* const last = std::to_chars(mark + 1, text.data() + text.size(), exponent).ptr;
    double product = value * factor; // stays where the text is no double
    std::from_chars(text.data(), last, product);
    return product;
}

bool unitToCanonical(UnitQuantity quantity, double value, const QString& unit, double& out) {
    out = value;
    if (quantity == UnitQuantity::Power)
        return powerToDbm(value, unit.toStdString(), out);
    if (quantity == UnitQuantity::Unitless)
        return unit.isEmpty();
    const UnitRow* row = findScaled(quantity, unit);
    if (!row)
        return false;
    out = timesPowerOfTen(value, row->factor);
    return true;
}

bool canonicalToUnit(UnitQuantity quantity, double canonical, const QString& unit, double& out) {
    out = canonical;
    if (quantity == UnitQuantity::Power)
        return dbmToPower(canonical, unit.toStdString(), out);
    if (quantity == UnitQuantity::Unitless)
        return unit.isEmpty();
    const UnitRow* row = findScaled(quantity, unit);
    if (!row)
        return false;
    out = canonical / row->factor;
    return true;
}

bool powerToDbm(double value, const std::string& unit, double& dBm) {
    dBm = value;
    if (unit == "dBm")
        return true;
    if (unit == "dB\u00B5V") {
        dBm = value - 90.0 - LoadDecibel;
        return true;
    }
    const bool micro = unit == "\u00B5V";
    if ((!micro && unit != "mV") || !(value > 0.0))
        return false;
    const double volts = value * (micro ? 1e-6 : 0.001);
    dBm = 30.0 + 20.0 * std::log10(volts / LoadRoot);
    return true;
}

bool dbmToPower(double dBm, const std::string& unit, double& value) {
    value = dBm;
    if (unit == "dBm")
        return true;
    if (unit == "dB\u00B5V") {
        value = dBm + 90.0 + LoadDecibel;
        return true;
    }
    const bool micro = unit == "\u00B5V";
    if (!micro && unit != "mV")
        return false;
    const double volts = std::pow(10.0, (dBm - 30.0) / 20.0) * LoadRoot;
    value = (micro ? 1e6 : 1000.0) * volts;
    return true;
}
