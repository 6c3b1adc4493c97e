#include "common/update/update_memory.h"

#include "platform/durable_file.h"
#include "platform/logger.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <algorithm>

namespace {

constexpr qint64 LargestFile = 64 * 1024;
constexpr int LongestText = 500; ///< a manifest may hold a text of any length

const QString VersionKey = QStringLiteral("version");
const QString OkKey = QStringLiteral("ok");
const QString EndKey = QStringLiteral("end");
const QString InstalledKey = QStringLiteral("installed");
const QString ReleaseKey = QStringLiteral("release");
const QString PolicyKey = QStringLiteral("policy");

QString keyOf(PackageType kind) {
    switch (kind) {
    case PackageType::Software:
        return QStringLiteral("software");
    case PackageType::Fpga:
        return QStringLiteral("fpga");
    case PackageType::Module:
        return QStringLiteral("module");
    case PackageType::Unknown:
        break;
    }
    return {};
}

} // namespace

QJsonObject UpdateMemory::read() const {
    QFile file(m_path);
    if (!QFileInfo(m_path).isFile() || !file.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(file.read(LargestFile)).object();
}

bool UpdateMemory::write(const QJsonObject& all) const {
    const bool ok = DurableFile::makeFolder(QFileInfo(m_path).path()) &&
                    DurableFile::replace(m_path, QJsonDocument(all).toJson()) == DurableFile::Result::Ok;
    if (!ok)
        VELDA_LOG("update", QtInfoMsg, "%s cannot be written", m_path);
    return ok;
}

UpdateMemory::Last UpdateMemory::last(PackageType kind) const {
    const QJsonObject found = read().value(keyOf(kind)).toObject();
    return {found.value(VersionKey).toString(), found.value(OkKey).toBool(), found.value(EndKey).toString()};
}

QString UpdateMemory::installedVersion(PackageType kind) const {
    return read().value(keyOf(kind)).toObject().value(InstalledKey).toString();
}

int UpdateMemory::installedRelease(PackageType kind) const {
    return std::max(read().value(keyOf(kind)).toObject().value(ReleaseKey).toInt(), 0);
}

bool UpdateMemory::note(const MANIFEST_DATA& package, bool ok, const QString& end) const {
    QJsonObject all = read();
    const QString key = keyOf(packageType(package.name));
    QJsonObject entry = all.value(key).toObject();
    const QString version = package.version.left(LongestText);
    entry.insert(VersionKey, version);
    entry.insert(OkKey, ok);
    entry.insert(EndKey, end.left(LongestText));
    if (ok) {
        entry.insert(InstalledKey, version);
        if (package.seal == Seal::Signed)
            entry.insert(ReleaseKey, package.release);
    }
    all.insert(key, entry);
    return write(all);
}

UpdatePolicy UpdateMemory::remembered() const {
    const int weakest = static_cast<int>(UpdatePolicy::AllowUnsigned);
    return static_cast<UpdatePolicy>(
        std::clamp(read().value(PolicyKey).toInt(weakest), weakest, static_cast<int>(UpdatePolicy::Require)));
}

UpdatePolicy UpdateMemory::policyInForce(const Trust& trust) const {
    return trust.isStated ? trust.policy : remembered();
}

bool UpdateMemory::remember(const Trust& trust) const {
    if (!trust.isStated || trust.policy == remembered())
        return true;
    QJsonObject all = read();
    all.insert(PolicyKey, static_cast<int>(trust.policy));
    return write(all);
}

QString UpdateMemory::notWritten() const {
    return QStringLiteral("%1 cannot be written:\nthe instrument does not remember its updates and their policy.")
        .arg(m_path);
}
