#pragma once

#include <QIcon>
#include <QRgb>

namespace Kavor::HandheldGui {

/// The panel's drawn signs: one family of lines 2.5 pixels wide, with round ends.
enum class LineIcon { Plus, Minus, Page, Upload, Folder, Save, Bin, Back, InsertBelow, Copy, Up, Down, Device, Stick };

constexpr int LineIconSize = 32; ///< pixels, both ways

/// By which a sign stands farther from the words behind it, in pixels.
constexpr int LineIconGap = 8;

/// The sign in a colour, and disabled in that of disabled texts; behind: pixels left free at its right. GUI thread.
QIcon lineIcon(LineIcon icon, QRgb colour, int behind = 0);

} // namespace Kavor::HandheldGui
