#include "rig/agreement.h"

#include "common/instrument/device_values.h"
#include "common/instrument/modulations.h"
#include "portable/widgets/styles/styles.h"
#include "values/units.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <cmath>

using namespace Kavor::HandheldGui;
using Id = DeviceValueId;

namespace {

constexpr double LargestShown = 1e14;

struct Editor {
    const char* name;
    Id id;
};

constexpr Editor Editors[] = {
    {"cwFrequency", Id::Frequency},
    {"cwPower", Id::Power},
    {"cwPhase", Id::Phase},
    {"amFrequency", Id::AmRate},
    {"amDepth", Id::AmDepth},
    {"fmFrequency", Id::FmRate},
    {"fmDeviation", Id::FmDeviation},
    {"pmFrequency", Id::PmRate},
    {"pmDeviation", Id::PmDeviation},
    {"pulseWidth", Id::PulseWidth},
    {"pulseRate", Id::PulseFrequency},
    {"frswStart", Id::FrswStart},
    {"frswStop", Id::FrswStop},
    {"frswSteps", Id::FrswSteps},
    {"frswStepTime", Id::FrswTime},
    {"frswFixed", Id::Power},
    {"prswStart", Id::PrswStart},
    {"prswStop", Id::PrswStop},
    {"prswSteps", Id::PrswSteps},
    {"prswStepTime", Id::PrswTime},
    {"prswFixed", Id::Frequency},
    {"trigDelay", Id::TriggerDelay},
    {"trigTimer", Id::TriggerTimer},
    {"trigCount", Id::TriggerCount},
};

struct Box {
    const char* name;
    unsigned bit;
};

constexpr Box Boxes[] = {
    {"enableAM", AM_MOD_BIT},           {"enableFM", FM_MOD_BIT},     {"enablePM", PM_MOD_BIT},
    {"enablePulse", PULSE_MOD_BIT},     {"frswEnable", FRSW_MOD_BIT}, {"prswEnable", PRSW_MOD_BIT},
    {"enablePattern", PATTERN_MOD_BIT}, {"listEnable", LIST_MOD_BIT}, {"patternEnable", PATTERN_MOD_BIT}};

unsigned runningKinds(const ChannelRecord& record) {
    unsigned running = 0;
    for (const Modulation& kind : Modulations)
        running |= record.*kind.running == 1 ? unsigned{kind.bit} : 0U;
    return running;
}

/// What an editor shows, in the units of EventHandler; resolution is half of its last digit.
double shownValue(const QLineEdit& edit, const QComboBox* unit, double& resolution) {
    double scale = 1;
    for (const UnitQuantity quantity : {UnitQuantity::Frequency, UnitQuantity::Time}) {
        if (unit && unitToCanonical(quantity, 1, unit->currentText(), scale))
            break;
    }
    const int point = edit.text().indexOf(QLatin1Char('.'));
    const int decimals = point < 0 ? 0 : edit.text().size() - point - 1;
    resolution = 0.5000001 * std::pow(10.0, -decimals) * scale;
    return edit.text().toDouble() * scale;
}

} // namespace

QStringList disagreements(const QWidget& window, const ChannelRecord& record) {
    QStringList found;
    const auto tell = [&found](const char* name, const QString& shown, const QString& held) {
        found << QStringLiteral("%1 shows %2, held is %3").arg(QLatin1String(name), shown, held);
    };
    for (const Editor& editor : Editors) {
        const auto* edit = window.findChild<QLineEdit*>(QLatin1String(editor.name));
        if (edit->styleSheet() == WIDGET_EDIT_STYLE_RED || edit->styleSheet() == WIDGET_EDIT_LARGE_STYLE_RED)
            continue;
        const auto* unit = window.findChild<QComboBox*>(QLatin1String(editor.name) + QStringLiteral("Unit"));
        double resolution = 0;
        const double shown = shownValue(*edit, unit, resolution);
        const DeviceValue& value = deviceValue(editor.id);
        const double held = fieldInHandlerUnits(value, record, value.valueOffset);
        // Nonsense of a damaged record is shown as nonsense.
        if (!std::isfinite(held) || std::fabs(held) > LargestShown)
            continue;
        if (!(std::fabs(shown - held) <= resolution))
            tell(editor.name, edit->text(), QString::number(held, 'g', 17));
    }
    const unsigned running = runningKinds(record);
    for (const Box& box : Boxes) {
        const auto* check = window.findChild<QCheckBox*>(QLatin1String(box.name));
        const bool enabled = (record.modulationEnable & box.bit) != 0;
        if (check->isChecked() != enabled)
            tell(box.name, check->isChecked() ? "checked" : "unchecked", enabled ? "enabled" : "disabled");
        if (check->isEnabled() != (running == 0))
            tell(box.name, check->isEnabled() ? "free" : "locked", running == 0 ? "nothing runs" : "something runs");
    }
    const auto lookAt = [&](const char* name, bool pressed) {
        const QString sheet = window.findChild<QPushButton*>(QLatin1String(name))->styleSheet();
        if ((sheet == PRESSED_MOD_BTN_STYLE || sheet == PRESSED_WIDGET_BTN_STYLE) != pressed)
            tell(name, pressed ? "unpressed" : "pressed", pressed ? "on" : "off");
    };
    lookAt("rfOn", record.rfOutput == 1);
    lookAt("rfOff", record.rfOutput != 1);
    lookAt("modOn", running != 0);
    lookAt("modulateOn", running != 0);
    lookAt("runContinuous", record.runMode == 1);
    lookAt("frswUpDown", recordText(record.frswDirection) == "UPDOWN");
    lookAt("prswUpDown", recordText(record.prswDirection) == "UPDOWN");
    lookAt("sourceTimer", recordText(record.triggerSource) == "TIMer");
    lookAt("sourceBus", recordText(record.triggerSource) == "BUS");
    lookAt("advanceOnce", recordText(record.triggerAdvance) == "ONCe");
    lookAt("slopeNegative", recordText(record.triggerEdge) == "NEGative");
    return found;
}
