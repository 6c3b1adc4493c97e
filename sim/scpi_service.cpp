#include "sim/scpi_service.h"

#include "common/wire/scpi_words.h"
#include "sim/factory_values.h"

#include <QHostAddress>
#include <algorithm>
#include <utility>

namespace Sim {
namespace {

constexpr int RetryListenMs = 20;

/// The request with another argument behind its header.
Request withArgument(const Request& request, const QByteArray& argument) {
    Request changed = request;
    const int blank = request.line.indexOf(' ');
    changed.line = (blank < 0 ? request.line : request.line.left(blank)) + ' ' + argument;
    return changed;
}

Delivery shaped(const QByteArray& answer, const Fault& fault) {
    if (answer.isEmpty())
        return {};
    Delivery delivery{answer + Scpi::LineEnd};
    switch (fault.kind) {
    case Fault::Late:
        delivery.delayMs = fault.milliseconds;
        break;
    case Fault::Split:
        delivery.byteEveryMs = fault.milliseconds;
        break;
    case Fault::Merge:
        delivery.withNext = true;
        break;
    case Fault::Double:
        delivery.bytes += delivery.bytes;
        break;
    case Fault::NoLineEnd:
        delivery.bytes = answer;
        break;
    case Fault::Drop:
        delivery.bytes = answer.left(std::max(answer.size() / 2, 1));
        delivery.thenClose = true;
        break;
    default:
        break;
    }
    return delivery;
}

} // namespace

ScpiService::ScpiService(ModuleState& state, FaultPlan& faults, RequestLog& log, std::function<void()> endBatteryCurve)
    : m_state(state),
      m_faults(faults),
      m_log(log),
      m_interpreter(state,
                    [this](quint16 port) {
                        QString error;
                        return open(port, error);
                    }),
      m_control(
          state, faults, log,
          {// Its own answer leaves before the service does.
           [this](int ms) { QTimer::singleShot(0, this, [this, ms] { goAway(ms); }); }, std::move(endBatteryCurve)}) {
    m_return.setSingleShot(true);
    connect(&m_return, &QTimer::timeout, this, &ScpiService::comeBack);
}

bool ScpiService::open(quint16 port, QString& error) {
    if (m_server && m_server->serverPort() == port)
        return true;
    auto server = std::make_unique<QTcpServer>();
    if (!server->listen(QHostAddress::LocalHost, port)) {
        error = QString("Port %1 cannot be opened: %2").arg(port).arg(server->errorString());
        return false;
    }
    connect(server.get(), &QTcpServer::newConnection, this, [this, listening = server.get()] {
        while (QTcpSocket* socket = listening->nextPendingConnection())
            new ScpiConnection(
                socket, [this](const Request& request) { return handle(request); }, this);
    });
    m_return.stop();
    m_server = std::move(server);
    m_port = m_server->serverPort();
    const std::string text = std::to_string(m_port);
    m_state.change([&text](ModuleData& data) {
        for (ChannelRecord& record : data.records)
            setRecordText(record.scpiPort, text);
    });
    return true;
}

void ScpiService::close() {
    m_return.stop();
    m_server.reset();
    const QList<ScpiConnection*> connections = findChildren<ScpiConnection*>(QString(), Qt::FindDirectChildrenOnly);
    for (ScpiConnection* connection : connections)
        connection->drop();
}

void ScpiService::goAway(int ms) {
    close();
    m_return.start(ms);
}

void ScpiService::comeBack() {
    QString error;
    if (!open(m_port, error))
        m_return.start(RetryListenMs);
}

QByteArray ScpiService::executeAtStart(const QByteArray& line) {
    Request request;
    request.line = line;
    return m_interpreter.execute(request);
}

Delivery ScpiService::handle(const Request& request) {
    if (const std::optional<QByteArray> answer = m_control.execute(request.line))
        return {*answer + Scpi::LineEnd};
    const std::optional<Fault> fault = m_faults.take(request.line);
    const QByteArray answer = fault ? carryOut(request, *fault) : m_interpreter.execute(request);
    // Whoever sees the request in the log sees its effect in the region.
    m_log.add(request.line);
    return fault ? shaped(answer, *fault) : Delivery{answer + Scpi::LineEnd};
}

QByteArray ScpiService::carryOut(const Request& request, const Fault& fault) {
    switch (fault.kind) {
    case Fault::Silent:
        return {};
    case Fault::Lost:
        m_interpreter.execute(request);
        return {};
    case Fault::Refuse:
        return QByteArray(Scpi::Refusal) + ' ' + (fault.text.isEmpty() ? "-200,Execution error" : fault.text);
    case Fault::Answer:
        m_interpreter.execute(request);
        return fault.text;
    case Fault::Keep:
        return Scpi::Acknowledge;
    case Fault::Other:
        m_interpreter.execute(withArgument(request, fault.text));
        return Scpi::Acknowledge;
    case Fault::Stale: {
        m_state.setHeld(true);
        QByteArray answer = m_interpreter.execute(request);
        m_state.setHeld(false);
        return answer;
    }
    case Fault::Gone:
        goAway(fault.milliseconds);
        return {};
    default:
        return m_interpreter.execute(request);
    }
}

} // namespace Sim
