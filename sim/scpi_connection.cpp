#include "sim/scpi_connection.h"

#include <utility>

namespace Sim {

ScpiConnection::ScpiConnection(QTcpSocket* socket, Handler handler, QObject* parent)
    : QObject(parent), m_socket(socket), m_handler(std::move(handler)) {
    m_socket->setParent(this);
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    m_pause.setSingleShot(true);
    m_pause.setTimerType(Qt::PreciseTimer);
    connect(&m_pause, &QTimer::timeout, this, &ScpiConnection::send);
    connect(m_socket, &QTcpSocket::readyRead, this, &ScpiConnection::onReadyRead);
    connect(m_socket, &QTcpSocket::disconnected, this, &ScpiConnection::deleteLater);
}

void ScpiConnection::drop() {
    m_dropped = true;
    m_pause.stop();
    m_outgoing.clear();
    m_socket->abort();
    deleteLater();
}

void ScpiConnection::onReadyRead() {
    m_reader.add(m_socket->readAll());
    while (!m_dropped) {
        const std::optional<Request> request = m_reader.next();
        if (!request)
            break;
        enqueue(m_handler(*request));
    }
    send();
}

void ScpiConnection::enqueue(Delivery delivery) {
    if (m_dropped || delivery.bytes.isEmpty())
        return;
    if (delivery.withNext) {
        m_withNext += delivery.bytes;
        return;
    }
    delivery.bytes.prepend(m_withNext);
    m_withNext.clear();
    m_outgoing.push_back(std::move(delivery));
}

void ScpiConnection::send() {
    while (!m_outgoing.empty() && !m_pause.isActive()) {
        Delivery& head = m_outgoing.front();
        if (head.delayMs > 0) {
            m_pause.start(std::exchange(head.delayMs, 0));
            return;
        }
        const bool inPieces = head.byteEveryMs >= 0 && head.bytes.size() > 1;
        m_socket->write(inPieces ? head.bytes.left(1) : head.bytes);
        m_socket->flush();
        if (inPieces) {
            head.bytes.remove(0, 1);
            m_pause.start(head.byteEveryMs);
            return;
        }
        const bool close = head.thenClose;
        m_outgoing.pop_front();
        if (close) {
            m_outgoing.clear();
            m_dropped = true;
            m_socket->disconnectFromHost();
        }
    }
}

} // namespace Sim
