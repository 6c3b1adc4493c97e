#pragma once

#include "sim/options.h"

namespace Sim {

/// The record of one channel as the module leaves the factory: a generator of 9 Hz to 6 GHz and -60 to +20 dBm with
/// every published limit filled in. The port is left empty.
ChannelRecord factoryRecord(unsigned channel, const Options& options);

/// Copies what a reset, a recall and a stored configuration are about: everything from the RF output to the sweep
/// directions. Identity, battery, network and the connected flag stay.
void copySettings(const ChannelRecord& from, ChannelRecord& to);

/// Shows the battery in a record, rounded to whole percent and mA.
void setBattery(const BatteryPoint& battery, ChannelRecord& record);

/// Copies a text into a record field, cut to the field and closed by a NUL.
void setRecordText(char (&field)[32], const std::string& text);

} // namespace Sim
