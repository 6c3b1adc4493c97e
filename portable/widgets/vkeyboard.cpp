#include "portable/widgets/vkeyboard.h"

#include "portable/widgets/dialogs.h"
#include "portable/widgets/styles/tokens.h"
#include "portable/widgets/vkeyboard_entry.h"
#include "portable/widgets/vkeyboard_keys.h"
#include "values/formatting.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QScreen>

namespace Kavor::HandheldGui {

using KeyboardLayout::Action;

namespace {

constexpr int UnitKeys = 4;
constexpr int FrameInset = 4;

QLabel* makeLabel(QWidget* parent, const char* name, const QString& text, int pixels, QFont::Weight weight) {
    auto* label = new QLabel(text, parent);
    label->setObjectName(QLatin1String(name));
    label->setTextFormat(Qt::PlainText);
    QFont font(QStringLiteral("Segoe UI"));
    font.setPixelSize(pixels);
    font.setWeight(weight);
    label->setFont(font);
    QPalette colours = label->palette();
    colours.setColor(QPalette::WindowText, QColor(Style::Label));
    label->setPalette(colours);
    return label;
}

// Without the zeros that only fill the field's decimals.
QString nowText(const QString& value, const QString& unit) {
    double number = 0;
    if (!parseDouble(value, number))
        return QString();
    const int point = value.indexOf(QLatin1Char('.'));
    const QString text = formatNumber(number, point < 0 ? 0 : value.length() - point - 1);
    const bool joined = unit == QString(QChar(0x00B0)); // the degree sign stands at its number
    return (joined ? QStringLiteral("Now %1%2") : QStringLiteral("Now %1 %2")).arg(text, unit).trimmed();
}

void paintPanel(QPainter& painter, const QRect& rect, QRgb fill, QRgb edge, int radius) {
    painter.setPen(QPen(QColor(edge), 2));
    painter.setBrush(QColor(fill));
    painter.drawRoundedRect(QRectF(rect).adjusted(1, 1, -1, -1), radius, radius);
}

} // namespace

VirtKeyboard::VirtKeyboard(QWidget* parent, const QString& title, const QString& unit, const QString& value)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint),
      m_title(title),
      m_unit(unit),
      m_now(nowText(value, unit)),
      m_enterText(QStringLiteral("Enter")),
      m_titleLabel(makeLabel(this, "keyboardTitle", title, 28, QFont::DemiBold)),
      m_rangeLabel(makeLabel(this, "keyboardRange", QString(), 26, QFont::Normal)),
      m_nowLabel(makeLabel(this, "keyboardNow", m_now, 26, QFont::Normal)),
      m_unitLabel(makeLabel(this, "keyboardUnit", unit, 30, QFont::Normal)),
      m_entry(new KeyboardEntry(this)) {
    QPalette strong = m_titleLabel->palette();
    strong.setColor(QPalette::WindowText, QColor(Style::Text));
    m_titleLabel->setPalette(strong);
    setObjectName(QStringLiteral("keyboard"));
    setWindowTitle(title);
    setModal(true);
    setAttribute(Qt::WA_TranslucentBackground);
    m_entry->setObjectName(QStringLiteral("keyboardEntry"));
    connect(m_entry, &QLineEdit::textChanged, this, &VirtKeyboard::updateKeys);
    connect(m_entry, &KeyboardEntry::refusingChanged, this, QOverload<>::of(&QWidget::update));
    placeKeys();
    m_entry->start(value);
    m_entry->setFocus();
}

void VirtKeyboard::setLineEdit(QLineEdit* target) {
    m_target = target;
}

void VirtKeyboard::setUnitsButtons(int index, const QString& text) {
    if (index < 0 || index >= UnitKeys)
        return;
    m_unitTexts.insert(index, text);
    placeKeys();
}

void VirtKeyboard::setHighliteButton(int index) {
    m_chosenUnit = index;
    updateKeys();
}

void VirtKeyboard::setIPMask() {
    m_entry->setMode(KeyboardEntry::Mode::Address);
    placeKeys();
}

void VirtKeyboard::setTextMode(int maxLength) {
    m_entry->setMode(KeyboardEntry::Mode::Text, maxLength);
    placeKeys();
}

void VirtKeyboard::setEnterText(const QString& text) {
    m_enterText = text;
    updateKeys();
}

void VirtKeyboard::setRange(const QString& text) {
    m_rangeLabel->setText(text);
    placeEntry();
}

void VirtKeyboard::setSignEnabled(bool enabled) {
    m_signEnabled = enabled;
    updateKeys();
}

void VirtKeyboard::setPointEnabled(bool enabled) {
    m_pointEnabled = enabled;
    updateKeys();
}

bool VirtKeyboard::ask() {
    return DialogRunner::current().run(*this, DialogKind::Keyboard, m_title) == Accepted && !m_cancelled;
}

QString VirtKeyboard::text() const {
    return m_entry->text();
}

void VirtKeyboard::keyboardHandler() {
    const auto* key = qobject_cast<VKButton*>(sender());
    if (!key || key->text().isEmpty())
        return;
    m_entry->type(key->text().at(0));
    if (m_shifted && key->text().at(0).isLetter())
        setShifted(false);
}

void VirtKeyboard::kbUnitHandler() {
    const auto* key = qobject_cast<VKButton*>(sender());
    if (key && !key->text().isEmpty() && m_entry->isComplete())
        m_unit = key->text();
    on_enterButton_clicked();
}

void VirtKeyboard::on_signButton_clicked() {
    m_entry->toggleSign();
}

void VirtKeyboard::on_backButton_clicked() {
    m_entry->back();
}

void VirtKeyboard::on_clear_clicked() {
    m_entry->wipe();
}

void VirtKeyboard::on_enterButton_clicked() {
    if (!m_entry->isComplete())
        return;
    if (m_target)
        m_target->setText(m_entry->text());
    accept();
}

void VirtKeyboard::on_escButton_clicked() {
    reject();
}

void VirtKeyboard::on_dotButton_clicked() {
    m_entry->typePoint();
}

void VirtKeyboard::on_LeftArrow_clicked() {
    m_entry->moveLeft();
}

void VirtKeyboard::on_RightArrow_clicked() {
    m_entry->moveRight();
}

void VirtKeyboard::reject() {
    m_cancelled = true;
    QDialog::reject();
}

// Brings the keys and the size of the dialog into line with the mode and the units on offer.
void VirtKeyboard::placeKeys() {
    const bool letters = m_entry->mode() == KeyboardEntry::Mode::Text;
    const int units = letters || m_unitTexts.isEmpty() ? 0 : m_unitTexts.lastKey() + 1;
    const auto layout = letters ? KeyboardLayout::letters()
                                : KeyboardLayout::keypad(units, m_entry->mode() == KeyboardEntry::Mode::Address);
    setFixedSize(letters ? KeyboardLayout::LettersSize : KeyboardLayout::KeypadSize);
    if (isWindow()) {
        const QScreen* screen = QGuiApplication::primaryScreen();
        move((parentWidget() ? parentWidget()->window()->geometry() : screen->geometry()).topLeft());
    }

    for (VKButton* key : qAsConst(m_keys))
        key->hide();
    for (const KeyboardLayout::Key& key : layout) {
        VKButton* button = keyFor(key);
        button->setGeometry(key.rect);
        button->show();
    }
    updateKeys();
    placeEntry();
}

VKButton* VirtKeyboard::keyFor(const KeyboardLayout::Key& key) {
    VKButton*& button = m_keys[key.name];
    if (!button) {
        button = new VKButton(this, KeyboardLayout::lookOf(key.action));
        button->setObjectName(key.name);
        button->setText(key.text);
        if (key.text == QLatin1String(" "))
            button->setCaption(QStringLiteral("Space"));
        connectKey(button, key.action);
    }
    return button;
}

void VirtKeyboard::connectKey(VKButton* key, Action action) {
    const auto to = [&](auto slot) {
        connect(key, &QPushButton::clicked, this, slot);
    };
    switch (action) {
    case Action::Character:
        return to(&VirtKeyboard::keyboardHandler);
    case Action::Point:
        return to(&VirtKeyboard::on_dotButton_clicked);
    case Action::Sign:
        return to(&VirtKeyboard::on_signButton_clicked);
    case Action::Back:
        return to(&VirtKeyboard::on_backButton_clicked);
    case Action::Clear:
        return to(&VirtKeyboard::on_clear_clicked);
    case Action::Left:
        return to(&VirtKeyboard::on_LeftArrow_clicked);
    case Action::Right:
        return to(&VirtKeyboard::on_RightArrow_clicked);
    case Action::Unit:
        return to(&VirtKeyboard::kbUnitHandler);
    case Action::Enter:
        return to(&VirtKeyboard::on_enterButton_clicked);
    case Action::Esc:
        return to(&VirtKeyboard::on_escButton_clicked);
    case Action::NextPart:
        return to([this] { m_entry->nextPart(); });
    case Action::Shift:
        return to([this] { setShifted(!m_shifted); });
    }
}

// Holds for one letter.
void VirtKeyboard::setShifted(bool shifted) {
    m_shifted = shifted;
    updateKeys();
}

void VirtKeyboard::updateKeys() {
    for (VKButton* key : qAsConst(m_keys)) {
        const QString name = key->objectName();
        if (name == QLatin1String("keyEnter")) {
            key->setText(m_enterText);
            key->setEnabled(m_entry->isComplete());
        } else if (name == QLatin1String("keySign")) {
            key->setEnabled(m_signEnabled);
        } else if (name == QLatin1String("keyDot")) {
            key->setEnabled(m_pointEnabled);
        } else if (name == QLatin1String("keyShift")) {
            key->setChosen(m_shifted);
        } else if (name.startsWith(QLatin1String("keyUnit"))) {
            key->setEnabled(m_entry->isComplete());
            const int unit = name.rightRef(1).toInt();
            key->setText(m_unitTexts.value(unit));
            key->setCaption(key->text().isEmpty() ? QStringLiteral("\u00D71") : QString());
            key->setChosen(unit == m_chosenUnit);
        } else if (key->text().length() == 1 && key->text().at(0).isLetter()) {
            key->setText(m_shifted ? key->text().toUpper() : key->text().toLower());
        }
    }
}

// With letters the title stands beside it.
QRect VirtKeyboard::entryFrame() const {
    if (m_entry->mode() != KeyboardEntry::Mode::Text)
        return KeyboardLayout::KeypadEntry;
    QRect frame = KeyboardLayout::LettersEntry;
    frame.setLeft(qMax(frame.left(), KeyboardLayout::Margin + m_titleLabel->sizeHint().width() + 16));
    return frame;
}

void VirtKeyboard::placeEntry() {
    const bool letters = m_entry->mode() == KeyboardEntry::Mode::Text;
    QRect frame = entryFrame();
    const int right = frame.right() + 1;
    const QRect head(KeyboardLayout::Margin, 8, right - KeyboardLayout::Margin, 44);
    const int rangeWidth = m_rangeLabel->text().isEmpty() || letters ? 0 : m_rangeLabel->sizeHint().width();
    m_rangeLabel->setVisible(rangeWidth > 0);
    m_rangeLabel->setGeometry(right - rangeWidth, head.top(), rangeWidth, head.height());
    m_titleLabel->setGeometry(letters ? QRect(head.left(), frame.top(), frame.left() - head.left() - 12, frame.height())
                                      : head.adjusted(0, 0, -rangeWidth - 12, 0));

    frame.adjust(FrameInset, FrameInset, -FrameInset, -FrameInset);
    m_unitLabel->setVisible(!m_unit.isEmpty());
    if (!m_unit.isEmpty()) {
        const int unitWidth = m_unitLabel->sizeHint().width();
        frame.adjust(0, 0, -unitWidth - 28, 0);
        m_unitLabel->setGeometry(frame.right() + 1 + 10, frame.top() + 9, unitWidth, frame.height() - 9);
    } else {
        frame.adjust(0, 0, -10, 0);
    }
    m_nowLabel->setVisible(!m_now.isEmpty() && m_entry->mode() == KeyboardEntry::Mode::Number);
    if (m_nowLabel->isVisibleTo(this)) {
        const int nowWidth = m_nowLabel->sizeHint().width();
        m_nowLabel->setGeometry(frame.left() + 16, frame.top(), nowWidth, frame.height());
        frame.adjust(16 + nowWidth + 12, 0, 0, 0);
    }
    m_entry->setGeometry(frame);
}

void VirtKeyboard::paintEvent(QPaintEvent*) {
    const bool letters = m_entry->mode() == KeyboardEntry::Mode::Text;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    // It comes out of the corner: its edge shows only where it ends.
    paintPanel(painter, rect().adjusted(-20, -20, letters ? 20 : 0, 0), Style::Panel, Style::FaintEdge, 12);
    paintPanel(painter, entryFrame(), Style::Field, m_entry->isRefusing() ? Style::Wrong : Style::Active,
               Style::Radius);
}

// A physical keyboard, on a desktop, works the keys on the screen.
void VirtKeyboard::keyPressEvent(QKeyEvent* event) {
    static const QMap<int, QString> special{
        {Qt::Key_Return, "keyEnter"}, {Qt::Key_Enter, "keyEnter"},
        {Qt::Key_Escape, "keyEsc"},   {Qt::Key_Left, "keyLeft"},
        {Qt::Key_Right, "keyRight"},  {Qt::Key_Backspace, "keyBack"},
        {Qt::Key_Delete, "keyClear"}, {Qt::Key_Period, "keyDot"},
        {Qt::Key_Space, "keySpace"},  {Qt::Key_Underscore, "keyUnderscore"},
        {Qt::Key_Minus, "keyMinus"},
    };
    const QString typed = event->text();
    QString name = special.value(event->key(), QStringLiteral("key") + typed.toUpper());
    if (name == QLatin1String("keyMinus") && m_entry->mode() == KeyboardEntry::Mode::Number)
        name = QStringLiteral("keySign");
    VKButton* key = m_keys.value(name);
    if (!key || key->isHidden() || !key->isEnabled()) {
        if (!typed.isEmpty())
            m_entry->refuse();
        return;
    }
    if (typed.length() == 1 && typed.at(0).isLetter())
        setShifted(typed.at(0).isUpper());
    key->click();
}

} // namespace Kavor::HandheldGui
