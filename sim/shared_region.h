#pragma once

#include "common/wire/channel_record.h"

#include <QString>
#include <string>
#include <vector>

namespace Sim {

using Records = std::vector<ChannelRecord>;

/// The shared memory in which a module publishes its records, owned by the one who writes it. Not thread-safe.
class SharedRegion {
public:
    explicit SharedRegion(std::string name);
    ~SharedRegion(); ///< takes the name away, unless it belongs to a newer region by now
    SharedRegion(const SharedRegion&) = delete;
    SharedRegion& operator=(const SharedRegion&) = delete;

    /// Puts a new region with these records in the place of the present one, if any, in one step: who opens the name
    /// sees the old or the new one, whole. Mappings of the old one stay valid and are no longer written. Readable by
    /// everyone (0644). False, with a sentence and without effect, when the system refuses.
    [[nodiscard]] bool replace(const Records& records, QString& error);

    /// Writes the records that the region holds, whole words at a time. Nothing happens before the first replace.
    void write(const Records& records);

    const std::string& name() const { return m_name; }

private:
    void unmap();

    std::string m_name;
    void* m_mapping = nullptr;
    std::size_t m_size = 0;
    unsigned long long m_inode = 0;
};

} // namespace Sim
