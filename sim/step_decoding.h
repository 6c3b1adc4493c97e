#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <vector>

namespace Sim {

// What an upload says, as the module understands it. Pure functions, any thread.

struct ListStep {
    quint64 number;
    double hertz;
    double dBm;
    bool last;
    bool waits; ///< for a trigger
    double dwellNs;
};

struct PatternStep {
    quint64 number;
    double onNs;
    double offNs;
    quint64 loops;
    bool last;
};

/// To a tenth of a nanosecond, so that seconds in six digits do not show the noise of the multiplication and a step at
/// a limit lies within it.
double nanoseconds(double seconds);

/// Steps of the records of a binary upload; bytes behind the last whole record are left out.
std::vector<ListStep> listSteps(const QByteArray& records);
std::vector<PatternStep> patternSteps(const QByteArray& records);

/// Steps that were defined one by one: the arguments of the commands, a line each. Numbers that are not there read as
/// 0.
std::vector<ListStep> listDefinitions(const QByteArray& arguments);
std::vector<PatternStep> patternDefinitions(const QByteArray& arguments);

/// A line a step: "3: 433920000.000 Hz, -3.50 dBm, 250 us, Wait, last" and "2: on 800 ns, off 1000 ns, 5 times".
QByteArrayList textsOf(const std::vector<ListStep>& steps);
QByteArrayList textsOf(const std::vector<PatternStep>& steps);

} // namespace Sim
