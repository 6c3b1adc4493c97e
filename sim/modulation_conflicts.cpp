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
constexpr unsigned kSequenced = FrequencySweepBit | PowerSweepBit | PulseBit | ListBit | PatternBit;
constexpr std::array<Modulation, 8> kModulations{{
    {AmBit, &ChannelRecord::amState, AllModulations & ~AmBit},
    {FmBit, &ChannelRecord::fmState, AmBit | PmBit},
    {PmBit, &ChannelRecord::pmState, AmBit | FmBit},
    {FrequencySweepBit, &ChannelRecord::frswState, AmBit | (kSequenced & ~FrequencySweepBit)},
    {PowerSweepBit, &ChannelRecord::prswState, AmBit | (kSequenced & ~PowerSweepBit)},
    {PulseBit, &ChannelRecord::pulseState, AmBit | (kSequenced & ~PulseBit)},
    {ListBit, &ChannelRecord::listState, AmBit | (kSequenced & ~ListBit)},
    {PatternBit, &ChannelRecord::patternState, AmBit | (kSequenced & ~PatternBit)},
}};

} // namespace

unsigned runningModulations(const ChannelRecord& record) {
    unsigned running = 0;
    for (const Modulation& modulation : kModulations)
        running |= record.*modulation.state == 1 ? modulation.bit : 0;
    return running;
}

unsigned conflictsWith(unsigned bit, unsigned modulations) {
    for (const Modulation& modulation : kModulations) {
        if (modulation.bit == bit)
            return modulation.excludes & modulations;
    }
    return 0;
}

void stopModulations(ChannelRecord& record) {
    for (const Modulation& modulation : kModulations)
        record.*modulation.state = 0;
}

} // namespace Sim
