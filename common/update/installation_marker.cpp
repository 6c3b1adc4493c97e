#include "common/update/installation_marker.h"

#include "platform/durable_file.h"

#include <QFile>
#include <QFileInfo>

namespace {

constexpr qint64 LongestMark = 256;

QString folderOf(const QString& path) {
    return QFileInfo(path).path();
}

} // namespace

bool InstallationMarker::set(const QString& what) const {
    if (!DurableFile::makeFolder(folderOf(m_path)))
        return false;
    DurableFile::sweep(folderOf(m_path));
    return DurableFile::replace(m_path, what.simplified().toUtf8()) == DurableFile::Result::Ok;
}

bool InstallationMarker::clear() const {
    const QFileInfo info(m_path);
    return (!info.exists() && !info.isSymLink()) || (QFile::remove(m_path) && DurableFile::syncFolder(info.path()));
}

QString InstallationMarker::what() const {
    QFile marker(m_path);
    if (!QFileInfo(marker).isFile() || !marker.open(QIODevice::ReadOnly))
        return {};
    const QString what = QString::fromUtf8(marker.read(LongestMark)).simplified();
    return what.isEmpty() ? QStringLiteral("?") : what;
}
