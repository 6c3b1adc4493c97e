#pragma once

#include "sim/fpga_faults.h"
#include "sim/fpga_wire.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <QUdpSocket>
#include <random>

namespace Sim {

struct FpgaBoardSettings {
    QHostAddress address{QHostAddress::LocalHost};
    quint16 port = 7502;   ///< 0: any free one
    int burnMs = 2000;     ///< burning and verifying together
    int statusMs = 50;     ///< between two statuses while it burns
    int endStatuses = 400; ///< how often the end is told, since nobody acknowledges it
};

/// One FPGA board of the module as a peer on the network: takes an image block by block, acknowledges, burns it and
/// tells its progress. Lives on a thread with an event loop.
class FpgaBoard : public QObject {
    Q_OBJECT

public:
    enum State { Idle, Receiving, Burning, Burnt };

    struct Counts {
        int inits = 0;
        int data = 0;
        int eofs = 0;
        int repeated = 0; ///< data blocks that were already there
        int outOfOrder =
            0; ///< data blocks with one missing before them, or an EOF of an incomplete image: not answered
        int malformed = 0;
        int dropped = 0; ///< datagrams of either direction that the loss took
        int answers = 0; ///< datagrams that left the board
    };

    explicit FpgaBoard(const FpgaBoardSettings& settings, QObject* parent = nullptr);

    /// False, with a sentence, when the address and port cannot be had.
    [[nodiscard]] bool listen(QString& error);

    quint16 port() const { return m_socket.localPort(); }
    void setFaults(const FpgaFaults& faults);
    State state() const { return m_state; }
    const Counts& counts() const { return m_counts; }
    const QByteArray& image() const { return m_image; } ///< as far as it was received
    QByteArray sha256() const;

signals:
    void burnt();

private:
    void onReadyRead();
    void onStatusTick();
    void take(const FpgaRequest& request);
    void takeInit(const FpgaRequest& request);
    void takeData(const FpgaRequest& request);
    void takeEof(const FpgaRequest& request);
    void acknowledge(int block);
    void sendStatus(const QByteArray& datagram);
    void send(QByteArray datagram, QUdpSocket& from, bool isMarker = false);
    bool lost(bool isMarker);
    int totalBlocks() const;

    FpgaBoardSettings m_settings;
    FpgaFaults m_faults;
    std::mt19937 m_random;
    QUdpSocket m_socket;
    QUdpSocket m_stray;
    QHostAddress m_host;
    quint16 m_hostPort = 0;
    State m_state = Idle;
    Counts m_counts;
    quint32 m_imageSize = 0;
    QByteArray m_image;
    int m_lastAck = 0;
    QTimer m_status;
    QElapsedTimer m_burning;
    int m_endsTold = 0;
};

} // namespace Sim
