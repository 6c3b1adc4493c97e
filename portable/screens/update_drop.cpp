#include "portable/screens/update_drop.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>

namespace Kavor::HandheldGui {

namespace {
constexpr qint64 Piece = 256 * 1024;
}

DropResult dropPackage(const QString& package, const QString& folder, const QString& target) {
    if (!QDir().mkpath(folder))
        return DropResult::NoFolder;
    QFile from(package);
    QSaveFile to(target);
    if (!from.open(QIODevice::ReadOnly | QIODevice::Unbuffered) || !to.open(QIODevice::WriteOnly))
        return DropResult::NotCopied;
    for (;;) {
        const QByteArray piece = from.read(Piece);
        if (piece.isEmpty())
            break;
        if (to.write(piece) != piece.size())
            return DropResult::NotCopied;
    }
    // A stick that was pulled reads as an end with an error.
    const bool whole = from.error() == QFileDevice::NoError;
    return whole && to.commit() ? DropResult::Copied : DropResult::NotCopied;
}

} // namespace Kavor::HandheldGui
