#include "common/instrument/handlerscpi.h"
#include "platform/logger.h"
#include "portable/host/panelhost.h"
#include "portable/host/screentexts.h"
#include "portable/screens/lan/wdgethernet.h"

#include <QPushButton>

// Sending the edits of the LAN page. Nothing is rolled back: what the module took before a failure stays.

namespace Kavor::HandheldGui {

struct ethScreen::StaticStep {
    Field field;
    int (EventHandler::*send)(std::string);
    const char* logged;
    const char* told;
};

void ethScreen::onApplyChangesBnClicked() {
    if (!m_page->isEnabled())
        return;
    if (!checkLANConnectivity()) {
        host().reportError(QStringLiteral("LAN cable not connected. You need to connect cable first"));
        return;
    }
    // The edits stay as they are until the module has answered.
    m_page->setEnabled(false);
    apply();
    m_page->setEnabled(true);
    readModule();
    showRows();
}

void ethScreen::apply() {
    if (isDynamic() ? applyDynamic() : applyStatic()) {
        dropEdits(false);
        applyPort();
    }
}

bool ethScreen::applyDynamic() {
    if (handler().setDhcpMode(OnOff::on) == 0)
        return true;
    const QString text = QStringLiteral("Failed to set dynamic configuration");
    fail(text, text);
    return false;
}

bool ethScreen::applyStatic() {
    static const StaticStep steps[] = {
        {Address, &EventHandler::setIP, "Failed to set ip address %1", "Failed to set static ip %1"},
        {Mask, &EventHandler::setMask, "Failed to set netmask %1", "Failed to set static netmask %1"},
        {Gateway, &EventHandler::setGateway, "Failed to set gateway %1", "Failed to set static gateway %1"},
    };
    if (!IsIpInTheSubnetMask(shown(Address), shown(Mask), shown(Gateway))) {
        showToast(host(), QStringLiteral("The DG and IP is not in the range of the subnet mask"));
        return false;
    }
    for (const StaticStep& step : steps) {
        const QString value = shown(step.field);
        // What the module or the system said may be no address; the module is not asked to take that.
        if (!isIPAddress(value) || (handler().*step.send)(value.toStdString()) != 0) {
            fail(QString::fromLatin1(step.logged).arg(value), QString::fromLatin1(step.told).arg(value));
            return false;
        }
    }
    if (handler().setDhcpMode(OnOff::off) != 0) {
        const QString text = QStringLiteral("Failed to set static configuration");
        fail(text, text);
        return false;
    }
    for (const StaticStep& step : steps)
        m_current[step.field] = shown(step.field);
    return true;
}

/// Last, because the service may leave the old port at once.
void ethScreen::applyPort() {
    if (!m_pending[Port])
        return;
    if (handler().setPort(m_pending[Port]->toStdString()) == 0)
        m_pending[Port].reset();
    else
        showCommandFailure(host());
}

void ethScreen::fail(const QString& logged, const QString& told) {
    VELDA_LOG("lan", QtCriticalMsg, "%s", logged);
    showToast(host(), told);
}

} // namespace Kavor::HandheldGui
