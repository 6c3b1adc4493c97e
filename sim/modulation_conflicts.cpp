#include "sim/modulation_conflicts.h"

#include <array>

namespace Sim {
namespace {

struct Modulation {
    unsigned bit;
    std::uint32_t ChannelRecord::*state;
    unsigned excludes;
};

// Only one source can drive the amplitude, one the phase, and one the sequencer that steps through points.
constexpr unsigned Sequenced = FrequencySweepBit | PowerSweepBit | PulseBit | ListBit | PatternBit;
constexpr std::array<Modulation, 8> Modulations{{
    {AmBit, &ChannelRecord::amState, AllModulations & ~AmBit},
    {FmBit, &ChannelRecord::fmState, AmBit | PmBit},
    {PmBit, &ChannelRecord::pmState, AmBit | FmBit},
    {FrequencySweepBit, &ChannelRecord::frswState, AmBit | (Sequenced & ~FrequencySweepBit)},
    {PowerSweepBit, &ChannelRecord::prswState, AmBit | (Sequenced & ~PowerSweepBit)},
    {PulseBit, &ChannelRecord::pulseState, AmBit | (Sequenced & ~PulseBit)},
    {ListBit, &ChannelRecord::listState, AmBit | (Sequenced & ~ListBit)},
    {PatternBit, &ChannelRecord::patternState, AmBit | (Sequenced & ~PatternBit)},
}};

} // namespace

unsigned runningModulations(const ChannelRecord& record) {
    unsigned running = 0;
    for (const Modulation& modulation : Modulations)
        running |= record.*modulation.state == 1 ? modulation.bit : 0;
    return running;
}

unsigned conflictsWith(unsigned bit, unsigned modulations) {
    for (const Modulation& modulation : Modulations) {
        if (modulation.bit == bit)
            return modulation.excludes & modulations;
    }
    return 0;
}

void stopModulations(ChannelRecord& record) {
    for (const Modulation& modulation : Modulations)
        record.*modulation.state = 0;
}

} // namespace Sim
