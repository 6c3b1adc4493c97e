#include "portable/widgets/vkeditors.h"

#include "portable/widgets/vkeyboard.h"
#include "values/formatting.h"
#include "values/messagesink.h"
#include "values/units.h"

namespace Kavor::HandheldGui {

namespace {

// Finer than any setter sends, so that a converted level is rounded once.
constexpr int PowerDecimals = 6;

} // namespace

vkFreqEdit::vkFreqEdit(QWidget* parent) : ValueEdit(parent, Units::BoxNeeded) {}

vkTimeEdit::vkTimeEdit(QWidget* parent) : ValueEdit(parent, Units::BoxNeeded) {}

vkPowerEdit::vkPowerEdit(QWidget* parent) : ValueEdit(parent, Units::Optional) {
    setUnitNames(::unitNames(UnitQuantity::Power));
}

bool vkPowerEdit::takeEntry(const QString& unit) {
    double value = 0;
    if (unit == unitNames().value(0) || !parseDouble(text(), value))
        return true;
    double dBm = 0;
    if (!powerToDbm(value, unit.toStdString(), dBm)) {
        tell(messageSink(), QStringLiteral("mV and \u00B5V values must be greater than zero"));
        return false;
    }
    setText(formatNumber(dBm, PowerDecimals));
    return true;
}

vkPercentEdit::vkPercentEdit(QWidget* parent) : ValueEdit(parent, Units::Optional, QStringLiteral("%")) {}

vkPhaseEdit::vkPhaseEdit(QWidget* parent) : ValueEdit(parent, Units::Optional, QStringLiteral("\u00B0")) {}

vkNoUnitsEdit::vkNoUnitsEdit(QWidget* parent) : ValueEdit(parent, Units::Optional) {}

vkIPEdit::vkIPEdit(QWidget* parent) : ValueEdit(parent, Units::Optional) {}

void vkIPEdit::prepare(VirtKeyboard& keyboard) {
    keyboard.setIPMask();
}

} // namespace Kavor::HandheldGui
