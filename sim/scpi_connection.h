#pragma once

#include "sim/request_reader.h"

#include <QObject>
#include <QTcpSocket>
#include <QTimer>
#include <deque>
#include <functional>

namespace Sim {

/// How an answer travels.
struct Delivery {
    QByteArray bytes; ///< with line end; empty: nothing is sent
    int delayMs = 0;
    int byteEveryMs = -1;   ///< byte by byte, one every so many milliseconds; negative: in one piece
    bool withNext = false;  ///< kept back and sent in one piece with the next answer
    bool thenClose = false; ///< the connection ends behind it
};

/// One client of the service. Answers leave in the order of their requests, whatever delays one of them.
class ScpiConnection : public QObject {
    Q_OBJECT

public:
    using Handler = std::function<Delivery(const Request&)>;

    /// Takes the socket. The handler is called for each request, and may drop this connection.
    ScpiConnection(QTcpSocket* socket, Handler handler, QObject* parent);

    /// Ends the connection at once; what is not sent is lost. Deletes this object later.
    void drop();

private:
    void onReadyRead();
    void enqueue(Delivery delivery);
    void send();

    QTcpSocket* m_socket;
    Handler m_handler;
    RequestReader m_reader;
    std::deque<Delivery> m_outgoing;
    QByteArray m_withNext;
    QTimer m_pause;
    bool m_dropped = false;
};

} // namespace Sim
