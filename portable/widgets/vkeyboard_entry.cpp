#include "portable/widgets/vkeyboard_entry.h"

#include "portable/widgets/styles/tokens.h"
#include "values/formatting.h"

#include <QKeyEvent>
#include <QPainter>
#include <QRegularExpressionValidator>
#include <QTimer>
#include <algorithm>

namespace Kavor::HandheldGui {

namespace {

constexpr int SmallestText = 28;
constexpr int CaretWidth = 3;
constexpr int AddressPoints = 3;
constexpr int RefusedMs = 300;

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

KeyboardEntry::KeyboardEntry(QWidget* parent)
    : QLineEdit(parent), m_validator(new QRegularExpressionValidator(this)), m_refusing(new QTimer(this)) {
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
    m_refusing->setSingleShot(true);
    connect(m_refusing, &QTimer::timeout, this, &KeyboardEntry::refusingChanged);
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
    double number = 0;
    const bool scientific = m_mode == Mode::Number && text.contains(QLatin1Char('e'), Qt::CaseInsensitive);
    setText(scientific && parseDouble(text, number) ? plainNumber(number) : text);
    m_firstKey = !text.isEmpty();
    if (m_firstKey)
        selectAll();
}

void KeyboardEntry::type(QChar character) {
    if (character == QLatin1Char('.')) {
        typePoint();
        return;
    }
    if (!allows(character)) {
        refuse();
        return;
    }
    beginTyping();
    if (m_mode == Mode::Number)
        typeDigit(character);
    else
        insert(character);
}

bool KeyboardEntry::allows(QChar character) const {
    return m_mode == Mode::Text ? patternOf(Mode::Text).match(QString(character)).hasMatch() : character.isDigit();
}

void KeyboardEntry::typeDigit(QChar digit) {
    const int point = text().indexOf(QLatin1Char('.'));
    QString number = text();
    number.remove(QLatin1Char('-'));
    if (digit == QLatin1Char('0') && cursorPosition() < point && number.startsWith(QLatin1Char('0'))) {
        refuse();
        return;
    }
    if (!isOverwriting()) {
        put(text() + digit);
        return;
    }
    const int cursor = cursorPosition();
    QString edited = text();
    edited.replace(cursor - 1, 1, digit);
    if (put(edited))
        selectBefore(cursor + 1, 1);
}

void KeyboardEntry::typePoint() {
    if (m_mode == Mode::Address) {
        typeAddressPoint();
        return;
    }
    if (m_mode == Mode::Text) {
        refuse();
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
        selectBefore(cursor + 2, 1);
}

// A point closes a part: it is put behind what is selected, or stepped over. Nothing begins with it.
void KeyboardEntry::typeAddressPoint() {
    if (m_firstKey) {
        refuse();
        return;
    }
    const int at = hasSelectedText() ? selectionEnd() : cursorPosition();
    if (text().midRef(at, 1) == QLatin1String(".")) {
        setCursorPosition(at + 1);
        return;
    }
    QString edited = text();
    edited.insert(at, QLatin1Char('.'));
    if (put(edited))
        setCursorPosition(at + 1);
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
        selectBefore(cursor, -1);
    else
        setCursorPosition(std::max(cursor, 0));
}

void KeyboardEntry::back() {
    keepValue();
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
        selectBefore(from, -1);
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
    keepValue();
    if (m_mode == Mode::Text)
        setCursorPosition(std::max(cursorPosition() - 1, 0));
    else
        selectBefore(cursorPosition() - (hasSelectedText() ? 1 : 0), -1);
}

void KeyboardEntry::moveRight() {
    keepValue();
    if (m_mode == Mode::Text)
        setCursorPosition(cursorPosition() + 1);
    else
        selectBefore(cursorPosition() + 1, 1);
}

void KeyboardEntry::nextPart() {
    keepValue();
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
    double number = 0;
    return m_mode == Mode::Number ? parseDouble(text(), number) : hasAcceptableInput();
}

void KeyboardEntry::refuse() {
    m_refusing->start(RefusedMs);
    emit refusingChanged();
}

bool KeyboardEntry::isRefusing() const {
    return m_refusing->isActive();
}

void KeyboardEntry::beginTyping() {
    if (m_firstKey)
        wipe();
}

// The value that the keyboard opened with is worked on from its end.
void KeyboardEntry::keepValue() {
    if (m_firstKey)
        end(false);
    m_firstKey = false;
}

// Replaces what is selected.
void KeyboardEntry::insert(QChar character) {
    const int from = hasSelectedText() ? selectionStart() : cursorPosition();
    QString edited = text();
    edited.replace(from, selectionLength(), character);
    if (put(edited))
        setCursorPosition(from + 1);
}

// Takes a text that can still become a valid one; the cursor goes to its end.
bool KeyboardEntry::put(const QString& edited) {
    QString checked = edited;
    int cursor = 0;
    const bool tooLong = m_bound > 0 && edited.length() > m_bound;
    if (tooLong || m_validator->validate(checked, cursor) == QValidator::Invalid) {
        refuse();
        return false;
    }
    setText(edited);
    return true;
}

// The cursor with the character before it selected; a point is stepped over, by step. Before the first one there is
// none, so that one stays selected; beyond the last one overwriting ends.
void KeyboardEntry::selectBefore(int cursor, int step) {
    const QString shown = text();
    int at = std::max(cursor, 1) - 1;
    const auto isPoint = [&] {
        return at >= 0 && at < shown.length() && shown.at(at) == QLatin1Char('.');
    };
    while (isPoint())
        at += step;
    for (at = std::max(at, 0); isPoint();)
        ++at;
    if (at >= shown.length())
        end(false);
    else
        setSelection(at, 1);
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
