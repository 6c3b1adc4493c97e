#include "sim/request_log.h"

#include "sim/scpi_text.h"

#include <chrono>

namespace Sim {

void RequestLog::add(const QByteArray& text) {
    const ScpiLine line = splitLine(text);
    std::lock_guard<std::mutex> lock(m_mutex);
    ++m_counts[{line.header.toUpper(), line.isQuery}];
    m_lines << text;
    if (m_lines.size() > MaximumLines)
        m_lines.removeFirst();
    m_added.notify_all();
}

void RequestLog::clear() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_lines.clear();
    m_counts.clear();
}

QByteArrayList RequestLog::lines() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_lines;
}

int RequestLog::count(const QByteArray& header) const {
    const ScpiLine wanted = splitLine(header);
    std::lock_guard<std::mutex> lock(m_mutex);
    int count = 0;
    for (auto it = m_counts.begin(); it != m_counts.end(); ++it) {
        if (it.key().second == wanted.isQuery && headerMatches(wanted.header.constData(), it.key().first))
            count += it.value();
    }
    return count;
}

bool RequestLog::waitFor(const Predicate& predicate, int ms) const {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_added.wait_for(lock, std::chrono::milliseconds(ms), [&] { return predicate(m_lines); });
}

} // namespace Sim
