#pragma once

#include <QIcon>
#include <QPixmap>
#include <QRgb>
#include <QSize>

namespace Kavor::HandheldGui {

/// The panel's drawn signs: one family of lines 2.5 pixels wide, with round ends.
enum class LineIcon {
    Plus,
    Minus,
    Page,
    Upload,
    Folder,
    Save,
    Bin,
    Back,
    InsertBelow,
    Copy,
    Up,
    Down,
    Device,
    Stick,
    Lock,
    Tick,
    Run,
    StepDown,
    StepUp,
    Download,
    Undo,
    Network,
    Forward,
    Shield, ///< with a tick, as the next two with what they say
    ShieldDash,
    ShieldCross,
    Cross,
    Clock,
    SweepUp,
    SweepUpDown,
    EdgeRising,
    EdgeFalling
};

constexpr int LineIconSize = 32; ///< pixels, both ways

/// Of a sign before words: with the gap between them.
constexpr QSize LineIconRoom(LineIconSize + 8, LineIconSize);

/// The sign in a colour, and disabled in that of disabled texts, LineIconRoom large. GUI thread.
QIcon lineIcon(LineIcon icon, QRgb colour);

/// The sign alone, in a colour, so many pixels both ways; its strokes grow with it.
QPixmap linePixmap(LineIcon icon, QRgb colour, int size = LineIconSize);

/// The pixels of a sign or another picture before words: with the gap between them.
QPixmap withGap(const QPixmap& picture);

/// The sign before words, as a picture that takes its colour later.
inline auto pictureOf(LineIcon icon) {
    return [icon](QRgb colour) {
        return withGap(linePixmap(icon, colour));
    };
}

} // namespace Kavor::HandheldGui
