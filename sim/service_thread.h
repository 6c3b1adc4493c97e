#pragma once

#include "sim/scpi_service.h"

#include <QThread>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace Sim {

/// The thread on which a module's service lives: made at the thread's begin, deleted at its end.
class ServiceThread : public QThread {
    Q_OBJECT

public:
    using Task = std::function<void(ScpiService&)>;

    ServiceThread(ModuleState& state, FaultPlan& faults, RequestLog& log);
    ~ServiceThread() override; ///< ends the thread, and with it all connections

    /// Runs a task on the thread and waits for its end. From any thread but this one.
    void call(const Task& task);

protected:
    void run() override;

private:
    class Mailbox;
    struct Letter {
        const Task* task;
        bool* done;
    };

    ModuleState& m_state;
    FaultPlan& m_faults;
    RequestLog& m_log;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Letter> m_letters;
    Mailbox* m_mailbox = nullptr; ///< null before the thread serves
};

} // namespace Sim
