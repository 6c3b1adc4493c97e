#pragma once

#include "common/instrument/device_value_names.h"
#include "common/instrument/modulations.h"
#include "common/link/instrument_link.h"
#include "common/wire/scpi_words.h"
#include "common/wire/step_points.h"

#include <QMutex>
#include <array>
#include <functional>
#include <string>
#include <vector>

/// The one object through which the panel reads and changes the RF module. It acts on the current channel.
///
/// Units: Hz, dBm, degrees, percent, whole counts, and nanoseconds for every time.
/// Getters copy their field from the shared memory into the snapshot and return it; they cannot fail.
/// Setters send one command, copy the field back and return 0 when the module then holds what was asked, otherwise -1.
/// Where a setter has no field to read back, its result is that of the sending.
/// Threads: everything is called on the GUI thread. Setters block as InstrumentLink's send operations do.
class EventHandler : public InstrumentLink, public DeviceValueNames {
    Q_OBJECT

public:
    explicit EventHandler(const InstrumentSettings& settings = InstrumentSettings::fromEnvironment(),
                          QObject* parent = nullptr);

    // Any device value

    /// Refuses a number that is not finite. A time is taken when the record holds the number that its text carried,
    /// everything else when it holds `value` itself (frequency and power: nearly).
    [[nodiscard]] int setDeviceValue(DeviceValueId id, double value) override;

    /// The snapshot's own field and its limits.
    [[nodiscard]] double cachedValue(DeviceValueId id) const;
    [[nodiscard]] ValueLimits cachedLimits(DeviceValueId id) const;

    /// What the module will hold when it is sent `value`: the number that the command's text carries.
    [[nodiscard]] double roundedToWire(DeviceValueId id, double value) const;

    // Output, run mode, trigger

    [[nodiscard]] int set_rf_onoff(OnOff state);
    int set_power_on_restore(bool automatic);             ///< always 0
    [[nodiscard]] int takePowerOnRestore(bool automatic); ///< the same, with the module's answer
    int setTrigger();
    int setRunMode(bool continuous);

    /// Send a word of the snapshot again (false), or the one that follows it in its table (true).
    int setTriggerSource(bool advance);
    int setTRGedge(bool advance);
    int setTRGadv(bool advance);
    int setRefOscMode(bool advance);

    /// Put a word into the snapshot for the setters above to send.
    void setCachedTriggerSource(const char* word);
    void setCachedTriggerEdge(const char* word);
    void setCachedTriggerAdvance(const char* word);

    // Modulations

    /// Asks the module for the combination that switching `bits` on or off makes. 0 also when it has it already;
    /// a forbidden combination is not sent and gives what canModulate() says.
    int set_modulation_enable(modEnableBitMask bits, bool enable);

    /// As the function of modulations.h.
    static int canModulate(modEnableBitMask requested, unsigned mask) { return ::canModulate(requested, mask); }

    /// The kinds that run, from the snapshot; kept for getModulationsState().
    unsigned isModulationsOn();
    /// isModulationsOn(), and the kinds whose start got no answer: the module may carry it out later.
    unsigned mayRun();
    unsigned getModulationsState(unsigned channel) const; ///< 0 for a channel that does not exist
    unsigned getModulationsState() const;
    void clearRunningModulations(); ///< after a recall or a preset, until isModulationsOn() is asked again

    int setStateAM(OnOff state) { return setModulation(AM_MOD_BIT, state); }
    int setStateFM(OnOff state) { return setModulation(FM_MOD_BIT, state); }
    int setStatePM(OnOff state) { return setModulation(PM_MOD_BIT, state); }
    int setStatePulseM(OnOff state) { return setModulation(PULSE_MOD_BIT, state); }
    int setStatePatternM(OnOff state) { return setModulation(PATTERN_MOD_BIT, state); }
    int setStateFRSW(OnOff state) { return setModulation(FRSW_MOD_BIT, state); }
    int setStatePRSW(OnOff state) { return setModulation(PRSW_MOD_BIT, state); }
    int setStateList(OnOff state) { return setModulation(LIST_MOD_BIT, state); }
    int setModSrcAM(ModSrcMode source);
    int setModSrcFM(ModSrcMode source);
    int setModSrcPulseM(ModSrcMode source);
    int setDirFRSW(SweepDirection direction);
    int setDirPRSW(SweepDirection direction);

    // System and network. The getters read the region and leave the snapshot alone.

    std::string getIP();
    std::string getMask();
    std::string getGateway();
    std::string getPort();
    unsigned getDhcpMode();
    [[nodiscard]] int setDhcpMode(OnOff state);
    [[nodiscard]] int setPort(std::string port);
    [[nodiscard]] int setIP(std::string address);
    [[nodiscard]] int setMask(std::string mask);
    [[nodiscard]] int setGateway(std::string gateway);
    [[nodiscard]] int setRecallPath(std::string path);
    [[nodiscard]] int setStorePath(std::string path);
    [[nodiscard]] int setClearPath(std::string path);
    int sendGuiSoftUpdate();

    // Lists and patterns

    /// Put the name of the current list or pattern into the snapshot: UTF-8, what is beyond 31 bytes is cut off.
    void setCachedListName(const char* name);
    void setCachedPatternName(const char* name);

    // Binary or (second pair) one command a step, up to the first refused. -1 also for no steps.
    /// A running pulse is off meanwhile; then it and the pattern on.
    [[nodiscard]] int sendListDATAX(std::vector<list_point*>* steps);
    /// As a list, but the pulse stays off.
    [[nodiscard]] int sendPatternListDATAX(std::vector<pattern_point*>* steps);
    [[nodiscard]] int sendStepsList(std::vector<list_point*>* steps);
    /// Pulse and pattern are off meanwhile, then on.
    [[nodiscard]] int sendPatternList(std::vector<pattern_point*>* steps);

    // What else the module can be asked; each device value has its own pair in DeviceValueNames.

    double get_frequency_def() { return fetch(cachedRecord().frequency.defaultValue); }
    double get_frequency_max() { return fetch(cachedRecord().frequency.maximum); }
    double get_frequency_min() { return fetch(cachedRecord().frequency.minimum); }
    double get_power_def() { return fetch(cachedRecord().power.defaultValue); }
    double get_power_max() { return fetch(cachedRecord().power.maximum); }
    double get_power_min() { return fetch(cachedRecord().power.minimum); }
    unsigned get_trig_impedance() { return fetch(cachedRecord().triggerImpedance) == 50 ? 50 : 10000; }
    /// Makes a channel of the region current, with a fresh copy of its record; -1 with the former one left in place.
    [[nodiscard]] int chooseChannel(unsigned channel);
    int set_channel(unsigned channel);     ///< 0 to 4, made current before it is sent; above: -1 and nothing is sent
    int set_trig_impedance(unsigned ohms); ///< 50, anything else is sent as 10K
    int setTRGimp(bool advance);           ///< the snapshot's impedance again, or the other one
    int setModSrcPM(ModSrcMode source);
    int toggleDHCPMode();
    int setTarget(std::string target);
    int set_sys_rst();
    int set_sys_scpi() { return 0; } ///< sends nothing

    /// Asked before an upload switches on again what it has switched off. Without one it always does.
    void setResumeCheck(std::function<bool()> mayResume) { m_mayResume = std::move(mayResume); }

    std::string get_sys_opt(); ///< at most 31 characters, as the next two
    std::string get_sys_ip();
    std::string get_sys_mask();
    std::string getSysModel() const;      ///< from the snapshot
    std::string get_sys_identification(); ///< model, serial and version, separated by single blanks
    std::string get_sys_temp();           ///< degrees Celsius, six decimals
    std::string get_sys_bat();            ///< percent

    /// The module's answer about its architecture, a comma-separated record; a built-in one when there is none.
    std::string getModelInternalInf();

private:
    bool mayResume() const { return !m_mayResume || m_mayResume(); }
    double deviceField(DeviceValueId id) override;
    int sendOnly(const char* header, const std::string& argument = std::string());
    int sendQuoted(const char* header, const std::string& text);
    int setNumber(const char* header, const std::string& argument, std::uint32_t ChannelRecord::*field,
                  unsigned expected);
    int setSwitch(const char* header, bool on, std::uint32_t ChannelRecord::*field);
    int setModulation(modEnableBitMask kind, OnOff state);
    int setWord(const char* header, const std::string& word, char (ChannelRecord::*field)[32]);

    int sendSteps(const QByteArray& message, const char* failure, bool pulseToo);
    void switchOnAgain(bool pulseToo);

    template <typename Check>
    int sendChecked(const char* header, const std::string& argument, Check isTaken);

    std::function<bool()> m_mayResume;
    std::array<unsigned, MaxChannels + 1> m_unanswered{}; ///< by channel, the kinds whose start got no answer
    mutable QMutex m_runningMutex;
    std::array<unsigned, MaxChannels + 1> m_running{}; ///< by channel, the kinds that isModulationsOn() last saw
};
