#include "portable/widgets/vkeyboard_keys.h"

namespace Kavor::HandheldGui::KeyboardLayout {

namespace {

constexpr int kGap = 12;
constexpr int kEntryTop = 60;
constexpr int kEntryHeight = 90;
constexpr int kKeysTop = kEntryTop + kEntryHeight + kGap;
constexpr int kKeypadRow = 112;
constexpr int kKeypadRows = 4;
constexpr int kUnitWidth = 176;
constexpr int kUnitGap = 16;
constexpr int kBottomHeight = 80;
constexpr int kLetterRow = 104;
constexpr int kLetterColumns = 10;

// Cells of equal size with gaps between them; a key may span columns.
struct Grid {
    int columns;
    int width; // of all columns with their gaps
    int rowHeight;

    QRect cell(int row, int column, int span = 1) const {
        const int step = (width + kGap) / columns;
        return {Margin + column * step, kKeysTop + row * (rowHeight + kGap), span * step - kGap, rowHeight};
    }
};

struct Cell {
    const char* name;
    const char* text;
    Action action;
};

constexpr Cell kKeypadCells[kKeypadRows][4] = {{{"key7", "7", Action::Character},
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
constexpr Cell kNextPart = {"keyIP", "IP", Action::NextPart};
constexpr Cell kEsc = {"keyEsc", "Esc", Action::Esc};
constexpr Cell kEnter = {"keyEnter", "Enter", Action::Enter};

Key keyAt(const Cell& cell, const QRect& rect) {
    return {QString::fromLatin1(cell.name), QString::fromLatin1(cell.text), cell.action, rect};
}

} // namespace

QRect entryFrame(int dialogWidth) {
    return {Margin, kEntryTop, dialogWidth - 2 * Margin, kEntryHeight};
}

std::vector<Key> keypad(int units, bool address) {
    const int full = KeypadSize.width() - 2 * Margin;
    const Grid grid{4, units > 0 ? full - kUnitWidth - kUnitGap : full, kKeypadRow};
    std::vector<Key> keys;
    for (int row = 0; row < kKeypadRows; ++row) {
        for (int column = 0; column < grid.columns; ++column) {
            const Cell& cell = kKeypadCells[row][column];
            keys.push_back(keyAt(address && cell.action == Action::Sign ? kNextPart : cell, grid.cell(row, column)));
        }
    }
    const int columnHeight = kKeypadRows * (kKeypadRow + kGap);
    for (int unit = 0; unit < units; ++unit) {
        const QRect rect(Margin + full - kUnitWidth, kKeysTop + unit * columnHeight / units, kUnitWidth,
                         columnHeight / units - kGap);
        keys.push_back({QStringLiteral("keyUnit%1").arg(unit), QString(), Action::Unit, rect});
    }
    QRect esc = grid.cell(kKeypadRows, 0, 2);
    esc.setHeight(kBottomHeight);
    const QRect enter(esc.right() + 1 + kGap, esc.top(), Margin + full - esc.right() - 1 - kGap, kBottomHeight);
    keys.push_back(keyAt(kEsc, esc));
    keys.push_back(keyAt(kEnter, enter));
    return keys;
}

std::vector<Key> letters() {
    const Grid grid{kLetterColumns, LettersSize.width() - 2 * Margin, kLetterRow};
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
    add(4, 0, 2, kEsc);
    add(4, 2, 1, {"keyLeft", "<<", Action::Left});
    add(4, 3, 1, {"keyRight", ">>", Action::Right});
    add(4, 4, 2, {"keySpace", " ", Action::Character});
    add(4, 6, 1, {"keyClear", "Clear", Action::Clear});
    add(4, 7, 3, kEnter);
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
