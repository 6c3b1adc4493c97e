#include "common/instrument/modulations.h"
#include "common/link/record_texts.h"
#include "common/wire/scpi_words.h"
#include "common/wire/step_encoding.h"
#include "headless/conformance.h"

#include <cmath>
#include <cstring>

// What is looked at on each channel.

namespace {

constexpr DeviceValueId Powers[] = {DeviceValueId::Power, DeviceValueId::PrswStart, DeviceValueId::PrswStop};

QByteArray number(double value) {
    return QByteArray::number(value, 'g', 12);
}

QByteArray text(const std::string& words) {
    return QByteArray::fromStdString(words);
}

ValueLimits limitsOf(const DeviceValue& item, const ChannelRecord& record) {
    return {fieldInHandlerUnits(item, record, item.maximumOffset),
            fieldInHandlerUnits(item, record, item.minimumOffset)};
}

/// A check of the record's field behind a command.
auto expect(std::uint32_t ChannelRecord::*field, std::uint32_t wanted) {
    return [field, wanted](const ChannelRecord& r) {
        return r.*field == wanted ? QByteArray() : "the record shows " + QByteArray::number(r.*field);
    };
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

} // namespace

void Conformance::lookAtRecord() {
    const ChannelRecord r = record();
    row("record");
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
        const ValueLimits limits = limitsOf(item, r);
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
    if (m_channels > 1)
        m_scope = "channel " + QByteArray::number(channel) + ", ";
    row("selection and RF off");
    const bool ours = select(channel);
    const bool isOff = ours && sendOff();
    lookAtRecord();
    if (!isOff) {
        skip("all else", ours ? "RF may be on" : "it would reach another channel");
    } else {
        for (int i = 0; i < DeviceValueCount && goesOn(); ++i)
            deviceValue(static_cast<DeviceValueId>(i));
        using Step = void (Conformance::*)();
        for (const Step step :
             {&Conformance::words, &Conformance::switches, &Conformance::uploads, &Conformance::radiation}) {
            if (goesOn())
                (this->*step)();
        }
    }
    m_scope.clear();
}

bool Conformance::sendOff() {
    return send(QByteArray(Scpi::Output) + "OFF",
                [](const ChannelRecord& r) { return QByteArray(r.rfOutput == 1 ? "the record shows RF on" : ""); });
}

bool Conformance::setValue(const DeviceValue& item, const std::string& argument) {
    return send(item.header + text(argument), [&](const ChannelRecord& r) {
        return isTaken(item, r, wireNumber(argument), argument)
                   ? QByteArray()
                   : "the record shows " + number(fieldInHandlerUnits(item, r, item.valueOffset)) + " for " +
                         text(argument);
    });
}

/// Both limits, something above them, and the value that was there.
void Conformance::deviceValue(DeviceValueId id) {
    const DeviceValue& item = ::deviceValue(id);
    const ChannelRecord before = record();
    const double held = fieldInHandlerUnits(item, before, item.valueOffset);
    const ValueLimits limits = limitsOf(item, before);
    row(QByteArray(item.header).trimmed());
    if (limits.known() && limits.maximum > limits.minimum) {
        setValue(item, limitText(item, limits.minimum, limits.maximum));
        setValue(item, limitText(item, limits.maximum, limits.minimum));
        // The panel asks for nothing outside the limits, but others do, and the panel would show it.
        const double above = limits.maximum + (limits.maximum - limits.minimum);
        const QByteArray command = item.header + text(wireText(item, above));
        exchange(command + Scpi::LineEnd, command);
        if (!limits.contains(fieldInHandlerUnits(item, record(), item.valueOffset)))
            find(command + ": taken, though it is outside the limits");
    }
    setValue(item, wireText(item, held));
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
        send(header + argument, expect(field, wanted));
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
    m_listIsWeak = sendMessage(StepWire::listMessage({&step, &last}), StepWire::ListData, nullptr);
    row("pattern, binary");
    sendMessage(StepWire::patternMessage({&pulse, &lastPulse}), StepWire::PatternData, nullptr);
    row("list and pattern, step by step");
    for (const std::string& command : {StepWire::listCommand(step), StepWire::listCommand(last),
                                       StepWire::patternCommand(pulse), StepWire::patternCommand(lastPulse)})
        send(text(command));
}

/// Only when nothing can radiate more than the lowest power: neither the carrier nor the power sweep nor the list.
void Conformance::radiation() {
    if (!m_settings.radiates) {
        skip("RF on, modulations on", "only with --rf");
        return;
    }
    const ChannelRecord before = record();
    row("lowest power");
    bool lowest = true;
    for (const DeviceValueId id : Powers) {
        const DeviceValue& item = ::deviceValue(id);
        const ValueLimits limits = limitsOf(item, before);
        lowest = limits.known() && setValue(item, limitText(item, limits.minimum, limits.maximum)) && lowest;
    }
    const bool radiates = lowest && goesOn();
    if (radiates)
        radiate(before);
    else
        skip("RF on, modulations on", lowest ? "stopped" : "the lowest power was not taken");
    if (radiates && !sendOff()) {
        find("the power stays at its lowest");
        return;
    }
    for (const DeviceValueId id : Powers) {
        const DeviceValue& item = ::deviceValue(id);
        setValue(item, wireText(item, fieldInHandlerUnits(item, before, item.valueOffset)));
    }
}

void Conformance::radiate(const ChannelRecord& before) {
    row("RF on");
    send(QByteArray(Scpi::Output) + "ON", expect(&ChannelRecord::rfOutput, 1));
    for (const Modulation& kind : Modulations) {
        if (!goesOn())
            break;
        const QByteArray what = QByteArray(kind.stateHeader).trimmed() + " on";
        if (kind.bit == LIST_MOD_BIT && !m_listIsWeak) {
            skip(what, "the list was not taken, and the one there may be of any power");
            continue;
        }
        row(what);
        send(Scpi::ModulationMask + QByteArray::number(kind.bit));
        send(kind.stateHeader + QByteArray("ON"), expect(kind.running, 1));
        send(kind.stateHeader + QByteArray("OFF"), expect(kind.running, 0));
    }
    row("RF off again");
    send(Scpi::ModulationMask + QByteArray::number(before.modulationEnable));
}
