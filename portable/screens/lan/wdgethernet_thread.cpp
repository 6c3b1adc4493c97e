#include "portable/screens/lan/wdgethernet_thread.h"

#include <QHostInfo>
#include <QNetworkInterface>

namespace Kavor::HandheldGui {

namespace {

NetworkFacts readSystem() {
    NetworkFacts facts;
    facts.hostName = QHostInfo::localHostName();
    for (const QNetworkInterface& interface : QNetworkInterface::allInterfaces()) {
        NetworkFacts::Interface found;
        found.loopback = interface.flags().testFlag(QNetworkInterface::IsLoopBack);
        found.hardwareAddress = interface.hardwareAddress();
        for (const QNetworkAddressEntry& entry : interface.addressEntries()) {
            if (entry.ip().protocol() == QAbstractSocket::IPv4Protocol)
                found.addresses.push_back({entry.ip().toString(), entry.netmask().toString()});
        }
        facts.interfaces.push_back(found);
    }
    return facts;
}

} // namespace

dhcpThread::dhcpThread(const std::function<NetworkFacts()>& read) : m_read(read ? read : readSystem) {
    qRegisterMetaType<NetworkFacts>();
}

dhcpThread::~dhcpThread() {
    wait();
}

void dhcpThread::lookUp() {
    if (!isRunning())
        start(QThread::LowPriority);
}

const NetworkFacts::Interface* dhcpThread::shownInterface(const NetworkFacts& facts) {
    const NetworkFacts::Interface* first = nullptr;
    for (const NetworkFacts::Interface& candidate : facts.interfaces) {
        if (candidate.loopback)
            continue;
        if (!candidate.addresses.empty())
            return &candidate;
        if (!first)
            first = &candidate;
    }
    return first;
}

void dhcpThread::run() {
    const NetworkFacts facts = m_read();
    emit factsRead(facts);
    const NetworkFacts::Interface* shown = shownInterface(facts);
    emit ipSet(shown && !shown->addresses.empty() ? 0 : -1);
}

} // namespace Kavor::HandheldGui
