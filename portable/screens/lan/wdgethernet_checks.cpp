#include "platform/devicepaths.h"
#include "portable/screens/lan/wdgethernet.h"

#include <QDir>
#include <algorithm>

// What the LAN page checks before it sends anything.

namespace Kavor::HandheldGui {

namespace {

constexpr int AddressParts = 4;
constexpr int HighestPart = 255;

/// The four parts side by side, eight bits each.
quint64 bitsOf(const QString& address) {
    quint64 bits = 0;
    for (const std::string& part : ethScreen::split2(address.toStdString(), '.'))
        bits = (bits << 8) | (QString::fromStdString(part).toUInt() & 0xFFU);
    return bits;
}

} // namespace

QStringList ethScreen::split(const QString& text, QChar delimiter) {
    return text.split(delimiter, Qt::KeepEmptyParts);
}

std::vector<std::string> ethScreen::split2(const std::string& text, char delimiter) {
    std::vector<std::string> parts;
    for (const QString& part : split(QString::fromStdString(text), QLatin1Char(delimiter)))
        parts.push_back(part.toStdString());
    return parts;
}

bool ethScreen::isIPAddress(const QString& text) {
    const auto isPart = [](const QString& part) {
        const bool digits = std::all_of(part.begin(), part.end(), [](QChar c) { return c >= '0' && c <= '9'; });
        bool fits = part.isEmpty();
        return digits && (fits || part.toUInt(&fits) <= HighestPart) && fits;
    };
    const QStringList parts = split(text, QLatin1Char('.'));
    return parts.size() == AddressParts && std::all_of(parts.begin(), parts.end(), isPart);
}

bool ethScreen::IsIpInTheSubnetMask(const QString& address, const QString& mask, const QString& gateway) {
    const quint64 free = ~bitsOf(mask);
    return (free | bitsOf(address)) == (free | bitsOf(gateway));
}

bool ethScreen::checkLANConnectivity() {
    const QDir folder(DevicePaths::netClassFolder());
    const QStringList interfaces = folder.entryList({QStringLiteral("eth*")}, QDir::Dirs | QDir::NoDotAndDotDot);
    return std::any_of(interfaces.begin(), interfaces.end(), dhcpThread::hasCarrier);
}

QString ethScreen::plainAddress(const QString& text) {
    QStringList parts = split(text, QLatin1Char('.'));
    for (QString& part : parts)
        part = QString::number(part.toUInt());
    return isIPAddress(text) ? parts.join(QLatin1Char('.')) : text;
}

QString ethScreen::configurationProblem(const QString& address, const QString& mask, const QString& gateway) {
    const auto own = static_cast<quint32>(bitsOf(address));
    const auto free = ~static_cast<quint32>(bitsOf(mask));
    const unsigned first = own >> 24;
    constexpr unsigned Loopback = 127;
    constexpr unsigned Multicast = 224;
    if (first == 0 || first == Loopback || first >= Multicast)
        return QStringLiteral("%1 cannot be the address of a device").arg(address);
    if ((free & (free + 1)) != 0)
        return QStringLiteral("The subnet mask %1 has holes").arg(mask);
    for (const QString& text : {address, gateway}) {
        const auto host = static_cast<quint32>(bitsOf(text)) & free;
        // A net of two addresses, or of one, has neither; one of all addresses takes any gateway.
        const bool hasEnds = free > 1 && (text == address || ~free != 0);
        if (hasEnds && (host == 0 || host == free))
            return QStringLiteral("%1 is the %2 address of the subnet").arg(text, host == 0 ? "network" : "broadcast");
    }
    if (bitsOf(gateway) == own)
        return QStringLiteral("The gateway %1 is the address itself").arg(gateway);
    return QString();
}

} // namespace Kavor::HandheldGui
