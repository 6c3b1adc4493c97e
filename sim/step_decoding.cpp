#include "sim/step_decoding.h"

#include "common/wire/step_encoding.h"

#include <algorithm>
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

QByteArray shortest(double number) {
    return QByteArray::number(number, 'g', 15);
}

QByteArray ending(bool last) {
    return last ? ", last" : "";
}

QByteArray textOf(const ListStep& step) {
    return QByteArray::number(step.number) + ": " + QByteArray::number(step.hertz, 'f', 3) + " Hz, " +
           QByteArray::number(step.dBm, 'f', 2) + " dBm, " + shortest(step.dwellNs / 1000) + " us, " +
           (step.waits ? "Wait" : "Run") + ending(step.last);
}

QByteArray textOf(const PatternStep& step) {
    return QByteArray::number(step.number) + ": on " + shortest(step.onNs) + " ns, off " + shortest(step.offNs) +
           " ns, " + QByteArray::number(step.loops) + " times" + ending(step.last);
}

template <typename Step>
QByteArrayList textsOfEach(const std::vector<Step>& steps) {
    QByteArrayList lines;
    for (const Step& step : steps)
        lines << textOf(step);
    return lines;
}

// The numbers of each definition.
std::vector<std::vector<double>> numbersOf(const QByteArray& arguments, std::size_t count) {
    std::vector<std::vector<double>> definitions;
    if (arguments.isEmpty())
        return definitions;
    for (const QByteArray& argument : arguments.split('\n')) {
        std::vector<double>& numbers = definitions.emplace_back();
        for (const QByteArray& text : argument.split(','))
            numbers.push_back(text.trimmed().toDouble());
        numbers.resize(count);
    }
    return definitions;
}

// A count beyond any that a step can have stays beyond it.
quint64 toCount(double number) {
    constexpr double Most = 0x1p53;
    return number > 0 ? static_cast<quint64>(std::min(number, Most)) : 0;
}

} // namespace

double nanoseconds(double seconds) {
    return std::round(seconds * 1e10) / 10;
}

std::vector<ListStep> listSteps(const QByteArray& records) {
    using namespace StepWire;
    std::vector<ListStep> steps;
    for (int at = 0; at + ListStepSize <= records.size(); at += ListStepSize) {
        const char* record = records.constData() + at;
        const quint64 flags = unsignedField(record, ListFlags);
        steps.push_back({unsignedField(record, ListNumber),
                         static_cast<double>(unsignedField(record, ListFrequency)) / 1000,
                         static_cast<double>(signedField(record, ListPower)) / 100, (flags & LastStepFlag) != 0,
                         (flags & WaitFlag) != 0, static_cast<double>(unsignedField(record, ListDwell)) * 1000});
    }
    return steps;
}

std::vector<PatternStep> patternSteps(const QByteArray& records) {
    using namespace StepWire;
    std::vector<PatternStep> steps;
    for (int at = 0; at + PatternStepSize <= records.size(); at += PatternStepSize) {
        const char* record = records.constData() + at;
        steps.push_back({unsignedField(record, PatternNumber), static_cast<double>(signedField(record, PatternOnTime)),
                         static_cast<double>(signedField(record, PatternOffTime)), unsignedField(record, PatternLoops),
                         at + 2 * PatternStepSize > records.size()});
    }
    return steps;
}

std::vector<ListStep> listDefinitions(const QByteArray& arguments) {
    std::vector<ListStep> steps;
    for (const std::vector<double>& n : numbersOf(arguments, 6))
        steps.push_back({toCount(n[0]), n[1], n[2], n[3] != 0, n[4] != 0, nanoseconds(n[5])});
    return steps;
}

std::vector<PatternStep> patternDefinitions(const QByteArray& arguments) {
    std::vector<PatternStep> steps;
    for (const std::vector<double>& n : numbersOf(arguments, 5))
        steps.push_back({toCount(n[0]), nanoseconds(n[1]), nanoseconds(n[2]), toCount(n[3]), n[4] != 0});
    return steps;
}

QByteArrayList textsOf(const std::vector<ListStep>& steps) {
    return textsOfEach(steps);
}

QByteArrayList textsOf(const std::vector<PatternStep>& steps) {
    return textsOfEach(steps);
}

} // namespace Sim
