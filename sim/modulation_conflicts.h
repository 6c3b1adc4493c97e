#pragma once

#include "common/wire/channel_record.h"

namespace Sim {

/// Bits of the modulations, as in the enable mask.
enum ModulationBit : unsigned {
    AmBit = 0x01,
    FmBit = 0x02,
    PmBit = 0x04,
    FrequencySweepBit = 0x08,
    PowerSweepBit = 0x10,
    PulseBit = 0x20,
    ListBit = 0x40,
    PatternBit = 0x80,
    AllModulations = 0xFF
};

/// The modulations whose state word is on.
unsigned runningModulations(const ChannelRecord& record);

/// Those of the given modulations that the hardware cannot run together with `bit`.
unsigned conflictsWith(unsigned bit, unsigned modulations);

/// Clears every state word.
void stopModulations(ChannelRecord& record);

} // namespace Sim
