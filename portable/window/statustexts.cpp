#include "portable/window/statustexts.h"

#include "common/instrument/modulations.h"

#include <QStringList>
#include <array>

namespace Kavor::HandheldGui {

namespace {

constexpr int KindCount = static_cast<int>(ModulationNames.size());
constexpr int LongestMessage = 127;

struct UnitFormat {
    const char* unit;
    double factor; // hertz to unit
    int decimals;
};

constexpr std::array<UnitFormat, 4> UnitFormats{
    {{"GHz", 1e-9, 12}, {"MHz", 1e-6, 9}, {"KHz", 0.001, 6}, {"Hz", 1.0, 3}}};

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
    for (const UnitFormat& format : UnitFormats) {
        if (unit == QLatin1String(format.unit))
            number = QString::number(hertz * format.factor, 'f', format.decimals);
    }
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
