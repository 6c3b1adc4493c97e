#pragma once

#include <cstdint>
#include <string>

// One step of a frequency list and one of a pattern, as the user edits them, the files keep them and the upload encodes
// them. Units are exact texts in UTF-8 (values/units.h); a frequency unit that is none counts as "Hz", a time unit that
// is none as "ns", wherever a step is shown or sent. Plain data; the lists hold pointers to single allocations.

struct list_point {
    std::uint32_t stepNumber = 1; ///< position in the list, from 1
    double frequency = 100;
    std::string frequencyUnit = "MHz";
    double power = 5;
    std::string powerUnit = "dBm"; ///< dBm after every edit and every load
    double dwell = 500;
    std::string dwellUnit = "\u00B5s";
    std::string advance = "Run"; ///< "Run": goes on by itself; "Wait": waits for a trigger
    bool last = false;           ///< the final step of its list
};

struct pattern_point {
    std::uint32_t stepNumber = 1; ///< position in the pattern, from 1
    double onTime = 800;
    std::string onTimeUnit = "ns";
    double offTime = 800;
    std::string offTimeUnit = "ns";
    std::uint32_t loops = 1; ///< how often this step is repeated
    bool last = false;       ///< the final step of its pattern
};
