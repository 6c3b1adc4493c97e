#pragma once

#include <array>
#include <cstddef>

/// The words that cross the wire to the module's SCPI service, each written once. Headers end with the blank that
/// separates them from their argument; capitals mark the short form and are sent as written.

/// Choices whose value indexes their table of words. In a namespace of their own, so that names as short as `on` and
/// `normal` are written with their type: OnOff::on.
namespace Choices {
enum OnOff : unsigned { off = 0, on = 1 };
enum ModSrcMode : unsigned { internal = 0, external = 1 };
enum SweepDirection : unsigned { normal = 0, upDown = 1 };
} // namespace Choices
using Choices::ModSrcMode;
using Choices::OnOff;
using Choices::SweepDirection;

constexpr std::array<const char*, 2> OnOffToString{"OFF", "ON"};
constexpr std::array<const char*, 2> SweepDirectionToString{"NORMAL", "UPDOWN"};
constexpr std::array<const char*, 3> TriggerSourceToString{"EXTernal", "BUS", "TIMer"};
constexpr std::array<const char*, 2> TriggerEdgeToString{"POSitive", "NEGative"};
constexpr std::array<const char*, 2> TriggerAdvToString{"ONCe", "STEP"};
constexpr std::array<const char*, 2> ModSrcModeToString{"INTernal", "EXTernal"};
constexpr std::array<const char*, 2> ReferenceOscillatorToString{"10MHz", "100MHz"};

namespace Scpi {

constexpr char Frequency[] = ":FREQ ";
constexpr char Power[] = ":POW ";
constexpr char Phase[] = ":PHAS ";
constexpr char SelectChannel[] = ":INST:SEL ";
constexpr char Output[] = ":OUTP ";
constexpr char PowerOnRestore[] = ":OUTPut:RESTore:MODE ";
constexpr char ModulationMask[] = ":MODulation:ENABle:MASK ";

constexpr char TriggerCount[] = ":TRIG:COUN ";
constexpr char TriggerTimer[] = ":TRIG:TIM:TIME ";
constexpr char TriggerDelay[] = ":TRIG:DEL ";
constexpr char TriggerImpedance[] = ":TRIG:INP:IMP ";
constexpr char TriggerSource[] = ":TRIG:SOUR ";
constexpr char TriggerEdge[] = ":TRIG:EDG ";
constexpr char TriggerAdvance[] = ":TRIG:ADV ";
constexpr char Trigger[] = "*TRG ";
constexpr char RunContinuous[] = ":INIT:CONT ";
constexpr char ReferenceOscillator[] = ":ROSC:EXT:FREQ ";

constexpr char AmRate[] = ":AM:INT:FREQ ";
constexpr char AmDepth[] = ":AM:DEPT ";
constexpr char AmState[] = ":AM:STAT ";
constexpr char AmSource[] = ":AM:SOUR ";
constexpr char FmRate[] = ":FM:INT:FREQ ";
constexpr char FmDeviation[] = ":FM:DEV ";
constexpr char FmState[] = ":FM:STAT ";
constexpr char FmSource[] = ":FM:SOUR ";
constexpr char PmRate[] = ":PM:INT:FREQ ";
constexpr char PmDeviation[] = ":PM:DEV ";
constexpr char PmState[] = ":PM:STAT ";
constexpr char PmSource[] = ":PM:SOUR ";
constexpr char PulseFrequency[] = ":PULS:FREQ ";
constexpr char PulseWidth[] = ":PULS:WIDT ";
constexpr char PulseState[] = ":PULS:STAT ";
constexpr char PulseSource[] = ":PULS:SOUR ";
constexpr char PatternState[] = ":PATT:STAT ";
constexpr char ListState[] = ":LIST:STAT ";

constexpr char FrswStart[] = ":FRSW:STAR ";
constexpr char FrswStop[] = ":FRSW:STOP ";
constexpr char FrswSteps[] = ":FRSW:STEP ";
constexpr char FrswTime[] = ":FRSW:TIME ";
constexpr char FrswState[] = ":FRSW ";
constexpr char FrswDirection[] = ":FRSW:DIR ";
constexpr char PrswStart[] = ":PRSW:STAR ";
constexpr char PrswStop[] = ":PRSW:STOP ";
constexpr char PrswSteps[] = ":PRSW:STEP ";
constexpr char PrswTime[] = ":PRSW:TIME ";
constexpr char PrswState[] = ":PRSW:STAT ";
constexpr char PrswDirection[] = ":PRSW:DIR ";

constexpr char LanDhcp[] = ":SYST:COMM:LAN:DHCP ";
constexpr char LanPort[] = ":SYST:COMM:LAN:PORT ";
constexpr char LanAddress[] = ":SYST:COMM:LAN:IPAD ";
constexpr char LanMask[] = ":SYST:COMM:LAN:MASK ";
constexpr char LanGateway[] = ":SYST:COMM:LAN:GAT ";

constexpr char Recall[] = ":SYST:SET:REC ";
constexpr char Store[] = ":SYST:SET:STOR ";
constexpr char Clear[] = ":SYST:SET:CLE ";
constexpr char Target[] = ":SYST:SET:TARG ";
constexpr char Reset[] = "*RST ";
constexpr char GuiUpdateSoftware[] = ":GUI:UPD:SOFT ";
constexpr char DeviceArchitectureQuery[] = ":INT:INF:DEV:ARCH? ";

constexpr char Acknowledge[] = "+OK";
constexpr char Refusal[] = "-ERR";
constexpr char LineEnd[] = "\r\n";

} // namespace Scpi
