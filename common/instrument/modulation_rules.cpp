#include "common/instrument/modulation_rules.h"

const std::array<std::pair<std::uint32_t, std::uint32_t>, 8> modRestrictTable{{
    {AM_MOD_BIT, 0xFE},
    {FM_MOD_BIT, AM_MOD_BIT | PM_MOD_BIT},
    {PM_MOD_BIT, AM_MOD_BIT | FM_MOD_BIT},
    {FRSW_MOD_BIT, AM_MOD_BIT | PRSW_MOD_BIT | PULSE_MOD_BIT | LIST_MOD_BIT | PATTERN_MOD_BIT},
    {PRSW_MOD_BIT, AM_MOD_BIT | FRSW_MOD_BIT | PULSE_MOD_BIT | LIST_MOD_BIT | PATTERN_MOD_BIT},
    {PULSE_MOD_BIT, AM_MOD_BIT | FRSW_MOD_BIT | PRSW_MOD_BIT | LIST_MOD_BIT | PATTERN_MOD_BIT},
    {LIST_MOD_BIT, AM_MOD_BIT | FRSW_MOD_BIT | PRSW_MOD_BIT | PULSE_MOD_BIT | PATTERN_MOD_BIT},
    {PATTERN_MOD_BIT, AM_MOD_BIT | FRSW_MOD_BIT | PRSW_MOD_BIT | PULSE_MOD_BIT | LIST_MOD_BIT},
}};

int canModulate(modEnableBitMask requested, unsigned mask) {
    if (mask == 0)
        return -1;
    for (const auto& [kind, excluded] : modRestrictTable) {
        if (requested == 0) {
            if ((mask & kind) != 0 && (mask & excluded) != 0)
                return static_cast<int>(mask & excluded);
        } else if ((requested & kind) != 0) {
            return (mask & kind) != 0 ? static_cast<int>(mask & excluded) : 0;
        }
    }
    return 0;
}
