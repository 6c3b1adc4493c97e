#include "portable/screens/update_scan.h"

#include <exception>

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
    if (m_next.isEmpty())
        return false;
    wait(); // finished() comes a moment before the end
    m_root = m_next;
    m_next.clear();
    start(QThread::LowPriority);
    return true;
}

PackageScan::Result PackageScan::result() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_result;
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
