#pragma once

#include "common/wire/channel_record.h"
#include "lists/frequency_list_config.h"
#include "lists/pattern_list_config.h"

namespace Kavor::HandheldGui {

/// What the module allows in a list or a pattern, and what a new step begins with. A pair of limits that the module
/// does not publish (0 and 0, or a minimum above its maximum) leaves everything but a negative frequency, time or
/// count; a new step is then one that list_point and pattern_point construct.
FrequencyListLimits listLimitsOf(const ChannelRecord& record);
PatternListLimits patternLimitsOf(const ChannelRecord& record);

} // namespace Kavor::HandheldGui
