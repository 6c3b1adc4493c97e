#include "platform/devicepaths.h"

#include <QFile>
#include <array>
#include <pwd.h>
#include <unistd.h>

namespace DevicePaths {
namespace {

QString fromEnvironment(const char* variable, const QString& fallback) {
    const QString value = qEnvironmentVariable(variable);
    return value.isEmpty() ? fallback : value;
}

QString withoutEndSlash(QString path) {
    while (path.size() > 1 && path.endsWith('/'))
        path.chop(1);
    return path;
}

QString accountName() {
    QString user = qEnvironmentVariable("USER");
    if (!user.isEmpty())
        return user;
    std::array<char, 4096> buffer{};
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || !found)
        return {};
    return QFile::decodeName(found->pw_name);
}

} // namespace

QString dataRoot() {
    return withoutEndSlash(fromEnvironment("VELDA_HOME", "/home/velda"));
}

QString logFolder() {
    return withoutEndSlash(fromEnvironment("VELDA_LOG_DIR", dataRoot() + "/kavor/log"));
}

QString moduleDropFolder() {
    const QString folder = fromEnvironment("VELDA_MODULE_DROP", dataRoot() + "/kavor/upgrade/veldax/");
    return folder.endsWith('/') ? folder : folder + '/';
}

QString mediaRoot() {
    return withoutEndSlash(fromEnvironment("VELDA_MEDIA", "/media"));
}

QString mediaFolder() {
    return mediaRoot() + '/' + userName();
}

QString userName() {
    return fromEnvironment("VELDA_USER", accountName());
}

QStringList fpgaAddresses() {
    QStringList addresses;
    const QStringList parts =
        fromEnvironment("VELDA_FPGA_ADDRESSES", "192.168.7.1,192.168.8.1,192.168.9.1,192.168.10.1").split(',');
    for (const QString& part : parts) {
        if (!part.trimmed().isEmpty())
            addresses << part.trimmed();
    }
    return addresses;
}

QString updateTrustFolder() {
    return withoutEndSlash(fromEnvironment("VELDA_UPDATE_TRUST", "/etc/velda/update"));
}

QString netClassFolder() {
    return withoutEndSlash(fromEnvironment("VELDA_NET_CLASS", "/sys/class/net"));
}

} // namespace DevicePaths
