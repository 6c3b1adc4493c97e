#include "platform/devicepaths.h"
#include "portable/screens/lan/wdgethernet.h"

#include <QDir>
#include <QFile>
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
    return std::any_of(interfaces.begin(), interfaces.end(), [&folder](const QString& interface) {
        // The file of an interface that is down cannot be read, which reads as no cable.
        QFile carrier(folder.filePath(QStringLiteral("%1/carrier").arg(interface)));
        return carrier.open(QIODevice::ReadOnly) && carrier.readAll().trimmed() == "1";
    });
}

} // namespace Kavor::HandheldGui
