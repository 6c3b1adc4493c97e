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
    {STATE_AM, "AM", "Enable AM:", " AM ", "AM", 0x01, &ChannelRecord::amState, &EventHandler::setStateAM,
     &ChannelRecord::amSource, &EventHandler::setModSrcAM},
    {STATE_FM, "FM", "Enable FM:", " FM ", "FM", 0x02, &ChannelRecord::fmState, &EventHandler::setStateFM,
     &ChannelRecord::fmSource, &EventHandler::setModSrcFM},
    {STATE_PM, "PM", "Enable PM:", " PM ", "PM", 0x04, &ChannelRecord::pmState, &EventHandler::setStatePM, nullptr,
     nullptr},
    {STATE_PULSE, "Pulse", "Enable Pulse:", " Pulse ", "Pulse", 0x20, &ChannelRecord::pulseState,
     &EventHandler::setStatePulseM, &ChannelRecord::pulseSource, &EventHandler::setModSrcPulseM},
    {STATE_PATTERN, "Pattern", "Enable Pattern:", " Patterns ", "Pattern", 0x80, &ChannelRecord::patternState,
     &EventHandler::setStatePatternM, nullptr, nullptr},
}};

} // namespace Kavor::HandheldGui
