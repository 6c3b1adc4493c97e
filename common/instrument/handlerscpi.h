#pragma once

#include "common/instrument/device_values.h"
#include "common/instrument/modulation_rules.h"
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
class EventHandler : public InstrumentLink {
    Q_OBJECT

public:
    explicit EventHandler(const InstrumentSettings& settings = InstrumentSettings::fromEnvironment(),
                          QObject* parent = nullptr);

    // Any device value

    /// Refuses a number that is not finite. A time is taken when the record holds the number that its text carried,
    /// everything else when it holds `value` itself (frequency and power: nearly).
    int setDeviceValue(DeviceValueId id, double value);

    /// The snapshot's own field and its limits.
    double cachedValue(DeviceValueId id) const;
    ValueLimits cachedLimits(DeviceValueId id) const;

    /// What the module will hold when it is sent `value`: the number that the command's text carries.
    double roundedToWire(DeviceValueId id, double value) const;

    // Getters

    double get_frequency();
    double get_frequency_def();
    double get_frequency_max();
    double get_frequency_min();
    double get_power();
    double get_power_def();
    double get_power_max();
    double get_power_min();
    double get_phase();
    unsigned get_trig_count();
    double get_trig_timer_time();
    double get_trig_delay();
    unsigned get_trig_impedance(); ///< 50, or 10000 for every other value
    double get_am_freq();
    double get_am_depth();
    double get_fm_freq();
    double get_fm_dev(); ///< the AM rate: deliberate; the FM deviation is cachedValue(FmDeviation)
    double get_pm_freq();
    double get_pm_dev();
    double get_pulsem_freq();
    double get_pulsem_width();
    double get_frsw_start();
    double get_frsw_stop();
    unsigned get_frsw_steps();
    double get_frsw_time(); ///< from the first point to the last: (steps - 1) x dwell
    double get_prsw_start();
    double get_prsw_stop(); ///< the start: deliberate; the stop is cachedValue(PrswStop)
    unsigned get_prsw_steps();
    double get_prsw_time(); ///< as get_frsw_time()

    std::string get_sys_opt(); ///< at most 31 characters, as the next two
    std::string get_sys_ip();
    std::string get_sys_mask();
    std::string getIP(); ///< this and the next four leave the snapshot alone
    std::string getMask();
    std::string getGateway();
    std::string getPort();
    unsigned getDhcpMode();
    std::string getSysModel() const;      ///< from the snapshot
    std::string get_sys_identification(); ///< model, serial and version, separated by single blanks
    std::string get_sys_temp();           ///< degrees Celsius, six decimals
    std::string get_sys_bat();            ///< percent

    /// The module's answer about its architecture, a comma-separated record; a built-in one when there is none.
    std::string getModelInternalInf();

    // Setters of device values

    int set_frequency(double hz);
    int set_power(double dbm);
    int set_phase(double degrees);
    int set_trig_count(double count);
    int set_trig_timer_time(double ns);
    int set_trig_delay(double ns);
    int set_am_freq(double hz);
    int set_am_depth(double percent);
    int set_fm_freq(double hz);
    int set_fm_dev(double hz);
    int set_pm_freq(double hz);
    int set_pm_dev(double deviation);
    int set_pulsem_freq(double hz);
    int set_pulsem_width(double ns);
    int set_frsw_start(double hz);
    int set_frsw_stop(double hz);
    int set_frsw_steps(unsigned steps);
    int set_frsw_time(double ns); ///< dwell of one step
    int set_prsw_start(double dbm);
    int set_prsw_stop(double dbm);
    int set_prsw_steps(unsigned steps);
    int set_prsw_time(double ns); ///< dwell of one step

    // Output, channel, trigger

    int set_channel(unsigned channel); ///< 0 to 4, made current before it is sent; above: -1 and nothing is sent
    int set_rf_onoff(OnOff state);
    int set_power_on_restore(bool automatic); ///< always 0
    int takePowerOnRestore(bool automatic);   ///< the same, with the module's answer
    int set_trig_impedance(unsigned ohms);    ///< 50, anything else is sent as 10K
    int setTrigger();
    int setRunMode(bool continuous);

    /// Send a word of the snapshot again (false), or the one that follows it in its table (true).
    int setTriggerSource(bool advance);
    int setTRGedge(bool advance);
    int setTRGadv(bool advance);
    int setTRGimp(bool advance);
    int setRefOscMode(bool advance);

    /// Put a word into the snapshot for the setters above to send.
    void setCachedTriggerSource(const char* word);
    void setCachedTriggerEdge(const char* word);
    void setCachedTriggerAdvance(const char* word);

    /// Put the name of the current list or pattern into the snapshot: UTF-8, what is beyond 31 bytes is cut off.
    void setCachedListName(const char* name);
    void setCachedPatternName(const char* name);

    // Modulations

    /// Asks the module for the combination that switching `bits` on or off makes. 0 also when it has it already;
    /// a forbidden combination is not sent and gives what canModulate() says.
    int set_modulation_enable(modEnableBitMask bits, bool enable);

    /// As the function of modulation_rules.h.
    static int canModulate(modEnableBitMask requested, unsigned mask) { return ::canModulate(requested, mask); }

    /// The kinds that run, from the snapshot; kept for getModulationsState().
    unsigned isModulationsOn();
    unsigned getModulationsState(unsigned channel) const; ///< 0 for a channel that does not exist
    unsigned getModulationsState() const;
    void clearRunningModulations(); ///< after a recall or a preset, until isModulationsOn() is asked again

    int setStateAM(OnOff state);
    int setStateFM(OnOff state);
    int setStatePM(OnOff state);
    int setStatePulseM(OnOff state);
    int setStatePatternM(OnOff state);
    int setStateFRSW(OnOff state);
    int setStatePRSW(OnOff state);
    int setStateList(OnOff state);
    int setModSrcAM(ModSrcMode source);
    int setModSrcFM(ModSrcMode source);
    int setModSrcPM(ModSrcMode source);
    int setModSrcPulseM(ModSrcMode source);
    int setDirFRSW(SweepDirection direction);
    int setDirPRSW(SweepDirection direction);

    // System and network

    int setDhcpMode(OnOff state);
    int toggleDHCPMode();
    int setPort(std::string port);
    int setIP(std::string address);
    int setMask(std::string mask);
    int setGateway(std::string gateway);
    int setRecallPath(std::string path);
    int setStorePath(std::string path);
    int setClearPath(std::string path);
    int setTarget(std::string target);
    int set_sys_rst();
    int sendGuiSoftUpdate();
    int set_sys_scpi(); ///< sends nothing, always 0

    /// Asked before an upload switches on again what it has switched off. Without one it always does.
    void setResumeCheck(std::function<bool()> mayResume) { m_mayResume = std::move(mayResume); }

    // Lists and patterns, binary or (second pair) one command a step, up to the first refused. -1 also for no steps.
    int
    sendListDATAX(std::vector<list_point*>* steps); ///< a running pulse is off meanwhile; then it and the pattern on
    int sendPatternListDATAX(std::vector<pattern_point*>* steps); ///< as a list, but the pulse stays off
    int sendStepsList(std::vector<list_point*>* steps);
    int sendPatternList(std::vector<pattern_point*>* steps); ///< pulse and pattern are off meanwhile, then on

private:
    bool mayResume() const { return !m_mayResume || m_mayResume(); }
    double deviceField(DeviceValueId id);
    double totalSweepTime(DeviceValueId steps, DeviceValueId dwell);
    int sendOnly(const char* header, const std::string& argument = std::string());
    int sendQuoted(const char* header, const std::string& text);
    int setNumber(const char* header, const std::string& argument, std::uint32_t ChannelRecord::*field,
                  unsigned expected);
    int setSwitch(const char* header, bool on, std::uint32_t ChannelRecord::*field);
    int setWord(const char* header, const std::string& word, char (ChannelRecord::*field)[32]);

    template <typename Check>
    int sendChecked(const char* header, const std::string& argument, Check isTaken);

    std::function<bool()> m_mayResume;
    mutable QMutex m_runningMutex;
    std::array<unsigned, MaxChannels + 1> m_running{}; ///< by channel, the kinds that isModulationsOn() last saw
};
