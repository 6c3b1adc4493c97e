#pragma once

#include "common/wire/channel_record.h"

#include <QByteArray>
#include <cstddef>
#include <string>

/// A region of channel records that a test publishes, under a name of its own, gone with the object.
class TestRegion {
public:
    explicit TestRegion(unsigned channels = 1);
    ~TestRegion();
    TestRegion(const TestRegion&) = delete;
    TestRegion& operator=(const TestRegion&) = delete;

    const std::string& name() const { return m_name; }
    ChannelRecord& record(unsigned channel = 0);

    /// Takes the name away and publishes another region under it: records of zeros, connected, with `port`.
    void replace(unsigned channels, const char* port = "");

    /// The same with a size in bytes.
    void replaceWithSize(std::size_t bytes);

    /// Changes the size of the region as it is.
    void resizeInPlace(std::size_t bytes);

    /// Takes the name away; who has the region mapped keeps it.
    void unlink();

private:
    void create(std::size_t bytes);
    void unmap();

    std::string m_name;
    char* m_base = nullptr;
    std::size_t m_size = 0;
};
