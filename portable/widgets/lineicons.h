#pragma once

#include <QIcon>
#include <QRgb>

namespace Kavor::HandheldGui {

/// The panel's drawn signs: one family of lines 2.5 pixels wide, with round ends.
enum class LineIcon { Plus, Minus, Page, Upload, Folder, Save, Bin, Back, InsertBelow, Copy, Up, Down, Device, Stick };

constexpr int LineIconSize = 32; ///< pixels, both ways

/// The sign in a colour, and disabled in that of disabled texts. GUI thread.
QIcon lineIcon(LineIcon icon, QRgb colour);

} // namespace Kavor::HandheldGui
