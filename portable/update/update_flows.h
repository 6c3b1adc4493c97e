#pragma once

#include "common/update/fpga_update_job.h"
#include "common/update/package_installer.h"
#include "common/update/package_look.h"

#include <functional>

class EventHandler;
class QWidget;

namespace Kavor::HandheldGui {

struct UpdateSettings {
    InstallSettings install;

    /// How the boards of that many channels are reached.
    std::function<FpgaUpdateSettings(int channels)> fpga = FpgaUpdateSettings::forChannels;

    PackageLook look = packagesBelow;

    int patienceMs = 400; ///< what takes longer shows a dialog
};

// The installations of the three kinds of packages. Each returns when it has ended and the user has been told of a
// failure, with a line on what was done, empty where the user has been told all in a box; nothing is repeated. The
// manifest may be null and must stay as it is meanwhile. All that reads a medium or runs a program does so on another
// thread. GUI thread.

/// Unpacks a software package and carries out its components; the last of them usually reboots the instrument. The line
/// also tells of steps that failed although the installation went on.
QString doFWUpdate(MANIFEST_DATA* manifest, QWidget* parent, const UpdateSettings& settings = {});

/// Sends an image to the board of every channel and waits until all have burnt it; success is told. The
/// number of boards is that of the records which the module publishes: without any nothing is sent.
QString doFpgaUpdate(MANIFEST_DATA* manifest, QWidget* parent, EventHandler* handler,
                     const UpdateSettings& settings = {});

/// Lays the package down where the RF module finds it, in place of one of that name, and asks the module to update
/// itself; the instrument reboots then.
QString doNMXUpdate(MANIFEST_DATA* manifest, QWidget* parent, EventHandler* handler,
                    const UpdateSettings& settings = {});

} // namespace Kavor::HandheldGui
