#pragma once

#include "values/normalize.h"
#include "values/units.h"

#include <QString>

class MessageSink;
class QComboBox;
class QLineEdit;

// Normalisation of an entry field and the unit box beside it; either may be null. The box holds its units in the order
// of the scale table that serves it (a row of kScale, or timeScales), possibly fewer: a value that belongs to a unit
// the box does not offer is shown in its last one. The fields are written without emitting their signals. GUI thread.

/// What a field and its unit box show for a value.
struct ShownEntry {
    QString text;
    int unit; ///< index in the box
};

/// For a frequency in hertz, or a time in nanoseconds, in a box that offers so many units; 0: no box.
ShownEntry shownFrequency(double hertz, int units, translations row);
ShownEntry shownTime(double nanoseconds, int units);

/// Shows the chosen unit and the value with its decimals, trailing zeros kept. decimals is parallel to the scale table.
void applyToWidgets(QLineEdit* edit, QComboBox* combo, const CalcResult& result, const int* decimals);

/// Shows a frequency in its best unit and returns it in hertz. isCanonical: value is in hertz (read from the module),
/// otherwise in the unit that the box shows (just entered).
double normalizeFreq(QLineEdit* edit, QComboBox* combo, double value, bool isCanonical, translations row);

/// As above, with limits in hertz, both inclusive. The fields are written before the check, so an entry that is out of
/// range stays visible beside the range message, which goes to the toast (may be null). hertz may be null.
[[nodiscard]] bool normalizeFreq(QLineEdit* edit, QComboBox* combo, double value, bool isCanonical, translations row,
                                 double min, double max, MessageSink* toast, double* hertz, const QString& name);

/// Shows a time in its best unit and returns it in nanoseconds. isCanonical: value is in nanoseconds.
double normalizeTime(QLineEdit* edit, QComboBox* combo, double value, bool isCanonical);

/// As the checking form of normalizeFreq, in nanoseconds.
[[nodiscard]] bool normalizeTime(QLineEdit* edit, QComboBox* combo, double value, bool isCanonical, double min,
                                 double max, MessageSink* toast, double* nanoseconds, const QString& name);

/// Tells the valid range of what name says, limits in hertz; nothing without a toast.
void normalizeFreqRange(MessageSink* toast, double min, double max, const QString& name);

/// Limits in nanoseconds.
void normalizeTimeRange(MessageSink* toast, double min, double max, const QString& name);

/// Limits in dBm.
void normalizePowerRange(MessageSink* toast, double min, double max, const QString& name);
