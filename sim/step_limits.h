#pragma once

#include "common/wire/channel_record.h"
#include "sim/step_decoding.h"

namespace Sim {

/// What the first step outside the limits that a channel publishes has wrong, such as "Step 3: a power of -99 is
/// outside -60 to 20"; empty when all steps lie within. Ends are included, and a pair of limits that is not published
/// lets anything pass. Pure functions, any thread.
QByteArray outsideLimits(const std::vector<ListStep>& steps, const ChannelRecord& limits);
QByteArray outsideLimits(const std::vector<PatternStep>& steps, const ChannelRecord& limits);

} // namespace Sim
