#include "sim/interpreter.h"

#include "common/wire/scpi_words.h"
#include "common/wire/step_encoding.h"
#include "sim/factory_values.h"
#include "sim/field_access.h"
#include "sim/modulation_conflicts.h"
#include "sim/step_limits.h"

#include <algorithm>
#include <utility>

namespace Sim {
namespace {

constexpr int ErrorQueueLength = 32;
constexpr int ListStepFields = 6;    // number, Hz, dBm, last, not "Run", seconds
constexpr int PatternStepFields = 5; // number, on, off, loops, last

QByteArray ok() {
    return Scpi::Acknowledge;
}

QByteArray noConfiguration(const QString& error) {
    return refusal(FileNotFound, error.toUtf8());
}

} // namespace

struct Interpreter::Action {
    const char* header;
    bool isQuery;
    enum Argument { None, Needed } argument;
    Run run;
};

const Interpreter::Action* Interpreter::findAction(const ScpiLine& line) {
    static const Action Actions[] = {
        {Scpi::SelectChannel, false, Action::Needed, &Interpreter::selectChannel},
        {Scpi::SelectChannel, true, Action::None, &Interpreter::selectedChannel},
        {Scpi::PowerOnRestore, false, Action::Needed, &Interpreter::setRestoreMode},
        {Scpi::Trigger, false, Action::None, &Interpreter::trigger},
        {Scpi::Reset, false, Action::None, &Interpreter::reset},
        {Scpi::Recall, false, Action::Needed, &Interpreter::recall},
        {Scpi::Store, false, Action::Needed, &Interpreter::store},
        {Scpi::Clear, false, Action::Needed, &Interpreter::clear},
        {Scpi::Target, false, Action::Needed, &Interpreter::acknowledge},
        {Scpi::LanPort, false, Action::Needed, &Interpreter::setPort},
        {Scpi::LanPort, true, Action::None, &Interpreter::port},
        {Scpi::GuiUpdateSoftware, false, Action::None, &Interpreter::acknowledge},
        {Scpi::DeviceArchitectureQuery, true, Action::None, &Interpreter::architecture},
        {"*IDN", true, Action::None, &Interpreter::identity},
        {":SYSTem:ERRor", true, Action::None, &Interpreter::nextError},
        {":SOURce:LIST:DEFine", false, Action::Needed, &Interpreter::defineListStep},
        {":PATTern:DEFine", false, Action::Needed, &Interpreter::definePatternStep},
    };
    const auto* const found = std::find_if(std::begin(Actions), std::end(Actions), [&line](const Action& action) {
        return action.isQuery == line.isQuery && headerMatches(action.header, line.header);
    });
    return found == std::end(Actions) ? nullptr : found;
}

Interpreter::Interpreter(ModuleState& state, OpenPort openPort)
    : m_state(state), m_configurations(state.options().configurationFolder), m_openPort(std::move(openPort)) {}

QByteArray Interpreter::execute(const Request& request) {
    QByteArray answer = dispatch(request);
    if (answer.startsWith(Scpi::Refusal) && m_errors.size() < ErrorQueueLength)
        m_errors << answer.mid(static_cast<int>(sizeof Scpi::Refusal));
    return answer;
}

QByteArray Interpreter::dispatch(const Request& request) {
    if (!request.refusal.isEmpty())
        return request.refusal;
    if (!request.header.isEmpty())
        return upload(request);
    const ScpiLine line = splitLine(request.line);
    if (const Setting* setting = findSetting(line.header)) {
        if (!line.isQuery)
            return set(*setting, line.argument);
        const ModuleData data = m_state.data();
        return fieldText(setting->field, data.records.at(data.selected));
    }
    const Action* action = findAction(line);
    if (!action)
        return refusal(UndefinedHeader, "Undefined header: " + line.header.left(64));
    if (action->argument == Action::Needed && line.argument.isEmpty())
        return refusal(MissingParameter, "Missing parameter");
    if (action->argument == Action::None && !line.argument.isEmpty())
        return refusal(ParameterNotAllowed, "Parameter not allowed: " + line.argument.left(64));
    return (this->*action->run)(line.argument);
}

QByteArray Interpreter::set(const Setting& setting, const QByteArray& argument) {
    QByteArray refused;
    m_state.change([&](ModuleData& data) {
        ChannelRecord& selected = data.records.at(data.selected);
        if (!setting.wholeModule && selected.connected == 0) {
            refused = refusal(HardwareMissing, "The channel's module is not connected");
            return;
        }
        refused = assignField(setting.field, argument, selected);
        if (!refused.isEmpty() || !setting.wholeModule)
            return;
        for (ChannelRecord& record : data.records)
            refused = assignField(setting.field, argument, record);
    });
    return refused.isEmpty() ? ok() : refused;
}

QByteArray Interpreter::upload(const Request& request) {
    const bool isList = headerMatches(StepWire::ListData, request.header);
    const int stepBytes = isList ? StepWire::ListStepSize : StepWire::PatternStepSize;
    if (request.block.isEmpty() || request.block.size() % stepBytes != 0)
        return refusal(InvalidBlock, "Not a whole number of steps: " + QByteArray::number(request.block.size()));
    return isList ? take(listSteps(request.block), request, &ModuleData::lists)
                  : take(patternSteps(request.block), request, &ModuleData::patterns);
}

template <typename Step>
QByteArray Interpreter::take(const std::vector<Step>& steps, const Request& request,
                             std::vector<QByteArray> ModuleData::*uploads) {
    QByteArray outside;
    m_state.change([&](ModuleData& data) {
        outside = outsideLimits(steps, data.records.at(data.selected));
        if (outside.isEmpty())
            (data.*uploads).at(data.selected) = request.block;
    });
    if (!outside.isEmpty())
        return refusal(OutOfRange, outside);
    if (m_state.options().onUpload)
        m_state.options().onUpload(request.header, textsOf(steps));
    return ok();
}

QByteArray Interpreter::selectChannel(const QByteArray& argument) {
    const std::optional<double> number = parseNumber(argument);
    bool selected = false;
    m_state.change([&](ModuleData& data) {
        for (unsigned channel = 0; number && channel < data.records.size(); ++channel) {
            if (*number == channel) {
                data.selected = channel;
                selected = true;
            }
        }
    });
    return selected ? ok() : refusal(OutOfRange, "No such channel: " + argument);
}

QByteArray Interpreter::selectedChannel(const QByteArray&) {
    return QByteArray::number(m_state.data().selected);
}

QByteArray Interpreter::setRestoreMode(const QByteArray& argument) {
    const bool automatic = wordMatches("AUTO", argument);
    if (!automatic && !wordMatches("MANual", argument))
        return refusal(IllegalValue, "Neither AUTO nor MANUAL: " + argument);
    m_state.change([automatic](ModuleData& data) { data.restoreOutput = automatic; });
    return ok();
}

QByteArray Interpreter::trigger(const QByteArray&) {
    m_state.change([](ModuleData& data) { ++data.triggers; });
    return ok();
}

QByteArray Interpreter::reset(const QByteArray&) {
    m_state.change([this](ModuleData& data) {
        for (unsigned channel = 0; channel < data.records.size(); ++channel)
            copySettings(factoryRecord(channel, m_state.options()), data.records.at(channel));
    });
    return ok();
}

QByteArray Interpreter::recall(const QByteArray& argument) {
    const QString name = QString::fromUtf8(unquoted(argument));
    if (name == "0")
        return reset(argument);
    QString error = "No such configuration name";
    const std::optional<Records> stored =
        ConfigurationStore::isName(name) ? m_configurations.recall(name, error) : std::nullopt;
    if (!stored)
        return noConfiguration(error);
    m_state.change([&stored](ModuleData& data) {
        for (std::size_t channel = 0; channel < std::min(stored->size(), data.records.size()); ++channel)
            copySettings(stored->at(channel), data.records.at(channel));
    });
    return ok();
}

QByteArray Interpreter::store(const QByteArray& argument) {
    const QString name = QString::fromUtf8(unquoted(argument));
    if (!ConfigurationStore::isName(name))
        return refusal(IllegalValue, "No such configuration name: " + argument);
    ModuleData data = m_state.data();
    for (ChannelRecord& record : data.records) {
        if (!data.restoreOutput) {
            record.rfOutput = 0;
            stopModulations(record);
        }
    }
    QString error;
    return m_configurations.store(name, data.records, error) ? ok() : refusal(ExecutionError, error.toUtf8());
}

QByteArray Interpreter::clear(const QByteArray& argument) {
    const QString name = QString::fromUtf8(unquoted(argument));
    QString error = "No such configuration name";
    return ConfigurationStore::isName(name) && m_configurations.clear(name, error) ? ok() : noConfiguration(error);
}

QByteArray Interpreter::setPort(const QByteArray& argument) {
    const std::optional<double> number = parseNumber(unquoted(argument));
    const double port = number.value_or(0);
    if (port < 1 || port > 65535 || port != static_cast<quint16>(port))
        return refusal(OutOfRange, "Not a port: " + argument);
    if (!m_openPort(static_cast<quint16>(port)))
        return refusal(ExecutionError, "The port is taken: " + argument);
    return ok();
}

QByteArray Interpreter::port(const QByteArray&) {
    return recordText(m_state.data().records.front().scpiPort).c_str();
}

QByteArray Interpreter::acknowledge(const QByteArray&) {
    return ok();
}

QByteArray Interpreter::identity(const QByteArray&) {
    const ModuleData data = m_state.data();
    const ChannelRecord& record = data.records.at(data.selected);
    return QByteArray("KAVOR,") + recordText(record.model).c_str() + ',' + recordText(record.serial).c_str() + ',' +
           recordText(record.firmwareVersion).c_str();
}

QByteArray Interpreter::architecture(const QByteArray&) {
    const ModuleData data = m_state.data();
    return QByteArray(recordText(data.records.front().model).c_str()) + ",20000," +
           QByteArray::number(static_cast<int>(data.records.size())) + ",usb,2001,168c,handheld";
}

QByteArray Interpreter::nextError(const QByteArray&) {
    return m_errors.isEmpty() ? QByteArray("0,No error") : m_errors.takeFirst();
}

QByteArray Interpreter::defineListStep(const QByteArray& argument) {
    return defineStep(&ModuleData::listSteps, ListStepFields, listDefinitions, argument);
}

QByteArray Interpreter::definePatternStep(const QByteArray& argument) {
    return defineStep(&ModuleData::patternSteps, PatternStepFields, patternDefinitions, argument);
}

template <typename Step>
QByteArray Interpreter::defineStep(std::vector<QByteArray> ModuleData::*steps, int fields,
                                   std::vector<Step> (*decode)(const QByteArray&), const QByteArray& argument) {
    const QByteArrayList numbers = argument.split(',');
    const bool allNumbers = std::all_of(numbers.begin(), numbers.end(),
                                        [](const QByteArray& text) { return parseNumber(text).has_value(); });
    if (numbers.size() != fields || !allNumbers)
        return refusal(DataTypeError, "A step has " + QByteArray::number(fields) + " numbers");
    QByteArray outside;
    m_state.change([&](ModuleData& data) {
        outside = outsideLimits(decode(argument), data.records.at(data.selected));
        if (!outside.isEmpty())
            return;
        QByteArray& all = (data.*steps).at(data.selected);
        // The first step begins the sequence anew.
        all = numbers.first().toDouble() <= 1 ? argument : all + '\n' + argument;
    });
    return outside.isEmpty() ? ok() : refusal(OutOfRange, outside);
}

} // namespace Sim
