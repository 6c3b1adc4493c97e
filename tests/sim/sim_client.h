#pragma once

#include "common/instrument/channel_record.h"
#include "sim/module_simulator.h"

#include <QElapsedTimer>
#include <QHostAddress>
#include <QTcpSocket>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

/// A name that no other test process uses.
inline std::string uniqueRegion() {
    static int counter = 0;
    return "/velda_test_" + std::to_string(getpid()) + "_" + std::to_string(++counter);
}

inline Sim::Options optionsOf(unsigned channels) {
    Sim::Options options;
    options.channels = channels;
    options.regionName = uniqueRegion();
    return options;
}

/// The region as the panel sees it: mapped by its name, read-only.
class MappedRegion {
public:
    explicit MappedRegion(const std::string& name) {
        const int descriptor = shm_open(name.c_str(), O_RDONLY, 0);
        if (descriptor < 0)
            return;
        struct stat status {};
        if (fstat(descriptor, &status) == 0) {
            m_inode = status.st_ino;
            m_mode = status.st_mode & 0777U;
            m_size = static_cast<std::size_t>(status.st_size);
            m_memory = mmap(nullptr, m_size, PROT_READ, MAP_SHARED, descriptor, 0);
        }
        close(descriptor);
    }
    ~MappedRegion() {
        if (isMapped())
            munmap(m_memory, m_size);
    }
    MappedRegion(const MappedRegion&) = delete;
    MappedRegion& operator=(const MappedRegion&) = delete;

    bool isMapped() const { return m_memory != MAP_FAILED; }
    std::size_t size() const { return m_size; }
    unsigned mode() const { return m_mode; }
    unsigned long long inode() const { return m_inode; }
    const ChannelRecord& at(unsigned channel) const { return static_cast<const ChannelRecord*>(m_memory)[channel]; }

private:
    void* m_memory = MAP_FAILED;
    std::size_t m_size = 0;
    unsigned m_mode = 0;
    unsigned long long m_inode = 0;
};

/// A blocking client that needs no event loop.
class SimClient {
public:
    explicit SimClient(quint16 port) { connectTo(port); }

    bool connectTo(quint16 port) {
        m_socket.abort();
        m_buffer.clear();
        m_socket.connectToHost(QHostAddress::LocalHost, port);
        return m_socket.waitForConnected(5000);
    }

    void send(const QByteArray& bytes) {
        m_socket.write(bytes);
        while (m_socket.bytesToWrite() > 0 && m_socket.waitForBytesWritten(5000)) {
        }
    }

    /// The next line without its end, null when none comes in time.
    QByteArray line(int ms = 5000) {
        return readUntil([this] { return m_buffer.contains('\n'); }, ms) ? takeLine() : QByteArray();
    }

    QByteArray ask(const QByteArray& request) {
        send(request + "\r\n");
        return line();
    }

    /// Whatever comes until so many bytes are there, the connection ends or the time is over.
    QByteArray bytes(int count, int ms = 5000) {
        readUntil([this, count] { return m_buffer.size() >= count; }, ms);
        const QByteArray taken = m_buffer.left(count);
        m_buffer.remove(0, taken.size());
        return taken;
    }

    bool waitForEnd(int ms = 5000) {
        readUntil([] { return false; }, ms);
        return m_socket.state() == QAbstractSocket::UnconnectedState;
    }

private:
    template <typename Condition>
    bool readUntil(Condition condition, int ms) {
        QElapsedTimer timer;
        timer.start();
        while (!condition()) {
            const int left = ms - static_cast<int>(timer.elapsed());
            if (left <= 0 || m_socket.state() != QAbstractSocket::ConnectedState)
                break;
            m_socket.waitForReadyRead(left);
            m_buffer += m_socket.readAll();
        }
        return condition();
    }

    QByteArray takeLine() {
        const int end = m_buffer.indexOf('\n');
        const QByteArray line = m_buffer.left(end).trimmed();
        m_buffer.remove(0, end + 1);
        return line;
    }

    QTcpSocket m_socket;
    QByteArray m_buffer;
};
