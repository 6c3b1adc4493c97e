#include "common/link/instrument_link.h"
#include "common/link/scpi_log.h"
#include "common/link/scpiclient.h"
#include "common/wire/scpi_words.h"

#include <QDebug>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QPointer>
#include <QThread>
#include <QTimer>
#include <utility>

// The client of InstrumentLink: its thread, and the waiting for its answers.

namespace {

// A block can hold megabytes; a log line needs the beginning of it.
constexpr std::size_t LoggedReply = 256;
constexpr std::size_t LoggedCommand = 256;

} // namespace

void InstrumentLink::startClient(quint16 port) {
    m_clientThread = new QThread;
    m_clientThread->setObjectName(QStringLiteral("ScpiClient"));
    m_client = new ScpiClient(m_address, port, nullptr);
    m_client->setRetryDelays(m_settings.retryFirstMs, m_settings.retryMs);
    m_client->moveToThread(m_clientThread);
    m_lackReported = false;
    greet();
    connect(m_clientThread, &QThread::started, m_client, &ScpiClient::start);
    connect(m_clientThread, &QThread::finished, m_client, &QObject::deleteLater);
    connect(m_client, &ScpiClient::connected, this, &InstrumentLink::updateLink);
    connect(m_client, &ScpiClient::disconnected, this, &InstrumentLink::updateLink);
    m_clientThread->start();
}

// A service that has come back may have the first channel selected, or still the one that was asked for last.
void InstrumentLink::greet() {
    if (m_client != nullptr)
        m_client->setGreeting(!m_otherSelected ? QByteArray() : Scpi::SelectChannel + QByteArray::number(m_channel),
                              m_settings.commandTimeoutMs);
}

void InstrumentLink::stopClient() {
    if (m_clientThread == nullptr)
        return;
    disconnect(m_client, nullptr, this, nullptr);
    QMetaObject::invokeMethod(m_client, &ScpiClient::close, Qt::BlockingQueuedConnection);
    m_clientThread->quit();
    m_clientThread->wait();
    delete m_clientThread;
    m_clientThread = nullptr;
    m_client = nullptr;
    m_port = 0;
}

void InstrumentLink::updateLink() {
    const bool up = isLinkUp();
    if (up == m_linkUp)
        return;
    m_linkUp = up;
    emit linkChanged(up);
}

InstrumentLink::Answer InstrumentLink::await(bool isQuery, const QByteArray& message, int timeoutMs) {
    QEventLoop loop;
    Answer answer{-1, std::string(), QLatin1String(ScpiClient::TimedOut)};
    int id = 0;
    bool ended = false;
    const auto end = [&](int endedId, int status, std::string* reply, const QString& error) {
        if (endedId != id)
            return;
        answer = {status, reply ? std::move(*reply) : std::string(), error};
        ended = true;
        loop.quit();
    };
    if (isQuery) {
        connect(m_client, &ScpiClient::replyFinished, &loop,
                [&end](int i, const ReplyUtf8& reply, int status, const QString& error) {
                    end(i, status, reply.get(), error);
                });
    } else {
        connect(m_client, &ScpiClient::writeFinished, &loop,
                [&end](int i, int status, const QString& error) { end(i, status, nullptr, error); });
    }

    if (++m_waits == 1)
        emit waitingChanged(true);
    m_waitBudgetMs += timeoutMs;
    QTimer::singleShot(m_waitBudgetMs + m_settings.waitMarginMs, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    const QPointer<ScpiClient> client = m_client;
    QElapsedTimer took;
    took.start();
    id = isQuery ? client->sendQuery(message, timeoutMs) : client->sendWrite(message, timeoutMs);
    loop.exec();
    m_waitBudgetMs -= timeoutMs;

    // The client may have been replaced meanwhile: then it has ended all that it was given.
    if (!ended && client)
        client->withdraw(id);
    m_history.noteCommand(message,
                          !answer.error.isEmpty() ? answer.error.toUtf8()
                          : isQuery
                              ? QByteArray::fromRawData(answer.reply.data(), static_cast<int>(answer.reply.size()))
                              : QByteArray(Scpi::Acknowledge),
                          took.elapsed());
    noteAnswer(answer);
    if (--m_waits == 0)
        emit waitingChanged(false);
    return answer;
}

void InstrumentLink::noteAnswer(const Answer& answer) {
    const bool missing = answer.error == QLatin1String(ScpiClient::TimedOut);
    m_lastTimedOut = missing;
    if (missing)
        emit timedOut();
    // An error of the connection itself says nothing about the service behind it.
    const bool answered = answer.status == 0 || answer.error.startsWith(QLatin1String(Scpi::Refusal));
    if (missing == m_answering && (missing || answered)) {
        m_answering = !missing;
        if (missing)
            qCWarning(lcScpi) << "[SCPI] the service does not answer";
        emit answeringChanged(m_answering);
    }
}

int InstrumentLink::send_scpi(std::string command, std::string& reply, QByteArray data, bool binary) {
    followService();
    m_lastTimedOut = false;
    if (m_client == nullptr && !m_lackReported) {
        m_lackReported = true;
        qCWarning(lcScpi).noquote() << "[SCPI] not sent, there is no client:"
                                    << command.substr(0, LoggedCommand).c_str();
    }
    if (m_client == nullptr || m_waits >= MaxNestedWaits)
        return -1;
    if (binary) {
        const Answer answer = await(false, data, data.size() / 1024 + m_settings.commandTimeoutMs);
        if (answer.status != 0) {
            qCWarning(lcScpi).noquote() << "[SCPI] bytearray write failed:" << answer.error << "to"
                                        << data.left(data.indexOf(' ')).left(LoggedData);
            return -1;
        }
        reply.clear();
        return 0;
    }
    const bool isQuery = command.find('?') != std::string::npos;
    Answer answer = await(isQuery, QByteArray::fromStdString(command), m_settings.commandTimeoutMs);
    if (isQuery) {
        if (answer.status != 0) {
            // What gets no answer is told by whoever asked; the module's own reason stands in its answer alone.
            if (answer.error.startsWith(QLatin1String(Scpi::Refusal)))
                qCWarning(lcScpi).noquote()
                    << "[SCPI] query refused:" << answer.error << "to" << command.substr(0, LoggedCommand).c_str();
            return -1;
        }
        reply = cleanedReply(std::move(answer.reply));
        qCDebug(lcScpi).noquote() << "[SCPI]" << command.c_str() << "->" << reply.substr(0, LoggedReply).c_str();
        return 0;
    }
    if (answer.status != 0) {
        qCWarning(lcScpi).noquote() << "[SCPI] write failed:" << answer.error << "to"
                                    << command.substr(0, LoggedCommand).c_str();
        return -1;
    }
    return 0;
}

int InstrumentLink::send_scpi(QByteArray data, std::string& reply) {
    qCDebug(lcScpi) << "Size:" << data.size() << data.left(LoggedData);
    return send_scpi(std::string(), reply, std::move(data), true);
}

int InstrumentLink::veldaScpiTrans(const std::string& command, const std::string& arguments, std::string& reply) {
    std::string answer;
    if (send_scpi(command + arguments, answer, QByteArray(), false) != 0)
        return -1;
    if (!answer.empty())
        reply = std::move(answer);
    return 0;
}

int InstrumentLink::veldaScpiTransStr(const std::string& command, const std::string& text, std::string& reply) {
    return veldaScpiTrans(command, '"' + text + '"', reply);
}

int InstrumentLink::veldaScpiTransData(const QByteArray& data) {
    std::string reply;
    return send_scpi(data, reply) == 0 ? 0 : -1;
}
