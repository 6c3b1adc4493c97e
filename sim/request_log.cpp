#include "sim/request_log.h"

#include "sim/scpi_text.h"

#include <algorithm>
#include <chrono>

namespace Sim {

void RequestLog::add(const QByteArray& line) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_lines << line;
    m_added.notify_all();
}

void RequestLog::clear() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_lines.clear();
}

QByteArrayList RequestLog::lines() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_lines;
}

int RequestLog::count(const QByteArray& header) const {
    const ScpiLine wanted = splitLine(header);
    const QByteArrayList all = lines();
    return static_cast<int>(std::count_if(all.begin(), all.end(), [&wanted](const QByteArray& text) {
        const ScpiLine line = splitLine(text);
        return line.isQuery == wanted.isQuery && headerMatches(wanted.header.constData(), line.header);
    }));
}

bool RequestLog::waitFor(const Predicate& predicate, int ms) const {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_added.wait_for(lock, std::chrono::milliseconds(ms), [&] { return predicate(m_lines); });
}

} // namespace Sim
