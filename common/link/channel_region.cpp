#include "common/link/channel_region.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

ChannelRegion::ChannelRegion(std::string name) : m_name(std::move(name)) {}

ChannelRegion::~ChannelRegion() {
    if (m_base == nullptr)
        return;
    // The channel count is the length of the release, which the kernel rounds up to one page. Three or four records
    // need a second page; it is released after it.
    const auto pageSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* base = const_cast<char*>(m_base);
    munmap(base, m_channels);
    if (m_size > pageSize)
        munmap(static_cast<char*>(base) + pageSize, m_size - pageSize);
    close(m_descriptor);
}

bool ChannelRegion::follow() {
    const int descriptor = shm_open(m_name.c_str(), O_RDONLY, 0444);
    struct stat status {};
    const bool found = descriptor >= 0 && fstat(descriptor, &status) == 0;
    const auto size = found ? static_cast<std::size_t>(status.st_size) : 0;
    const bool same = found && status.st_dev == m_device && status.st_ino == m_inode;
    bool changed = false;
    if (same && size == m_size) {
        m_present = true;
    } else if (size >= ChannelRecordSize || same) {
        // Shrunk in place to less than a record ends up here too: the old mapping must not be touched any more.
        unmap();
        m_device = status.st_dev;
        m_inode = status.st_ino;
        m_size = size;
        map(descriptor, size);
        changed = true;
    } else {
        m_present = false;
    }
    if (descriptor >= 0 && descriptor != m_descriptor)
        close(descriptor);
    return changed;
}

void ChannelRegion::map(int descriptor, std::size_t size) {
    const std::size_t channels = size / ChannelRecordSize;
    m_present = channels > 0;
    m_channels = channels == 0
                     ? 1
                     : static_cast<unsigned>(std::min<std::size_t>(channels, std::numeric_limits<unsigned>::max()));
    if (channels == 0 || channels > MaxChannels)
        return;
    void* base = mmap(nullptr, size, PROT_READ, MAP_SHARED, descriptor, 0);
    if (base == MAP_FAILED) {
        m_inode = 0; // tried again at the next use
        return;
    }
    m_base = static_cast<const char*>(base);
    m_descriptor = descriptor;
}

void ChannelRegion::unmap() {
    if (m_base == nullptr)
        return;
    munmap(const_cast<char*>(m_base), m_size);
    close(m_descriptor);
    m_base = nullptr;
    m_descriptor = -1;
}

bool ChannelRegion::read(unsigned channel, std::size_t offset, void* to, std::size_t size) const {
    if (holds(channel) && offset <= ChannelRecordSize && size <= ChannelRecordSize - offset) {
        const auto place = static_cast<off_t>(channel * ChannelRecordSize + offset);
        if (pread(m_descriptor, to, size, place) == static_cast<ssize_t>(size))
            return true;
    }
    std::memset(to, 0, size);
    return false;
}
