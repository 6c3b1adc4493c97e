#include "portable/update/update_flows.h"

#include "common/instrument/handlerscpi.h"
#include "common/update/package_drop.h"
#include "common/update/update_texts.h"
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
    boxes.runAside(Checking, [&found, path](const UpdateBoxes::Percent&) { found = QFileInfo(path).isFile(); });
    if (!found)
        boxes.failure(UpdateTexts::packageNotFound(path));
    return found;
}

} // namespace

QString endOfInstallation(const InstallEnd& end, int components) {
    if (end.code != 0)
        return QStringLiteral("failed: %1").arg(end.failure);
    if (end.failedSteps == 0)
        return QStringLiteral("done");
    return QStringLiteral("done, %1 of %2 steps failed: %3").arg(end.failedSteps).arg(components).arg(end.firstFailure);
}

UpdateOutcome doFWUpdate(MANIFEST_DATA* manifest, QWidget* parent, const UpdateSettings& settings) {
    const UpdateBoxes boxes(parent, QStringLiteral("FW Update"), settings.patienceMs);
    if (!packageIsThere(manifest, boxes))
        return {};
    int code = 0;
    UpdateDialog dialog(parent, QStringLiteral("installProgress"),
                        QStringLiteral("Wait until upgrade process finished"));
    dialog.freeStick();
    fwThread installer(manifest, settings.install);
    QObject::connect(&installer, &fwThread::fwUpgraded, &dialog, [&code, &dialog](int result) {
        code = result;
        dialog.end();
    });
    installer.start();
    dialog.run();
    installer.wait();
    const QString end = endOfInstallation(installer.end(), static_cast<int>(manifest->components.size()));
    if (code != 0) {
        boxes.failure(QStringLiteral("Upgrade failed. Error code: %1\n%2").arg(code).arg(installer.end().failure));
        return {false, end, {}};
    }
    const QString version = shortened(manifest->version);
    const InstallEnd& ended = installer.end();
    if (ended.failedSteps == 0)
        return {true, end, QStringLiteral("Firmware %1 installed").arg(version)};
    return {true, end,
            QStringLiteral("Firmware %1: %2 of %3 steps failed: %4")
                .arg(version)
                .arg(ended.failedSteps)
                .arg(manifest->components.size())
                .arg(shortened(ended.firstFailure))};
}

UpdateOutcome doFpgaUpdate(MANIFEST_DATA* manifest, QWidget* parent, EventHandler* handler,
                           const UpdateSettings& settings) {
    const UpdateBoxes boxes(parent, QStringLiteral("FPGA Update"), settings.patienceMs);
    if (!manifest) {
        boxes.failure(QStringLiteral("Upgrade failed to start: no manifest."));
        return {};
    }
    const int channels = static_cast<int>(handler->publishedChannels());
    if (channels == 0) {
        boxes.failure(UpdateTexts::boardsNotKnown());
        return {};
    }
    const FpgaUpdateSettings boards = settings.fpga(channels);
    UpdateOutcome outcome;
    QString message;
    FpgaProgressDialog dialog(parent, boards.boards);
    FpgaUpdateJob job(boards);
    QObject::connect(&job, &FpgaUpdateJob::progress, &dialog, [&dialog](int phase, int percent) {
        const FpgaProgressDialog::Display display = FpgaProgressDialog::displayOf(phase, percent);
        dialog.setInfoText(display.text);
        dialog.setProgress(display.percent);
    });
    QObject::connect(&job, &FpgaUpdateJob::boards, &dialog, &FpgaProgressDialog::setBoards);
    QObject::connect(&job, &FpgaUpdateJob::ended, &dialog, [&](bool ok, const QString& text, const QString& end) {
        outcome.ok = ok;
        outcome.end = end;
        message = text;
        dialog.end();
    });
    ShortWait wait(settings.patienceMs);
    QObject::connect(&job, &FpgaUpdateJob::imageAccepted, &wait, &ShortWait::end);
    QObject::connect(&job, &FpgaUpdateJob::ended, &wait, &ShortWait::end);
    job.start(manifest->package_path);
    wait.run(); // an image that is refused at once needs no progress
    dialog.run();
    if (!outcome.ok) {
        boxes.failure(message);
        return outcome;
    }
    boxes.information(message);
    outcome.line = QStringLiteral("FPGA %1 installed").arg(shortened(manifest->version));
    return outcome;
}

UpdateOutcome doNMXUpdate(MANIFEST_DATA* manifest, QWidget* parent, EventHandler* handler,
                          const UpdateSettings& settings) {
    const UpdateBoxes boxes(parent, QStringLiteral("NMX Update"), settings.patienceMs);
    if (!packageIsThere(manifest, boxes))
        return {};
    const QString package = manifest->package_path;
    const QString folder = DevicePaths::moduleDropFolder();
    const QString target = folder + QFileInfo(package).fileName();
    DropResult result = DropResult::NotCopied;
    boxes.runAside(QStringLiteral("Copying the package..."),
                   [&result, package, folder, target](const UpdateBoxes::Percent&) {
                       result = dropPackage(package, folder, target);
                   });
    QString problem;
    if (result == DropResult::NoFolder) {
        problem = QStringLiteral("Failed to create upgrade folder:\n%1").arg(folder);
    } else if (result == DropResult::NotCopied) {
        problem = QStringLiteral("Failed to copy %1 to %2").arg(package, target);
    } else {
        VELDA_LOG("update", QtInfoMsg, "Copied NMX upgrade package from %s to %s", package, target);
        if (handler->sendGuiSoftUpdate() == 0)
            return {true, QStringLiteral("handed over"),
                    QStringLiteral("NMX module %1 handed over").arg(shortened(manifest->version))};
        problem = QStringLiteral("Failed to start NMX upgrade for %1").arg(target);
    }
    boxes.failure(problem);
    return {false, QStringLiteral("failed: ") + problem.simplified(), {}};
}

} // namespace Kavor::HandheldGui
