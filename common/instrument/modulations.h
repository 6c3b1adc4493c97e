#pragma once

#include "common/wire/scpi_words.h"

#include <array>
#include <cstdint>
#include <utility>

class EventHandler;
struct ChannelRecord;

/// A kind of modulation as its bit in the enable mask. Several kinds are or-ed.
enum modEnableBitMask : unsigned {
    AM_MOD_BIT = 0x01,
    FM_MOD_BIT = 0x02,
    PM_MOD_BIT = 0x04,
    FRSW_MOD_BIT = 0x08,
    PRSW_MOD_BIT = 0x10,
    PULSE_MOD_BIT = 0x20,
    LIST_MOD_BIT = 0x40,
    PATTERN_MOD_BIT = 0x80
};

/// What the panel knows of a kind of modulation. The screens' tables begin with a row of it and add how it is shown.
struct Modulation {
    modEnableBitMask bit;
    const char* name;                      ///< in what the user reads
    unsigned excludes;                     ///< the kinds that it must not run with
    std::uint32_t ChannelRecord::*running; ///< its state word: 1 when it runs
    const char* stateHeader;               ///< of the SCPI command that switches it
    int (EventHandler::*setState)(OnOff);
};

/// The one table of the modulations, in bit order.
extern const std::array<Modulation, 8> Modulations;

/// The row of the lowest kind in `bits`, which must hold one.
const Modulation& modulation(modEnableBitMask bits);

/// The table's names, and its bits with what they exclude; both in bit order.
extern const std::array<const char*, 8> ModulationNames;
extern const std::array<std::pair<std::uint32_t, std::uint32_t>, 8> modRestrictTable;

/// Whether the kinds in `mask` may run together: 0 when they may, -1 when `mask` is empty, otherwise the kinds in
/// `mask` that stand against it. `requested` 0 checks the whole mask; otherwise only the rule of its lowest kind is
/// applied.
int canModulate(modEnableBitMask requested, unsigned mask);
