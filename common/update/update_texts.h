#pragma once

#include <QString>
#include <QStringList>

/// What the user reads when an update ends.
namespace UpdateTexts {

inline QString cannotOpenImage(const QString& path) {
    return QStringLiteral("Cannot open FPGA image:\n%1").arg(path);
}

inline QString imageRefused() {
    return QStringLiteral("FPGA image authentication failed.\n\nThe image may be corrupted, unsigned,\n"
                          "or not intended for this device.");
}

inline QString fpgaDone() {
    return QStringLiteral("FPGA update completed.\nPlease power OFF/ON the device.");
}

/// silent: the boards that did not answer to the end.
inline QString fpgaFailed(const QStringList& silent = {}) {
    const QString failed = QStringLiteral("FPGA update failed (timeout/communication error).");
    return silent.isEmpty() ? failed : failed + QStringLiteral("\nNo answer from ") + silent.join(QStringLiteral(", "));
}

} // namespace UpdateTexts
