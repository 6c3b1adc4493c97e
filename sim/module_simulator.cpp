#include "sim/module_simulator.h"

#include "common/wire/scpi_words.h"
#include "sim/service_thread.h"

namespace Sim {

ModuleSimulator::ModuleSimulator(const Options& options) : m_state(options) {}

ModuleSimulator::~ModuleSimulator() = default;

bool ModuleSimulator::start(QString* error) {
    const quint16 last = port();
    return startOn(last != 0 ? last : m_state.options().port, error);
}

bool ModuleSimulator::startOn(quint16 port, QString* error) {
    QString sentence;
    const bool started = open(port, sentence);
    if (!started && error)
        *error = sentence;
    return started;
}

bool ModuleSimulator::open(quint16 port, QString& error) {
    std::lock_guard<std::mutex> lock(m_threadMutex);
    if (m_thread) {
        bool opened = false;
        m_thread->call([&](ScpiService& service) { opened = service.open(port, error); });
        return opened;
    }
    // The port comes first: a panel that finds the region finds the service as well.
    auto thread = std::make_unique<ServiceThread>(m_state, m_faults, m_log);
    bool opened = false;
    thread->call([&](ScpiService& service) { opened = begin(service, port, error); });
    if (!opened || !m_state.publishAnew(0, error))
        return false;
    m_thread = std::move(thread);
    return true;
}

bool ModuleSimulator::begin(ScpiService& service, quint16 port, QString& error) const {
    for (const QByteArray& line : m_state.options().startCommands) {
        const QByteArray answer = service.executeAtStart(line);
        if (answer.startsWith(Scpi::Refusal)) {
            error = QString("\"%1\": %2").arg(QString::fromUtf8(line), QString::fromUtf8(answer));
            return false;
        }
    }
    return service.open(port, error);
}

void ModuleSimulator::stop() {
    std::lock_guard<std::mutex> lock(m_threadMutex);
    if (m_thread)
        m_thread->call([](ScpiService& service) { service.close(); });
}

void ModuleSimulator::goAway(int ms) {
    std::lock_guard<std::mutex> lock(m_threadMutex);
    if (m_thread)
        m_thread->call([ms](ScpiService& service) { service.goAway(ms); });
}

quint16 ModuleSimulator::port() const {
    std::lock_guard<std::mutex> lock(m_threadMutex);
    quint16 port = 0;
    if (m_thread)
        m_thread->call([&port](ScpiService& service) { port = service.port(); });
    return port;
}

bool ModuleSimulator::replaceRegion(unsigned channels, QString* error) {
    QString sentence;
    const bool replaced = m_state.publishAnew(channels, sentence);
    if (!replaced && error)
        *error = sentence;
    return replaced;
}

void ModuleSimulator::modify(unsigned channel, const std::function<void(ChannelRecord&)>& change) {
    m_state.change([&](ModuleData& data) {
        if (channel < data.records.size())
            change(data.records[channel]);
    });
}

} // namespace Sim
