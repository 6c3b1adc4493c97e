#pragma once

#include "common/instrument/device_values.h"
#include "common/link/channel_region.h"
#include "headless/service_probe.h"

#include <QByteArrayList>
#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <vector>

/// Sends a module's service every command that the panel sends, with values that do no harm, reads the record behind
/// each answer, and says what the panel will find wrong. What it has changed it sets back, but for the list and the
/// pattern, which cannot be read; RF and modulations stay off. A channel that does not take its selection and RF off is
/// left alone, and so is all when the record has gone.
class Conformance {
public:
    struct Settings {
        std::string regionName = RegionName;
        int timeoutMs = 2000;  ///< as the panel's
        int slowMs = 300;      ///< an answer that takes longer is shown as pending
        int quietMs = 3;       ///< listened for unasked bytes behind each answer
        bool radiates = false; ///< also with the RF output on, at the lowest power, and with modulations running
        bool restarts = false; ///< also store, reset, recall and erase a configuration, 99999
    };

    /// One thing looked at.
    struct Row {
        QByteArray what;
        QByteArrayList findings; ///< empty: nothing is wrong
        double slowestMs = 0;
        bool skipped = false;
    };

    /// seen: called with each row as soon as it is complete, on the thread of run().
    using RowSeen = std::function<void(const Row&)>;

    explicit Conformance(const Settings& settings, RowSeen seen = nullptr);

    /// Blocks until all is looked at; gives up where nothing answers any more. Once.
    std::vector<Row> run();

    /// Makes run() end when what it is at has been set back. Any thread, and signal handlers.
    void stop() { m_stopped = true; }

    /// Milliseconds of the answers, ascending.
    std::vector<double> times() const;

private:
    using Check = std::function<QByteArray(const ChannelRecord&)>; ///< what is wrong with the record, or nothing

    bool lookAtRegion();
    void lookAtRecord();
    void lookAtChannel(unsigned channel);
    void deviceValue(DeviceValueId id);
    void words();
    void switches();
    void uploads();
    void network();
    void radiation();
    void radiate(const ChannelRecord& before);
    void configurations();
    void connections();
    void leaveOff();

    bool goesOn() const;
    ChannelRecord record();
    void row(const QByteArray& what);
    void finishRow();
    void skip(const QByteArray& what, const QByteArray& why);
    void find(const QByteArray& finding);
    bool select(unsigned channel); ///< nothing to send where there is one channel
    bool sendOff();
    bool setValue(const DeviceValue& item, const std::string& argument);
    /// Sends a command, checks the form of the answer and then the record; false when it was not taken.
    bool send(const QByteArray& command, const Check& check = nullptr);
    bool sendMessage(const QByteArray& message, const QByteArray& shown, const Check& check);
    ServiceProbe::Answer exchange(const QByteArray& message, const QByteArray& shown);

    const Settings m_settings;
    const RowSeen m_seen;
    ChannelRegion m_region;
    std::unique_ptr<ServiceProbe> m_probe;
    quint16 m_port = 0;
    unsigned m_channel = 0;  ///< the one that is looked at
    unsigned m_selected = 0; ///< the one that commands reach, as far as it was asked for
    unsigned m_channels = 1;
    QByteArray m_scope; ///< before the name of each row: the channel, where there are several
    std::array<ChannelRecord, MaxChannels> m_last{};
    int m_mute = 0;            ///< commands in a row that got no answer
    bool m_lost = false;       ///< there is no record any more
    bool m_listIsWeak = false; ///< the module's list is the one of the lowest power
    std::atomic<bool> m_stopped{false};
    std::vector<Row> m_rows;
    std::vector<double> m_times;
};
