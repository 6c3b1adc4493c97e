#include "portable/screens/lan/wdgethernet_thread.h"

#include "platform/devicepaths.h"

#include <QFile>
#include <QHostAddress>
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
        found.name = interface.name();
        found.carrier = dhcpThread::hasCarrier(found.name);
        for (const QNetworkAddressEntry& entry : interface.addressEntries()) {
            if (entry.ip().protocol() == QAbstractSocket::IPv4Protocol)
                found.addresses.push_back({entry.ip().toString(), entry.netmask().toString()});
        }
        facts.interfaces.push_back(found);
    }
    return facts;
}

bool isInternal(const NetworkFacts::Address& address) {
    const QHostAddress host(address.ipv4);
    const quint32 network = host.toIPv4Address() >> 8;
    constexpr quint32 FirstBoards = 192U << 16 | 168U << 8 | 7U;
    constexpr quint32 LastBoards = FirstBoards + 3;
    return host.isNull() || host.isLoopback() || (FirstBoards <= network && network <= LastBoards);
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

// The file of an interface that is down cannot be read, which reads as no cable.
bool dhcpThread::hasCarrier(const QString& interface) {
    QFile carrier(DevicePaths::netClassFolder() + QStringLiteral("/%1/carrier").arg(interface));
    return carrier.open(QIODevice::ReadOnly) && carrier.readAll().trimmed() == "1";
}

dhcpThread::Own dhcpThread::ownPart(const NetworkFacts& facts, const QString& published) {
    Own byCable;
    for (const NetworkFacts::Interface& candidate : facts.interfaces) {
        if (candidate.loopback)
            continue;
        const NetworkFacts::Address* first = nullptr;
        bool leadsToBoards = false;
        for (const NetworkFacts::Address& address : candidate.addresses) {
            leadsToBoards = leadsToBoards || isInternal(address);
            if (isInternal(address))
                continue;
            if (address.ipv4 == published)
                return {&candidate, &address};
            if (!first)
                first = &address;
        }
        const bool isPort = candidate.carrier && candidate.name.startsWith(QLatin1String("eth"));
        if (isPort && !byCable.interface && (first || !leadsToBoards))
            byCable = {&candidate, first};
    }
    return byCable;
}

void dhcpThread::run() {
    const NetworkFacts facts = m_read();
    emit factsRead(facts);
    emit ipSet(ownPart(facts, QString()).address ? 0 : -1);
}

} // namespace Kavor::HandheldGui
