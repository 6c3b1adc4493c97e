#pragma once

#include "platform/networkfacts.h"

#include <QThread>
#include <functional>

namespace Kavor::HandheldGui {

/// Reads the network of the device on a thread of its own, one look at a time; the results reach other threads by
/// queued signals. Created, asked and destroyed on the GUI thread; the destructor waits for the look under way.
class dhcpThread : public QThread {
    Q_OBJECT

public:
    /// read: called on this thread; null reads the operating system's.
    explicit dhcpThread(const std::function<NetworkFacts()>& read);
    ~dhcpThread() override;

    /// Starts a look unless one is under way.
    void lookUp();

    /// Whether an interface of that name has a cable in it. Reads a small file; any thread.
    static bool hasCarrier(const QString& interface);

    /// What of the device's network is the instrument's own: the interface that carries the address which the module
    /// publishes, or else the first one named eth... that has a cable in it. Neither the loopback nor what leads to the
    /// FPGA boards, 192.168.7.x to 192.168.10.x. Null where there is none; the interface may have no address yet.
    struct Own {
        const NetworkFacts::Interface* interface = nullptr;
        const NetworkFacts::Address* address = nullptr;
    };
    static Own ownPart(const NetworkFacts& facts, const QString& published);

signals:
    void factsRead(const Kavor::HandheldGui::NetworkFacts& facts);

    /// Ends every look, after factsRead(): 0 when the interface found by its cable has an address, else -1.
    void ipSet(int status);

protected:
    void run() override;

private:
    const std::function<NetworkFacts()> m_read;
};

} // namespace Kavor::HandheldGui
