#include "common/instrument/handlerscpi_check.h"

#include <QMutexLocker>
#include <algorithm>
#include <cstring>

// Commands whose argument is a word: switches, choices, modulations, system and network.

namespace {

// The word after the current one, the first one after the last or after a word that the table does not know.
template <std::size_t N>
const char* wordAfter(const std::array<const char*, N>& words, const std::string& current) {
    const auto found = std::find(words.begin(), words.end(), current);
    return found == words.end() || found + 1 == words.end() ? words.front() : *(found + 1);
}

void writeText(char (&field)[32], const char* text) {
    std::memset(field, 0, sizeof field);
    std::memcpy(field, text, std::min(std::strlen(text), sizeof field - 1));
}

// 0 for a word that belongs to no modulation.
unsigned modulationOf(std::uint32_t ChannelRecord::*state) {
    const auto found = std::find_if(Modulations.begin(), Modulations.end(),
                                    [state](const Modulation& kind) { return kind.running == state; });
    return found == Modulations.end() ? 0U : unsigned{found->bit};
}

} // namespace

int EventHandler::sendOnly(const char* header, const std::string& argument) {
    std::string reply;
    return veldaScpiTrans(header, argument, reply);
}

int EventHandler::sendQuoted(const char* header, const std::string& text) {
    std::string reply;
    return veldaScpiTransStr(header, text, reply);
}

int EventHandler::setNumber(const char* header, const std::string& argument, std::uint32_t ChannelRecord::*field,
                            unsigned expected) {
    return sendChecked(header, argument, [&] { return fetch(cachedRecord().*field) == expected; });
}

int EventHandler::setSwitch(const char* header, bool on, std::uint32_t ChannelRecord::*field) {
    const int result = setNumber(header, OnOffToString[on ? 1 : 0], field, on ? 1 : 0);
    unsigned& unanswered = m_unanswered[currentChannel()];
    if (on && result != 0 && lastTimedOut())
        unanswered |= modulationOf(field);
    else if (!lastTimedOut())
        unanswered &= ~modulationOf(field);
    return result;
}

int EventHandler::setWord(const char* header, const std::string& word, char (ChannelRecord::*field)[32]) {
    return sendChecked(header, word, [&] { return recordText(fetch(cachedRecord().*field)) == word; });
}

int EventHandler::set_channel(unsigned channel) {
    if (channel > MaxChannels)
        return -1;
    selectChannel(channel);
    return sendOnly(Scpi::SelectChannel, std::to_string(channel));
}

int EventHandler::chooseChannel(unsigned channel) {
    const unsigned former = currentChannel();
    if (channel >= channelCount())
        return -1;
    if (set_channel(channel) == 0) {
        revert_preset(static_cast<int>(channel));
        return 0;
    }
    selectChannel(former);
    // Selected late, it would get what is meant for the former one.
    if (lastTimedOut())
        renewConnection();
    return -1;
}

int EventHandler::set_rf_onoff(OnOff state) {
    return setSwitch(Scpi::Output, state != OnOff::off, &ChannelRecord::rfOutput);
}

int EventHandler::set_power_on_restore(bool automatic) {
    static_cast<void>(takePowerOnRestore(automatic));
    return 0;
}

int EventHandler::takePowerOnRestore(bool automatic) {
    return sendOnly(Scpi::PowerOnRestore, automatic ? "AUTO" : "MANUAL");
}

int EventHandler::set_trig_impedance(unsigned ohms) {
    return setNumber(Scpi::TriggerImpedance, ohms == 50 ? "50" : "10K", &ChannelRecord::triggerImpedance, ohms);
}

int EventHandler::setTrigger() {
    return sendOnly(Scpi::Trigger);
}

int EventHandler::setRunMode(bool continuous) {
    return setSwitch(Scpi::RunContinuous, continuous, &ChannelRecord::runMode);
}

int EventHandler::setTriggerSource(bool advance) {
    const std::string current = recordText(snapshot().triggerSource);
    return setWord(Scpi::TriggerSource, advance ? wordAfter(TriggerSourceToString, current) : current,
                   &ChannelRecord::triggerSource);
}

int EventHandler::setTRGedge(bool advance) {
    const std::string current = recordText(snapshot().triggerEdge);
    return setWord(Scpi::TriggerEdge, advance ? wordAfter(TriggerEdgeToString, current) : current,
                   &ChannelRecord::triggerEdge);
}

int EventHandler::setTRGadv(bool advance) {
    const std::string current = recordText(snapshot().triggerAdvance);
    return setWord(Scpi::TriggerAdvance, advance ? wordAfter(TriggerAdvToString, current) : current,
                   &ChannelRecord::triggerAdvance);
}

int EventHandler::setTRGimp(bool advance) {
    const bool low = (snapshot().triggerImpedance == 50) != advance;
    return sendChecked(Scpi::TriggerImpedance, low ? "50" : "10000",
                       [&] { return (fetch(cachedRecord().triggerImpedance) == 50) == low; });
}

int EventHandler::setRefOscMode(bool advance) {
    const std::string current = recordText(snapshot().referenceOscillator);
    return setWord(Scpi::ReferenceOscillator, advance ? wordAfter(ReferenceOscillatorToString, current) : current,
                   &ChannelRecord::referenceOscillator);
}

void EventHandler::setCachedTriggerSource(const char* word) {
    writeText(cachedRecord().triggerSource, word);
}
void EventHandler::setCachedTriggerEdge(const char* word) {
    writeText(cachedRecord().triggerEdge, word);
}
void EventHandler::setCachedTriggerAdvance(const char* word) {
    writeText(cachedRecord().triggerAdvance, word);
}
void EventHandler::setCachedListName(const char* name) {
    writeText(cachedRecord().listName, name);
}
void EventHandler::setCachedPatternName(const char* name) {
    writeText(cachedRecord().patternName, name);
}

int EventHandler::set_modulation_enable(modEnableBitMask bits, bool enable) {
    const unsigned current = snapshot().modulationEnable;
    const unsigned wanted = enable ? current | bits : current & ~static_cast<unsigned>(bits);
    if (enable) {
        const int conflict = canModulate(bits, wanted);
        if (conflict != 0)
            return fetch(cachedRecord().modulationEnable) == wanted ? 0 : conflict;
    }
    sendOnly(Scpi::ModulationMask, std::to_string(wanted));
    fetch(cachedRecord().modulationEnable);
    return 0; // what runs is asked for with isModulationsOn()
}

unsigned EventHandler::isModulationsOn() {
    QMutexLocker lock(&m_runningMutex);
    unsigned running = 0;
    for (const Modulation& kind : Modulations) {
        if (snapshot().*kind.running == 1)
            running |= kind.bit;
    }
    m_running[currentChannel()] = running;
    return running;
}

unsigned EventHandler::mayRun() {
    return isModulationsOn() | m_unanswered[currentChannel()];
}

unsigned EventHandler::getModulationsState(unsigned channel) const {
    return channel < channelCount() ? m_running[channel] : 0;
}

unsigned EventHandler::getModulationsState() const {
    return m_running[currentChannel()];
}
void EventHandler::clearRunningModulations() {
    m_running[currentChannel()] = 0;
    m_unanswered[currentChannel()] = 0;
}

int EventHandler::setModulation(modEnableBitMask kind, OnOff state) {
    const Modulation& row = modulation(kind);
    return setSwitch(row.stateHeader, state != OnOff::off, row.running);
}

int EventHandler::setModSrcAM(ModSrcMode source) {
    return setWord(Scpi::AmSource, ModSrcModeToString[source], &ChannelRecord::amSource);
}

int EventHandler::setModSrcFM(ModSrcMode source) {
    return setWord(Scpi::FmSource, ModSrcModeToString[source], &ChannelRecord::fmSource);
}

int EventHandler::setModSrcPM(ModSrcMode source) {
    return setWord(Scpi::PmSource, ModSrcModeToString[source], &ChannelRecord::pmSource);
}

int EventHandler::setModSrcPulseM(ModSrcMode source) {
    return setWord(Scpi::PulseSource, ModSrcModeToString[source], &ChannelRecord::pulseSource);
}

int EventHandler::setDirFRSW(SweepDirection direction) {
    return setWord(Scpi::FrswDirection, SweepDirectionToString[direction], &ChannelRecord::frswDirection);
}

int EventHandler::setDirPRSW(SweepDirection direction) {
    return setWord(Scpi::PrswDirection, SweepDirectionToString[direction], &ChannelRecord::prswDirection);
}

int EventHandler::setDhcpMode(OnOff state) {
    return setSwitch(Scpi::LanDhcp, state != OnOff::off, &ChannelRecord::dhcp);
}
int EventHandler::toggleDHCPMode() {
    return setDhcpMode(getDhcpMode() != 0 ? OnOff::off : OnOff::on);
}
int EventHandler::setPort(std::string port) {
    return sendOnly(Scpi::LanPort, port);
}
int EventHandler::setIP(std::string address) {
    return sendQuoted(Scpi::LanAddress, address);
}
int EventHandler::setMask(std::string mask) {
    return sendQuoted(Scpi::LanMask, mask);
}
int EventHandler::setGateway(std::string gateway) {
    return sendQuoted(Scpi::LanGateway, gateway);
}
int EventHandler::setRecallPath(std::string path) {
    return sendOnly(Scpi::Recall, path);
}
int EventHandler::setStorePath(std::string path) {
    return sendOnly(Scpi::Store, path);
}
int EventHandler::setClearPath(std::string path) {
    return sendOnly(Scpi::Clear, path);
}
int EventHandler::setTarget(std::string target) {
    return sendOnly(Scpi::Target, target);
}
int EventHandler::set_sys_rst() {
    return sendOnly(Scpi::Reset);
}
int EventHandler::sendGuiSoftUpdate() {
    return sendOnly(Scpi::GuiUpdateSoftware);
}
