#include "values/rangemessages.h"

#include "values/normalize.h"

namespace {

using Normalizer = double (*)(double&, std::string&, double, const std::string&);

QString label(const QString& name) {
    return name.isEmpty() ? name : name + QLatin1Char(' ');
}

QString number(double value) {
    return QStringLiteral("%1").arg(value);
}

QString scaledRange(Normalizer normalize, const std::string& unit, double min, double max, const QString& name) {
    double low = 0;
    double high = 0;
    std::string lowUnit;
    std::string highUnit;
    normalize(low, lowUnit, min, unit);
    normalize(high, highUnit, max, unit);
    // Substituted in one go: a name that holds a percent sign and a digit stays as it is.
    return QStringLiteral("Valid %1 range: %2 %3 to %4 %5")
        .arg(label(name), number(low), QString::fromStdString(lowUnit), number(high), QString::fromStdString(highUnit));
}

} // namespace

QString getFreqRangeToast(double min, double max, const QString& name) {
    return scaledRange(normalizeListFreq, "Hz", min, max, name);
}

QString getTimeRangeToast(double min, double max, const QString& name) {
    return scaledRange(normalizeListTime, "ns", min, max, name);
}

QString getPowerRangeToast(double min, double max, const QString& name) {
    return QStringLiteral("Valid %1 range: %2 dBm to %3 dBm").arg(label(name), number(min), number(max));
}
