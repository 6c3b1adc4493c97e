#include "sim/fault_plan.h"

#include <algorithm>

namespace Sim {
namespace {

QByteArray comparable(const QByteArray& line) {
    const QByteArray text = line.toUpper();
    return text.startsWith(':') ? text.mid(1) : text;
}

} // namespace

void FaultPlan::add(const Fault& fault) {
    if (fault.count == 0)
        return;
    std::lock_guard<std::mutex> lock(m_mutex);
    m_faults.push_back(fault);
}

void FaultPlan::clear() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_faults.clear();
}

std::optional<Fault> FaultPlan::take(const QByteArray& line) {
    const QByteArray text = comparable(line.left(256));
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = std::find_if(m_faults.begin(), m_faults.end(),
                                    [&text](const Fault& fault) { return text.startsWith(comparable(fault.header)); });
    if (found == m_faults.end())
        return std::nullopt;
    const Fault fault = *found;
    if (found->count > 0 && --found->count == 0)
        m_faults.erase(found);
    return fault;
}

int FaultPlan::pending() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return static_cast<int>(m_faults.size());
}

} // namespace Sim
