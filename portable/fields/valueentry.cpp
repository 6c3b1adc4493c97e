#include "portable/fields/valueentry.h"

#include "common/instrument/handlerscpi.h"
#include "portable/host/panelhost.h"
#include "portable/host/screentexts.h"
#include "portable/widgets/ToastOverlay.h"
#include "portable/widgets/combobox.h"
#include "portable/widgets/entry.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/vklineedit.h"
#include "values/formatting.h"

#include <QSignalBlocker>
#include <cmath>
#include <limits>

namespace Kavor::HandheldGui {

namespace {

constexpr double Unlimited = std::numeric_limits<double>::max();

/// At least the decimals of the field, and more, up to a most, when the value needs them: a field does not show a
/// number that the module does not hold.
QString plainText(double value, int decimals, int mostDecimals) {
    for (int d = decimals; d < mostDecimals; ++d) {
        const QString text = QString::number(value, 'f', d);
        if (qFuzzyCompare(1.0 + text.toDouble(), 1.0 + value))
            return text;
    }
    return QString::number(value, 'f', qMax(decimals, mostDecimals));
}

QString limitText(double limit, bool whole) {
    return whole ? QString::number(limit, 'f', 0) : QString::number(limit);
}

} // namespace

ValueModel ValueModel::device(EventHandler& handler, DeviceValueId id) {
    return {[&handler, id] { return handler.cachedValue(id); }, [&handler, id] { return handler.cachedLimits(id); },
            [&handler, id](double value) {
                return handler.setDeviceValue(id, handler.roundedToWire(id, value)) == 0 ? EntryResult::Taken
                                                                                         : EntryResult::Failed;
            }};
}

ValueEntry::ValueEntry(PanelHost& host, const ValueField& field) : QObject(field.edit), m_host(host), m_field(field) {
    if (m_field.editStyle.isEmpty())
        m_field.editStyle = WIDGET_EDIT_STYLE;
    if (m_field.wrongStyle.isEmpty())
        m_field.wrongStyle = WIDGET_EDIT_STYLE_RED;
    m_field.edit->setStyleSheet(m_field.editStyle);
    m_field.edit->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_field.edit->setMessageSink(host.toast());
    if (m_field.unit)
        m_field.edit->setUnitBox(m_field.unit);
    if (ToastOverlay* toast = host.toast())
        connect(toast, &ToastOverlay::messageEnded, this, &ValueEntry::restore);
    connect(m_field.edit, &ValueEdit::keyboardClosed, this, &ValueEntry::restore);
    if (m_field.unit)
        connect(m_field.unit, &ComboBox::closed, this, &ValueEntry::onListClosed);
}

void ValueEntry::setEnabled(bool enabled) {
    m_field.edit->setEnabled(enabled);
    if (m_field.unit)
        m_field.unit->setEnabled(enabled);
}

void ValueEntry::setVisible(bool visible) {
    m_field.edit->setVisible(visible);
    if (m_field.unit)
        m_field.unit->setVisible(visible);
}

void ValueEntry::setCalculated(bool calculated) {
    if (m_refused)
        takeRefusedBack();
    m_field.editStyle = calculated ? WIDGET_NO_EDIT_STYLE_GRAY : WIDGET_EDIT_STYLE;
    applySheet(m_field.edit, m_field.editStyle);
    setEnabled(!calculated);
}

QString ValueEntry::title() const {
    return m_field.edit->title();
}

void ValueEntry::reload() {
    if (showsModule())
        showValue(m_field.model.value());
}

bool ValueEntry::enter() {
    // What was not changed stands for the value held, with the digits that are not on show.
    const double held = m_field.model.value();
    if (!m_refused && shows(shownFor(held)))
        return take(held);
    double value = 0;
    if (!parseDouble(m_field.edit->text(), value)) {
        showToast(m_host, QStringLiteral("Invalid numeric value"));
        clearRefusal();
        showValue(m_field.model.value());
        return false;
    }
    return enter(value);
}

bool ValueEntry::enter(double value) {
    clearRefusal();
    double canonical = value;
    if (!normalise(value, canonical)) {
        refuse();
        return false;
    }
    return take(canonical);
}

bool ValueEntry::take(double canonical) {
    const EntryResult result = m_field.model.send(canonical);
    if (result == EntryResult::Refused) {
        refuse();
        return false;
    }
    if (result == EntryResult::Failed)
        showCommandFailure(m_host);
    showValue(m_field.model.value());
    if (result == EntryResult::Taken)
        emit accepted();
    emit settled();
    m_host.UpdateStatusBar();
    return result == EntryResult::Taken;
}

bool ValueEntry::normalise(double value, double& canonical) {
    const ValueLimits limits = m_field.model.limits();
    const double minimum = limits.known() ? limits.minimum : -Unlimited;
    const double maximum = limits.known() ? limits.maximum : Unlimited;
    const QString name = m_field.namedInRange ? m_field.edit->title() : QString();
    MessageSink* toast = m_host.toast();
    switch (m_field.kind) {
    case ValueField::Kind::Frequency:
        return normalizeFreq(m_field.edit, m_field.unit, value, false, m_field.row, minimum, maximum, toast, &canonical,
                             name);
    case ValueField::Kind::Time:
        return normalizeTime(m_field.edit, m_field.unit, value, false, minimum, maximum, toast, &canonical, name);
    default:
        break;
    }
    canonical = m_field.whole ? std::trunc(value) + 0.0 : value; // no count of minus nothing
    if (m_field.whole && canonical < 0 && !limits.known()) {
        showToast(m_host, QStringLiteral("Invalid numeric value"));
        return false;
    }
    if (limits.contains(value) || (!m_field.whole && canonical == m_field.model.value()))
        return true;
    if (m_field.kind == ValueField::Kind::Power)
        normalizePowerRange(toast, minimum, maximum, name);
    else
        showToast(m_host, m_field.rangeText.arg(limitText(minimum, m_field.whole), limitText(maximum, m_field.whole)));
    return false;
}

ShownEntry ValueEntry::shownFor(double canonical) const {
    const int units = m_field.unit ? m_field.unit->count() : 0;
    switch (m_field.kind) {
    case ValueField::Kind::Frequency: {
        // A step downwards has the unit of its size.
        ShownEntry shown = shownFrequency(std::fabs(canonical), units, m_field.row);
        if (canonical < 0)
            shown.text.prepend(QLatin1Char('-'));
        return shown;
    }
    case ValueField::Kind::Time:
        return shownTime(canonical, units);
    case ValueField::Kind::Power:
        return {QString::number(canonical, 'f', m_field.decimals), 0};
    default:
        return {plainText(canonical, m_field.decimals, m_field.mostDecimals), 0};
    }
}

bool ValueEntry::shows(const ShownEntry& shown) const {
    return m_field.edit->text() == shown.text && (!m_field.unit || m_field.unit->currentIndex() == shown.unit);
}

void ValueEntry::showValue(double canonical) {
    const ShownEntry shown = shownFor(canonical);
    if (shows(shown))
        return;
    const QSignalBlocker quietEdit(m_field.edit);
    m_field.edit->setText(shown.text);
    if (m_field.unit) {
        const QSignalBlocker quietUnit(m_field.unit);
        m_field.unit->setCurrentIndex(shown.unit);
    }
}

/// A frequency or a time stays in sight beside its message; any other field shows the value held at once.
void ValueEntry::refuse() {
    if (m_field.kind != ValueField::Kind::Frequency && m_field.kind != ValueField::Kind::Time) {
        showValue(m_field.model.value());
        return;
    }
    m_refused = true;
    applySheet(m_field.edit, m_field.wrongStyle);
}

/// The record may have changed under the open list.
void ValueEntry::onListClosed() {
    restore();
    m_host.refreshFromModule();
}

/// The unit box belongs to the entry while its keyboard or its own list is open.
bool ValueEntry::isEditing() const {
    return m_field.edit->isEditing() || (m_field.unit && m_field.unit->isOpen());
}

void ValueEntry::clearRefusal() {
    m_refused = false;
    applySheet(m_field.edit, m_field.editStyle);
}

void ValueEntry::restore() {
    const ToastOverlay* toast = m_host.toast();
    const bool told = toast && toast->isTelling();
    if (m_refused && !told && !isEditing())
        takeRefusedBack();
}

void ValueEntry::takeRefusedBack() {
    clearRefusal();
    showValue(m_field.model.value());
    if (m_field.restoredDecimals < 0)
        return;
    const double restored = m_field.edit->text().toDouble();
    const QString text = QString::number(restored, 'f', m_field.restoredDecimals);
    const QSignalBlocker quiet(m_field.edit);
    if (text.toDouble() == restored)
        m_field.edit->setText(text);
}

} // namespace Kavor::HandheldGui
