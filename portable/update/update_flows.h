#pragma once

#include "common/update/fpga_update_job.h"
#include "common/update/package_installer.h"
#include "common/update/package_look.h"
#include "common/update/update_memory.h"

#include <functional>

class EventHandler;
class QWidget;

namespace Kavor::HandheldGui {

struct UpdateSettings {
    InstallSettings install;

    /// How the boards of that many channels are reached.
    std::function<FpgaUpdateSettings(int channels)> fpga = FpgaUpdateSettings::forChannels;

    PackageLook look = packagesBelow;
    int watchMs = 1000; ///< between two glances at whether media came or went, while the list is shown

    TrustSettings trust;
    UpdateMemory memory = UpdateMemory();
    QString stagingParent = CVeldaPath("/kavor/upgrade").get_path(); ///< where packages are copied to

    int patienceMs = 400; ///< what takes longer shows a dialog
};

/// How an installation has ended.
struct UpdateOutcome {
    bool ok = false;
    QString end = QStringLiteral("not begun"); ///< in a few words, for the package page
    QString line;                              ///< for a toast; empty where the user has been told all in a box
};

// The installations of the three kinds of packages. Each returns when it has ended and the user has been told of a
// failure; nothing is repeated. The manifest may be null and must stay as it is meanwhile. All that reads a medium or
// runs a program does so on another thread. GUI thread.

/// Unpacks a software package and carries out its components; the last of them usually reboots the instrument. The line
/// also tells of steps that failed although the installation went on.
UpdateOutcome doFWUpdate(MANIFEST_DATA* manifest, QWidget* parent, const UpdateSettings& settings = UpdateSettings());

/// Sends an image to the board of every channel and waits until all have burnt it; success is told. The
/// number of boards is that of the records which the module publishes: without any nothing is sent.
UpdateOutcome doFpgaUpdate(MANIFEST_DATA* manifest, QWidget* parent, EventHandler* handler,
                           const UpdateSettings& settings = UpdateSettings());

/// Lays the package down where the RF module finds it, in place of one of that name, and asks the module to update
/// itself; the instrument reboots then.
UpdateOutcome doNMXUpdate(MANIFEST_DATA* manifest, QWidget* parent, EventHandler* handler,
                          const UpdateSettings& settings = UpdateSettings());

/// How a software installation has ended, in a few words.
QString endOfInstallation(const InstallEnd& end, int components);

} // namespace Kavor::HandheldGui
