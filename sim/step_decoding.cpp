#include "sim/step_decoding.h"

#include "common/instrument/step_encoding.h"

#include <QtEndian>

#include <cmath>

namespace Sim {
namespace {

using StepWire::Field;

quint64 unsignedField(const char* record, Field field) {
    quint64 value = 0;
    for (int i = field.size - 1; i >= 0; --i)
        value = value << 8U | static_cast<unsigned char>(record[field.offset + i]);
    return value;
}

qint64 signedField(const char* record, Field field) {
    const unsigned unused = 64U - 8U * static_cast<unsigned>(field.size);
    return static_cast<qint64>(unsignedField(record, field) << unused) >> unused;
}

struct ListStep {
    quint64 number;
    double hertz;
    double dBm;
    bool last;
    bool waits;
    double microseconds;
};

struct PatternStep {
    quint64 number;
    double onNs;
    double offNs;
    quint64 loops;
    bool last;
};

QByteArray ending(bool last) {
    return last ? ", last" : "";
}

QByteArray textOf(const ListStep& step) {
    return QByteArray::number(step.number) + ": " + QByteArray::number(step.hertz, 'f', 3) + " Hz, " +
           QByteArray::number(step.dBm, 'f', 2) + " dBm, " + QByteArray::number(step.microseconds, 'g', 15) + " us, " +
           (step.waits ? "Wait" : "Run") + ending(step.last);
}

QByteArray textOf(const PatternStep& step) {
    return QByteArray::number(step.number) + ": on " + QByteArray::number(step.onNs, 'g', 15) + " ns, off " +
           QByteArray::number(step.offNs, 'g', 15) + " ns, " + QByteArray::number(step.loops) + " times" +
           ending(step.last);
}

ListStep listStep(const char* record) {
    const quint64 flags = unsignedField(record, StepWire::ListFlags);
    return {unsignedField(record, StepWire::ListNumber),
            static_cast<double>(unsignedField(record, StepWire::ListFrequency)) / 1000,
            static_cast<double>(signedField(record, StepWire::ListPower)) / 100,
            (flags & StepWire::LastStepFlag) != 0,
            (flags & StepWire::WaitFlag) != 0,
            static_cast<double>(unsignedField(record, StepWire::ListDwell))};
}

PatternStep patternStep(const char* record, bool last) {
    return {unsignedField(record, StepWire::PatternNumber),
            static_cast<double>(signedField(record, StepWire::PatternOnTime)),
            static_cast<double>(signedField(record, StepWire::PatternOffTime)),
            unsignedField(record, StepWire::PatternLoops), last};
}

// The numbers of a definition; those that are not there read as 0.
std::vector<double> numbersOf(const QByteArray& argument, std::size_t count) {
    std::vector<double> numbers;
    for (const QByteArray& text : argument.split(','))
        numbers.push_back(text.trimmed().toDouble());
    numbers.resize(count);
    return numbers;
}

QByteArrayList linesOf(const QByteArray& arguments) {
    return arguments.isEmpty() ? QByteArrayList() : arguments.split('\n');
}

} // namespace

QByteArrayList decodedList(const QByteArray& records) {
    QByteArrayList lines;
    for (int at = 0; at + StepWire::ListStepSize <= records.size(); at += StepWire::ListStepSize)
        lines << textOf(listStep(records.constData() + at));
    return lines;
}

QByteArrayList decodedPattern(const QByteArray& records) {
    constexpr int Size = StepWire::PatternStepSize;
    QByteArrayList lines;
    for (int at = 0; at + Size <= records.size(); at += Size)
        lines << textOf(patternStep(records.constData() + at, at + 2 * Size > records.size()));
    return lines;
}

QByteArrayList decodedListDefinitions(const QByteArray& arguments) {
    QByteArrayList lines;
    for (const QByteArray& argument : linesOf(arguments)) {
        const std::vector<double> n = numbersOf(argument, 6);
        // To a nanosecond, so that seconds in six digits do not show the noise of the multiplication.
        const double us = std::round(n[5] * 1e9) / 1e3;
        lines << textOf(ListStep{static_cast<quint64>(n[0]), n[1], n[2], n[3] != 0, n[4] != 0, us});
    }
    return lines;
}

QByteArrayList decodedPatternDefinitions(const QByteArray& arguments) {
    QByteArrayList lines;
    for (const QByteArray& argument : linesOf(arguments)) {
        const std::vector<double> n = numbersOf(argument, 5);
        lines << textOf(PatternStep{static_cast<quint64>(n[0]), std::round(n[1] * 1e9), std::round(n[2] * 1e9),
                                    static_cast<quint64>(n[3]), n[4] != 0});
    }
    return lines;
}

} // namespace Sim
