#include "common/instrument/handlerscpi.h"
#include "platform/logger.h"
#include "portable/host/panelhost.h"
#include "portable/host/screentexts.h"
#include "portable/screens/lan/wdgethernet.h"

#include <algorithm>

// Sending the edits of the LAN page. Nothing is rolled back: what the module took before a failure stays.

namespace Kavor::HandheldGui {

struct ethScreen::StaticStep {
    Field field;
    int (EventHandler::*send)(std::string);
    const char* logged;
    const char* told;
};

void ethScreen::onApplyChangesBnClicked() {
    applyChanges(wantedNow());
}

ethScreen::Wanted ethScreen::wantedNow() const {
    Wanted wanted{{}, isDynamic(), m_pending[Port].has_value(), m_pendingDhcp.has_value()};
    for (const Field field : {Address, Mask, Gateway}) {
        wanted.values[field] = plainAddress(shown(field));
        wanted.othersChanged = wanted.othersChanged || m_pending[field];
    }
    wanted.values[Port] = shown(Port);
    return wanted;
}

void ethScreen::applyChanges(const Wanted& wanted) {
    if (!checkLANConnectivity()) {
        host().reportError(QStringLiteral("LAN cable not connected. You need to connect cable first"));
        return;
    }
    apply(wanted);
    readModule();
    showRows();
}

void ethScreen::apply(const Wanted& wanted) {
    if (wanted.othersChanged) {
        if (!(wanted.dynamic ? applyDynamic() : applyStatic(wanted)))
            return;
        for (const Field field : {Address, Mask, Gateway})
            forgetEdit(field, wanted.values[field]);
        if (m_pendingDhcp == wanted.dynamic)
            m_pendingDhcp.reset();
    }
    if (!wanted.portChanged || applyPort(wanted.values[Port]))
        showToast(host(), QStringLiteral("LAN settings applied"));
}

/// What was entered meanwhile stays an edit.
void ethScreen::forgetEdit(Field field, const QString& applied) {
    if (m_pending[field] == applied)
        m_pending[field].reset();
}

bool ethScreen::applyDynamic() {
    if (handler().setDhcpMode(OnOff::on) == 0)
        return true;
    const QString text = QStringLiteral("Failed to set dynamic configuration");
    fail(text, text);
    return false;
}

bool ethScreen::applyStatic(const Wanted& wanted) {
    static const StaticStep steps[] = {
        {Address, &EventHandler::setIP, "Failed to set ip address %1", "Failed to set static ip %1"},
        {Mask, &EventHandler::setMask, "Failed to set netmask %1", "Failed to set static netmask %1"},
        {Gateway, &EventHandler::setGateway, "Failed to set gateway %1", "Failed to set static gateway %1"},
    };
    if (!IsIpInTheSubnetMask(wanted.values[Address], wanted.values[Mask], wanted.values[Gateway])) {
        showToast(host(), QStringLiteral("The DG and IP is not in the range of the subnet mask"));
        return false;
    }
    const bool areAddresses = std::all_of(std::begin(steps), std::end(steps), [&wanted](const StaticStep& step) {
        return isIPAddress(wanted.values[step.field]);
    });
    const QString problem =
        areAddresses ? configurationProblem(wanted.values[Address], wanted.values[Mask], wanted.values[Gateway])
                     : QString();
    if (!problem.isEmpty()) {
        showToast(host(), problem);
        return false;
    }
    for (const StaticStep& step : steps) {
        const QString& value = wanted.values[step.field];
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
        m_current[step.field] = wanted.values[step.field];
    return true;
}

/// Last, because the service may leave the old port at once.
bool ethScreen::applyPort(const QString& port) {
    const bool taken = handler().setPort(port.toStdString()) == 0;
    if (taken)
        forgetEdit(Port, port);
    else
        showCommandFailure(host());
    return taken;
}

void ethScreen::fail(const QString& logged, const QString& told) {
    VELDA_LOG("lan", QtCriticalMsg, "%s", logged);
    showToast(host(), told);
}

} // namespace Kavor::HandheldGui
