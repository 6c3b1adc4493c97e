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

constexpr int Margin = 24;
constexpr QSize KeypadSize(876, 668);
constexpr QSize LettersSize(1280, 668);
constexpr QRect KeypadEntry(Margin, 60, 828, 92);
constexpr QRect LettersEntry(236, 8, 1020, 72);

/// The keypad. units: how many unit keys there are, one above the other; without any Esc and Enter take their place.
/// address: the key for the next part takes the place of the sign.
std::vector<Key> keypad(int units, bool address);

/// Letters, digits, blank, minus and underscore.
std::vector<Key> letters();

VKButton::Look lookOf(Action action);

} // namespace Kavor::HandheldGui::KeyboardLayout
