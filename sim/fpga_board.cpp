#include "sim/fpga_board.h"

#include <QCryptographicHash>
#include <algorithm>

namespace Sim {
namespace {

constexpr quint32 LargestImage = 65534U * FpgaRequest::BlockSize;

// Counts a fault down; it is on as long as there is something left.
bool takeOne(int& left) {
    if (left > 0 && left < FpgaFaults::Always)
        --left;
    else if (left <= 0)
        return false;
    return true;
}

} // namespace

FpgaBoard::FpgaBoard(const FpgaBoardSettings& settings, QObject* parent) : QObject(parent), m_settings(settings) {
    connect(&m_socket, &QUdpSocket::readyRead, this, &FpgaBoard::onReadyRead);
    connect(&m_status, &QTimer::timeout, this, &FpgaBoard::onStatusTick);
    m_status.setTimerType(Qt::PreciseTimer);
}

bool FpgaBoard::listen(QString& error) {
    if (m_socket.bind(m_settings.address, m_settings.port))
        return true;
    error =
        QStringLiteral("%1:%2: %3").arg(m_settings.address.toString()).arg(m_settings.port).arg(m_socket.errorString());
    return false;
}

void FpgaBoard::setFaults(const FpgaFaults& faults) {
    m_faults = faults;
    m_random.seed(faults.seed);
    m_stray.close();
    if (!faults.strayAddress.isNull())
        m_stray.bind(faults.strayAddress, 0);
}

QByteArray FpgaBoard::sha256() const {
    return QCryptographicHash::hash(m_image, QCryptographicHash::Sha256).toHex();
}

int FpgaBoard::totalBlocks() const {
    return static_cast<int>((m_imageSize + FpgaRequest::BlockSize - 1) / FpgaRequest::BlockSize);
}

bool FpgaBoard::lost(bool isMarker) {
    const bool exempt = m_faults.lossPercent <= 0 || (isMarker && m_faults.lossSparesMarkers);
    const bool is = !exempt && static_cast<int>(m_random() % 100) < m_faults.lossPercent;
    m_counts.dropped += is ? 1 : 0;
    return is;
}

void FpgaBoard::onReadyRead() {
    while (m_socket.hasPendingDatagrams()) {
        QByteArray datagram(static_cast<int>(std::max<qint64>(m_socket.pendingDatagramSize(), 0)), '\0');
        QHostAddress from;
        quint16 port = 0;
        const qint64 size = m_socket.readDatagram(datagram.data(), datagram.size(), &from, &port);
        if (size < 0)
            continue;
        const FpgaRequest request = FpgaRequest::parse(datagram);
        if (lost(request.kind == FpgaRequest::Init || request.kind == FpgaRequest::Eof))
            continue;
        if (request.kind == FpgaRequest::Malformed) {
            ++m_counts.malformed;
            continue;
        }
        m_host = from;
        m_hostPort = port;
        take(request);
    }
}

void FpgaBoard::take(const FpgaRequest& request) {
    if (m_faults.silentFrom >= 0 && request.block >= m_faults.silentFrom)
        return;
    if (request.kind == FpgaRequest::Init)
        takeInit(request);
    else if (request.kind == FpgaRequest::Data)
        takeData(request);
    else
        takeEof(request);
}

void FpgaBoard::takeInit(const FpgaRequest& request) {
    ++m_counts.inits;
    if (request.imageSize > LargestImage || takeOne(m_faults.ignoredInits))
        return;
    m_status.stop();
    m_state = Receiving;
    m_imageSize = request.imageSize;
    m_image.clear();
    m_lastAck = 0;
    acknowledge(0);
}

void FpgaBoard::takeData(const FpgaRequest& request) {
    ++m_counts.data;
    const int have = (m_image.size() + FpgaRequest::BlockSize - 1) / FpgaRequest::BlockSize;
    const bool fits = request.block < totalBlocks()
                          ? request.payload.size() == FpgaRequest::BlockSize
                          : request.payload.size() + m_image.size() == static_cast<int>(m_imageSize);
    if (m_state == Receiving && request.block == have + 1 && !fits) {
        ++m_counts.malformed;
        return;
    }
    if (m_state != Receiving || request.block > have + 1) {
        ++m_counts.outOfOrder;
        return;
    }
    if (takeOne(m_faults.ignoredData))
        return;
    if (request.block == have + 1)
        m_image += request.payload;
    else
        ++m_counts.repeated;
    acknowledge(request.block);
}

void FpgaBoard::takeEof(const FpgaRequest& request) {
    ++m_counts.eofs;
    if (m_state == Idle || request.block != totalBlocks() + 1 || m_image.size() != static_cast<int>(m_imageSize)) {
        ++m_counts.outOfOrder;
        return;
    }
    if (takeOne(m_faults.ignoredEofs))
        return;
    acknowledge(request.block);
    if (m_state != Receiving)
        return;
    m_state = Burning;
    m_endsTold = 0;
    m_burning.start();
    m_status.start(m_settings.statusMs);
}

void FpgaBoard::acknowledge(int block) {
    const QByteArray present = fpgaAcknowledgement(block + m_faults.ackAhead);
    const QByteArray former = fpgaAcknowledgement(m_lastAck);
    m_lastAck = block;
    const bool isMarker = block == 0 || block > totalBlocks();
    const auto answer = [this, present, former, isMarker] {
        if (m_stray.state() == QAbstractSocket::BoundState)
            send(present, m_stray, isMarker);
        send(present, m_socket, isMarker);
        if (m_faults.doubledAcks)
            send(present, m_socket, isMarker);
        if (m_faults.staleAcks)
            send(former, m_socket, isMarker);
    };
    if (m_faults.lateAckMs > 0)
        QTimer::singleShot(m_faults.lateAckMs, Qt::PreciseTimer, this, answer);
    else
        answer();
}

void FpgaBoard::onStatusTick() {
    const bool timeIsUp = m_burning.elapsed() >= m_settings.burnMs;
    if (timeIsUp && !m_faults.neverEnds) {
        sendStatus(fpgaEndMark(m_faults.endMarkInState));
        if (m_state != Burnt) {
            m_state = Burnt;
            emit burnt();
        }
        if (++m_endsTold >= m_settings.endStatuses)
            m_status.stop();
        return;
    }
    const double part = timeIsUp ? 1.0 : static_cast<double>(m_burning.elapsed()) / m_settings.burnMs;
    auto bytes = static_cast<quint32>((m_faults.burnsBackwards ? 1.0 - part : part) * m_imageSize);
    if (m_faults.burnsPastSize)
        bytes = std::numeric_limits<quint32>::max();
    sendStatus(fpgaProgress(bytes));
}

void FpgaBoard::sendStatus(const QByteArray& datagram) {
    if (!m_faults.silentBurn)
        send(datagram, m_socket);
}

void FpgaBoard::send(QByteArray datagram, QUdpSocket& from, bool isMarker) {
    if (m_faults.shortDatagrams)
        datagram.chop(1);
    if (m_faults.wrongMagic)
        datagram[0] = 'X';
    if (lost(isMarker))
        return;
    ++m_counts.answers;
    from.writeDatagram(datagram, m_host, m_hostPort);
}

} // namespace Sim
