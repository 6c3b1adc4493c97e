#include "common/instrument/modulations.h"

#include "common/instrument/handlerscpi.h"

namespace {

using Record = ChannelRecord;
using Handler = EventHandler;

// Of these only one runs at a time; each may run together with FM or PM.
constexpr unsigned Exclusive = FRSW_MOD_BIT | PRSW_MOD_BIT | PULSE_MOD_BIT | LIST_MOD_BIT | PATTERN_MOD_BIT;

constexpr unsigned against(modEnableBitMask bit) {
    return AM_MOD_BIT | (Exclusive & ~bit);
}

constexpr std::array<Modulation, 8> Table{{
    {AM_MOD_BIT, "AM", 0xFFU & ~AM_MOD_BIT, &Record::amState, Scpi::AmState, &Handler::setStateAM},
    {FM_MOD_BIT, "FM", AM_MOD_BIT | PM_MOD_BIT, &Record::fmState, Scpi::FmState, &Handler::setStateFM},
    {PM_MOD_BIT, "PM", AM_MOD_BIT | FM_MOD_BIT, &Record::pmState, Scpi::PmState, &Handler::setStatePM},
    {FRSW_MOD_BIT, "FRSW", against(FRSW_MOD_BIT), &Record::frswState, Scpi::FrswState, &Handler::setStateFRSW},
    {PRSW_MOD_BIT, "PRSW", against(PRSW_MOD_BIT), &Record::prswState, Scpi::PrswState, &Handler::setStatePRSW},
    {PULSE_MOD_BIT, "Pulse", against(PULSE_MOD_BIT), &Record::pulseState, Scpi::PulseState, &Handler::setStatePulseM},
    {LIST_MOD_BIT, "List", against(LIST_MOD_BIT), &Record::listState, Scpi::ListState, &Handler::setStateList},
    {PATTERN_MOD_BIT, "Pattern", against(PATTERN_MOD_BIT), &Record::patternState, Scpi::PatternState,
     &Handler::setStatePatternM},
}};

// A column of the table.
template <typename Cell>
constexpr auto column(Cell cell) {
    return std::array{cell(Table[0]), cell(Table[1]), cell(Table[2]), cell(Table[3]),
                      cell(Table[4]), cell(Table[5]), cell(Table[6]), cell(Table[7])};
}

} // namespace

const std::array<Modulation, 8> Modulations = Table;
const std::array<const char*, 8> ModulationNames = column([](const Modulation& kind) { return kind.name; });
const std::array<std::pair<std::uint32_t, std::uint32_t>, 8> modRestrictTable =
    column([](const Modulation& kind) { return std::pair<std::uint32_t, std::uint32_t>(kind.bit, kind.excludes); });

const Modulation& modulation(modEnableBitMask bits) {
    std::size_t row = 0;
    while (row + 1 < Modulations.size() && (bits & Modulations[row].bit) == 0)
        ++row;
    return Modulations[row];
}

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
