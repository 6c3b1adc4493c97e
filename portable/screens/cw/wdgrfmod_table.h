#pragma once

#include "common/instrument/handlerscpi.h"
#include "portable/widgets/state.h"

#include <array>

namespace Kavor::HandheldGui {

/// What the tabs of the modulation widget differ in: one row a modulation, in the order in which they are started.
struct ModulationTab {
    STATE state;
    const char* text;
    const char* enableText;
    const char* logName;   ///< in the lines of the check box
    const char* startName; ///< in the lines of start and stop
    unsigned bit;          ///< of modEnableBitMask
    std::uint32_t ChannelRecord::*running;
    int (EventHandler::*setState)(OnOff);
    char (ChannelRecord::*source)[32];          ///< null where the source cannot be chosen
    int (EventHandler::*setSource)(ModSrcMode); ///< null as above
};

constexpr std::array<ModulationTab, 5> ModulationTabs{{
    {STATE_AM, "AM", "Enable AM:", " AM ", "AM", AM_MOD_BIT, &ChannelRecord::amState, &EventHandler::setStateAM,
     &ChannelRecord::amSource, &EventHandler::setModSrcAM},
    {STATE_FM, "FM", "Enable FM:", " FM ", "FM", FM_MOD_BIT, &ChannelRecord::fmState, &EventHandler::setStateFM,
     &ChannelRecord::fmSource, &EventHandler::setModSrcFM},
    {STATE_PM, "PM", "Enable PM:", " PM ", "PM", PM_MOD_BIT, &ChannelRecord::pmState, &EventHandler::setStatePM,
     nullptr, nullptr},
    {STATE_PULSE, "Pulse", "Enable Pulse:", " Pulse ", "Pulse", PULSE_MOD_BIT, &ChannelRecord::pulseState,
     &EventHandler::setStatePulseM, &ChannelRecord::pulseSource, &EventHandler::setModSrcPulseM},
    {STATE_PATTERN, "Pattern", "Enable Pattern:", " Patterns ", "Pattern", PATTERN_MOD_BIT,
     &ChannelRecord::patternState, &EventHandler::setStatePatternM, nullptr, nullptr},
}};

} // namespace Kavor::HandheldGui
