#pragma once

#include "sim/fault_plan.h"
#include "sim/module_state.h"
#include "sim/request_log.h"

#include <QByteArrayList>
#include <functional>
#include <optional>

namespace Sim {

/// The commands that are for the simulator itself, over the same port as the module's. They are not counted, no fault
/// befalls them, and they are answered like any other:
///
///   SIMulator:FAULt KIND[,FOR="header"][,COUNt=n][,MS=n][,TEXT="text"]
///       KIND: SILent LOST LATE REFuse ANSWer SPLit MERGe DOUBle NOEnd DROP KEEP OTHer STALe GONE, see Fault.
///       FOR limits it to requests that begin so, COUNt to so many; without them it stays until cleared.
///   SIMulator:FAULt:CLEar
///   SIMulator:FAULt:PENDing?              number of faults not used up
///   SIMulator:GONE ms                     answers, then closes the port and all connections for that long
///   SIMulator:FREeze ON|OFF               the region stays as it is, whatever is commanded
///   SIMulator:REGion:REPLace [channels]   a new region (another inode) in the place of the old one
///   SIMulator:BATTery percent,mA          and the curve, if any, ends
///   SIMulator:CONNected channel,ON|OFF    channel from 0
///   SIMulator:TEMPerature celsius
///   SIMulator:COUNt? header               requests received with this header
///   SIMulator:TRIGgers?                   software triggers received
///   SIMulator:RECeived:CLEar
///   SIMulator:LIST?                       steps of the selected channel's last upload, separated by semicolons
///   SIMulator:PATTern?                    the same of a pattern
///   SIMulator:LIST:DEFined?               steps that were defined one by one
///   SIMulator:PATTern:DEFined?            the same of a pattern
///   SIMulator:BLOCk? bytes                a definite-length block of so many letters
///
/// Used on the service's thread.
class ControlCommands {
public:
    /// What the commands need of the service: to go away for so many milliseconds, and to end the battery curve.
    struct Hooks {
        std::function<void(int)> goAway;
        std::function<void()> endBatteryCurve;
    };

    ControlCommands(ModuleState& state, FaultPlan& faults, RequestLog& log, Hooks hooks);
    ~ControlCommands();

    /// The answer without its line end; none when the line is not for the simulator.
    std::optional<QByteArray> execute(const QByteArray& line);

private:
    struct Row;
    static const Row* findRow(const QByteArray& header, bool isQuery);

    QByteArray addFault(const QByteArrayList& arguments);
    QByteArray clearFaults(const QByteArrayList& arguments);
    QByteArray pendingFaults(const QByteArrayList& arguments);
    QByteArray goAway(const QByteArrayList& arguments);
    QByteArray freeze(const QByteArrayList& arguments);
    QByteArray replaceRegion(const QByteArrayList& arguments);
    QByteArray setBattery(const QByteArrayList& arguments);
    QByteArray setConnected(const QByteArrayList& arguments);
    QByteArray setTemperature(const QByteArrayList& arguments);
    QByteArray countReceived(const QByteArrayList& arguments);
    QByteArray triggers(const QByteArrayList& arguments);
    QByteArray clearReceived(const QByteArrayList& arguments);
    QByteArray list(const QByteArrayList& arguments);
    QByteArray pattern(const QByteArrayList& arguments);
    QByteArray definedList(const QByteArrayList& arguments);
    QByteArray definedPattern(const QByteArrayList& arguments);
    QByteArray block(const QByteArrayList& arguments);

    ModuleState& m_state;
    FaultPlan& m_faults;
    RequestLog& m_log;
    Hooks m_hooks;
};

} // namespace Sim
