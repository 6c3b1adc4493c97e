#include "sim/control_commands.h"

#include "common/wire/scpi_words.h"
#include "sim/factory_values.h"
#include "sim/scpi_text.h"
#include "sim/step_decoding.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace Sim {
namespace {

constexpr std::array<const char*, 14> KindWords{"SILent", "LOST",  "LATE", "REFuse", "ANSWer", "SPLit", "MERGe",
                                                "DOUBle", "NOEnd", "DROP", "KEEP",   "OTHer",  "STALe", "GONE"};
static_assert(Fault::Gone + 1 == KindWords.size());

constexpr int LongestMs = 3600 * 1000;
constexpr int LargestBlock = 64 * 1024 * 1024;

QByteArray ok() {
    return Scpi::Acknowledge;
}

QByteArray wrong(const QByteArray& what) {
    return refusal(IllegalValue, what);
}

// Commas inside double quotes do not separate.
QByteArrayList splitArguments(const QByteArray& text) {
    QByteArrayList arguments;
    QByteArray current;
    bool quoted = false;
    for (const char c : text) {
        quoted = c == '"' ? !quoted : quoted;
        if (c == ',' && !quoted) {
            arguments << current.trimmed();
            current.clear();
        } else {
            current += c;
        }
    }
    if (!arguments.isEmpty() || !current.trimmed().isEmpty())
        arguments << current.trimmed();
    return arguments;
}

std::optional<int> wholeNumber(const QByteArray& text, int minimum, int maximum) {
    const std::optional<double> number = parseNumber(text);
    if (!number || *number != std::floor(*number) || *number < minimum || *number > maximum)
        return std::nullopt;
    return static_cast<int>(*number);
}

std::optional<bool> onOff(const QByteArray& text) {
    const char* word = findWord(OnOffToString, text);
    return word ? std::optional<bool>(word == OnOffToString[OnOff::on]) : std::nullopt;
}

// One NAME=VALUE of a fault; false when there is no such thing.
bool applyFaultOption(const QByteArray& option, Fault& fault) {
    const int equals = option.indexOf('=');
    const QByteArray name = option.left(std::max(equals, 0)).trimmed();
    const QByteArray value = unquoted(option.mid(equals + 1).trimmed());
    if (wordMatches("FOR", name)) {
        fault.header = value;
    } else if (wordMatches("TEXT", name)) {
        fault.text = value;
    } else if (wordMatches("COUNt", name) || wordMatches("MS", name)) {
        const std::optional<int> number = wholeNumber(value, 0, LongestMs);
        if (!number)
            return false;
        (wordMatches("MS", name) ? fault.milliseconds : fault.count) = *number;
    } else {
        return false;
    }
    return true;
}

} // namespace

struct ControlCommands::Row {
    const char* header;
    bool isQuery;
    int fewest; ///< arguments
    int most;
    QByteArray (ControlCommands::*run)(const QByteArrayList& arguments);
};

const ControlCommands::Row* ControlCommands::findRow(const QByteArray& header, bool isQuery) {
    static const Row Rows[] = {
        {"SIMulator:FAULt", false, 1, 5, &ControlCommands::addFault},
        {"SIMulator:FAULt:CLEar", false, 0, 0, &ControlCommands::clearFaults},
        {"SIMulator:FAULt:PENDing", true, 0, 0, &ControlCommands::pendingFaults},
        {"SIMulator:GONE", false, 1, 1, &ControlCommands::goAway},
        {"SIMulator:FREeze", false, 1, 1, &ControlCommands::freeze},
        {"SIMulator:REGion:REPLace", false, 0, 1, &ControlCommands::replaceRegion},
        {"SIMulator:BATTery", false, 2, 2, &ControlCommands::setBattery},
        {"SIMulator:CONNected", false, 2, 2, &ControlCommands::setConnected},
        {"SIMulator:TEMPerature", false, 1, 1, &ControlCommands::setTemperature},
        {"SIMulator:COUNt", true, 1, 1, &ControlCommands::countReceived},
        {"SIMulator:TRIGgers", true, 0, 0, &ControlCommands::triggers},
        {"SIMulator:RECeived:CLEar", false, 0, 0, &ControlCommands::clearReceived},
        {"SIMulator:LIST", true, 0, 0, &ControlCommands::list},
        {"SIMulator:PATTern", true, 0, 0, &ControlCommands::pattern},
        {"SIMulator:LIST:DEFined", true, 0, 0, &ControlCommands::definedList},
        {"SIMulator:PATTern:DEFined", true, 0, 0, &ControlCommands::definedPattern},
        {"SIMulator:BLOCk", true, 1, 1, &ControlCommands::block},
    };
    const auto* const found = std::find_if(std::begin(Rows), std::end(Rows), [&](const Row& row) {
        return row.isQuery == isQuery && headerMatches(row.header, header);
    });
    return found == std::end(Rows) ? nullptr : found;
}

ControlCommands::ControlCommands(ModuleState& state, FaultPlan& faults, RequestLog& log, Hooks hooks)
    : m_state(state), m_faults(faults), m_log(log), m_hooks(std::move(hooks)) {}

ControlCommands::~ControlCommands() = default;

std::optional<QByteArray> ControlCommands::execute(const QByteArray& text) {
    const ScpiLine line = splitLine(text);
    if (!wordMatches("SIMulator", line.header.split(':').first()))
        return std::nullopt;
    const Row* row = findRow(line.header, line.isQuery);
    if (!row)
        return refusal(UndefinedHeader, "Undefined header: " + line.header);
    const QByteArrayList arguments = splitArguments(line.argument);
    if (arguments.size() < row->fewest || arguments.size() > row->most)
        return refusal(MissingParameter, "Wrong number of parameters");
    return (this->*row->run)(arguments);
}

QByteArray ControlCommands::addFault(const QByteArrayList& arguments) {
    Fault fault;
    const char* word = findWord(KindWords, arguments.first());
    if (!word)
        return wrong("Unknown fault: " + arguments.first());
    fault.kind = static_cast<Fault::Kind>(std::find(KindWords.begin(), KindWords.end(), word) - KindWords.begin());
    for (const QByteArray& option : arguments.mid(1)) {
        if (!applyFaultOption(option, fault))
            return wrong("Unknown option: " + option);
    }
    m_faults.add(fault);
    return ok();
}

QByteArray ControlCommands::clearFaults(const QByteArrayList&) {
    m_faults.clear();
    return ok();
}

QByteArray ControlCommands::pendingFaults(const QByteArrayList&) {
    return QByteArray::number(m_faults.pending());
}

QByteArray ControlCommands::goAway(const QByteArrayList& arguments) {
    const std::optional<int> ms = wholeNumber(arguments.first(), 0, LongestMs);
    if (!ms)
        return wrong("Not a time in milliseconds: " + arguments.first());
    m_hooks.goAway(*ms);
    return ok();
}

QByteArray ControlCommands::freeze(const QByteArrayList& arguments) {
    const std::optional<bool> frozen = onOff(arguments.first());
    if (!frozen)
        return wrong("Neither ON nor OFF: " + arguments.first());
    m_state.setFrozen(*frozen);
    return ok();
}

QByteArray ControlCommands::replaceRegion(const QByteArrayList& arguments) {
    const std::optional<int> channels = arguments.isEmpty() ? 0 : wholeNumber(arguments.first(), 1, MaxChannels);
    if (!channels)
        return wrong("1 to 4 channels, not " + arguments.first());
    QString error;
    return m_state.publishAnew(static_cast<unsigned>(*channels), error) ? ok() : wrong(error.toUtf8());
}

QByteArray ControlCommands::setBattery(const QByteArrayList& arguments) {
    const std::optional<int> charge = wholeNumber(arguments.at(0), 0, 100);
    const std::optional<int> current = wholeNumber(arguments.at(1), -32768, 32767);
    if (!charge || !current)
        return wrong("Not percent and mA");
    m_hooks.endBatteryCurve();
    m_state.change([&](ModuleData& data) {
        for (ChannelRecord& record : data.records) {
            Sim::setBattery({0, static_cast<double>(*charge), static_cast<double>(*current)}, record);
        }
    });
    return ok();
}

QByteArray ControlCommands::setConnected(const QByteArrayList& arguments) {
    const int channels = static_cast<int>(m_state.data().records.size());
    const std::optional<int> channel = wholeNumber(arguments.at(0), 0, channels - 1);
    const std::optional<bool> connected = onOff(arguments.at(1));
    if (!channel || !connected)
        return wrong("Not a channel and ON or OFF");
    m_state.change([&](ModuleData& data) {
        const auto index = static_cast<std::size_t>(*channel);
        if (index < data.records.size())
            data.records[index].connected = *connected ? 1 : 0;
    });
    return ok();
}

QByteArray ControlCommands::setTemperature(const QByteArrayList& arguments) {
    const std::optional<double> celsius = parseNumber(arguments.first());
    if (!celsius)
        return wrong("Not a temperature: " + arguments.first());
    m_state.change([&](ModuleData& data) {
        for (ChannelRecord& record : data.records)
            record.temperature = *celsius;
    });
    return ok();
}

QByteArray ControlCommands::countReceived(const QByteArrayList& arguments) {
    return QByteArray::number(m_log.count(unquoted(arguments.first())));
}

QByteArray ControlCommands::triggers(const QByteArrayList&) {
    return QByteArray::number(m_state.data().triggers);
}

QByteArray ControlCommands::clearReceived(const QByteArrayList&) {
    m_log.clear();
    return ok();
}

QByteArray ControlCommands::list(const QByteArrayList&) {
    const ModuleData data = m_state.data();
    return textsOf(listSteps(data.lists.at(data.selected))).join("; ");
}

QByteArray ControlCommands::pattern(const QByteArrayList&) {
    const ModuleData data = m_state.data();
    return textsOf(patternSteps(data.patterns.at(data.selected))).join("; ");
}

QByteArray ControlCommands::definedList(const QByteArrayList&) {
    const ModuleData data = m_state.data();
    return textsOf(listDefinitions(data.listSteps.at(data.selected))).join("; ");
}

QByteArray ControlCommands::definedPattern(const QByteArrayList&) {
    const ModuleData data = m_state.data();
    return textsOf(patternDefinitions(data.patternSteps.at(data.selected))).join("; ");
}

QByteArray ControlCommands::block(const QByteArrayList& arguments) {
    const std::optional<int> size = wholeNumber(arguments.first(), 0, LargestBlock);
    if (!size)
        return wrong("Not a size: " + arguments.first());
    const QByteArray length = QByteArray::number(*size);
    QByteArray block = '#' + QByteArray::number(length.size()) + length;
    block.reserve(block.size() + *size);
    for (int i = 0; i < *size; ++i)
        block += static_cast<char>('A' + i % 26);
    return block;
}

} // namespace Sim
