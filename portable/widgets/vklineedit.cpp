#include "portable/widgets/vklineedit.h"

#include "portable/widgets/actiongate.h"
#include "portable/widgets/vkeyboard.h"
#include "values/formatting.h"
#include "values/messagesink.h"

#include <QComboBox>
#include <QEvent>
#include <QSignalBlocker>

namespace Kavor::HandheldGui {

ValueEdit::ValueEdit(QWidget* parent, Units units, const QString& unit)
    : QLineEdit(parent), m_units(units), m_fixedUnit(unit) {
    setReadOnly(true);
    setContextMenuPolicy(Qt::NoContextMenu);
    setAttribute(Qt::WA_AcceptTouchEvents);
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
