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

    /// The part of the device that the LAN page shows: the first interface that is not the loopback and has an
    /// address, or the first without one. Null when there is no other interface than the loopback.
    static const NetworkFacts::Interface* shownInterface(const NetworkFacts& facts);

signals:
    void factsRead(const Kavor::HandheldGui::NetworkFacts& facts);

    /// Ends every look, after factsRead(): 0 when the interface shown has an address, otherwise -1.
    void ipSet(int status);

protected:
    void run() override;

private:
    const std::function<NetworkFacts()> m_read;
};

} // namespace Kavor::HandheldGui
