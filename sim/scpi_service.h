#pragma once

#include "sim/control_commands.h"
#include "sim/fault_plan.h"
#include "sim/interpreter.h"
#include "sim/request_log.h"
#include "sim/scpi_connection.h"

#include <QObject>
#include <QTcpServer>
#include <QTimer>
#include <memory>

namespace Sim {

/// The module's TCP service on 127.0.0.1. Lives on one thread.
class ScpiService : public QObject {
    Q_OBJECT

public:
    ScpiService(ModuleState& state, FaultPlan& faults, RequestLog& log, std::function<void()> endBatteryCurve);

    /// Listens on the port (0: any free one), publishes its number, and stops listening on any other; connections stay.
    /// False, with a sentence and without effect, when the port is taken.
    [[nodiscard]] bool open(quint16 port, QString& error);

    /// Closes the port and drops all connections, until open() or for so many milliseconds.
    void close();
    void goAway(int ms);

    /// Carries out a request of the module's as it starts; the answer.
    QByteArray executeAtStart(const QByteArray& line);

    quint16 port() const { return m_port; }

private:
    Delivery handle(const Request& request);
    QByteArray carryOut(const Request& request, const Fault& fault);
    void comeBack();

    ModuleState& m_state;
    FaultPlan& m_faults;
    RequestLog& m_log;
    Interpreter m_interpreter;
    ControlCommands m_control;
    std::unique_ptr<QTcpServer> m_server;
    QTimer m_return;
    quint16 m_port = 0; ///< the last one while closed
};

} // namespace Sim
