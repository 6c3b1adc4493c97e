#include "portable/window/statustexts.h"

#include "common/instrument/modulations.h"
#include "values/units.h"

#include <QStringList>

namespace Kavor::HandheldGui {

namespace {

constexpr int KindCount = static_cast<int>(ModulationNames.size());
constexpr int LongestMessage = 127;

int lowestBit(int mask) {
    for (int bit = 0; bit < KindCount; ++bit) {
        if (mask & (1 << bit))
            return bit;
    }
    return -1;
}

} // namespace

QString statusFrequencyText(double hertz, const QString& unit) {
    QString number;
    double inUnit = 0;
    if (canonicalToUnit(UnitQuantity::Frequency, hertz, unit, inUnit))
        number = QString::number(inUnit, 'f', unitPrecision(UnitQuantity::Frequency, unit));
    return QStringLiteral("  Frequency: ") + number + QLatin1Char(' ') + unit;
}

QString statusPowerText(double dbm) {
    return QStringLiteral("Power: ") + QString::number(dbm, 'f', 2) + QStringLiteral(" dBm");
}

QString statusModeText(unsigned mask, const QString& modeText) {
    if (mask == 0)
        return QStringLiteral("Mode: ") + modeText;
    QStringList names;
    for (int bit = 0; bit < KindCount; ++bit) {
        if (mask & (1U << bit))
            names << QLatin1String(ModulationNames[static_cast<std::size_t>(bit)]);
    }
    return QStringLiteral("Mode: ") + names.join(QStringLiteral(", "));
}

QString shortenedAtComma(const QString& text, const std::function<bool(const QString&)>& fits) {
    QString shown = text;
    for (int comma = text.lastIndexOf(QLatin1Char(',')); !fits(shown) && comma > 0;
         comma = text.lastIndexOf(QLatin1Char(','), comma - 1))
        shown = text.left(comma + 1) + QChar(0x2026);
    return shown;
}

QString conflictText(int requested, int conflict) {
    if (conflict < 0)
        return QStringLiteral("no mudulation enabled");
    const int inTheWay = lowestBit(conflict);
    if (inTheWay < 0)
        return QString();
    if (requested == 0)
        return QStringLiteral("combination of modulation not supported");
    const int asked = lowestBit(requested);
    if (asked < 0)
        return QString();
    return QString::asprintf("cannot enable %s with %s on", ModulationNames[static_cast<std::size_t>(asked)],
                             ModulationNames[static_cast<std::size_t>(inTheWay)])
        .left(LongestMessage);
}

} // namespace Kavor::HandheldGui
