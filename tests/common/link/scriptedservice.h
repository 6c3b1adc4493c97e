#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <functional>

/// A foreign SCPI service, played by a test: it keeps what it received and answers what it is told to. It serves one
/// connection at a time and lives on the test's thread.
class ScriptedService : public QObject {
    Q_OBJECT

public:
    ScriptedService();

    quint16 port() const { return m_port; }

    /// Stops listening and ends the connection, as a service that is killed.
    void stop();

    /// Listens again, where it did before.
    void start();

    /// Ends the connection and goes on listening.
    void dropConnection();

    void send(const QByteArray& bytes);

    /// Accepts and immediately ends every connection.
    void setDroppingAll(bool on) { m_droppingAll = on; }

    /// Gives the answer to a received line (without its line end); empty: no answer. By default "+OK" to a command and
    /// "1" to a query.
    std::function<QByteArray(const QByteArray& line)> answer;

    /// Answers this to every line; empty: never.
    void answerWith(const QByteArray& bytes) {
        answer = [bytes](const QByteArray&) {
            return bytes;
        };
    }

    QList<QByteArray> lines;
    int connections = 0;

private:
    void accept();
    void read();

    QTcpServer m_server;
    QPointer<QTcpSocket> m_socket;
    quint16 m_port = 0;
    bool m_droppingAll = false;
    QByteArray m_received;
};
