#include "tests/common/link/testregion.h"

#include <QtGlobal>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

TestRegion::TestRegion(unsigned channels) {
    static int made = 0;
    m_name = "/velda-test-" + std::to_string(getpid()) + "-" + std::to_string(++made);
    replace(channels);
}

TestRegion::~TestRegion() {
    unlink();
    unmap();
}

ChannelRecord& TestRegion::record(unsigned channel) {
    return reinterpret_cast<ChannelRecord*>(m_base)[channel];
}

void TestRegion::replace(unsigned channels, const char* port) {
    replaceWithSize(channels * ChannelRecordSize);
    for (unsigned channel = 0; channel < channels; ++channel) {
        record(channel).connected = 1;
        std::strncpy(record(channel).scpiPort, port, sizeof record(channel).scpiPort - 1);
    }
}

void TestRegion::replaceWithSize(std::size_t bytes) {
    unlink();
    unmap();
    create(bytes);
}

void TestRegion::resizeInPlace(std::size_t bytes) {
    const int descriptor = shm_open(m_name.c_str(), O_RDWR, 0600);
    if (descriptor < 0 || ftruncate(descriptor, static_cast<off_t>(bytes)) != 0)
        qFatal("The test's region cannot be resized");
    close(descriptor);
}

void TestRegion::unlink() {
    shm_unlink(m_name.c_str());
}

void TestRegion::create(std::size_t bytes) {
    const int descriptor = shm_open(m_name.c_str(), O_RDWR | O_CREAT | O_EXCL, 0600);
    if (descriptor < 0 || ftruncate(descriptor, static_cast<off_t>(bytes)) != 0)
        qFatal("The test's region cannot be made");
    m_size = bytes;
    if (bytes > 0)
        m_base = static_cast<char*>(mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0));
    close(descriptor);
}

void TestRegion::unmap() {
    if (m_base != nullptr)
        munmap(m_base, m_size);
    m_base = nullptr;
}
