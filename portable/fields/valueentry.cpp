#include "portable/fields/valueentry.h"

#include "common/instrument/handlerscpi.h"
#include "portable/host/panelhost.h"
#include "portable/host/screentexts.h"
#include "portable/widgets/ToastOverlay.h"
#include "portable/widgets/actiongate.h"
#include "portable/widgets/combobox.h"
#include "portable/widgets/entry.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/vklineedit.h"
#include "values/formatting.h"

#include <QSignalBlocker>
#include <cmath>

namespace Kavor::HandheldGui {

namespace {

/// At least the decimals of the field, and more, up to a most, when the value needs them: a field does not show a
/// number that the module does not hold.
QString plainText(double value, int decimals, int mostDecimals) {
    for (int d = decimals; d < mostDecimals; ++d) {
        QString text = fixedNumber(value, d);
        if (qFuzzyCompare(1.0 + text.toDouble(), 1.0 + value))
            return text;
    }
    return fixedNumber(value, qMax(decimals, mostDecimals));
}

QString limitText(double limit, bool whole) {
    return whole ? QString::number(limit, 'f', 0) : QString::number(limit);
}

} // namespace

ValueModel ValueModel::device(EventHandler& handler, DeviceValueId id) {
    return {[&handler, id] { return handler.cachedValue(id); }, [&handler, id] { return handler.cachedLimits(id); },
            [&handler, id](double value) {
                return handler.setDeviceValue(id, value) == 0 ? EntryResult::Taken : EntryResult::Failed;
            },
            [&handler, id](double value) {
                return handler.roundedToWire(id, value);
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
    m_field.edit->setRangeText([this] { return rangeText(); });
    if (m_field.unit)
        m_field.edit->setUnitBox(m_field.unit);
    if (ToastOverlay* toast = host.toast())
        connect(toast, &ToastOverlay::messageEnded, this, &ValueEntry::restore);
    connect(m_field.edit, &ValueEdit::keyboardClosed, this, &ValueEntry::restore);
    // What was refused for one channel is not shown for another.
    connect(&host, &PanelHost::channelChanged, this, [this] {
        if (m_refused)
            takeRefusedBack();
    });
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
    m_field.edit->setMark(calculated ? QStringLiteral("=") : QString());
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
    // What was not changed stands for the value held, with the digits that are not on show. One that no command can
    // carry stays as it is.
    const double held = m_field.model.value();
    if (!m_refused && shows(shownFor(held)))
        return (m_field.model.round && m_field.model.round(held) != held) || take(held);
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
    return enter(value, false);
}

bool ValueEntry::step(double by) {
    return !isEditing() && enter(m_field.model.value() + by, true);
}

bool ValueEntry::enter(double value, bool isCanonical) {
    clearRefusal();
    double canonical = value;
    if (!normalise(value, isCanonical, canonical)) {
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

/// The number that the module would be sent is what is checked. The editor shows the entry first, so that one out of
/// range stays in sight.
bool ValueEntry::normalise(double value, bool isCanonical, double& canonical) {
    switch (m_field.kind) {
    case ValueField::Kind::Frequency:
        canonical = normalizeFreq(m_field.edit, m_field.unit, value, isCanonical, m_field.row);
        break;
    case ValueField::Kind::Time:
        canonical = normalizeTime(m_field.edit, m_field.unit, value, isCanonical);
        break;
    default:
        canonical = m_field.whole ? std::trunc(value) + 0.0 : value; // no count of minus nothing
        break;
    }
    const double sent = m_field.model.round ? m_field.model.round(canonical) : canonical;
    const ValueLimits limits = m_field.model.limits();
    if (m_field.whole && canonical < 0 && !limits.known()) {
        showToast(m_host, QStringLiteral("Invalid numeric value"));
        return false;
    }
    const bool inside = limits.contains(m_field.whole ? value : sent);
    if (inside || (!m_field.whole && canonical == m_field.model.value())) {
        canonical = sent;
        return true;
    }
    if (limits.contains(canonical))
        showValue(sent); // the entry itself would do: what becomes of it does not
    else
        showWhatIsWrong(canonical);
    tellRange(limits);
    return false;
}

void ValueEntry::tellRange(const ValueLimits& limits) {
    const QString name = m_field.namedInRange ? m_field.edit->title() : QString();
    switch (m_field.kind) {
    case ValueField::Kind::Frequency:
        return normalizeFreqRange(m_host.toast(), limits.minimum, limits.maximum, name);
    case ValueField::Kind::Time:
        return normalizeTimeRange(m_host.toast(), limits.minimum, limits.maximum, name);
    case ValueField::Kind::Power:
        return normalizePowerRange(m_host.toast(), limits.minimum, limits.maximum, name);
    default:
        showToast(m_host, m_field.rangeText.arg(limitText(limits.minimum, m_field.whole),
                                                limitText(limits.maximum, m_field.whole)));
    }
}

QString ValueEntry::rangeText() const {
    const ValueLimits limits = m_field.model.limits();
    if (!limits.known())
        return QString();
    const auto text = [this](double limit) {
        switch (m_field.kind) {
        case ValueField::Kind::Frequency:
            return formatFrequency(limit, "Hz");
        case ValueField::Kind::Time:
            return formatTime(limit, "ns");
        case ValueField::Kind::Power:
            return formatNumber(limit, m_field.decimals) + QStringLiteral(" dBm");
        default:
            return plainNumber(limit);
        }
    };
    return QStringLiteral("%1 to %2").arg(text(limits.minimum), text(limits.maximum));
}

/// An entry that is too large by digits that are not on show would look like the limit itself.
void ValueEntry::showWhatIsWrong(double entered) {
    const int index = m_field.unit ? m_field.unit->currentIndex() : 0;
    const double scale = m_field.kind == ValueField::Kind::Frequency ? kScale[static_cast<int>(m_field.row)][index]
                         : m_field.kind == ValueField::Kind::Time    ? timeScales[index]
                                                                     : 1;
    double shown = 0;
    if (!parseDouble(m_field.edit->text(), shown) || !m_field.model.limits().contains(timesPowerOfTen(shown, scale)))
        return;
    const QSignalBlocker quiet(m_field.edit);
    m_field.edit->setText(plainNumber(entered / scale));
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
        return {fixedNumber(canonical, m_field.decimals), 0};
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

/// The unit box belongs to the entry while its keyboard or its own list is open, or what was chosen in it waits.
bool ValueEntry::isEditing() const {
    const ComboBox* unit = m_field.unit;
    return m_field.edit->isEditing() || (unit && (unit->isOpen() || ActionGate::panel().isAsked(unit)));
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
