#include "common/update/fwUpdater.h"

#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QThread>
#include <QUdpSocket>
#include <algorithm>

Q_LOGGING_CATEGORY(lcFpga, "velda.fpga")

namespace {

constexpr int MarkerAttempts = 3;
constexpr int MostPerPass = 256; // a flood of strays must not keep a pass from its timers
constexpr int SlowAnswerMs = 500;

} // namespace

FpgaUpdater::FpgaUpdater(QObject* parent) : QObject(parent), m_socket(new QUdpSocket(this)) {
    m_clock.start();
    if (!m_socket->bind(QHostAddress(QHostAddress::AnyIPv4), 0))
        qCWarning(lcFpga).noquote() << "[FPGA] No socket:" << m_socket->errorString();
}

void FpgaUpdater::setImage(const unsigned char* image, quint32 size) {
    m_image = image;
    m_imageSize = size;
}

void FpgaUpdater::setTargets(const QHostAddress* addresses, int count, quint16 port) {
    m_targets.clear();
    for (int i = 0; addresses && i < count; ++i) {
        TargetState state;
        state.address = addresses[i];
        state.port = port;
        m_targets.append(state);
    }
}

void FpgaUpdater::setProgressCallback(ProgressCallback callback, void* context) {
    m_callback = callback;
    m_context = context;
}

void FpgaUpdater::begin() {
    m_clock.start();
    m_reportedAt = 0;
    for (TargetState& state : m_targets)
        state.heardAt = 0;
    reportBoards(true);
}

bool FpgaUpdater::runBlocking(int ackTimeoutMs, int ackPollMs, int burnPollMs, int burnSilenceMs, int burnTotalMs) {
    bool ok = !m_targets.isEmpty() && m_image && m_imageSize > 0;
    if (ok && !doTransfer(ackTimeoutMs, ackPollMs)) {
        qCWarning(lcFpga) << "[FPGA] Transfer Phase Failed.";
        ok = false;
    }
    ok = ok && doBurnVerify(burnPollMs, burnSilenceMs, burnTotalMs);
    emit finished(ok);
    return ok;
}

int FpgaUpdater::totalBlocks() const {
    return static_cast<int>((qint64{m_imageSize} + FpgaWire::BlockSize - 1) / FpgaWire::BlockSize);
}

bool FpgaUpdater::doTransfer(int ackTimeoutMs, int ackPollMs) {
    const int total = totalBlocks();
    begin();
    if (total > FpgaWire::MostBlocks || m_socket->state() != QAbstractSocket::BoundState) {
        qCWarning(lcFpga) << "[FPGA] Nothing can be sent. Total Blocks:" << total;
        return false;
    }
    qCDebug(lcFpga) << "[FPGA] Starting Parallel Transfer. Total Blocks:" << total << "Targets:" << m_targets.size();
    if (!sendMarker("INIT", 0, ackTimeoutMs, ackPollMs)) {
        qCWarning(lcFpga) << "[FPGA] Failed to initialize transfer with all devices.";
        return false;
    }
    qCDebug(lcFpga) << "[FPGA] INIT ACK received from all devices.";
    if (!sendBlocks(ackTimeoutMs, ackPollMs))
        return false;
    qCDebug(lcFpga) << "[FPGA] All data sent. Sending EOF marker.";
    if (!sendMarker("EOF", static_cast<quint16>(total + 1), ackTimeoutMs, ackPollMs)) {
        qCWarning(lcFpga) << "[FPGA] Failed to verify EOF with all devices.";
        return false;
    }
    return true;
}

bool FpgaUpdater::sendMarker(const char* name, quint16 block, int timeoutMs, int pollMs) {
    m_step = QStringLiteral("%1 of the transfer").arg(block == 0 ? QStringLiteral("Start") : QStringLiteral("End"));
    for (int attempt = 0; attempt < MarkerAttempts && !interrupted(); ++attempt) {
        if (sendAndWait(block, nullptr, 0, true, timeoutMs, pollMs))
            return true;
        qCDebug(lcFpga) << "[FPGA] Timeout waiting for" << name << "ACK. Retrying...";
    }
    return false;
}

// A block is repeated to every board, those that had acknowledged it too, until all have: there is no limit.
bool FpgaUpdater::sendBlocks(int timeoutMs, int pollMs) {
    const int total = totalBlocks();
    for (int block = 1; block <= total; ++block) {
        const quint32 offset = static_cast<quint32>(block - 1) * FpgaWire::BlockSize;
        const int length = static_cast<int>(std::min<quint32>(m_imageSize - offset, FpgaWire::BlockSize));
        while (!sendAndWait(static_cast<quint16>(block), m_image + offset, length, false, timeoutMs, pollMs)) {
            if (interrupted()) {
                m_step = QStringLiteral("Block %1 of %2").arg(block).arg(total);
                return false;
            }
            qCDebug(lcFpga) << "[FPGA] Timeout on Block" << block << "- Retrying same block for all.";
        }
        report(0, std::min(block * 100 / total, 100));
        reportBoards(false);
    }
    return true;
}

bool FpgaUpdater::sendAndWait(quint16 block, const unsigned char* payload, int length, bool endMarker, int timeoutMs,
                              int pollMs) {
    for (TargetState& state : m_targets)
        state.acked = false;
    sendBlockToAll(block, payload, length, endMarker);
    return waitForAllAcks(block, timeoutMs, pollMs);
}

bool FpgaUpdater::sendBlockToAll(quint16 block, const unsigned char* payload, int length, bool endMarker) {
    const bool marker = endMarker || block == 0;
    const int bytes = marker || !payload ? 0 : std::clamp(length, 0, FpgaWire::BlockSize);
    std::array<char, FpgaWire::LargestDatagram> datagram;
    FpgaWire::writeHeader(datagram.data(), block, marker ? FpgaWire::AllOnes : static_cast<quint16>(bytes),
                          block == 0 ? m_imageSize : 0);
    std::copy_n(payload, bytes, datagram.data() + FpgaWire::HeaderSize);
    for (const TargetState& state : qAsConst(m_targets))
        m_socket->writeDatagram(datagram.data(), FpgaWire::HeaderSize + bytes, state.address, state.port);
    return true;
}

bool FpgaUpdater::waitForAllAcks(quint16 block, int timeoutMs, int pollMs) {
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < timeoutMs && !interrupted()) {
        Datagram datagram;
        bool readable = waitReadable(pollMs, timeoutMs - timer.elapsed());
        for (int n = 0; readable && n < MostPerPass && receive(datagram); ++n) {
            const auto reply = FpgaWire::readReply(datagram.bytes.data(), datagram.size);
            TargetState* state = reply && reply->block >= block ? target(datagram.from) : nullptr;
            if (!state)
                continue;
            state->acked = true;
            state->lastAckedBlock = reply->block;
            state->heardAt = m_clock.elapsed();
        }
        if (allTargets(&TargetState::acked))
            return true;
        reportBoards(false);
    }
    return false;
}

bool FpgaUpdater::doBurnVerify(int burnPollMs, int burnSilenceMs, int burnTotalMs) {
    m_burning = true;
    m_step = QStringLiteral("Programming and verifying");
    for (TargetState& state : m_targets) {
        state.burnDone = false;
        state.burnPercent = 0;
        state.heardAt = m_clock.elapsed();
    }
    qCDebug(lcFpga) << "[FPGA] Starting Burn/Verify Phase for" << m_targets.size() << "devices.";
    QElapsedTimer overall;
    QElapsedTimer silence;
    overall.start();
    silence.start();
    while (overall.elapsed() < burnTotalMs && !interrupted()) {
        Datagram datagram;
        const bool readable = waitReadable(burnPollMs, burnTotalMs - overall.elapsed());
        for (int n = 0; readable && n < MostPerPass && receive(datagram); ++n) {
            silence.restart(); // whatever it is, somebody is alive
            takeStatus(datagram);
        }
        if (silence.elapsed() > burnSilenceMs) {
            qCWarning(lcFpga) << "[FPGA] Inactivity Timeout during Burn Phase.";
            return false;
        }
        report(1, lowestPercent());
        reportBoards(allTargets(&TargetState::burnDone));
        if (allTargets(&TargetState::burnDone)) {
            qCDebug(lcFpga) << "[FPGA] All devices finished Burn/Verify.";
            report(3, 100);
            return true;
        }
    }
    return false;
}

void FpgaUpdater::takeStatus(const Datagram& datagram) {
    const auto reply = FpgaWire::readReply(datagram.bytes.data(), datagram.size);
    TargetState* state = reply ? target(datagram.from) : nullptr;
    if (!state)
        return;
    state->heardAt = m_clock.elapsed();
    if (reply->ended) {
        if (!state->burnDone)
            qCDebug(lcFpga).noquote() << "[FPGA] Device" << state->address.toString() << "finished burning.";
        state->burnDone = true;
        state->burnPercent = 100;
    } else if (m_imageSize > 0) {
        state->burnPercent = static_cast<int>(std::min(reply->bytesDone * 100.0 / m_imageSize, 100.0));
    }
}

QStringList FpgaUpdater::silentBoards() const {
    QStringList silent;
    if (m_step.isEmpty()) // nothing was sent
        return silent;
    for (const TargetState& state : m_targets) {
        if (!(m_burning ? state.burnDone : state.acked))
            silent << state.address.toString();
    }
    return silent;
}

FpgaUpdater::TargetState* FpgaUpdater::target(const QHostAddress& address) {
    const auto found = std::find_if(m_targets.begin(), m_targets.end(),
                                    [&](const TargetState& state) { return state.address == address; });
    return found == m_targets.end() ? nullptr : &*found;
}

// At least 1 ms: 0 would spin and a negative time wait for ever.
bool FpgaUpdater::waitReadable(int pollMs, qint64 remainingMs) {
    return m_socket->waitForReadyRead(static_cast<int>(std::max<qint64>(std::min<qint64>(pollMs, remainingMs), 1)));
}

bool FpgaUpdater::receive(Datagram& datagram) {
    if (!m_socket->hasPendingDatagrams())
        return false;
    datagram.size =
        m_socket->readDatagram(datagram.bytes.data(), static_cast<qint64>(datagram.bytes.size()), &datagram.from);
    return datagram.size >= 0;
}

bool FpgaUpdater::allTargets(bool TargetState::*flag) const {
    return std::all_of(m_targets.begin(), m_targets.end(), [flag](const TargetState& state) { return state.*flag; });
}

int FpgaUpdater::lowestPercent() const {
    int lowest = 100;
    for (const TargetState& state : m_targets)
        lowest = std::min(lowest, state.burnPercent);
    return lowest;
}

void FpgaUpdater::report(int phase, int percent) const {
    if (m_callback)
        m_callback(0, phase, percent, m_context);
}

FpgaBoardState FpgaUpdater::stateOf(const TargetState& target, qint64 now) const {
    FpgaBoardState state;
    state.address = target.address;
    state.quietMs = target.burnDone ? 0 : static_cast<int>(now - target.heardAt);
    state.isSilent = state.quietMs >= m_silentAfterMs;
    if (m_burning) {
        state.phase = target.burnDone ? FpgaBoardState::Done : FpgaBoardState::Programming;
        state.percent = target.burnPercent;
    } else {
        const bool answers = target.acked || (target.heardAt > 0 && state.quietMs < SlowAnswerMs);
        state.phase = answers ? FpgaBoardState::Acknowledged : FpgaBoardState::Waiting;
        state.percent = std::min(target.lastAckedBlock * 100 / std::max(totalBlocks(), 1), 100);
    }
    return state;
}

// Every block passes here: a look at the clock is all that it may cost.
void FpgaUpdater::reportBoards(bool now) {
    const qint64 at = m_clock.elapsed();
    if (!m_boardCallback || (!now && at - m_reportedAt < ReportMs))
        return;
    m_reportedAt = at;
    FpgaBoardStates states;
    for (const TargetState& state : qAsConst(m_targets))
        states << stateOf(state, at);
    m_boardCallback(states);
}

bool FpgaUpdater::interrupted() {
    return QThread::currentThread()->isInterruptionRequested();
}
