#include "sim/command_table.h"

#include "common/wire/scpi_words.h"
#include "sim/modulation_conflicts.h"
#include "sim/scpi_text.h"

#include <array>

namespace Sim {
namespace {

using R = ChannelRecord;

template <std::size_t N>
constexpr WordField word(RecordText R::*text, const std::array<const char*, N>& words) {
    return {text, words.data(), N};
}

const Setting Settings[] = {
    {Scpi::Frequency, &R::frequency},
    {Scpi::Power, &R::power},
    {Scpi::Phase, &R::phase},
    {Scpi::Output, SwitchField{&R::rfOutput, 0}},
    {Scpi::ModulationMask, MaskField{&R::modulationEnable}},

    {Scpi::TriggerCount, &R::triggerCount},
    {Scpi::TriggerTimer, &R::triggerTimer},
    {Scpi::TriggerDelay, &R::triggerDelay},
    {Scpi::TriggerImpedance, ImpedanceField{&R::triggerImpedance}},
    {Scpi::TriggerSource, word(&R::triggerSource, TriggerSourceToString)},
    {Scpi::TriggerEdge, word(&R::triggerEdge, TriggerEdgeToString)},
    {Scpi::TriggerAdvance, word(&R::triggerAdvance, TriggerAdvToString)},
    {Scpi::RunContinuous, SwitchField{&R::runMode, 0}},
    {Scpi::ReferenceOscillator, word(&R::referenceOscillator, ReferenceOscillatorToString), true},

    {Scpi::AmRate, &R::amRate},
    {Scpi::AmDepth, &R::amDepth},
    {Scpi::AmState, SwitchField{&R::amState, AmBit}},
    {Scpi::AmSource, word(&R::amSource, ModSrcModeToString)},
    {Scpi::FmRate, &R::fmRate},
    {Scpi::FmDeviation, &R::fmDeviation},
    {Scpi::FmState, SwitchField{&R::fmState, FmBit}},
    {Scpi::FmSource, word(&R::fmSource, ModSrcModeToString)},
    {Scpi::PmRate, &R::pmRate},
    {Scpi::PmDeviation, &R::pmDeviation},
    {Scpi::PmState, SwitchField{&R::pmState, PmBit}},
    {Scpi::PmSource, word(&R::pmSource, ModSrcModeToString)},
    {Scpi::PulseFrequency, &R::pulseFrequency},
    {Scpi::PulseWidth, &R::pulseWidth},
    {Scpi::PulseState, SwitchField{&R::pulseState, PulseBit}},
    {Scpi::PulseSource, word(&R::pulseSource, ModSrcModeToString)},
    {Scpi::PatternState, SwitchField{&R::patternState, PatternBit}},
    {Scpi::ListState, SwitchField{&R::listState, ListBit}},

    {Scpi::FrswStart, &R::frswStart},
    {Scpi::FrswStop, &R::frswStop},
    {Scpi::FrswSteps, &R::frswSteps},
    {Scpi::FrswTime, &R::frswDwell},
    {Scpi::FrswState, SwitchField{&R::frswState, FrequencySweepBit}},
    {Scpi::FrswDirection, word(&R::frswDirection, SweepDirectionToString)},
    {Scpi::PrswStart, &R::prswStart},
    {Scpi::PrswStop, &R::prswStop},
    {Scpi::PrswSteps, &R::prswSteps},
    {Scpi::PrswTime, &R::prswDwell},
    {Scpi::PrswState, SwitchField{&R::prswState, PowerSweepBit}},
    {Scpi::PrswDirection, word(&R::prswDirection, SweepDirectionToString)},

    {Scpi::LanDhcp, SwitchField{&R::dhcp, 0}, true},
    {Scpi::LanAddress, AddressField{&R::ipAddress}, true},
    {Scpi::LanMask, AddressField{&R::networkMask}, true},
    {Scpi::LanGateway, AddressField{&R::gateway}, true},
};

} // namespace

const Setting* findSetting(const QByteArray& header) {
    for (const Setting& setting : Settings) {
        if (headerMatches(setting.header, header))
            return &setting;
    }
    return nullptr;
}

} // namespace Sim
