#include "portable/update/update_flows.h"

#include "common/instrument/handlerscpi.h"
#include "common/update/package_drop.h"
#include "platform/devicepaths.h"
#include "platform/logger.h"
#include "portable/host/screentexts.h"
#include "portable/update/update_boxes.h"
#include "portable/update/update_dialog.h"

#include <QFileInfo>

namespace Kavor::HandheldGui {

namespace {

const QString Checking = QStringLiteral("Checking the package...");

/// Whether the flow can begin; otherwise the user has been told.
bool packageIsThere(const MANIFEST_DATA* manifest, const UpdateBoxes& boxes) {
    if (!manifest) {
        boxes.failure(QStringLiteral("Upgrade failed to start: no manifest."));
        return false;
    }
    const QString path = manifest->package_path;
    VELDA_LOG("update", QtInfoMsg, "package path:: %s", path);
    bool found = false;
    boxes.runAside(Checking, [&found, path] { found = QFileInfo(path).isFile(); });
    if (!found)
        boxes.failure(QStringLiteral("Upgrade package not found:\n%1").arg(path));
    return found;
}

} // namespace

QString doFWUpdate(MANIFEST_DATA* manifest, QWidget* parent, const UpdateSettings& settings) {
    const UpdateBoxes boxes(parent, QStringLiteral("FW Update"), settings.patienceMs);
    if (!packageIsThere(manifest, boxes))
        return {};
    int code = 0;
    UpdateDialog dialog(parent, QStringLiteral("installProgress"),
                        QStringLiteral("Wait until upgrade process finished"));
    fwThread installer(manifest, settings.install);
    QObject::connect(&installer, &fwThread::fwUpgraded, &dialog, [&code, &dialog](int result) {
        code = result;
        dialog.end();
    });
    installer.start();
    dialog.run();
    installer.wait();
    if (code != 0) {
        boxes.failure(QStringLiteral("Upgrade failed. Error code: %1").arg(code));
        return {};
    }
    const QString version = shortened(manifest->version);
    if (installer.failedSteps() == 0)
        return QStringLiteral("Firmware %1 installed").arg(version);
    return QStringLiteral("Firmware %1: %2 of %3 steps failed: %4")
        .arg(version)
        .arg(installer.failedSteps())
        .arg(manifest->components.size())
        .arg(shortened(installer.firstFailure()));
}

QString doFpgaUpdate(MANIFEST_DATA* manifest, QWidget* parent, EventHandler* handler, const UpdateSettings& settings) {
    const UpdateBoxes boxes(parent, QStringLiteral("FPGA Update"), settings.patienceMs);
    if (!manifest) {
        boxes.failure(QStringLiteral("Upgrade failed to start: no manifest."));
        return {};
    }
    const int boards = static_cast<int>(handler->publishedChannels());
    if (boards == 0) {
        boxes.failure(QStringLiteral("The number of FPGA boards is not known: the RF module publishes nothing."));
        return {};
    }
    bool done = false;
    QString message;
    FpgaProgressDialog dialog(parent);
    FpgaUpdateJob job(settings.fpga(boards));
    QObject::connect(&job, &FpgaUpdateJob::progress, &dialog, [&dialog](int phase, int percent) {
        const FpgaProgressDialog::Display display = FpgaProgressDialog::displayOf(phase, percent);
        dialog.setInfoText(display.text);
        dialog.setProgress(display.percent);
    });
    QObject::connect(&job, &FpgaUpdateJob::ended, &dialog, [&](bool ok, const QString& text) {
        done = ok;
        message = text;
        dialog.end();
    });
    ShortWait wait(settings.patienceMs);
    QObject::connect(&job, &FpgaUpdateJob::imageAccepted, &wait, &ShortWait::end);
    QObject::connect(&job, &FpgaUpdateJob::ended, &wait, &ShortWait::end);
    job.start(manifest->package_path);
    wait.run(); // an image that is refused at once needs no progress
    dialog.run();
    if (done)
        boxes.information(message);
    else
        boxes.failure(message);
    return done ? QStringLiteral("FPGA %1 installed").arg(shortened(manifest->version)) : QString();
}

QString doNMXUpdate(MANIFEST_DATA* manifest, QWidget* parent, EventHandler* handler, const UpdateSettings& settings) {
    const UpdateBoxes boxes(parent, QStringLiteral("NMX Update"), settings.patienceMs);
    if (!packageIsThere(manifest, boxes))
        return {};
    const QString package = manifest->package_path;
    const QString folder = DevicePaths::moduleDropFolder();
    const QString target = folder + QFileInfo(package).fileName();
    DropResult result = DropResult::NotCopied;
    boxes.runAside(QStringLiteral("Copying the package..."),
                   [&result, package, folder, target] { result = dropPackage(package, folder, target); });
    if (result == DropResult::NoFolder) {
        boxes.failure(QStringLiteral("Failed to create upgrade folder:\n%1").arg(folder));
    } else if (result == DropResult::NotCopied) {
        boxes.failure(QStringLiteral("Failed to copy %1 to %2").arg(package, target));
    } else {
        VELDA_LOG("update", QtInfoMsg, "Copied NMX upgrade package from %s to %s", package, target);
        if (handler->sendGuiSoftUpdate() == 0)
            return QStringLiteral("NMX module %1 handed over").arg(shortened(manifest->version));
        boxes.failure(QStringLiteral("Failed to start NMX upgrade for %1").arg(target));
    }
    return {};
}

} // namespace Kavor::HandheldGui
