#include "sim/shared_region.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace Sim {
namespace {

constexpr mode_t Mode = 0644;

QString systemError(const char* what, const std::string& name) {
    return QString("%1 of the region %2 failed: %3").arg(what, QString::fromStdString(name), strerror(errno));
}

// Where Linux keeps named shared memory; only there can a finished region take the place of another in one step.
std::string fileOf(const std::string& name) {
    return "/dev/shm" + name;
}

unsigned long long inodeOf(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 ? status.st_ino : 0;
}

} // namespace

SharedRegion::SharedRegion(std::string name) : m_name(std::move(name)) {}

SharedRegion::~SharedRegion() {
    if (!m_mapping)
        return;
    unmap();
    const int descriptor = shm_open(m_name.c_str(), O_RDONLY, 0);
    if (descriptor < 0)
        return;
    const bool ours = inodeOf(descriptor) == m_inode;
    close(descriptor);
    if (ours)
        shm_unlink(m_name.c_str());
}

void SharedRegion::unmap() {
    if (m_mapping)
        munmap(m_mapping, m_size);
    m_mapping = nullptr;
}

bool SharedRegion::replace(const Records& records, QString& error) {
    const std::string draft = m_name + "." + std::to_string(getpid()) + ".new";
    const std::size_t size = records.size() * ChannelRecordSize;
    shm_unlink(draft.c_str());
    const int descriptor = shm_open(draft.c_str(), O_RDWR | O_CREAT | O_EXCL, Mode);
    if (descriptor < 0) {
        error = systemError("Opening", m_name);
        return false;
    }
    // The mode of shm_open is cut by the umask; a panel of another account must be able to read.
    void* mapping = MAP_FAILED;
    if (fchmod(descriptor, Mode) == 0 && ftruncate(descriptor, static_cast<off_t>(size)) == 0)
        mapping = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    if (mapping != MAP_FAILED)
        std::memcpy(mapping, records.data(), size);
    const bool placed = mapping != MAP_FAILED && std::rename(fileOf(draft).c_str(), fileOf(m_name).c_str()) == 0;
    if (!placed) {
        error = systemError("Publishing", m_name);
        if (mapping != MAP_FAILED)
            munmap(mapping, size);
        shm_unlink(draft.c_str());
        close(descriptor);
        return false;
    }
    unmap();
    m_mapping = mapping;
    m_size = size;
    m_inode = inodeOf(descriptor);
    close(descriptor);
    return true;
}

void SharedRegion::write(const Records& records) {
    using Word = std::uint64_t;
    static_assert(ChannelRecordSize % sizeof(Word) == 0 && alignof(ChannelRecord) >= alignof(Word));
    if (!m_mapping)
        return;
    // Readers take no lock, so a number must never be seen half written.
    auto* target = static_cast<Word*>(m_mapping);
    const auto* source = reinterpret_cast<const unsigned char*>(records.data());
    const std::size_t words = std::min(m_size, records.size() * ChannelRecordSize) / sizeof(Word);
    for (std::size_t i = 0; i < words; ++i) {
        Word word = 0;
        std::memcpy(&word, source + i * sizeof(Word), sizeof(Word));
        if (__atomic_load_n(target + i, __ATOMIC_RELAXED) != word)
            __atomic_store_n(target + i, word, __ATOMIC_RELEASE);
    }
}

} // namespace Sim
