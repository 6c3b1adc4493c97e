#pragma once

#include "common/wire/channel_record.h"
#include "sim/module_simulator.h"

#include <QDeadlineTimer>
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
        struct stat status {};
        if (descriptor < 0 || fstat(descriptor, &status) != 0)
            return;
        m_size = static_cast<std::size_t>(status.st_size);
        m_memory = mmap(nullptr, m_size, PROT_READ, MAP_SHARED, descriptor, 0);
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
    const ChannelRecord& at(unsigned channel) const { return static_cast<const ChannelRecord*>(m_memory)[channel]; }

private:
    void* m_memory = MAP_FAILED;
    std::size_t m_size = 0;
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

    /// The answer's line without its end, empty when none comes in time.
    QByteArray ask(const QByteArray& request) {
        send(request + "\r\n");
        read([this] { return m_buffer.contains('\n'); }, 5000);
        return bytes(m_buffer.indexOf('\n') + 1).trimmed();
    }

    /// Whatever comes until so many bytes are there, the connection ends or the time is over.
    QByteArray bytes(int count, int ms = 5000) {
        read([this, count] { return m_buffer.size() >= count; }, ms);
        const QByteArray taken = m_buffer.left(count);
        m_buffer.remove(0, taken.size());
        return taken;
    }

    bool waitForEnd() {
        read([] { return false; }, 5000);
        return m_socket.state() == QAbstractSocket::UnconnectedState;
    }

private:
    // Looks at what has come before it waits for more: the bytes may have come in while a request was written.
    template <typename Condition>
    void read(Condition condition, int ms) {
        const QDeadlineTimer deadline(ms); // what remains of it is never negative, which would mean for ever
        const auto enough = [&] {
            m_buffer += m_socket.readAll();
            return condition();
        };
        while (!enough() && m_socket.state() == QAbstractSocket::ConnectedState && !deadline.hasExpired())
            m_socket.waitForReadyRead(static_cast<int>(deadline.remainingTime()));
    }

    QTcpSocket m_socket;
    QByteArray m_buffer;
};

/// A running module, its region and a client of it.
struct Bench {
    explicit Bench(const Sim::Options& options = optionsOf(3)) : simulator(options) {
        QString error;
        if (!simulator.start(&error))
            qFatal("%s", qPrintable(error));
        region = std::make_unique<MappedRegion>(simulator.regionName());
        client = std::make_unique<SimClient>(simulator.port());
    }
    QByteArray ask(const QByteArray& request) const { return client->ask(request); }

    Sim::ModuleSimulator simulator;
    std::unique_ptr<MappedRegion> region;
    std::unique_ptr<SimClient> client;
};
