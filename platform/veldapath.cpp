#include "platform/veldapath.h"

#include "platform/devicepaths.h"

CVeldaPath::CVeldaPath(const QString& relative) : m_relative(relative) {}

QString CVeldaPath::get_path() const {
    if (m_relative.isEmpty())
        return DevicePaths::dataRoot();
    return DevicePaths::dataRoot() + (m_relative.startsWith('/') ? m_relative : '/' + m_relative);
}
