#pragma once

#include <array>
#include <cstdint>
#include <utility>

/// A kind of modulation as its bit in the enable mask; the bit number indexes ModulationNames. Several kinds are or-ed.
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

/// In bit order: a kind, and the kinds that it must not run with.
extern const std::array<std::pair<std::uint32_t, std::uint32_t>, 8> modRestrictTable;

/// Whether the kinds in `mask` may run together: 0 when they may, -1 when `mask` is empty, otherwise the kinds in
/// `mask` that stand against it. `requested` 0 checks the whole mask; otherwise only the rule of its lowest kind is
/// applied.
int canModulate(modEnableBitMask requested, unsigned mask);
