#include "portable/fields/enablebox.h"

#include "common/instrument/handlerscpi.h"
#include "platform/logger.h"
#include "portable/host/panelhost.h"
#include "portable/host/screentexts.h"
#include "portable/widgets/actiongate.h"

#include <QCheckBox>
#include <QSignalBlocker>
#include <QTimer>

namespace Kavor::HandheldGui {

EnableBox::EnableBox(PanelHost& host, QCheckBox* box, unsigned bit, const QString& logPrefix, const QString& logName)
    : QObject(box), m_host(host), m_box(box), m_bit(bit), m_logPrefix(logPrefix), m_logName(logName) {
    connect(box, &QCheckBox::stateChanged, this, &EnableBox::onStateChanged);
    connect(&host, &PanelHost::enablesChanged, this, &EnableBox::setFromConfig);
}

bool EnableBox::isEnabledOnModule() const {
    return (m_host.handler().snapshot().modulationEnable & m_bit) != 0;
}

void EnableBox::setFromConfig() {
    m_box->setEnabled(!m_host.enablesLocked());
    if (m_takesBack || ActionGate::panel().isAsked(m_box))
        return;
    const QSignalBlocker quiet(m_box);
    m_box->setChecked(isEnabledOnModule());
}

void EnableBox::onStateChanged(int state) {
    if (state == Qt::PartiallyChecked) {
        VELDA_LOG("screens", QtInfoMsg, "%s", m_logPrefix + QStringLiteral("Checkbox is Partially Checked!"));
        return;
    }
    const bool on = state == Qt::Checked;
    VELDA_LOG("screens", QtInfoMsg, "%s%sCheckbox is %s!", m_logPrefix, m_logName,
              on ? QStringLiteral("Checked") : QStringLiteral("Unchecked"));
    ActionGate::panel().ask(m_box, [this, on] { on ? switchOn() : switchOff(); });
}

void EnableBox::switchOn() {
    const int conflict = m_host.handler().set_modulation_enable(modEnableBitMask(m_bit), true);
    if (conflict != 0) {
        m_host.reportScpiError(static_cast<int>(m_bit), conflict);
        // Only after the click has been handled, so that the box does not change inside its own signal.
        m_takesBack = true;
        QTimer::singleShot(0, this, [this] {
            m_takesBack = false;
            m_box->setChecked(false);
        });
        return;
    }
    check(true);
}

void EnableBox::switchOff() {
    m_host.handler().set_modulation_enable(modEnableBitMask(m_bit), false);
    check(false);
}

/// The box itself follows the mask with the next look at the record, never inside its own click.
void EnableBox::check(bool wanted) {
    if (isEnabledOnModule() != wanted)
        showCommandFailure(m_host);
}

} // namespace Kavor::HandheldGui
