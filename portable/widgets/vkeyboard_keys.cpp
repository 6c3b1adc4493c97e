#include "portable/widgets/vkeyboard_keys.h"

namespace Kavor::HandheldGui::KeyboardLayout {

namespace {

constexpr int Gap = 12;

// Keys of equal size on a fixed pitch; a key may span cells.
struct Grid {
    QPoint origin;
    QSize key;
    double pitch; // from column to column

    QRect cell(int row, int column, int span = 1, int rows = 1) const {
        const auto left = [this](int at) {
            return origin.x() + qRound(at * pitch);
        };
        const int width = left(column + span - 1) + key.width() - left(column);
        const int rowPitch = key.height() + Gap;
        return {left(column), origin.y() + row * rowPitch, width, rows * rowPitch - Gap};
    }
};

constexpr int UnitColumn = 4;
constexpr int EndColumn = 5;
constexpr Grid KeypadGrid{QPoint(Margin, 168), QSize(128, 112), 140};
constexpr Grid LettersGrid{QPoint(Margin, 92), QSize(112, 104), 124.4};
constexpr int KeypadRows = 4;

struct Cell {
    const char* name;
    const char* text;
    Action action;
};

constexpr Cell KeypadCells[KeypadRows][4] = {{{"key7", "7", Action::Character},
                                              {"key8", "8", Action::Character},
                                              {"key9", "9", Action::Character},
                                              {"keyBack", "Back", Action::Back}},
                                             {{"key4", "4", Action::Character},
                                              {"key5", "5", Action::Character},
                                              {"key6", "6", Action::Character},
                                              {"keyClear", "Clear", Action::Clear}},
                                             {{"key1", "1", Action::Character},
                                              {"key2", "2", Action::Character},
                                              {"key3", "3", Action::Character},
                                              {"keyLeft", "<<", Action::Left}},
                                             {{"keySign", "+/-", Action::Sign},
                                              {"key0", "0", Action::Character},
                                              {"keyDot", ".", Action::Point},
                                              {"keyRight", ">>", Action::Right}}};
constexpr Cell NextPart = {"keyIP", "IP", Action::NextPart};
constexpr Cell Esc = {"keyEsc", "Esc", Action::Esc};
constexpr Cell Enter = {"keyEnter", "Enter", Action::Enter};

Key keyAt(const Cell& cell, const QRect& rect) {
    return {QString::fromLatin1(cell.name), QString::fromLatin1(cell.text), cell.action, rect};
}

} // namespace

std::vector<Key> keypad(int units, bool address) {
    const Grid& grid = KeypadGrid;
    std::vector<Key> keys;
    for (int row = 0; row < KeypadRows; ++row) {
        for (int column = 0; column < UnitColumn; ++column) {
            const Cell& cell = KeypadCells[row][column];
            keys.push_back(keyAt(address && cell.action == Action::Sign ? NextPart : cell, grid.cell(row, column)));
        }
    }
    for (int unit = 0; unit < units; ++unit)
        keys.push_back({QStringLiteral("keyUnit%1").arg(unit), QString(), Action::Unit, grid.cell(unit, UnitColumn)});
    const int ends = units > 0 ? EndColumn : UnitColumn;
    keys.push_back(keyAt(Esc, grid.cell(0, ends, EndColumn - ends + 1)));
    keys.push_back(keyAt(Enter, grid.cell(1, ends, EndColumn - ends + 1, KeypadRows - 1)));
    return keys;
}

std::vector<Key> letters() {
    const Grid grid = LettersGrid;
    std::vector<Key> keys;
    const auto addCharacters = [&](int row, int column, const char* characters) {
        for (const char* at = characters; *at; ++at) {
            const QString text{QLatin1Char(*at)};
            keys.push_back({QStringLiteral("key") + text.toUpper(), text, Action::Character, grid.cell(row, column++)});
        }
    };
    const auto add = [&](int row, int column, int span, const Cell& cell) {
        keys.push_back(keyAt(cell, grid.cell(row, column, span)));
    };
    addCharacters(0, 0, "1234567890");
    addCharacters(1, 0, "qwertyuiop");
    addCharacters(2, 0, "asdfghjkl");
    add(2, 9, 1, {"keyBack", "Back", Action::Back});
    add(3, 0, 1, {"keyShift", "Shift", Action::Shift});
    addCharacters(3, 1, "zxcvbnm");
    add(3, 8, 1, {"keyMinus", "-", Action::Character});
    add(3, 9, 1, {"keyUnderscore", "_", Action::Character});
    add(4, 0, 2, Esc);
    add(4, 2, 1, {"keyLeft", "<<", Action::Left});
    add(4, 3, 1, {"keyRight", ">>", Action::Right});
    add(4, 4, 3, {"keySpace", " ", Action::Character});
    add(4, 7, 1, {"keyClear", "Clear", Action::Clear});
    add(4, 8, 2, Enter);
    return keys;
}

VKButton::Look lookOf(Action action) {
    switch (action) {
    case Action::Character:
    case Action::Point:
        return VKButton::Look::Character;
    case Action::Unit:
        return VKButton::Look::Unit;
    case Action::Enter:
        return VKButton::Look::Enter;
    case Action::Esc:
        return VKButton::Look::Escape;
    default:
        return VKButton::Look::Function;
    }
}

} // namespace Kavor::HandheldGui::KeyboardLayout
