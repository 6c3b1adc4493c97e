#pragma once

#include "common/instrument/device_values.h"
#include "common/link/channel_region.h"
#include "headless/service_probe.h"

#include <QByteArrayList>
#include <functional>
#include <memory>
#include <vector>

/// Sends a module's service every command that the panel sends, with values that do no harm, reads the record behind
/// each answer, and says what the panel will find wrong. What it has changed it sets back.
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

    explicit Conformance(const Settings& settings);

    /// Blocks until all is looked at; gives up where nothing answers any more. Once.
    std::vector<Row> run();

    /// Milliseconds of the answers, ascending.
    std::vector<double> times() const;

private:
    using Check = std::function<QByteArray(const ChannelRecord&)>; ///< what is wrong with the record, or nothing

    bool lookAtRegion();
    void lookAtRecord(unsigned channel);
    void lookAtChannel(unsigned channel);
    void deviceValue(DeviceValueId id);
    void words();
    void switches();
    void uploads();
    void network();
    void radiation();
    void configurations();
    void connections();

    ChannelRecord record();
    void row(const QByteArray& what);
    void skip(const QByteArray& what, const QByteArray& why);
    void find(const QByteArray& finding);
    /// Sends a command, checks the form of the answer and then the record; false when it was not acknowledged.
    bool send(const QByteArray& command, const Check& check = nullptr);
    bool sendMessage(const QByteArray& message, const QByteArray& shown, const Check& check);
    ServiceProbe::Answer exchange(const QByteArray& message, const QByteArray& shown);

    const Settings m_settings;
    ChannelRegion m_region;
    std::unique_ptr<ServiceProbe> m_probe;
    quint16 m_port = 0;
    unsigned m_channel = 0;
    int m_mute = 0; ///< commands in a row that got no answer
    std::vector<Row> m_rows;
    std::vector<double> m_times;
};
