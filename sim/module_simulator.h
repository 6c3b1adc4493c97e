#pragma once

#include "sim/fault_plan.h"
#include "sim/module_state.h"
#include "sim/options.h"
#include "sim/request_log.h"

#include <QByteArrayList>
#include <functional>
#include <memory>
#include <mutex>

namespace Sim {

class ScpiService;
class ServiceThread;

/// A whole RF module: publishes its records in shared memory, serves SCPI on 127.0.0.1 from a thread of its own, can be
/// made to fail, and remembers what reached it. Several can live in one process, each with a region name of its own.
/// Every operation may be called from any thread, and none needs an event loop on the caller's. What can be made to go
/// wrong over the wire too is described at ControlCommands.
class ModuleSimulator {
public:
    explicit ModuleSimulator(const Options& options = {});
    ~ModuleSimulator(); ///< closes the service and takes the region away
    ModuleSimulator(const ModuleSimulator&) = delete;
    ModuleSimulator& operator=(const ModuleSimulator&) = delete;

    /// Opens the service and publishes the region; after stop() opens the service again on the port that it had, or on
    /// the given one. False, with a sentence in error if it is not null, when a port, a start command or the region is
    /// refused.
    [[nodiscard]] bool start(QString* error = nullptr);
    [[nodiscard]] bool startOn(quint16 port, QString* error = nullptr);

    /// Closes the port and drops the connections until start() is called; the region stays.
    void stop();

    /// As stop(), and comes back by itself on the same port.
    void goAway(int ms);

    quint16 port() const; ///< the last one while the service is away; 0 before the first start
    const std::string& regionName() const { return m_state.options().regionName; }

    /// Puts a new region (another inode) in the place of the old one, with another number of channels if it is 1 to 4.
    [[nodiscard]] bool replaceRegion(unsigned channels = 0, QString* error = nullptr);

    /// The channel's record as the region shows it, zeros for a channel that is not there.
    ChannelRecord record(unsigned channel) const { return m_state.published(channel); }

    /// Changes a record as the module would by itself, and publishes it. A battery curve that runs changes its part
    /// back.
    void modify(unsigned channel, const std::function<void(ChannelRecord&)>& change);

    /// While frozen the region stays as it is, whatever is commanded; it catches up when that ends.
    void setFrozen(bool frozen) { m_state.setFrozen(frozen); }

    void addFault(const Fault& fault) { m_faults.add(fault); }
    void clearFaults() { m_faults.clear(); }
    int pendingFaults() const { return m_faults.pending(); }

    /// The requests so far, each exactly as it came but without its line end; the simulator's own commands are not
    /// among them. A request is listed after its effect shows in the region.
    QByteArrayList received() const { return m_log.lines(); }

    /// Requests with exactly this header: ":FREQ" counts the commands, ":FREQ?" the queries.
    int count(const QByteArray& header) const { return m_log.count(header); }
    void clearReceived() { m_log.clear(); }

    /// Blocks until the predicate holds for received(), at most ms milliseconds; returns whether it held. A thread
    /// whose own event loop has to send the request must not wait here.
    [[nodiscard]] bool waitForReceived(const RequestLog::Predicate& predicate, int ms) const {
        return m_log.waitFor(predicate, ms);
    }

    /// Everything that does not show in a record: selected channel, triggers, uploaded lists and patterns.
    ModuleData data() const { return m_state.data(); }

private:
    bool open(quint16 port, QString& error);
    bool begin(ScpiService& service, quint16 port, QString& error) const;

    ModuleState m_state;
    FaultPlan m_faults;
    RequestLog m_log;
    mutable std::mutex m_threadMutex;        ///< of the pointer below
    std::unique_ptr<ServiceThread> m_thread; ///< null before the first start
};

} // namespace Sim
