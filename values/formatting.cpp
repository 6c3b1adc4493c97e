#include "values/formatting.h"

#include "values/normalize.h"
#include "values/units.h"

#include <QLocale>

namespace {

QString formatIn(UnitQuantity quantity, double value, const std::string& unit) {
    const QString name = QString::fromStdString(unit);
    return formatNumber(value, unitPrecision(quantity, name)) + QLatin1Char(' ') + name;
}

} // namespace

QString fixedNumber(double value, int decimals) {
    const QString text = QString::number(value, 'f', decimals);
    const bool minusNothing = text.startsWith(QLatin1Char('-')) && text.toDouble() == 0;
    return minusNothing ? text.mid(1) : text;
}

QString formatNumber(double value, int decimals) {
    QString text = fixedNumber(value, decimals);
    if (text.contains(QLatin1Char('.'))) {
        while (text.endsWith(QLatin1Char('0')))
            text.chop(1);
        if (text.endsWith(QLatin1Char('.')))
            text.chop(1);
    }
    return text;
}

QString plainNumber(double value) {
    return fixedNumber(value, QLocale::FloatingPointShortest);
}

QString formatFrequency(double value, const std::string& unit) {
    double mantissa = 0;
    std::string best;
    normalizeListFreq(mantissa, best, value, unit);
    return formatIn(UnitQuantity::Frequency, mantissa, best);
}

QString formatTime(double value, const std::string& unit) {
    double mantissa = 0;
    std::string best;
    normalizeListTime(mantissa, best, value, unit);
    return formatIn(UnitQuantity::Time, mantissa, best);
}

bool parseDouble(const QString& text, double& out) {
    bool ok = false;
    const double value = text.trimmed().toDouble(&ok);
    out = ok ? value : 0.0;
    return ok;
}
