#pragma once

#include <QString>
#include <vector>

class EventHandler;

namespace Kavor::HandheldGui {

class PanelHost;

/// Channels of the region, by their indexes on the wire: channel n of the panel is index n - 1. GUI thread.
using Channels = std::vector<unsigned>;

/// Those whose RF output is on, by a fresh look at every record.
Channels radiatingChannels(EventHandler& handler);

/// Switches the RF output, and what modulates it, off on each. The former channel is the current one again afterwards.
/// Returns those that still radiate or could not be reached.
Channels switchOff(PanelHost& host, const Channels& channels);

/// "1, 3".
QString channelNumbers(const Channels& channels);

} // namespace Kavor::HandheldGui
