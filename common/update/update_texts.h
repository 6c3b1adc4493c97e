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

inline QString fpgaDoneBriefly(int boards) {
    return boards == 1 ? QStringLiteral("done") : QStringLiteral("done, %1 boards").arg(boards);
}

/// Of the boards that did not answer to the end, if it was for them.
inline QString noAnswer(const QStringList& silent) {
    return silent.isEmpty() ? QStringLiteral("failed")
                            : QStringLiteral("No answer from %1").arg(silent.join(QStringLiteral(", ")));
}

/// step: what was under way; may be empty.
inline QString fpgaFailed(const QStringList& silent = {}, const QString& step = {}) {
    QString failed = QStringLiteral("FPGA update failed (timeout/communication error).");
    if (!silent.isEmpty())
        failed += '\n' + noAnswer(silent);
    return step.isEmpty() ? failed : failed + '\n' + step;
}

inline QString boardsNotKnown() {
    return QStringLiteral("The number of FPGA boards is not known: the RF module publishes nothing.");
}

/// Of a software or module package.
inline QString packageNotFound(const QString& path) {
    return QStringLiteral("Upgrade package not found:\n%1").arg(path);
}

} // namespace UpdateTexts
