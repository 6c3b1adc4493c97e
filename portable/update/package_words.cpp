#include "portable/update/package_words.h"

#include <QCoreApplication>

namespace Kavor::HandheldGui {

QString kindName(PackageType kind) {
    switch (kind) {
    case PackageType::Software:
        return QStringLiteral("Instrument software");
    case PackageType::Fpga:
        return QStringLiteral("FPGA image");
    case PackageType::Module:
        return QStringLiteral("RF module");
    case PackageType::Unknown:
        break;
    }
    return QStringLiteral("Unknown kind");
}

QString sealWord(Seal seal) {
    switch (seal) {
    case Seal::Signed:
        return QStringLiteral("Signed");
    case Seal::Broken:
        return QStringLiteral("Broken");
    case Seal::NotChecked:
        return QStringLiteral("Not checked");
    case Seal::Unsigned:
        break;
    }
    return QStringLiteral("Unsigned");
}

QString installedVersion(const UpdateMemory& memory, PackageType kind) {
    const QString version = memory.installedVersion(kind);
    return version.isEmpty() && kind == PackageType::Software ? QCoreApplication::applicationVersion() : version;
}

} // namespace Kavor::HandheldGui
