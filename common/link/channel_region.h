#pragma once

#include "common/wire/channel_record.h"

#include <cstddef>
#include <string>
#include <sys/types.h>

/// The shared-memory region in which the module's service publishes one ChannelRecord per channel. It is mapped
/// read-only and follows the service: a region that was made anew or changed its size is mapped again. What is read
/// comes through the region's descriptor: a service that cuts its region at that very moment would make a bus error of
/// a touch of the mapping.
///
/// A region of less than one record counts as missing, one of more than four records is refused. Neither is ever read.
/// When the name has gone, the last mapping stays readable: it is the last that the module was known to be.
/// Not thread-safe; used on the GUI thread.
class ChannelRegion {
public:
    explicit ChannelRegion(std::string name);
    ~ChannelRegion();
    ChannelRegion(const ChannelRegion&) = delete;
    ChannelRegion& operator=(const ChannelRegion&) = delete;

    /// Brings the mapping in line with what the name stands for now. True when another region has been mapped, or the
    /// mapping was given up. Three system calls when nothing has changed.
    bool follow();

    /// The name stands for the very memory that is mapped, as of the last follow().
    bool isPresent() const { return m_present; }

    /// One to four records can be read.
    bool isUsable() const { return m_base != nullptr; }

    /// Records in the region, also when that is too many; 1 as long as there is none.
    unsigned channelCount() const { return m_channels; }

    bool holds(unsigned channel) const { return isUsable() && channel < m_channels; }

    /// Copies bytes of a channel's record. False, and zeros, where the region holds no such channel, the range leaves
    /// the record, or the region has been cut meanwhile. One system call.
    bool read(unsigned channel, std::size_t offset, void* to, std::size_t size) const;

private:
    void map(int descriptor, std::size_t size);
    void unmap();

    std::string m_name;
    const char* m_base = nullptr;
    int m_descriptor = -1; ///< of what is mapped
    std::size_t m_size = 0;
    dev_t m_device = 0;
    ino_t m_inode = 0;
    unsigned m_channels = 1;
    bool m_present = false;
};
