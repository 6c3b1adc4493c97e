#include "tests/common/link/scriptedservice.h"

#include <QHostAddress>

namespace {

QByteArray usualAnswer(const QByteArray& line) {
    return line.contains('?') ? "1\r\n" : "+OK\r\n";
}

} // namespace

ScriptedService::ScriptedService() : answer(usualAnswer) {
    connect(&m_server, &QTcpServer::newConnection, this, &ScriptedService::accept);
    start();
}

void ScriptedService::start() {
    if (!m_server.listen(QHostAddress::LocalHost, m_port))
        qFatal("The test's service cannot listen: %s", qPrintable(m_server.errorString()));
    m_port = m_server.serverPort();
}

void ScriptedService::stop() {
    m_server.close();
    dropConnection();
}

void ScriptedService::dropConnection() {
    if (m_socket == nullptr)
        return;
    m_socket->disconnect(this);
    m_socket->flush();
    m_socket->disconnectFromHost();
    m_socket->deleteLater();
    m_socket = nullptr;
}

void ScriptedService::send(const QByteArray& bytes) {
    m_socket->write(bytes);
    m_socket->flush();
}

void ScriptedService::accept() {
    while (QTcpSocket* socket = m_server.nextPendingConnection()) {
        ++connections;
        dropConnection();
        m_socket = socket;
        m_received.clear();
        connect(socket, &QTcpSocket::readyRead, this, &ScriptedService::read);
        if (m_droppingAll)
            dropConnection();
    }
}

void ScriptedService::read() {
    m_received += m_socket->readAll();
    for (int end = m_received.indexOf("\r\n"); end >= 0; end = m_received.indexOf("\r\n")) {
        const QByteArray line = m_received.left(end);
        m_received.remove(0, end + 2);
        lines << line;
        const QByteArray reply = answer(line);
        if (!reply.isEmpty() && m_socket != nullptr)
            send(reply);
    }
}
