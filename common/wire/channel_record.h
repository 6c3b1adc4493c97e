#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

/// A value of the module with the limits that the module publishes for it.
/// Units: hertz, dBm, degrees, percent, and **seconds** for every time. A limit pair of 0 and 0 means "not published".
struct LimitedValue {
    double value;
    double maximum;
    double minimum;
};

/// As LimitedValue, with the module's factory value between the value and its limits.
struct DefaultedValue {
    double value;
    double defaultValue;
    double maximum;
    double minimum;
};

/// Factory value and limits of a quantity that is set step by step (list dwell, pattern times), not once per channel.
struct StepValueLimits {
    double defaultValue;
    double maximum;
    double minimum;
};

struct ValueLimits {
    double maximum;
    double minimum;

    /// False for the pair of 0 and 0: the module publishes none.
    bool known() const { return minimum != 0 || maximum != 0; }

    /// Both ends included; everything where no limits are known. A NaN lies outside any.
    bool contains(double value) const { return !known() || (value >= minimum && value <= maximum); }
};

struct LimitedCount {
    std::uint32_t value;
    std::uint32_t maximum;
    std::uint32_t minimum;
};

/// One RF channel as the module's local service publishes it in shared memory: 1816 bytes, little-endian, an array of
/// one to four of them. The service writes it at any moment and from another process, so it is always copied out before
/// use, and no text in it can be trusted to end (see recordText()). State words are 1 for on, anything else is off.
struct ChannelRecord {
    char reserved0[4];
    std::int32_t connected; ///< 0: the channel's module is not connected
    std::uint32_t rfOutput;
    std::uint32_t modulationEnable; ///< modEnableBitMask bits
    std::uint32_t runMode;          ///< 1: continuous, otherwise triggered
    char triggerSource[32];         ///< a TriggerSourceToString word
    char triggerEdge[32];           ///< a TriggerEdgeToString word
    char triggerAdvance[32];        ///< a TriggerAdvToString word
    LimitedCount triggerCount;
    LimitedValue triggerDelay;
    char reserved152[8];
    LimitedValue triggerTimer;
    std::uint32_t triggerImpedance; ///< ohms: 50, or any other value for high impedance
    char reserved188[12];
    DefaultedValue frequency;
    DefaultedValue power;
    LimitedValue phase;
    char referenceOscillator[32];
    char reserved320[40];
    std::uint32_t listState;
    char listName[32];
    std::uint32_t patternState;
    char patternName[32];
    StepValueLimits listDwell;
    StepValueLimits patternTime;
    LimitedCount patternRepetitions; ///< value: the factory repetition count
    char reserved492[4];
    ValueLimits frswTotalTime;
    ValueLimits prswTotalTime;
    char reserved528[32];
    std::uint32_t amState;
    char amSource[32];
    char reserved596[4];
    LimitedValue amRate;
    LimitedValue amDepth;
    std::uint32_t fmState;
    char fmSource[32];
    char reserved684[4];
    LimitedValue fmRate;
    LimitedValue fmDeviation;
    std::uint32_t pmState;
    char pmSource[32];
    char reserved772[4];
    LimitedValue pmRate;
    LimitedValue pmDeviation;
    std::uint32_t pulseState;
    char pulseSource[32];
    char reserved860[4];
    LimitedValue pulseFrequency;
    LimitedValue pulseWidth;
    std::uint32_t frswState;
    char reserved916[4];
    LimitedValue frswStart;
    LimitedValue frswStop;
    LimitedCount frswSteps;
    char reserved980[4];
    LimitedValue frswDwell;
    char frswDirection[32]; ///< a SweepDirectionToString word
    std::uint32_t prswState;
    char reserved1044[4];
    LimitedValue prswStart;
    LimitedValue prswStop;
    LimitedCount prswSteps;
    char reserved1108[4];
    LimitedValue prswDwell;
    char prswDirection[32];
    char model[32];
    char serial[32];
    char firmwareVersion[32];
    double temperature;         ///< degrees Celsius
    std::int32_t batteryCharge; ///< percent
    std::int32_t batteryCompanion;
    char reserved1280[32];
    char options[32];
    char calibrationDate[32];
    char reserved1376[160];
    char ipAddress[32];
    char networkMask[32];
    char gateway[32];
    char scpiPort[32]; ///< TCP port of the SCPI service, decimal text
    char reserved1664[96];
    std::uint32_t dhcp;                ///< 0: static address
    std::int16_t batteryCurrent;       ///< negative while the battery discharges
    std::uint16_t lowBatteryThreshold; ///< percent
    std::uint32_t batteryProtection;   ///< 1: on
    char reserved1772[44];
};

constexpr std::size_t ChannelRecordSize = 1816;
constexpr unsigned MaxChannels = 4;
constexpr char RegionName[] = "/veldaData";

/// The text of a fixed-size record field: up to its first NUL, or the whole field when the service left none.
template <std::size_t N>
std::string recordText(const char (&field)[N]) {
    std::size_t length = 0;
    while (length < N && field[length] != '\0')
        ++length;
    return std::string(field, length);
}
