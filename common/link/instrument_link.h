#pragma once

#include "common/link/channel_region.h"
#include "common/link/command_history.h"
#include "common/link/instrument_settings.h"
#include "common/link/reply_text.h"
#include "common/wire/channel_record.h"

#include <QByteArray>
#include <QObject>
#include <QTimer>
#include <array>
#include <string>
#include <vector>

class QThread;
class ScpiClient;

/// The lower half of EventHandler: the channel records that the module's service publishes, a snapshot of them, and the
/// blocking send operations. Everything runs on the GUI thread; the socket lives on a thread of the client's own.
///
/// Send operations return 0, or -1 when there is no connection, the service refused, or no answer came in time. They
/// block in a local event loop, so timers, repaints and taps go on meanwhile: waits may nest, at most four deep, and
/// each gets its own answer. A wait ends at the latest when the time-outs of the commands ahead of it and its own have
/// passed; a command that had not been written by then is withdrawn. Nothing is sent twice.
class InstrumentLink : public QObject {
    Q_OBJECT

public:
    static constexpr int MaxNestedWaits = 4;
    static constexpr int LoggedData = 64; ///< bytes of an upload that the log shows

    ~InstrumentLink() override;

    /// Maps the region, starts the client and takes the snapshot. Goes on without a region: it is looked for again at
    /// every use. Blocks for at most connectWaitMs + connectSettleMs.
    void InitChannels();

    /// Starts the client on the port that the current channel's record names and waits for its connection. Does nothing
    /// when it runs already; without a usable port there is no client and every send fails.
    void initScpi(const QHostAddress& address);

    /// Copies all records into the snapshot: 0, or -1 (logged) when there is no region of one to four records.
    int init_channel();

    /// Copies as many bytes as there are channels from the start of the region into the snapshot.
    void refresh();

    /// Copies one whole record into the snapshot. 0, also for a channel that does not exist; -1 as init_channel(), said
    /// in the log once for each loss of the region.
    int revert_preset(int channel);

    /// Bit i is set for each channel i whose module is not connected. Without a usable region: 1.
    unsigned getDisconnectedChannels();

    int send_scpi(std::string command, std::string& reply, QByteArray data, bool binary);
    int send_scpi(QByteArray data, std::string& reply);

    /// Sends `command` and, directly behind it, `arguments`. `reply` is assigned only when a reply came that is not
    /// empty.
    int veldaScpiTrans(const std::string& command, const std::string& arguments, std::string& reply);

    /// As veldaScpiTrans, with the text in double quotes.
    int veldaScpiTransStr(const std::string& command, const std::string& text, std::string& reply);
    int veldaScpiTransData(const QByteArray& data);

    /// The snapshot's record of the current channel; zeros when there is none. The reference stays valid.
    const ChannelRecord& snapshot() const { return m_snapshot[m_channel]; }

    /// Copies of all records as they stand in the region; empty without one. The snapshot is left alone.
    std::vector<ChannelRecord> publishedRecords();

    /// What was last sent, answered and told.
    CommandHistory& history() { return m_history; }

    /// Channels of the region, 1 to 4; 1 when there is no usable region.
    unsigned channelCount() const;
    /// Of the region that is there now: 0 without one.
    unsigned publishedChannels() const;
    unsigned currentChannel() const { return m_channel; }

    /// Makes the first channel current where a region made anew holds fewer than there were, over a connection of its
    /// own. Until then a channel that is not there reads as zeros. Not while a command waits.
    void keepChannelInside();

    /// A command is waiting for its answer.
    bool isWaiting() const { return m_waits > 0; }

    /// The region is there and can be read, and the client is connected.
    bool isLinkUp() const;

    /// There is a record of the current channel, of this moment or the last that could be read.
    bool hasRecord() const { return holdsCurrentChannel(); }

    /// The service has answered, if only with a refusal, since a command last timed out.
    bool isAnswering() const { return m_answering; }

    /// The connected word of the snapshot's current channel. True without a record: then the link is what is missing.
    bool isModuleConnected() const { return snapshot().connected != 0 || !holdsCurrentChannel(); }

signals:
    void linkChanged(bool up);

    /// A command begins to wait for its answer while none does, or the last one that waits has ended.
    void waitingChanged(bool waiting);
    /// A command got no answer in time. Before its send operation returns.
    void timedOut();
    void answeringChanged(bool answering);
    /// Another channel is the current one: the panel chose it, or the region has none of the former's number any more.
    void channelChanged();
    /// The connected word has changed since the last look at the record.
    void moduleConnectedChanged(bool connected);

protected:
    InstrumentLink(const InstrumentSettings& settings, QObject* parent);

    /// The command that ended last got no answer in time.
    bool lastTimedOut() const { return m_lastTimedOut; }

    /// Makes a channel current; up to 4, one more than a region can hold and always a record of zeros.
    /// The module is told by whoever calls, and again after each reconnection.
    void selectChannel(unsigned channel);

    /// Makes a connection anew, whose first word selects the current channel: when it is not known which channel the
    /// service has selected. Waits for the old connection to close only.
    void renewConnection();

    /// Copies a field of the current channel from the region into its place in the snapshot, which must be a part of
    /// cachedRecord(), and returns it there. Texts end with NUL.
    template <typename T>
    T& fetch(T& cachedField) {
        fetchBytes(&cachedField, sizeof cachedField);
        if constexpr (std::is_array_v<T>)
            cachedField[std::extent_v<T> - 1] = '\0';
        return cachedField;
    }

    /// The current channel's record as it stands in the region; the snapshot is left alone.
    ChannelRecord peekRecord();

    /// As fetch(), for bytes of the current channel's record in the snapshot.
    void fetchBytes(void* cachedField, std::size_t size);

    /// The region holds the current channel, so that what was fetched is the module's word.
    bool holdsCurrentChannel() const { return m_region.holds(m_channel); }

    ChannelRecord& cachedRecord() { return m_snapshot[m_channel]; }

private:
    struct Answer {
        int status = -1;
        std::string reply;
        QString error; ///< empty after success
    };

    void logUnusableRegion(const char* function) const;
    void takeSnapshot();
    void followRegion();
    void followService();
    quint16 publishedPort();
    void startClient(quint16 port);
    void stopClient();
    Answer await(bool isQuery, const QByteArray& message, int timeoutMs);
    void updateLink();
    void noteAnswer(const Answer& answer);
    void noteModule();
    void greet();

    const InstrumentSettings m_settings;
    QHostAddress m_address;
    QThread* m_clientThread = nullptr;
    ScpiClient* m_client = nullptr;
    quint16 m_port = 0;
    bool m_scpiStarted = false;
    unsigned m_channel = 0;
    bool m_otherSelected = false; ///< a channel other than the first was ever asked for
    std::array<ChannelRecord, MaxChannels + 1> m_snapshot{};
    ChannelRegion m_region;
    std::string m_reportedPortText;
    QTimer m_linkWatch;
    bool m_linkUp = false;
    bool m_lossReported = false;
    bool m_lackReported = false; ///< of a client, since there was one
    bool m_moduleConnected = true;
    bool m_answering = true;
    bool m_lastTimedOut = false;
    CommandHistory m_history;
    int m_waits = 0;
    int m_waitBudgetMs = 0; ///< time-outs of the commands that wait
};
