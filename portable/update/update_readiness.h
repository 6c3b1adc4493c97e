#pragma once

#include "common/update/datafw.h"

namespace Kavor::HandheldGui {

class PanelHost;

/// Whether the instrument is in a state to be updated, made so if the user wants that; otherwise the user has been
/// told. No update starts on a battery that may not live to its end, with the RF output of any channel on, or, for an
/// FPGA image, without the records that tell how many boards there are. GUI thread; may open boxes and send commands.
[[nodiscard]] bool isReadyForUpdate(PanelHost& host, PackageType kind);

} // namespace Kavor::HandheldGui
