#pragma once

#include "common/update/fpga_board_state.h"
#include "common/update/fpga_datagram.h"

#include <QElapsedTimer>
#include <QObject>
#include <QStringList>
#include <QVector>
#include <array>
#include <functional>

class QUdpSocket;

/// Sends one FPGA image to all boards at once, block by block, and waits until every board has burnt and verified it.
/// One updater serves one update. Blocks: it runs on a worker thread, to which it may be moved once it is configured. A
/// request to interrupt that thread ends any wait within one poll interval, as a failure.
class FpgaUpdater : public QObject {
    Q_OBJECT

public:
    /// (0, phase, percent, context), called on the thread that runs. Phase 0: sent and acknowledged; 1: burnt and
    /// verified by the slowest board; 3: all done, once.
    using ProgressCallback = void (*)(int, int, int, void*);

    struct TargetState {
        QHostAddress address;
        quint16 port = 0;
        bool acked = false;    ///< has acknowledged the block that is awaited
        bool burnDone = false; ///< has reported the end
        quint16 lastAckedBlock = 0;
        int burnPercent = 0; ///< 0 to 100
        qint64 heardAt = 0;  ///< ms of the updater's clock; when the update began, until the board is heard
    };

    /// How the boards stand, called on the thread that runs at most every ReportMs.
    using BoardCallback = std::function<void(const FpgaBoardStates&)>;
    static constexpr int ReportMs = 100;

    static constexpr int SilentAfterMs = 10000;

    explicit FpgaUpdater(QObject* parent = nullptr);

    /// The bytes are not owned and must stay until finished.
    void setImage(const unsigned char* image, quint32 size);

    /// A count below 1 leaves no target.
    void setTargets(const QHostAddress* addresses, int count, quint16 port);
    void setProgressCallback(ProgressCallback callback, void* context);
    void setBoardCallback(BoardCallback callback) { m_boardCallback = std::move(callback); }

    /// For how long a board says nothing until its state says so; changes nothing of the transfer.
    void setSilentAfter(int milliseconds) { m_silentAfterMs = milliseconds; }
    const QVector<TargetState>& targets() const { return m_targets; }

    /// After a failure: the boards that had not answered what was awaited last.
    QStringList silentBoards() const;

    /// After a failure: what was under way, in a few words.
    QString step() const { return m_step; }

    /// Both phases. False: no target, no image, more than 65534 blocks (nothing is sent), a board that does not answer
    /// INIT or EOF in three attempts of ackTimeoutMs, silence of all boards for more than burnSilenceMs while they
    /// burn, or a burn of burnTotalMs. A data block is repeated without limit. All times in milliseconds.
    bool runBlocking(int ackTimeoutMs, int ackPollMs, int burnPollMs, int burnSilenceMs, int burnTotalMs);

    /// The first phase: INIT, all blocks, EOF.
    [[nodiscard]] bool doTransfer(int ackTimeoutMs, int ackPollMs);

    /// The second phase.
    [[nodiscard]] bool doBurnVerify(int burnPollMs, int burnSilenceMs, int burnTotalMs);

    /// Sends a block to every target, 0 being INIT and endMarker EOF. At most 1024 bytes of payload. Always true: what
    /// the network loses shows in the acknowledgements.
    bool sendBlockToAll(quint16 block, const unsigned char* payload, int length, bool endMarker);

    /// Whether every target has acknowledged this block or a later one before the time-out.
    [[nodiscard]] bool waitForAllAcks(quint16 block, int timeoutMs, int pollMs);

signals:
    /// The outcome, exactly once per runBlocking, from the thread that ran it.
    void finished(bool ok);

private:
    struct Datagram {
        QHostAddress from;
        std::array<char, FpgaWire::HeaderSize> bytes;
        qint64 size = 0;
    };

    int totalBlocks() const;
    TargetState* target(const QHostAddress& address);
    bool waitReadable(int pollMs, qint64 remainingMs);
    bool receive(Datagram& datagram);
    bool sendAndWait(quint16 block, const unsigned char* payload, int length, bool endMarker, int timeoutMs,
                     int pollMs);
    bool sendMarker(const char* name, quint16 block, int timeoutMs, int pollMs);
    bool sendBlocks(int timeoutMs, int pollMs);
    void takeStatus(const Datagram& datagram);
    bool allTargets(bool TargetState::*flag) const;
    int lowestPercent() const;
    void report(int phase, int percent) const;
    void begin();
    void reportBoards(bool now);
    FpgaBoardState stateOf(const TargetState& target, qint64 now) const;
    static bool interrupted();

    QUdpSocket* m_socket;
    const unsigned char* m_image = nullptr;
    quint32 m_imageSize = 0;
    QVector<TargetState> m_targets;
    bool m_burning = false;
    QString m_step;
    QElapsedTimer m_clock;   ///< since the update began
    qint64 m_reportedAt = 0; ///< by the clock
    BoardCallback m_boardCallback;
    int m_silentAfterMs = SilentAfterMs;
    ProgressCallback m_callback = nullptr;
    void* m_context = nullptr;
};
