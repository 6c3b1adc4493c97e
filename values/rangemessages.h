#pragma once

#include <QString>

// The sentence that tells the user the valid range of what name says (which may be empty). The blanks around the name
// are part of the text: two between a name and "range", two after "Valid" without one. Numbers have six significant
// digits.

/// Limits in hertz, each shown in its best unit.
QString getFreqRangeToast(double min, double max, const QString& name);

/// Limits in nanoseconds, each shown in its best unit.
QString getTimeRangeToast(double min, double max, const QString& name);

/// Limits in dBm.
QString getPowerRangeToast(double min, double max, const QString& name);
