#pragma once

/// Screens and device states. The values are fixed: screens keep lists of them.
enum STATE : int {
    STATE_NONE = -1, ///< no particular state; no screen lists it
    STATE_CW = 0,
    STATE_AM = 1,
    STATE_FM = 2,
    STATE_PM = 3,
    STATE_PULSE = 4,
    STATE_PATTERN = 5,
    STATE_PATTERN_FILES = 6,
    STATE_FRSW = 7,
    STATE_PRSW = 8,
    STATE_RUNMODE = 9,
    STATE_SYSTEM = 10,
    STATE_ABOUT = 11,
    STATE_LIST = 12,
    STATE_LIST_FILES = 13,
    STATE_CHANNELS = 14 ///< the overview of the channels of a region that holds several
};
