#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QTcpSocket>

/// A client of the module's service that looks at each byte: one command at a time, blocking. Any thread, one at a
/// time.
class ServiceProbe {
public:
    /// One answer.
    struct Answer {
        QByteArray line;     ///< without its line end; empty where none came
        QByteArray beyond;   ///< what came behind it, unasked
        bool ended = false;  ///< a whole line came in time
        bool closed = false; ///< the service ended the connection
        double ms = 0;       ///< from writing to the end of the line
    };

    /// timeoutMs: of an answer and of a connection. quietMs: how long it listens for what nobody has asked for.
    ServiceProbe(quint16 port, int timeoutMs, int quietMs) : m_port(port), m_timeoutMs(timeoutMs), m_quietMs(quietMs) {}

    /// Connects, anew if it was connected.
    [[nodiscard]] bool connectAnew();

    /// Sends one line or block, its line end included, and reads the answer.
    Answer ask(const QByteArray& message);

    /// What comes unasked within quietMs.
    QByteArray listen();

    /// Sends bytes and reads nothing.
    void write(const QByteArray& bytes);

private:
    const quint16 m_port;
    const int m_timeoutMs;
    const int m_quietMs;
    QTcpSocket m_socket;
};
