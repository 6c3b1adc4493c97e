#pragma once

#include "common/instrument/handlerscpi.h"
#include "portable/widgets/state.h"

#include <array>

namespace Kavor::HandheldGui {

/// What the tabs of the modulation widget differ in: one row a modulation, in the order in which they are started.
struct ModulationTab : Modulation {
    STATE state;
    const char* text;
    int tabWidth; ///< pixels: its words, and a tick before them
    const char* enableText;
    const char* logName;                        ///< in the lines of the check box
    const char* startName;                      ///< in the lines of start and stop
    char (ChannelRecord::*source)[32];          ///< null where the source cannot be chosen
    int (EventHandler::*setSource)(ModSrcMode); ///< null as above
};

inline const std::array<ModulationTab, 5> ModulationTabs{{
    {modulation(AM_MOD_BIT), STATE_AM, "AM", 108, "Enable AM:", " AM ", "AM", &ChannelRecord::amSource,
     &EventHandler::setModSrcAM},
    {modulation(FM_MOD_BIT), STATE_FM, "FM", 108, "Enable FM:", " FM ", "FM", &ChannelRecord::fmSource,
     &EventHandler::setModSrcFM},
    {modulation(PM_MOD_BIT), STATE_PM, "PM", 108, "Enable PM:", " PM ", "PM", nullptr, nullptr},
    {modulation(PULSE_MOD_BIT), STATE_PULSE, "Pulse", 136, "Enable Pulse:", " Pulse ", "Pulse",
     &ChannelRecord::pulseSource, &EventHandler::setModSrcPulseM},
    {modulation(PATTERN_MOD_BIT), STATE_PATTERN, "Pattern", 136, "Enable Pattern:", " Patterns ", "Pattern", nullptr,
     nullptr},
}};

} // namespace Kavor::HandheldGui
