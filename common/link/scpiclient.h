#pragma once

#include "common/link/scpireply.h"

#include <QAbstractSocket>
#include <QByteArray>
#include <QElapsedTimer>
#include <QHostAddress>
#include <QObject>
#include <QTimer>
#include <atomic>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

class QTcpSocket;

using ReplyUtf8 = std::shared_ptr<std::string>;
Q_DECLARE_METATYPE(ReplyUtf8)

/// TCP client of the module's SCPI service, on a thread of its own. Requests are served strictly in order, one on the
/// wire at a time, and each ends exactly once, by writeFinished, or by replyFinished and then queryFinished, with its
/// id: status 0 and an empty error text, or -1 and "timeout", "shutdown", the service's "-ERR" line, a fault of the
/// reply's form, or the socket's error text.
///
/// The connection is kept up by itself. After a failed attempt the next one waits (setRetryDelays()); a request makes
/// it try at once. A request that was queued while an attempt was under way gets an attempt of its own before it fails,
/// and a connection that the service has closed while it was idle is renewed before a request is written to it.
///
/// Threads: sendWrite, sendQuery, withdraw and isConnected may be called from any thread; close() re-posts itself to
/// the client's thread with a warning. Everything else runs on the client's thread.
class ScpiClient : public QObject {
    Q_OBJECT

public:
    /// The error text of a request that got no answer in time, or could not be written in time.
    static constexpr char TimedOut[] = "timeout";

    ScpiClient(const QHostAddress& host, quint16 port, QObject* parent);
    ~ScpiClient() override;

    /// Pauses in ms between connection attempts while nothing is to be sent. To be called before start().
    void setRetryDelays(int firstMs, int laterMs);

    /// A command that goes out on every new connection, ahead of all that waits; empty: none. It ends by writeFinished
    /// with the id 0. A connection on which it fails carries nothing else and is made again; a refusal also ends all
    /// that waits. Any thread.
    void setGreeting(const QByteArray& command, int timeoutMs);

    /// Queues a command that the service acknowledges, or a query that it answers, and returns its id at once. Line end
    /// characters are added unless the data ends with them. The time-out, in ms, runs from the moment of writing.
    int sendWrite(const QByteArray& data, int timeoutMs = 1000);
    int sendQuery(const QByteArray& data, int timeoutMs = 1000);

    /// Takes a request back that has not been written yet; it ends with "timeout". False when it has been written or
    /// has ended: then it cannot be called back. Waits for the client's thread.
    bool withdraw(int id);

    bool isConnected() const { return m_connected.load(); }

public slots:
    /// Makes the socket and connects. To be called once, on the client's thread.
    void start();

    /// Ends every queued request with "shutdown" and drops the connection.
    void close();

signals:
    void writeFinished(int id, int status, const QString& error);
    void queryFinished(int id, const QString& reply, int status, const QString& error);

    /// Ahead of queryFinished, with the same reply in UTF-8, which who asked may move away. The text of queryFinished
    /// is only made when somebody listens to it.
    void replyFinished(int id, const ReplyUtf8& reply, int status, const QString& error);
    void connected();
    void disconnected();

private:
    static constexpr int Greeting = 0; ///< the id of every one

    struct Req {
        int id;
        QByteArray payload;
        bool isQuery;
        int timeoutMs;
        int attempt = 0;         ///< the last connection attempt begun when it was queued
        bool hasOwnLink = false; ///< the connection was made for it: not renewed again
    };

    void noteAttemptFailed();
    int send(const QByteArray& data, bool isQuery, int timeoutMs);
    void takeInbox();
    void ensureConnected();
    void pump();
    void onConnected();
    void onReadyRead();
    void onError(QAbstractSocket::SocketError error);
    void onLinkLost();
    void finishOk();
    void finishFail(const QString& error);

    bool isForeignThread() const;
    bool repostFromForeignThread(void (ScpiClient::*operation)());
    void noteLinkLost(const QString& reason);
    bool peerHasClosed() const;
    void writeHead();
    void dropLink();
    void resume();
    void scheduleReconnect();
    bool withdrawHere(int id);
    void closeHere();
    Req takeHead();
    void reportEnd(const Req& request, int status, std::string reply, const QString& error);

    const QHostAddress m_host;
    const quint16 m_port;
    QTcpSocket* m_socket = nullptr;
    std::deque<Req> m_queue;
    int m_busy = 0; ///< 1: the head has been written and has not ended

    // Requests on their way to the client's thread. With a lock of their own, because the thread sanitizer knows its
    // meaning; that of Qt's event queue, which is built without it, would stay hidden.
    std::mutex m_inboxMutex;
    std::deque<Req> m_inbox;
    int m_nextId = 1;
    QByteArray m_greeting; ///< with its line end
    int m_greetingTimeoutMs = 0;

    std::atomic<bool> m_connected{false};

    ScpiReply m_reply;
    QTimer m_timeout;
    QTimer m_retry;
    int m_retryFirstMs = 250;
    int m_retryLaterMs = 1000;
    int m_failures = 0;      ///< attempts and short-lived connections lost since one stood
    int m_attempt = 0;       ///< connection attempts begun
    int m_failedInARow = 0;  ///< attempts since a connection stood
    QElapsedTimer m_toldAge; ///< since the failing of attempts was last told
    QString m_toldReason;
    QElapsedTimer m_linkAge; ///< valid while the connection stands
    bool m_linkLost = false; ///< a loss was noticed and is about to be dealt with
    QString m_linkLostReason;
};
