#include "portable/widgets/vkeyboard_keys.h"

namespace Kavor::HandheldGui::KeyboardLayout {

namespace {

constexpr int Gap = 12;
constexpr int EntryTop = 60;
constexpr int EntryHeight = 90;
constexpr int KeysTop = EntryTop + EntryHeight + Gap;
constexpr int KeypadRow = 112;
constexpr int KeypadRows = 4;
constexpr int UnitWidth = 176;
constexpr int UnitGap = 16;
constexpr int BottomHeight = 80;
constexpr int LetterRow = 104;
constexpr int LetterColumns = 10;

// Cells of equal size with gaps between them; a key may span columns.
struct Grid {
    int columns;
    int width; // of all columns with their gaps
    int rowHeight;

    QRect cell(int row, int column, int span = 1) const {
        const int step = (width + Gap) / columns;
        return {Margin + column * step, KeysTop + row * (rowHeight + Gap), span * step - Gap, rowHeight};
    }
};

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

QRect entryFrame(int dialogWidth) {
    return {Margin, EntryTop, dialogWidth - 2 * Margin, EntryHeight};
}

std::vector<Key> keypad(int units, bool address) {
    const int full = KeypadSize.width() - 2 * Margin;
    const Grid grid{4, units > 0 ? full - UnitWidth - UnitGap : full, KeypadRow};
    std::vector<Key> keys;
    for (int row = 0; row < KeypadRows; ++row) {
        for (int column = 0; column < grid.columns; ++column) {
            const Cell& cell = KeypadCells[row][column];
            keys.push_back(keyAt(address && cell.action == Action::Sign ? NextPart : cell, grid.cell(row, column)));
        }
    }
    const int columnHeight = KeypadRows * (KeypadRow + Gap);
    for (int unit = 0; unit < units; ++unit) {
        const QRect rect(Margin + full - UnitWidth, KeysTop + unit * columnHeight / units, UnitWidth,
                         columnHeight / units - Gap);
        keys.push_back({QStringLiteral("keyUnit%1").arg(unit), QString(), Action::Unit, rect});
    }
    QRect esc = grid.cell(KeypadRows, 0, 2);
    esc.setHeight(BottomHeight);
    const QRect enter(esc.right() + 1 + Gap, esc.top(), Margin + full - esc.right() - 1 - Gap, BottomHeight);
    keys.push_back(keyAt(Esc, esc));
    keys.push_back(keyAt(Enter, enter));
    return keys;
}

std::vector<Key> letters() {
    const Grid grid{LetterColumns, LettersSize.width() - 2 * Margin, LetterRow};
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
    add(4, 4, 2, {"keySpace", " ", Action::Character});
    add(4, 6, 1, {"keyClear", "Clear", Action::Clear});
    add(4, 7, 3, Enter);
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
