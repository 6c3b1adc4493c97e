#include "portable/widgets/vklineedit.h"

#include "portable/widgets/actiongate.h"
#include "portable/widgets/freshness.h"
#include "portable/widgets/styles/tokens.h"
#include "portable/widgets/vkeyboard.h"
#include "values/formatting.h"
#include "values/messagesink.h"

#include <QComboBox>
#include <QEvent>
#include <QPainter>
#include <QSignalBlocker>
#include <QStyleOptionFrame>

namespace Kavor::HandheldGui {

namespace {

constexpr int GroupGap = 12; // between groups of three figures
constexpr int MarkShift = 6; // nearer to the edge, so that a long number keeps off it

/// Where a gap stands before the figure at an index: groups are counted from the point, both ways.
bool startsGroup(const QString& number, int index) {
    const int found = number.indexOf(QLatin1Char('.'));
    const int point = found < 0 ? number.length() : found;
    const int first = number.startsWith(QLatin1Char('-')) ? 1 : 0;
    if (index < point)
        return index > first && (point - index) % 3 == 0;
    return index > point + 1 && (index - point - 1) % 3 == 0;
}

void drawGrouped(QPainter& painter, const QRect& place, const QString& number) {
    const QFontMetrics metrics(painter.font());
    int x = place.right() + 1;
    for (int i = number.length() - 1; i >= 0; --i) {
        x -= metrics.horizontalAdvance(number.at(i));
        painter.drawText(QRect(x, place.top(), place.width(), place.height()), Qt::AlignLeft | Qt::AlignVCenter,
                         QString(number.at(i)));
        if (startsGroup(number, i))
            x -= GroupGap;
    }
}

} // namespace

ValueEdit::ValueEdit(QWidget* parent, Units units, const QString& unit)
    : QLineEdit(parent), m_units(units), m_fixedUnit(unit) {
    setReadOnly(true);
    setContextMenuPolicy(Qt::NoContextMenu);
    setAttribute(Qt::WA_AcceptTouchEvents);
    connect(&Freshness::panel(), &Freshness::changed, this, QOverload<>::of(&ValueEdit::update));
}

void ValueEdit::setMark(const QString& mark) {
    m_mark = mark;
    update();
}

// It is not typed into: a frame and a text is all there is.
void ValueEdit::paintEvent(QPaintEvent*) {
    QStyleOptionFrame frame;
    initStyleOption(&frame);
    QPainter painter(this);
    style()->drawPrimitive(QStyle::PE_PanelLineEdit, &frame, &painter, this);
    // Two pixels on each side are what a line edit keeps for its cursor.
    const QRect place = style()->subElementRect(QStyle::SE_LineEditContents, &frame, this).adjusted(2, 0, -2, 0);
    const Freshness& freshness = Freshness::panel();
    painter.setFont(font());
    painter.setPen(freshness.isStale() ? QColor(Style::Stale) : palette().color(QPalette::Text));
    const QString shown = freshness.shown(text());
    if (m_grouped)
        drawGrouped(painter, place, shown);
    else
        painter.drawText(place, static_cast<int>(alignment() | Qt::AlignVCenter), shown);
    if (!m_mark.isEmpty())
        painter.drawText(place.adjusted(-MarkShift, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter, m_mark);
}

void ValueEdit::setUnitBox(QComboBox* box) {
    m_unitBox = box;
}

QComboBox* ValueEdit::unitBox() const {
    return m_unitBox;
}

bool ValueEdit::event(QEvent* event) {
    const bool press = event->type() == QEvent::MouseButtonPress || event->type() == QEvent::TouchBegin;
    if (!press || !isEnabled())
        return QLineEdit::event(event);
    event->accept();
    openKeyboard();
    return true;
}

void ValueEdit::openKeyboard() {
    const auto canBeEdited = [this] {
        return isEnabled() && !m_editing && (m_unitBox || m_units != Units::BoxNeeded);
    };
    if (!canBeEdited())
        return;
    ActionGate::panel().ask(this, [this, canBeEdited] {
        if (canBeEdited())
            edit();
    });
}

// The focus comes and goes with the keyboard; it never shows as a selection in the field.
void ValueEdit::focusInEvent(QFocusEvent* event) {
    QLineEdit::focusInEvent(event);
    deselect();
}

// The keyboard and the receivers of valueChanged run event loops, in which the screen that owns the editor can go.
void ValueEdit::edit() {
    const QPointer<ValueEdit> alive(this);
    m_editing = true;
    if (runKeyboard())
        emit valueChanged();
    if (!alive)
        return;
    if (parentWidget())
        parentWidget()->setFocus();
    clearFocus();
    m_editing = false;
    emit keyboardClosed();
}

// True if there is an entry to be told about.
bool ValueEdit::runKeyboard() {
    QStringList units = m_unitNames;
    int present = units.isEmpty() ? -1 : 0;
    if (m_unitBox) {
        units.clear();
        for (int i = 0; i < m_unitBox->count(); ++i)
            units << m_unitBox->itemText(i);
        present = m_unitBox->currentIndex();
    }
    const QString before = text();
    const QString unit = present >= 0 ? units.value(present) : m_fixedUnit;

    const QPointer<ValueEdit> alive(this);
    const QPointer<VirtKeyboard> keyboard = new VirtKeyboard(window(), m_title, unit, before);
    for (int i = 0; i < units.size(); ++i)
        keyboard->setUnitsButtons(i, units.at(i));
    keyboard->setHighliteButton(present);
    keyboard->setLineEdit(this);
    if (m_range)
        keyboard->setRange(m_range());
    prepare(*keyboard);
    const bool entered = keyboard->ask();
    const QString chosen = keyboard ? keyboard->chosenUnit() : unit;
    delete keyboard.data();
    if (!alive || !entered)
        return false;

    m_chosenUnit = chosen;
    if (!takeEntry(chosen)) {
        setText(before);
        return false;
    }
    double number = 0;
    if (parseDouble(text(), number))
        selectUnit(chosen);
    return true;
}

void ValueEdit::selectUnit(const QString& unit) {
    const int index = m_unitBox ? m_unitBox->findText(unit) : -1;
    if (index < 0)
        return;
    const QSignalBlocker blocker(m_unitBox.data());
    m_unitBox->setCurrentIndex(index);
}

} // namespace Kavor::HandheldGui
