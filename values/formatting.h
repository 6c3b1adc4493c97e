#pragma once

#include <QRegularExpression>
#include <QString>
#include <string>

/// What a numeric entry may hold while it is typed: sign, digits, one point, digits; no exponent, no blanks. It lets
/// "", "-" and "." pass, which parseDouble then refuses.
inline const QRegularExpression kNumericRe(QStringLiteral("^-?[0-9]*\\.?[0-9]*$"));

/// The value with so many decimals, zeros kept; a zero has no sign.
QString fixedNumber(double value, int decimals);

/// The value with at most so many decimals, without trailing zeros: 1.5, 2, 100.
QString formatNumber(double value, int decimals);

/// The shortest text that stands for the very value, without an exponent: 1234567, -0.0000001.
QString plainNumber(double value);

/// Number, one blank, unit: the frequency in the largest unit that keeps it at 1 or more, to a millihertz. A unit that
/// is no frequency unit counts as hertz.
QString formatFrequency(double value, const std::string& unit);

/// Number, one blank, unit: the time in the largest unit that keeps it below 1000, to a nanosecond. A unit that is no
/// time unit counts as nanoseconds.
QString formatTime(double value, const std::string& unit);

/// Reads a number with a decimal point, blanks around it allowed. False, with out set to 0, where the text is none.
[[nodiscard]] bool parseDouble(const QString& text, double& out);
