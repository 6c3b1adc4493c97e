#include "sim/service_thread.h"

#include "sim/battery_ticker.h"

#include <QCoreApplication>
#include <QEvent>

namespace Sim {

/// Takes the letters out. The queue and its lock are this class's own, a posted event only wakes the thread.
class ServiceThread::Mailbox : public QObject {
public:
    Mailbox(ServiceThread& thread, ScpiService& service) : m_thread(thread), m_service(service) {}

protected:
    void customEvent(QEvent*) override {
        std::unique_lock<std::mutex> lock(m_thread.m_mutex);
        while (!m_thread.m_letters.empty()) {
            const Letter letter = m_thread.m_letters.front();
            m_thread.m_letters.pop_front();
            lock.unlock();
            (*letter.task)(m_service);
            lock.lock();
            *letter.done = true;
            m_thread.m_changed.notify_all();
        }
    }

private:
    ServiceThread& m_thread;
    ScpiService& m_service;
};

ServiceThread::ServiceThread(ModuleState& state, FaultPlan& faults, RequestLog& log)
    : m_state(state), m_faults(faults), m_log(log) {
    start();
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_mailbox != nullptr; });
}

ServiceThread::~ServiceThread() {
    call([this](ScpiService&) { quit(); });
    wait();
}

void ServiceThread::call(const Task& task) {
    bool done = false;
    std::unique_lock<std::mutex> lock(m_mutex);
    m_letters.push_back({&task, &done});
    QCoreApplication::postEvent(m_mailbox, new QEvent(QEvent::User));
    m_changed.wait(lock, [&done] { return done; });
}

void ServiceThread::run() {
    BatteryTicker battery(m_state);
    ScpiService service(m_state, m_faults, m_log, [&battery] { battery.end(); });
    Mailbox mailbox(*this, service);
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_mailbox = &mailbox;
        m_changed.notify_all();
    }
    exec();
    service.close();
}

} // namespace Sim
