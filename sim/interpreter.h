#pragma once

#include "sim/command_table.h"
#include "sim/configuration_store.h"
#include "sim/module_state.h"
#include "sim/request_reader.h"
#include "sim/scpi_text.h"

#include <QByteArrayList>
#include <functional>

namespace Sim {

/// Carries out the commands and queries of the module: checks words and limits, changes the state, then answers. Used
/// on one thread; the state may be changed by others meanwhile.
class Interpreter {
public:
    /// Makes the service listen on another port as well; false when it cannot.
    using OpenPort = std::function<bool(quint16)>;

    Interpreter(ModuleState& state, OpenPort openPort);

    /// The answer, a line without its end: "+OK", a refusal, or what a query asked for. When it is returned, the region
    /// shows the change.
    QByteArray execute(const Request& request);

private:
    struct Action;
    using Run = QByteArray (Interpreter::*)(const QByteArray& argument);

    static const Action* findAction(const ScpiLine& line);
    QByteArray dispatch(const Request& request);
    QByteArray set(const Setting& setting, const QByteArray& argument);
    QByteArray upload(const Request& request);

    QByteArray selectChannel(const QByteArray& argument);
    QByteArray selectedChannel(const QByteArray& argument);
    QByteArray setRestoreMode(const QByteArray& argument);
    QByteArray trigger(const QByteArray& argument);
    QByteArray reset(const QByteArray& argument);
    QByteArray recall(const QByteArray& argument);
    QByteArray store(const QByteArray& argument);
    QByteArray clear(const QByteArray& argument);
    QByteArray setPort(const QByteArray& argument);
    QByteArray port(const QByteArray& argument);
    QByteArray acknowledge(const QByteArray& argument);
    QByteArray identity(const QByteArray& argument);
    QByteArray architecture(const QByteArray& argument);
    QByteArray nextError(const QByteArray& argument);
    QByteArray defineListStep(const QByteArray& argument);
    QByteArray definePatternStep(const QByteArray& argument);

    /// Both refuse steps outside the limits of the selected channel, and then keep what they have.
    template <typename Step>
    QByteArray take(const std::vector<Step>& steps, const Request& request,
                    std::vector<QByteArray> ModuleData::*uploads);
    template <typename Step>
    QByteArray defineStep(std::vector<QByteArray> ModuleData::*steps, int fields,
                          std::vector<Step> (*decode)(const QByteArray&), const QByteArray& argument);

    ModuleState& m_state;
    ConfigurationStore m_configurations;
    OpenPort m_openPort;
    QByteArrayList m_errors; ///< refusals that no error query has fetched yet, oldest first
};

} // namespace Sim
