#include "common/link/scpiclient.h"

#include "common/link/scpi_log.h"
#include "common/wire/scpi_words.h"

#include <QDebug>
#include <QMetaMethod>
#include <QMetaObject>
#include <QTcpSocket>
#include <QThread>
#include <algorithm>
#include <poll.h>
#include <utility>

ScpiClient::ScpiClient(const QHostAddress& host, quint16 port, QObject* parent)
    : QObject(parent), m_host(host), m_port(port), m_timeout(this), m_retry(this) {
    qRegisterMetaType<ReplyUtf8>("ReplyUtf8");
    m_timeout.setSingleShot(true);
    m_timeout.setTimerType(Qt::PreciseTimer);
    connect(&m_timeout, &QTimer::timeout, this, [this] { finishFail(QLatin1String(TimedOut)); });
    m_retry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &ScpiClient::ensureConnected);
}

ScpiClient::~ScpiClient() {
    if (isForeignThread() && thread()->isRunning())
        QMetaObject::invokeMethod(this, &ScpiClient::close, Qt::BlockingQueuedConnection);
    else
        closeHere();
}

void ScpiClient::setRetryDelays(int firstMs, int laterMs) {
    m_retryFirstMs = firstMs;
    m_retryLaterMs = laterMs;
}

void ScpiClient::start() {
    m_socket = new QTcpSocket(this);
    connect(m_socket, &QTcpSocket::connected, this, &ScpiClient::onConnected);
    connect(m_socket, &QTcpSocket::readyRead, this, &ScpiClient::onReadyRead);
    connect(m_socket, &QTcpSocket::errorOccurred, this, &ScpiClient::onError);
    ensureConnected();
}

void ScpiClient::setGreeting(const QByteArray& command, int timeoutMs) {
    const std::lock_guard<std::mutex> lock(m_inboxMutex);
    m_greeting = command.isEmpty() ? command : command + Scpi::LineEnd;
    m_greetingTimeoutMs = timeoutMs;
}

int ScpiClient::sendWrite(const QByteArray& data, int timeoutMs) {
    return send(data, false, timeoutMs);
}

int ScpiClient::sendQuery(const QByteArray& data, int timeoutMs) {
    return send(data, true, timeoutMs);
}

int ScpiClient::send(const QByteArray& data, bool isQuery, int timeoutMs) {
    QByteArray payload = data;
    if (!payload.endsWith(Scpi::LineEnd))
        payload.append(Scpi::LineEnd);
    int id = 0;
    {
        const std::lock_guard<std::mutex> lock(m_inboxMutex);
        id = m_nextId++;
        m_inbox.push_back({id, std::move(payload), isQuery, timeoutMs});
    }
    QMetaObject::invokeMethod(this, &ScpiClient::takeInbox, Qt::QueuedConnection);
    return id;
}

void ScpiClient::takeInbox() {
    {
        const std::lock_guard<std::mutex> lock(m_inboxMutex);
        for (Req& request : m_inbox) {
            request.attempt = m_attempt;
            m_queue.push_back(std::move(request));
        }
        m_inbox.clear();
    }
    pump();
}

bool ScpiClient::withdraw(int id) {
    if (!isForeignThread() || !thread()->isRunning())
        return withdrawHere(id);
    std::atomic<bool> withdrawn{false};
    QMetaObject::invokeMethod(
        this, [this, id, &withdrawn] { withdrawn = withdrawHere(id); }, Qt::BlockingQueuedConnection);
    return withdrawn;
}

bool ScpiClient::withdrawHere(int id) {
    const auto found =
        std::find_if(m_queue.begin(), m_queue.end(), [id](const Req& request) { return request.id == id; });
    if (found == m_queue.end() || (found == m_queue.begin() && m_busy != 0))
        return false;
    const Req request = *found;
    m_queue.erase(found);
    reportEnd(request, -1, std::string(), QLatin1String(TimedOut));
    return true;
}

void ScpiClient::ensureConnected() {
    if (repostFromForeignThread(&ScpiClient::ensureConnected))
        return;
    if (m_socket == nullptr || m_socket->state() != QAbstractSocket::UnconnectedState)
        return;
    m_retry.stop();
    ++m_attempt;
    if (m_failedInARow == 0)
        qCDebug(lcScpi) << "[SCPI] connectToHost" << m_host.toString() << m_port;
    m_socket->connectToHost(m_host, m_port);
}

void ScpiClient::pump() {
    if (repostFromForeignThread(&ScpiClient::pump))
        return;
    if (m_busy != 0 || m_queue.empty() || m_linkLost)
        return;
    if (m_connected && !m_queue.front().hasOwnLink && peerHasClosed()) {
        dropLink(); // the attempt that follows is begun for this request
    }
    if (m_connected)
        writeHead();
    else
        ensureConnected();
}

void ScpiClient::writeHead() {
    Req& head = m_queue.front();
    m_busy = 1;
    m_reply.reset();
    m_socket->write(head.payload);
    m_socket->flush();
    m_timeout.start(head.timeoutMs);
}

// Whether the service has ended the connection, known to the kernel before the event loop comes round to it. Unread
// bytes ahead of the end do not hide it.
bool ScpiClient::peerHasClosed() const {
    pollfd watched{static_cast<int>(m_socket->socketDescriptor()), POLLRDHUP, 0};
    return ::poll(&watched, 1, 0) > 0;
}

void ScpiClient::onConnected() {
    qCDebug(lcScpi) << "[SCPI] connected";
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    m_linkAge.start();
    m_connected = true;
    m_failedInARow = 0;
    m_toldReason.clear();
    if (!m_queue.empty() && m_queue.front().attempt < m_attempt)
        m_queue.front().hasOwnLink = true;
    {
        const std::lock_guard<std::mutex> lock(m_inboxMutex);
        if (!m_greeting.isEmpty())
            m_queue.push_front({Greeting, m_greeting, false, m_greetingTimeoutMs, m_attempt, true});
    }
    emit connected();
    pump();
}

void ScpiClient::onReadyRead() {
    if (m_socket == nullptr)
        return;
    if (m_queue.empty()) {
        m_socket->readAll();
        return;
    }
    m_reply.append(*m_socket);
    QString error;
    switch (m_reply.advance(m_queue.front().isQuery, error)) {
    case ScpiReply::Progress::Answered:
        finishOk();
        break;
    case ScpiReply::Progress::Failed:
        finishFail(error);
        break;
    case ScpiReply::Progress::Waiting:
        break;
    }
}

void ScpiClient::onError(QAbstractSocket::SocketError) {
    noteLinkLost(m_socket->errorString());
}

// The socket reports from the midst of its own work, so the loss is dealt with when it has come to rest.
void ScpiClient::noteLinkLost(const QString& reason) {
    if (m_linkLost)
        return;
    m_linkLost = true;
    m_linkLostReason = reason;
    m_connected = false;
    QMetaObject::invokeMethod(this, &ScpiClient::onLinkLost, Qt::QueuedConnection);
}

void ScpiClient::onLinkLost() {
    if (!m_linkLost)
        return;
    if (m_busy != 0 && m_socket->bytesAvailable() > 0)
        onReadyRead();
    const bool stood = m_linkAge.isValid();
    if (!stood)
        noteAttemptFailed();
    m_failures = stood && m_linkAge.elapsed() >= m_retryLaterMs ? 0 : m_failures + 1;
    dropLink();
    const bool headHadItsAttempt = !stood && !m_queue.empty() && m_queue.front().attempt < m_attempt;
    if (m_busy != 0 || headHadItsAttempt)
        finishFail(m_linkLostReason);
    else
        resume();
}

// The panel tries once a second for as long as it takes: its log and the flash below must bear that.
void ScpiClient::noteAttemptFailed() {
    constexpr qint64 HourMs = qint64{3600} * 1000;
    ++m_failedInARow;
    if (m_linkLostReason == m_toldReason && m_toldAge.elapsed() < HourMs)
        return;
    qCDebug(lcScpi).noquote() << "[SCPI] connection failed:" << m_linkLostReason << "attempts:" << m_failedInARow;
    m_toldReason = m_linkLostReason;
    m_toldAge.start();
}

void ScpiClient::dropLink() {
    const bool stood = m_linkAge.isValid();
    m_connected = false;
    m_linkLost = false;
    m_linkAge.invalidate();
    m_socket->abort();
    if (stood)
        emit disconnected();
}

void ScpiClient::resume() {
    if (m_queue.empty())
        scheduleReconnect();
    else
        pump();
}

void ScpiClient::scheduleReconnect() {
    if (m_socket == nullptr || m_socket->state() != QAbstractSocket::UnconnectedState || m_retry.isActive())
        return;
    const int delayMs = m_failures == 0 ? 0 : m_failures == 1 ? m_retryFirstMs : m_retryLaterMs;
    m_retry.start(delayMs);
}

void ScpiClient::finishOk() {
    const Req head = takeHead();
    reportEnd(head, 0, m_reply.takePayload(), QString());
    m_busy = 0;
    pump();
}

void ScpiClient::finishFail(const QString& error) {
    const bool greeted = m_queue.empty() || m_queue.front().id != Greeting || !m_connected;
    if (!m_queue.empty())
        reportEnd(takeHead(), -1, std::string(), error);
    m_busy = 0;
    if (greeted)
        return resume();
    // Nothing may be said over a connection whose greeting was not taken: it would reach another channel.
    if (error.startsWith(QLatin1String(Scpi::Refusal))) {
        for (; !m_queue.empty(); m_queue.pop_front())
            reportEnd(m_queue.front(), -1, std::string(), error);
    }
    noteLinkLost(error);
}

ScpiClient::Req ScpiClient::takeHead() {
    m_timeout.stop();
    Req head = std::move(m_queue.front());
    m_queue.pop_front();
    return head;
}

void ScpiClient::reportEnd(const Req& request, int status, std::string reply, const QString& error) {
    if (!request.isQuery) {
        emit writeFinished(request.id, status, error);
        return;
    }
    static const QMetaMethod decoded = QMetaMethod::fromSignal(&ScpiClient::queryFinished);
    const QString text = isSignalConnected(decoded) ? QString::fromStdString(reply) : QString();
    emit replyFinished(request.id, std::make_shared<std::string>(std::move(reply)), status, error);
    emit queryFinished(request.id, text, status, error);
}

void ScpiClient::close() {
    if (!repostFromForeignThread(&ScpiClient::close))
        closeHere();
}

void ScpiClient::closeHere() {
    m_timeout.stop();
    m_retry.stop();
    m_busy = 0;
    std::deque<Req> ended;
    ended.swap(m_queue);
    for (const Req& request : ended)
        reportEnd(request, -1, std::string(), QStringLiteral("shutdown"));
    if (m_socket != nullptr)
        dropLink();
}

bool ScpiClient::isForeignThread() const {
    return QThread::currentThread() != thread();
}

bool ScpiClient::repostFromForeignThread(void (ScpiClient::*operation)()) {
    if (!isForeignThread())
        return false;
    qCWarning(lcScpi) << "[SCPI] wrong-thread; self-posting";
    QMetaObject::invokeMethod(this, operation, Qt::QueuedConnection);
    return true;
}
