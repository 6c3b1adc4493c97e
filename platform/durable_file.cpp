#include "platform/durable_file.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>
#include <QStringList>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <unistd.h>

// QSaveFile puts the content on the disk, not the folder's entry. File systems that cannot do that for a folder say
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

DurableFile::Result DurableFile::replace(const QString& path, const QByteArray& content) {
    // A name that is too long together with QSaveFile's ending shows at the end only.
    constexpr int EndingSize = 7;
    if (QFile::encodeName(QFileInfo(path).fileName()).size() + EndingSize > NAME_MAX)
        return Result::CannotOpen;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return Result::CannotOpen;
    // Flushed on its own: commit() does so as well, but takes a flush that wrote a part for a success.
    if (file.write(content) != content.size() || !file.flush() || !file.commit())
        return Result::CannotWrite;
    return syncFolder(QFileInfo(path).path()) ? Result::Ok : Result::CannotWrite;
}

void DurableFile::sweep(const QString& folder, const QString& suffix) {
    const QRegularExpression left(QRegularExpression::escape(suffix) + QStringLiteral("\\.(?!backup)[A-Za-z]{6}\\z"),
                                  QRegularExpression::CaseInsensitiveOption);
    QDir dir(folder);
    const QStringList names = dir.entryList({QLatin1Char('*') + suffix + QStringLiteral(".??????")},
                                            QDir::Files | QDir::Hidden | QDir::NoSymLinks);
    for (const QString& name : names) {
        if (left.match(name).hasMatch())
            dir.remove(name);
    }
}
