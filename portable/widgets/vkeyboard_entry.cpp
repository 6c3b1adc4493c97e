#include "portable/widgets/vkeyboard_entry.h"

#include "portable/widgets/styles/tokens.h"
#include "values/formatting.h"

#include <QKeyEvent>
#include <QPainter>
#include <QRegularExpressionValidator>
#include <algorithm>

namespace Kavor::HandheldGui {

namespace {

constexpr int SmallestText = 28;
constexpr int CaretWidth = 3;
constexpr int AddressPoints = 3;

const QRegularExpression& patternOf(KeyboardEntry::Mode mode) {
    static const QString part = QStringLiteral("(?:[0-1]?\\d?\\d|2[0-4]\\d|25[0-5])");
    static const QRegularExpression address(QStringLiteral("^%1\\.%1\\.%1\\.%1$").arg(part));
    static const QRegularExpression name(QStringLiteral("^[A-Za-z0-9 _-]*$"));
    switch (mode) {
    case KeyboardEntry::Mode::Address:
        return address;
    case KeyboardEntry::Mode::Text:
        return name;
    case KeyboardEntry::Mode::Number:
        break;
    }
    return kNumericRe;
}

} // namespace

KeyboardEntry::KeyboardEntry(QWidget* parent) : QLineEdit(parent), m_validator(new QRegularExpressionValidator(this)) {
    setFrame(false);
    setReadOnly(true);
    setContextMenuPolicy(Qt::NoContextMenu);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setTextMargins(4, 0, 8, 0);
    QPalette colours = palette();
    colours.setColor(QPalette::Base, QColor(Style::Field));
    colours.setColor(QPalette::Text, QColor(Style::Text));
    colours.setColor(QPalette::Highlight, QColor(Style::Active));
    colours.setColor(QPalette::HighlightedText, QColor(Style::OnActive));
    setPalette(colours);
    setValidator(m_validator);
    setMode(Mode::Number);
    connect(this, &QLineEdit::textChanged, this, &KeyboardEntry::fitFont);
    connect(this, &QLineEdit::cursorPositionChanged, this, [this] { update(); });
    fitFont();
}

void KeyboardEntry::setMode(Mode mode, int maxLength) {
    m_mode = mode;
    m_bound = maxLength;
    m_validator->setRegularExpression(patternOf(mode));
    setAlignment((mode == Mode::Text ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignVCenter);
}

void KeyboardEntry::start(const QString& text) {
    setText(text);
    end(false);
    m_firstKey = !text.isEmpty();
}

void KeyboardEntry::type(QChar character) {
    if (character == QLatin1Char('.')) {
        typePoint();
        return;
    }
    beginTyping();
    if (m_mode != Mode::Number)
        insert(character);
    else if (character.isDigit())
        typeDigit(character);
}

void KeyboardEntry::typeDigit(QChar digit) {
    const int point = text().indexOf(QLatin1Char('.'));
    QString number = text();
    number.remove(QLatin1Char('-'));
    if (digit == QLatin1Char('0') && cursorPosition() < point && number.startsWith(QLatin1Char('0')))
        return;
    if (!isOverwriting()) {
        put(text() + digit);
        return;
    }
    const int cursor = cursorPosition();
    QString edited = text();
    edited.replace(cursor - 1, 1, digit);
    if (put(edited))
        selectBefore(cursor + 1);
}

void KeyboardEntry::typePoint() {
    if (m_mode != Mode::Number) {
        insert(QLatin1Char('.'));
        return;
    }
    beginTyping();
    if (text().isEmpty() || text() == QLatin1String("-")) {
        put(text() + QStringLiteral("0."));
        return;
    }
    const bool overwriting = isOverwriting();
    int cursor = cursorPosition();
    QString edited = text();
    const int earlier = edited.indexOf(QLatin1Char('.'));
    if (earlier >= 0) {
        edited.remove(earlier, 1);
        if (earlier < cursor)
            --cursor;
    }
    if (!overwriting) {
        put(edited + QLatin1Char('.'));
        return;
    }
    edited.insert(cursor, QLatin1Char('.'));
    if (put(edited))
        selectBefore(cursor + 2);
}

void KeyboardEntry::toggleSign() {
    if (m_mode != Mode::Number)
        return;
    beginTyping();
    const bool overwriting = isOverwriting();
    const bool negative = text().startsWith(QLatin1Char('-'));
    const int cursor = cursorPosition() + (negative ? -1 : 1);
    if (!put(negative ? text().mid(1) : QLatin1Char('-') + text()))
        return;
    if (overwriting)
        selectBefore(cursor);
    else
        setCursorPosition(std::max(cursor, 0));
}

void KeyboardEntry::back() {
    m_firstKey = false;
    if (text().isEmpty())
        return;
    const bool overwriting = isOverwriting();
    // A number without a selection loses its last character, wherever the cursor is.
    int from = m_mode == Mode::Number ? text().length() - 1 : cursorPosition() - 1;
    int count = 1;
    if (hasSelectedText()) {
        from = selectionStart();
        count = selectionLength();
    }
    if (from < 0)
        return;
    setText(text().remove(from, count));
    if (overwriting && m_mode == Mode::Number)
        selectBefore(from);
    else
        setCursorPosition(from);
}

void KeyboardEntry::wipe() {
    m_firstKey = false;
    if (text().isEmpty())
        return;
    clear();
    setFocus();
}

void KeyboardEntry::moveLeft() {
    m_firstKey = false;
    if (m_mode == Mode::Text)
        setCursorPosition(std::max(cursorPosition() - 1, 0));
    else
        selectBefore(cursorPosition() - 1);
}

void KeyboardEntry::moveRight() {
    m_firstKey = false;
    if (m_mode == Mode::Text)
        setCursorPosition(cursorPosition() + 1);
    else
        selectBefore(cursorPosition() + 1);
}

void KeyboardEntry::nextPart() {
    m_firstKey = false;
    const QString address = text();
    if (m_mode != Mode::Address || address.isEmpty())
        return;
    const int at = hasSelectedText() ? selectionStart() : cursorPosition();
    int from = address.leftRef(at).lastIndexOf(QLatin1Char('.')) + 1;
    const auto endOf = [&address](int start) {
        const int point = address.indexOf(QLatin1Char('.'), start);
        return point < 0 ? address.length() : point;
    };
    const int to = endOf(from);
    if (to == address.length() && address.count(QLatin1Char('.')) < AddressPoints) {
        put(address + QLatin1Char('.'));
        return;
    }
    if (selectionStart() == from && selectionLength() == to - from)
        from = to == address.length() ? 0 : to + 1;
    setCursorPosition(from);
    if (endOf(from) > from)
        setSelection(from, endOf(from) - from);
}

bool KeyboardEntry::isComplete() const {
    return hasAcceptableInput();
}

void KeyboardEntry::beginTyping() {
    if (m_firstKey)
        wipe();
}

// Replaces what is selected. A point in an address closes a part: it is put behind the selection, or stepped over.
void KeyboardEntry::insert(QChar character) {
    m_firstKey = false;
    int from = cursorPosition();
    int count = 0;
    if (hasSelectedText()) {
        const bool keep = m_mode == Mode::Address && character == QLatin1Char('.');
        from = keep ? selectionEnd() : selectionStart();
        count = keep ? 0 : selectionLength();
    }
    QString edited = text();
    if (m_mode == Mode::Address && character == QLatin1Char('.') && edited.midRef(from, 1) == QLatin1String(".")) {
        setCursorPosition(from + 1);
        return;
    }
    edited.replace(from, count, character);
    if (put(edited))
        setCursorPosition(from + 1);
}

// Takes a text that can still become a valid one; the cursor goes to its end.
bool KeyboardEntry::put(const QString& edited) {
    QString checked = edited;
    int cursor = 0;
    if (m_bound > 0 && edited.length() > m_bound)
        return false;
    if (m_validator->validate(checked, cursor) == QValidator::Invalid)
        return false;
    setText(edited);
    return true;
}

// The cursor with the character before it selected. Before the first one there is none, so that one stays selected;
// beyond the last one overwriting ends.
void KeyboardEntry::selectBefore(int cursor) {
    if (cursor > text().length() || text().isEmpty())
        end(false);
    else
        setSelection(std::max(cursor, 1) - 1, 1);
}

// The largest text that still shows the whole entry.
void KeyboardEntry::fitFont() {
    QFont shown(QStringLiteral("Segoe UI"));
    shown.setWeight(QFont::DemiBold);
    const QMargins margins = textMargins();
    const int room = width() - margins.left() - margins.right() - 2 * CaretWidth - 4;
    for (int pixels = Style::TextEntry; pixels >= SmallestText; pixels -= 2) {
        shown.setPixelSize(pixels);
        if (QFontMetrics(shown).horizontalAdvance(text()) <= room)
            break;
    }
    if (font() != shown)
        setFont(shown);
}

void KeyboardEntry::paintEvent(QPaintEvent* event) {
    QLineEdit::paintEvent(event);
    if (hasSelectedText())
        return;
    const int height = QFontMetrics(font()).height() * 3 / 4;
    const int x = std::min(cursorRect().center().x() + 1, width() - CaretWidth - 1);
    QPainter(this).fillRect(x, (this->height() - height) / 2, CaretWidth, height, QColor(Style::Active));
}

// A dialog that opens selects what is in its first field, which would read as overwriting.
void KeyboardEntry::focusInEvent(QFocusEvent* event) {
    const int cursor = cursorPosition();
    const int selected = selectionLength();
    QLineEdit::focusInEvent(event);
    setSelection(cursor - selected, selected);
}

// Keys of a physical keyboard are the dialog's business.
void KeyboardEntry::keyPressEvent(QKeyEvent* event) {
    event->ignore();
}

void KeyboardEntry::resizeEvent(QResizeEvent* event) {
    QLineEdit::resizeEvent(event);
    fitFont();
}

} // namespace Kavor::HandheldGui
