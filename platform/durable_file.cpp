#include "platform/durable_file.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStringList>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace {

// No other program makes files of this name: what is swept is the panel's own.
constexpr char Prefix[] = ".velda-unfinished-";

} // namespace

// A file's content on the disk is not yet its folder's entry. File systems that cannot do that for a folder say
// EINVAL.
bool DurableFile::syncFolder(const QString& folder) {
    const int descriptor = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    const bool synced = ::fsync(descriptor) == 0 || errno == EINVAL;
    ::close(descriptor);
    return synced;
}

bool DurableFile::makeFolder(const QString& folder) {
    QStringList changed;
    for (QString path = QDir::cleanPath(QFileInfo(folder).absoluteFilePath()); !QFileInfo::exists(path);
         path = QFileInfo(path).path())
        changed.prepend(QFileInfo(path).path());
    if (!QDir().mkpath(folder))
        return false;
    for (const QString& path : changed) {
        if (!syncFolder(path))
            return false;
    }
    return true;
}

DurableFile::Replacement::Replacement(const QString& path) : m_path(path) {
    const QFileInfo info(path);
    if (info.isSymLink() && info.exists())
        m_path = info.canonicalFilePath();
    setFileTemplate(QFileInfo(m_path).path() + QLatin1Char('/') + QLatin1String(Prefix) + QStringLiteral("XXXXXX"));
}

bool DurableFile::Replacement::begin() {
    const QFileInfo old(m_path);
    if (old.isSymLink() || (old.exists() && !(old.isFile() && old.isWritable())) ||
        QFile::encodeName(old.fileName()).size() > NAME_MAX)
        return false;
    if (!open())
        return false;
    const Permissions usual = ReadOwner | WriteOwner | ReadGroup | ReadOther;
    setPermissions(old.exists() ? old.permissions() : usual); // a medium that knows none may refuse
    return true;
}

bool DurableFile::Replacement::append(const QByteArray& bytes) {
    return write(bytes) == bytes.size();
}

bool DurableFile::Replacement::commit() {
    const QByteArray from = QFile::encodeName(fileName());
    if (!flush() || ::fsync(handle()) != 0 || std::rename(from.constData(), QFile::encodeName(m_path).constData()) != 0)
        return false;
    setAutoRemove(false);
    return syncFolder(QFileInfo(m_path).path());
}

DurableFile::Result DurableFile::replace(const QString& path, const QByteArray& content) {
    Replacement file(path);
    if (!file.begin())
        return Result::CannotOpen;
    return file.append(content) && file.commit() ? Result::Ok : Result::CannotWrite;
}

void DurableFile::sweep(const QString& folder) {
    static const QRegularExpression left(QRegularExpression::anchoredPattern(
        QRegularExpression::escape(QLatin1String(Prefix)) + QStringLiteral("[A-Za-z]{6}")));
    QDir dir(folder);
    const QStringList names =
        dir.entryList({QLatin1String(Prefix) + QLatin1Char('*')}, QDir::Files | QDir::Hidden | QDir::NoSymLinks);
    for (const QString& name : names) {
        if (left.match(name).hasMatch())
            dir.remove(name);
    }
}
