#include "portable/widgets/entry.h"

#include "values/messagesink.h"
#include "values/rangemessages.h"

#include <QComboBox>
#include <QLineEdit>
#include <QSignalBlocker>
#include <algorithm>
#include <cmath>

namespace {

constexpr int LastIndex = 3;

// What a frequency field and a time field differ in.
struct EntryUnits {
    const double* scale;
    const int* decimals;
    bool ascending;
};

EntryUnits frequencyUnits(translations row) {
    const int index = static_cast<int>(row);
    return {kScale[index], kDec[index], false};
}

constexpr EntryUnits TimeUnits{timeScales, timeDec, true};

CalcResult bestUnit(const EntryUnits& units, double canonical, int offered) {
    CalcResult result = calculateNormalization(canonical, units.scale, units.ascending);
    if (offered > 0 && result.index >= offered) {
        result.index = offered - 1;
        result.value = canonical / units.scale[result.index];
    }
    return result;
}

ShownEntry shownEntry(const EntryUnits& units, double canonical, int offered) {
    const CalcResult result = bestUnit(units, canonical, offered);
    return {QString::number(result.value, 'f', units.decimals[result.index]), result.index};
}

double normalizeEntry(const EntryUnits& units, QLineEdit* edit, QComboBox* combo, double value, bool isCanonical) {
    const int shown = combo ? std::clamp(combo->currentIndex(), 0, LastIndex) : 0;
    const double canonical = isCanonical ? value : value * units.scale[shown];
    applyToWidgets(edit, combo, bestUnit(units, canonical, combo ? combo->count() : 0), units.decimals);
    return canonical;
}

} // namespace

ShownEntry shownFrequency(double hertz, int units, translations row) {
    return shownEntry(frequencyUnits(row), hertz, units);
}

ShownEntry shownTime(double nanoseconds, int units) {
    const CalcResult result = bestUnit(TimeUnits, nanoseconds, units);
    // The decimals end at the nanosecond; the module may hold tenths of one.
    const bool tenths = std::fabs(nanoseconds - std::round(nanoseconds)) > 0.05;
    return {QString::number(result.value, 'f', timeDec[result.index] + (tenths ? 1 : 0)), result.index};
}

void applyToWidgets(QLineEdit* edit, QComboBox* combo, const CalcResult& result, const int* decimals) {
    if (combo) {
        const QSignalBlocker blocker(combo);
        combo->setCurrentIndex(result.index);
    }
    if (edit) {
        const QSignalBlocker blocker(edit);
        edit->setText(QString::number(result.value, 'f', decimals[result.index]));
    }
}

double normalizeFreq(QLineEdit* edit, QComboBox* combo, double value, bool isCanonical, translations row) {
    return normalizeEntry(frequencyUnits(row), edit, combo, value, isCanonical);
}

bool normalizeFreq(QLineEdit* edit, QComboBox* combo, double value, bool isCanonical, translations row, double min,
                   double max, MessageSink* toast, double* hertz, const QString& name) {
    const double canonical = normalizeFreq(edit, combo, value, isCanonical, row);
    if (hertz)
        *hertz = canonical;
    if (min <= canonical && canonical <= max)
        return true;
    normalizeFreqRange(toast, min, max, name);
    return false;
}

double normalizeTime(QLineEdit* edit, QComboBox* combo, double value, bool isCanonical) {
    return normalizeEntry(TimeUnits, edit, combo, value, isCanonical);
}

bool normalizeTime(QLineEdit* edit, QComboBox* combo, double value, bool isCanonical, double min, double max,
                   MessageSink* toast, double* nanoseconds, const QString& name) {
    const double canonical = normalizeTime(edit, combo, value, isCanonical);
    if (nanoseconds)
        *nanoseconds = canonical;
    if (min <= canonical && canonical <= max)
        return true;
    normalizeTimeRange(toast, min, max, name);
    return false;
}

void normalizeFreqRange(MessageSink* toast, double min, double max, const QString& name) {
    tell(toast, getFreqRangeToast(min, max, name));
}

void normalizeTimeRange(MessageSink* toast, double min, double max, const QString& name) {
    tell(toast, getTimeRangeToast(min, max, name));
}

void normalizePowerRange(MessageSink* toast, double min, double max, const QString& name) {
    tell(toast, getPowerRangeToast(min, max, name));
}
