#pragma once

#include <QStringList>

class QWidget;

/// What a person with a finger needs of a window, checked over its visible widgets: sizes and distances of what can be
/// touched, nothing clipped, overlapping or outside.
namespace LookRules {

constexpr int SmallestTouchSide = 60;
constexpr int SmallestKeySide = 80;
constexpr int SmallestGap = 8;
constexpr int SmallestCapitalHeight = 15;

/// One line for each violation, with the object names of those involved.
QStringList violations(const QWidget& window);

} // namespace LookRules
