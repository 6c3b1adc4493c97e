#pragma once

#include <QString>
#include <functional>

/// The texts of the status bar and of refused modulations, as pure functions.
namespace Kavor::HandheldGui {

/// "  Frequency: " with the frequency in the unit and the unit; an unknown unit leaves the number empty. hertz: Hz.
QString statusFrequencyText(double hertz, const QString& unit);

/// "Power: " with two decimals. dbm: dBm.
QString statusPowerText(double dbm);

/// "Mode: " with the names of the mask's bits 0 to 7, or with the mode text when the mask is 0.
QString statusModeText(unsigned mask, const QString& modeText);

/// The text, or as much of it as fits up to one of its commas, with an ellipsis behind it.
QString shortenedAtComma(const QString& text, const std::function<bool(const QString&)>& fits);

/// Why a combination was refused: the requested modEnableBitMask bits (0: the whole set) and those in conflict,
/// negative for "nothing enabled". At most 127 characters; empty when no known bit conflicts.
QString conflictText(int requested, int conflict);

} // namespace Kavor::HandheldGui
