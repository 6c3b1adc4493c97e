#include "values/normalize.h"

#include "values/messagesink.h"
#include "values/rangemessages.h"
#include "values/units.h"

namespace {

constexpr int TableSize = 4;

using RangeText = QString (*)(double min, double max, const QString& name);

// What a frequency and a time in a list differ in.
struct ListQuantity {
    UnitQuantity quantity;
    const double* scale;
    bool ascending;
    RangeText rangeText;
};

constexpr ListQuantity Frequency{UnitQuantity::Frequency, kScale[0], false, getFreqRangeToast};
constexpr ListQuantity Time{UnitQuantity::Time, timeScales, true, getTimeRangeToast};

double normalizeScaled(const ListQuantity& list, double& outValue, std::string& outUnit, double value,
                       const std::string& unit) {
    double canonical = value;
    if (!unitToCanonical(list.quantity, value, QString::fromStdString(unit), canonical))
        canonical = value;
    const CalcResult best = calculateNormalization(canonical, list.scale, list.ascending);
    outValue = best.value;
    outUnit = unitNames(list.quantity).at(best.index).toStdString();
    return canonical;
}

bool normalizeChecked(const ListQuantity& list, double& outValue, std::string& outUnit, double min, double max,
                      double value, const std::string& unit, MessageSink* toast, const QString& name) {
    const double canonical = normalizeScaled(list, outValue, outUnit, value, unit);
    if (min <= canonical && canonical <= max)
        return true;
    tell(toast, list.rangeText(min, max, name));
    return false;
}

} // namespace

CalcResult calculateNormalization(double value, const double* scale, bool ascending) {
    int index = 0;
    double mantissa = value / scale[0];
    const auto step = [&](int by) {
        mantissa = value / scale[index += by];
    };
    const auto hasNext = [&] {
        return index + 1 < TableSize && scale[index + 1] != 0;
    };
    while ((ascending ? mantissa >= 1000.0 : mantissa < 1.0) && hasNext())
        step(1);
    // A table with gaps of more than a thousand can carry a value past 1.
    while (ascending && mantissa < 1.0 && index > 0)
        step(-1);
    return {mantissa, index, value};
}

double normalizeListFreq(double& outValue, std::string& outUnit, double value, const std::string& unit) {
    return normalizeScaled(Frequency, outValue, outUnit, value, unit);
}

bool normalizeListFreq(double& outValue, std::string& outUnit, double min, double max, double value,
                       const std::string& unit, MessageSink* toast, const QString& name) {
    return normalizeChecked(Frequency, outValue, outUnit, min, max, value, unit, toast, name);
}

double normalizeListTime(double& outValue, std::string& outUnit, double value, const std::string& unit) {
    return normalizeScaled(Time, outValue, outUnit, value, unit);
}

bool normalizeListTime(double& outValue, std::string& outUnit, double min, double max, double value,
                       const std::string& unit, MessageSink* toast, const QString& name) {
    return normalizeChecked(Time, outValue, outUnit, min, max, value, unit, toast, name);
}

double normalizeListPower(double& outValue, std::string& outUnit, double value, const std::string& unit) {
    double dBm = value;
    double shown = value;
    const bool converted = powerToDbm(value, unit, dBm) && dbmToPower(dBm, unit, shown);
    outUnit = unit;
    outValue = converted ? shown : value;
    return dBm;
}

bool normalizeListPower(double& outValue, std::string& outUnit, double min, double max, double value,
                        const std::string& unit, MessageSink* toast, double* outDbm, const QString& name) {
    double dBm = 0;
    if (!powerToDbm(value, unit, dBm)) {
        tell(toast, QStringLiteral("Invalid power value or unit"));
        return false;
    }
    if (outDbm)
        *outDbm = dBm;
    if (!(min <= dBm && dBm <= max)) {
        tell(toast, getPowerRangeToast(min, max, name));
        return false;
    }
    double shown = 0;
    outUnit = unit;
    if (!dbmToPower(dBm, unit, shown)) {
        tell(toast, QStringLiteral("Invalid power unit"));
        return false;
    }
    outValue = shown;
    return true;
}
