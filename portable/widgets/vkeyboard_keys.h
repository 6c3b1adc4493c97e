#pragma once

#include "portable/widgets/vkbutton.h"

#include <QRect>
#include <QSize>
#include <QString>
#include <vector>

/// Where the keys of the on-screen keyboard lie and what they stand for, in pixels of the dialog.
namespace Kavor::HandheldGui::KeyboardLayout {

enum class Action { Character, Point, Sign, Back, Clear, Left, Right, NextPart, Shift, Unit, Enter, Esc };

struct Key {
    QString name; ///< object name
    QString text; ///< what it types, or its caption
    Action action;
    QRect rect;
};

constexpr int Margin = 26;
constexpr QSize KeypadSize(792, 752);
constexpr QSize LettersSize(1280, 744);
constexpr QRect Title(Margin, 8, 740, 48);

/// The frame around the entry, for a dialog of that width.
QRect entryFrame(int dialogWidth);

/// The keypad. units: how many unit keys share the column at the right; without any the other keys are wider. address:
/// the key for the next part takes the place of the sign.
std::vector<Key> keypad(int units, bool address);

/// Letters, digits, blank, minus and underscore.
std::vector<Key> letters();

VKButton::Look lookOf(Action action);

} // namespace Kavor::HandheldGui::KeyboardLayout
