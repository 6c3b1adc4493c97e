#include "headless/service_probe.h"

#include <QHostAddress>
#include <algorithm>

bool ServiceProbe::connectAnew() {
    m_socket.abort();
    m_socket.connectToHost(QHostAddress(QHostAddress::LocalHost), m_port);
    if (!m_socket.waitForConnected(m_timeoutMs))
        return false;
    m_socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    return true;
}

void ServiceProbe::write(const QByteArray& bytes) {
    if (m_socket.state() != QAbstractSocket::ConnectedState)
        return;
    m_socket.write(bytes);
    m_socket.waitForBytesWritten(m_timeoutMs);
}

ServiceProbe::Answer ServiceProbe::ask(const QByteArray& message) {
    Answer answer;
    QElapsedTimer clock;
    clock.start();
    write(message);
    QByteArray bytes;
    int end = -1;
    while ((end = bytes.indexOf('\n')) < 0 && m_socket.state() == QAbstractSocket::ConnectedState) {
        const int left = m_timeoutMs - static_cast<int>(clock.elapsed());
        if (left <= 0 || !m_socket.waitForReadyRead(left))
            break;
        bytes += m_socket.readAll();
    }
    answer.ms = static_cast<double>(clock.nsecsElapsed()) * 1e-6;
    answer.ended = end >= 0;
    answer.line = bytes.left(std::max(end, 0)).trimmed();
    if (answer.ended)
        bytes += listen();
    answer.beyond = answer.ended ? bytes.mid(end + 1) : bytes;
    answer.closed = m_socket.state() != QAbstractSocket::ConnectedState;
    return answer;
}

QByteArray ServiceProbe::listen() {
    return m_socket.waitForReadyRead(m_quietMs) ? m_socket.readAll() : QByteArray();
}
