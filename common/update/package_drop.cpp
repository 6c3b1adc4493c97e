#include "common/update/package_drop.h"

#include "platform/durable_file.h"

#include <QFile>

namespace Kavor::HandheldGui {

namespace {
constexpr qint64 Piece = qint64{256} * 1024;
}

DropResult dropPackage(const QString& package, const QString& folder, const QString& target) {
    if (!DurableFile::makeFolder(folder))
        return DropResult::NoFolder;
    DurableFile::sweep(folder);
    QFile from(package);
    DurableFile::Replacement to(target);
    if (!from.open(QIODevice::ReadOnly | QIODevice::Unbuffered) || !to.begin())
        return DropResult::NotCopied;
    const qint64 size = from.size();
    qint64 copied = 0;
    for (QByteArray piece = from.read(Piece); !piece.isEmpty(); piece = from.read(Piece)) {
        if (!to.append(piece))
            return DropResult::NotCopied;
        copied += piece.size();
    }
    // A stick that was pulled reads as an end with an error, or as a file that ends too early.
    const bool whole = from.error() == QFileDevice::NoError && copied == size;
    return whole && to.commit() ? DropResult::Copied : DropResult::NotCopied;
}

} // namespace Kavor::HandheldGui
