#include "common/update/package_look.h"

#include <exception>
#include <utility>

namespace Kavor::HandheldGui {

PackageScan::~PackageScan() {
    requestInterruption();
    wait();
}

void PackageScan::lookBelow(const QString& root) {
    m_next = root;
    if (isRunning())
        requestInterruption();
    else
        looksAgain();
}

bool PackageScan::looksAgain() {
    if (isRunning()) // the end that is told of is an older look's
        return true;
    if (m_next.isEmpty())
        return false;
    wait(); // finished() comes a moment before the end
    m_root = m_next;
    m_next.clear();
    start(QThread::LowPriority);
    return true;
}

std::optional<PackageScan::Result> PackageScan::takeResult() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::exchange(m_result, std::nullopt);
}

void PackageScan::run() {
    Result result;
    try {
        result.packages = m_look(m_root);
    } catch (const std::exception& error) {
        result.error = QString::fromLocal8Bit(error.what());
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_result = result;
}

} // namespace Kavor::HandheldGui
