#include "headless/conformance.h"

#include "common/instrument/modulations.h"
#include "common/link/record_texts.h"
#include "common/wire/scpi_words.h"
#include "common/wire/step_encoding.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

constexpr int MutesUntilGivenUp = 3;
constexpr char Configuration[] = "preset-99999.json";

QByteArray number(double value) {
    return QByteArray::number(value, 'g', 12);
}

QByteArray text(const std::string& words) {
    return QByteArray::fromStdString(words);
}

/// The text of a limit, on this side of it where the wire's decimals cannot carry it.
std::string limitText(const DeviceValue& item, double limit, double other) {
    const double scale = item.kind == DeviceValue::Kind::Time ? 1e-9 : 1.0;
    std::string argument = wireText(item, limit);
    const double missed = wireNumber(argument) - limit * scale;
    const double inward = other > limit ? 1 : -1;
    if (missed * inward >= -1e-12 * std::abs(limit * scale))
        return argument;
    return wireText(item, limit + inward * std::pow(10, -item.decimals) / scale);
}

Conformance::Settings checked(Conformance::Settings settings) {
    if (!settings.regionName.empty() && settings.regionName.front() != '/')
        settings.regionName.insert(0, "/");
    return settings;
}

} // namespace

Conformance::Conformance(const Settings& settings) : m_settings(checked(settings)), m_region(m_settings.regionName) {}

std::vector<Conformance::Row> Conformance::run() {
    if (!lookAtRegion())
        return m_rows;
    const unsigned channels = m_region.channelCount();
    for (unsigned channel = channels; channel-- > 0 && m_mute < MutesUntilGivenUp;) // the first stays selected
        lookAtChannel(channel);
    if (m_mute < MutesUntilGivenUp) {
        network();
        configurations();
        connections();
    }
    if (m_mute >= MutesUntilGivenUp) {
        row("the rest");
        find("given up: no answer to " + QByteArray::number(m_mute) + " commands in a row");
    }
    return m_rows;
}

std::vector<double> Conformance::times() const {
    std::vector<double> sorted = m_times;
    std::sort(sorted.begin(), sorted.end());
    return sorted;
}

bool Conformance::lookAtRegion() {
    row("region " + text(m_settings.regionName));
    m_region.follow();
    if (!m_region.isUsable() || !m_region.isPresent()) {
        find("is not there, or does not hold one to four records of " + QByteArray::number(int(ChannelRecordSize)) +
             " bytes");
        return false;
    }
    const QByteArray port = text(recordText(record().scpiPort));
    m_port = port.toUShort();
    if (m_port == 0)
        find("the record's port is no port: \"" + port + '"');
    m_probe = std::make_unique<ServiceProbe>(m_port, m_settings.timeoutMs, m_settings.quietMs);
    row("service on port " + QByteArray::number(m_port));
    if (m_port != 0 && m_probe->connectAnew())
        return true;
    find("nothing listens there");
    return false;
}

void Conformance::lookAtRecord(unsigned channel) {
    const ChannelRecord r = record();
    const QByteArray name = "channel " + QByteArray::number(channel);
    row(name + ", record");
    if (r.connected == 0)
        find("the module is not connected");
    for (const auto* field :
         {&r.triggerSource, &r.triggerEdge, &r.triggerAdvance, &r.referenceOscillator, &r.amSource, &r.fmSource,
          &r.pmSource, &r.pulseSource, &r.model, &r.serial, &r.firmwareVersion, &r.ipAddress, &r.scpiPort}) {
        if (std::memchr(*field, 0, sizeof *field) == nullptr)
            find("a text at offset " +
                 QByteArray::number(
                     static_cast<int>(reinterpret_cast<const char*>(field) - reinterpret_cast<const char*>(&r))) +
                 " has no end");
    }
    for (int i = 0; i < DeviceValueCount; ++i) {
        const DeviceValue& item = ::deviceValue(static_cast<DeviceValueId>(i));
        const ValueLimits limits{fieldInHandlerUnits(item, r, item.maximumOffset),
                                 fieldInHandlerUnits(item, r, item.minimumOffset)};
        const double value = fieldInHandlerUnits(item, r, item.valueOffset);
        if (limits.minimum > limits.maximum)
            find(QByteArray(item.header) + "at offset " + QByteArray::number(int(item.maximumOffset)) +
                 ": its minimum is above its maximum");
        else if (!limits.contains(value))
            find(QByteArray(item.header) + "at offset " + QByteArray::number(int(item.valueOffset)) + ": " +
                 number(value) + " is outside its limits");
    }
}

void Conformance::lookAtChannel(unsigned channel) {
    m_channel = channel;
    row("channel " + QByteArray::number(channel) + ", selection and RF off");
    if (m_region.channelCount() > 1)
        send(Scpi::SelectChannel + QByteArray::number(channel));
    send(QByteArray(Scpi::Output) + "OFF",
         [](const ChannelRecord& r) { return QByteArray(r.rfOutput == 1 ? "the record shows RF on" : ""); });
    lookAtRecord(channel);
    for (int i = 0; i < DeviceValueCount && m_mute < MutesUntilGivenUp; ++i)
        deviceValue(static_cast<DeviceValueId>(i));
    using Step = void (Conformance::*)();
    for (const Step step :
         {&Conformance::words, &Conformance::switches, &Conformance::uploads, &Conformance::radiation}) {
        if (m_mute < MutesUntilGivenUp)
            (this->*step)();
    }
}

/// Both limits, something above them, and the value that was there.
void Conformance::deviceValue(DeviceValueId id) {
    const DeviceValue& item = ::deviceValue(id);
    const ChannelRecord before = record();
    const double held = fieldInHandlerUnits(item, before, item.valueOffset);
    const ValueLimits limits{fieldInHandlerUnits(item, before, item.maximumOffset),
                             fieldInHandlerUnits(item, before, item.minimumOffset)};
    row(QByteArray(item.header).trimmed());
    const auto set = [&](const std::string& argument) {
        send(item.header + text(argument), [&](const ChannelRecord& r) {
            return isTaken(item, r, wireNumber(argument), argument)
                       ? QByteArray()
                       : "the record shows " + number(fieldInHandlerUnits(item, r, item.valueOffset)) + " for " +
                             text(argument);
        });
    };
    if (limits.known() && limits.maximum > limits.minimum) {
        set(limitText(item, limits.minimum, limits.maximum));
        set(limitText(item, limits.maximum, limits.minimum));
        // The panel asks for nothing outside the limits, but others do, and the panel would show it.
        const double above = limits.maximum + (limits.maximum - limits.minimum);
        const QByteArray command = item.header + text(wireText(item, above));
        exchange(command + Scpi::LineEnd, command);
        if (!limits.contains(fieldInHandlerUnits(item, record(), item.valueOffset)))
            find(command + ": taken, though it is outside the limits");
    }
    set(wireText(item, held));
}

void Conformance::words() {
    struct Word {
        const char* header;
        QByteArrayList words;
        char (ChannelRecord::*field)[32];
    };
    using R = ChannelRecord;
    const auto list = [](const auto& table) {
        QByteArrayList words;
        for (const char* word : table)
            words << word;
        return words;
    };
    const QByteArrayList sources = list(ModSrcModeToString);
    const QByteArrayList directions = list(SweepDirectionToString);
    for (const Word& word : std::initializer_list<Word>{
             {Scpi::TriggerSource, list(TriggerSourceToString), &R::triggerSource},
             {Scpi::TriggerEdge, list(TriggerEdgeToString), &R::triggerEdge},
             {Scpi::TriggerAdvance, list(TriggerAdvToString), &R::triggerAdvance},
             {Scpi::ReferenceOscillator, list(ReferenceOscillatorToString), &R::referenceOscillator},
             {Scpi::AmSource, sources, &R::amSource},
             {Scpi::FmSource, sources, &R::fmSource},
             {Scpi::PmSource, sources, &R::pmSource},
             {Scpi::PulseSource, sources, &R::pulseSource},
             {Scpi::FrswDirection, directions, &R::frswDirection},
             {Scpi::PrswDirection, directions, &R::prswDirection}}) {
        row(QByteArray(word.header).trimmed());
        const QByteArray held = text(recordText(record().*word.field));
        if (!word.words.contains(held))
            find("the record holds \"" + held + "\", which is none of " + word.words.join(", "));
        for (const QByteArray& asked :
             word.words + (word.words.contains(held) ? QByteArrayList{held} : QByteArrayList()))
            send(word.header + asked, [&](const ChannelRecord& r) {
                const QByteArray shown = text(recordText(r.*word.field));
                return shown == asked ? QByteArray() : "the record shows \"" + shown + "\" for " + asked;
            });
    }
}

void Conformance::switches() {
    const ChannelRecord before = record();
    const auto set = [this](const char* header, const QByteArray& argument, std::uint32_t ChannelRecord::*field,
                            std::uint32_t wanted) {
        send(header + argument, [&](const ChannelRecord& r) {
            return r.*field == wanted ? QByteArray() : "the record shows " + QByteArray::number(r.*field);
        });
    };
    row(":INIT:CONT");
    for (const bool on : {false, true, before.runMode == 1})
        set(Scpi::RunContinuous, OnOffToString[on], &ChannelRecord::runMode, on);
    row(":TRIG:INP:IMP");
    set(Scpi::TriggerImpedance, "50", &ChannelRecord::triggerImpedance, 50);
    send(QByteArray(Scpi::TriggerImpedance) + "10000",
         [](const ChannelRecord& r) { return QByteArray(r.triggerImpedance == 50 ? "the record shows 50" : ""); });
    send(Scpi::TriggerImpedance + QByteArray(before.triggerImpedance == 50 ? "50" : "10000"));
    row(":MODulation:ENABle:MASK");
    for (const Modulation& kind : Modulations)
        set(Scpi::ModulationMask, QByteArray::number(kind.bit), &ChannelRecord::modulationEnable, kind.bit);
    set(Scpi::ModulationMask, QByteArray::number(before.modulationEnable), &ChannelRecord::modulationEnable,
        before.modulationEnable);
    for (const Modulation& kind : Modulations) {
        row(QByteArray(kind.stateHeader).trimmed() + " off");
        set(kind.stateHeader, "OFF", kind.running, 0);
    }
    row("*TRG");
    send(Scpi::Trigger);
    row("a command that there is not");
    if (exchange(":VELDA:NONE 1\r\n", ":VELDA:NONE").line.startsWith(Scpi::Acknowledge))
        find("is acknowledged");
}

void Conformance::uploads() {
    const ChannelRecord r = record();
    list_point step;
    step.frequency = r.frequency.minimum;
    step.frequencyUnit = "Hz";
    step.power = r.power.minimum;
    step.dwell = r.listDwell.maximum > 0 ? r.listDwell.maximum : 1;
    step.dwellUnit = "s";
    pattern_point pulse;
    pulse.onTime = pulse.offTime = r.patternTime.maximum > 0 ? r.patternTime.maximum : 1;
    pulse.onTimeUnit = pulse.offTimeUnit = "s";
    list_point last = step;
    pattern_point lastPulse = pulse;
    last.stepNumber = lastPulse.stepNumber = 2;
    last.last = lastPulse.last = true;
    row("list, binary");
    sendMessage(StepWire::listMessage({&step, &last}), StepWire::ListData, nullptr);
    row("pattern, binary");
    sendMessage(StepWire::patternMessage({&pulse, &lastPulse}), StepWire::PatternData, nullptr);
    row("list and pattern, step by step");
    for (const std::string& command : {StepWire::listCommand(step), StepWire::listCommand(last),
                                       StepWire::patternCommand(pulse), StepWire::patternCommand(lastPulse)})
        send(text(command));
}

/// What is there already is sent again: nothing of the network changes.
void Conformance::network() {
    const ChannelRecord r = record();
    row("network, as it is");
    send(Scpi::LanDhcp + QByteArray(OnOffToString[r.dhcp == 1]), [&](const ChannelRecord& now) {
        return QByteArray((now.dhcp == 1) == (r.dhcp == 1) ? "" : "the record shows the other mode");
    });
    const auto quoted = [](const char(&field)[32]) {
        return '"' + text(recordText(field)) + '"';
    };
    if (r.dhcp != 1) {
        send(Scpi::LanAddress + quoted(r.ipAddress));
        send(Scpi::LanMask + quoted(r.networkMask));
        send(Scpi::LanGateway + quoted(r.gateway));
    }
    send(Scpi::LanPort + text(recordText(r.scpiPort)));
    row("architecture");
    const ServiceProbe::Answer answer =
        exchange(QByteArray(Scpi::DeviceArchitectureQuery) + Scpi::LineEnd, Scpi::DeviceArchitectureQuery);
    if (answer.ended && answer.line.isEmpty())
        find("an empty answer");
    skip(QByteArray(Scpi::GuiUpdateSoftware).trimmed(), "it starts an update of the module");
}

void Conformance::radiation() {
    if (!m_settings.radiates) {
        skip("RF on, modulations on", "only with --rf");
        return;
    }
    const ChannelRecord before = record();
    const DeviceValue& power = ::deviceValue(DeviceValueId::Power);
    row("RF on");
    send(power.header + text(wireText(power, before.power.minimum)));
    const auto expect = [](std::uint32_t ChannelRecord::*field, std::uint32_t wanted) {
        return [field, wanted](const ChannelRecord& r) {
            return r.*field == wanted ? QByteArray() : "the record shows " + QByteArray::number(r.*field);
        };
    };
    send(QByteArray(Scpi::Output) + "ON", expect(&ChannelRecord::rfOutput, 1));
    for (const Modulation& kind : Modulations) {
        row(QByteArray(kind.stateHeader).trimmed() + " on");
        send(Scpi::ModulationMask + QByteArray::number(kind.bit));
        send(kind.stateHeader + QByteArray("ON"), expect(kind.running, 1));
        send(kind.stateHeader + QByteArray("OFF"), expect(kind.running, 0));
    }
    row("RF off again");
    send(QByteArray(Scpi::Output) + "OFF", expect(&ChannelRecord::rfOutput, 0));
    send(Scpi::ModulationMask + QByteArray::number(before.modulationEnable));
    send(power.header + text(wireText(power, before.power.value)));
}

void Conformance::configurations() {
    if (!m_settings.restarts) {
        skip("store, reset, recall, erase", "only with --reset");
        return;
    }
    const ChannelRecord before = record();
    row("store, reset, recall, erase");
    send(QByteArray(Scpi::PowerOnRestore) + "MANUAL");
    send(QByteArray(Scpi::Store) + Configuration);
    send(Scpi::Reset);
    send(QByteArray(Scpi::Recall) + Configuration, [&](const ChannelRecord& r) {
        return r.frequency.value == before.frequency.value && r.power.value == before.power.value
                   ? QByteArray()
                   : QByteArray("frequency or power is not what was stored");
    });
    send(QByteArray(Scpi::Output) + "OFF");
    send(QByteArray(Scpi::Clear) + Configuration);
}

/// As the panel meets the service when either of them was restarted.
void Conformance::connections() {
    const QByteArray harmless = QByteArray(Scpi::Output) + "OFF" + Scpi::LineEnd;
    row("two clients at a time");
    ServiceProbe second(m_port, m_settings.timeoutMs, m_settings.quietMs);
    if (!second.connectAnew())
        find("the second is not let in");
    else if (!second.ask(harmless).line.startsWith(Scpi::Acknowledge))
        find("the second is not answered");
    exchange(harmless, "the first");
    row("a client that goes in the midst of a command");
    second.write(":FRE");
    if (!second.connectAnew() || !second.ask(harmless).line.startsWith(Scpi::Acknowledge))
        find("the next command of a new connection fails");
    exchange(harmless, "the other client");
    row("two commands in one piece");
    const ServiceProbe::Answer both = m_probe->ask(harmless + harmless);
    if (!both.ended || (both.beyond.isEmpty() && !m_probe->ask(QByteArray()).ended))
        find("are not answered one after the other");
    if (!m_probe->connectAnew())
        find("the connection cannot be made anew");
}

ChannelRecord Conformance::record() {
    m_region.follow();
    ChannelRecord record{};
    m_region.read(m_channel, 0, &record, sizeof record);
    return record;
}

void Conformance::row(const QByteArray& what) {
    m_rows.push_back({what, {}, 0, false});
}

void Conformance::skip(const QByteArray& what, const QByteArray& why) {
    row(what);
    m_rows.back().skipped = true;
    find("not sent: " + why);
}

void Conformance::find(const QByteArray& finding) {
    if (!m_rows.back().findings.contains(finding))
        m_rows.back().findings << finding;
}

ServiceProbe::Answer Conformance::exchange(const QByteArray& message, const QByteArray& shown) {
    ServiceProbe::Answer answer = m_probe->ask(message);
    m_rows.back().slowestMs = std::max(m_rows.back().slowestMs, answer.ms);
    if (answer.ended)
        m_times.push_back(answer.ms);
    m_mute = answer.ended ? 0 : m_mute + 1;
    if (answer.closed) {
        find(shown + ": the connection was closed");
        if (!m_probe->connectAnew())
            find("and nothing listens any more");
    } else if (!answer.ended) {
        find(shown + ": no answer in " + QByteArray::number(m_settings.timeoutMs) + " ms" +
             (answer.beyond.isEmpty() ? "" : ", but a line without an end"));
        if (!m_probe->connectAnew()) // what comes late would answer the next one
            find("and nothing listens any more");
    } else if (!answer.beyond.isEmpty()) {
        find(shown + ": more than one answer");
    } else if (answer.ms > m_settings.slowMs) {
        find(shown + ": answered after " + QByteArray::number(answer.ms, 'f', 0) + " ms");
    }
    return answer;
}

bool Conformance::send(const QByteArray& command, const Check& check) {
    return sendMessage(command + Scpi::LineEnd, command.trimmed(), check);
}

bool Conformance::sendMessage(const QByteArray& message, const QByteArray& shown, const Check& check) {
    const ServiceProbe::Answer answer = exchange(message, shown);
    if (!answer.ended)
        return false;
    if (answer.line.startsWith(Scpi::Refusal)) {
        find(shown + ": refused, " + answer.line);
        return false;
    }
    if (answer.line != Scpi::Acknowledge)
        find(shown + ": the answer is \"" + answer.line + "\" and not " + Scpi::Acknowledge);
    const QByteArray wrong = check ? check(record()) : QByteArray();
    if (!wrong.isEmpty())
        find(shown + ": " + wrong);
    return true;
}
