#include "portable/screens/sweep/sweepplan.h"

#include <cmath>

namespace Kavor::HandheldGui {

namespace {

/// The step time that comes nearest to a total time. Its command carries whole nanoseconds, so a total time at its
/// limit would be missed by rounding away from it.
double stepTimeFor(double total, const SweepValues& now, const ValueLimits& limits,
                   const std::function<double(SweepField, double)>& round) {
    if (now.steps < 1)
        return now.stepTime;
    const double exact = total / now.steps;
    for (const double candidate : {exact, std::floor(exact), std::ceil(exact)}) {
        const double rounded = round(SweepField::StepTime, candidate);
        if (limits.contains(rounded * now.steps))
            return rounded;
    }
    return round(SweepField::StepTime, exact);
}

} // namespace

double SweepValues::stepSize() const {
    if (enteredSize)
        return *enteredSize;
    return steps < 2 ? 0 : (stop - start) / (steps - 1);
}

double SweepValues::totalTime() const {
    return steps * stepTime;
}

SweepPlan planSweep(SweepField entered, double value, bool stopIsEntered, const SweepValues& now,
                    const SweepLimits& limits, const std::function<double(SweepField, double)>& round) {
    if (entered == SweepField::Steps && value == now.steps)
        return {};
    SweepValues next = now;
    double size = now.stepSize();
    switch (entered) {
    case SweepField::Start:
        next.start = round(entered, value);
        break;
    case SweepField::Stop:
        next.stop = round(entered, value);
        break;
    case SweepField::StepSize:
        size = value;
        break;
    case SweepField::Steps:
        next.steps = value;
        break;
    case SweepField::StepTime:
        next.stepTime = round(entered, value);
        break;
    case SweepField::TotalTime:
        next.stepTime = stepTimeFor(value, now, limits.totalTime, round);
        break;
    }
    const bool movesStop = entered == SweepField::StepSize ||
                           (!stopIsEntered && (entered == SweepField::Start || entered == SweepField::Steps));
    if (movesStop)
        next.stop = round(SweepField::Stop, next.start + size * (next.steps - 1));

    SweepPlan plan;
    // Only what this entry changes is judged: what the module holds already is the module's business.
    const bool movesEnds = movesStop || entered == SweepField::Start || entered == SweepField::Stop;
    const bool changesTimes =
        entered == SweepField::Steps || entered == SweepField::StepTime || entered == SweepField::TotalTime;
    if (movesEnds && next.start == next.stop)
        plan.refusal = entered == SweepField::Start ? SweepRefusal::StartEqualsStop : SweepRefusal::StopEqualsStart;
    else if (next.stop != now.stop && !limits.stop.contains(next.stop))
        plan.refusal = SweepRefusal::StopRange;
    else if (next.stepTime != now.stepTime && !limits.stepTime.contains(next.stepTime))
        plan.refusal = SweepRefusal::StepTimeRange;
    else if (changesTimes && !limits.totalTime.contains(next.totalTime()))
        plan.refusal = SweepRefusal::TotalTimeRange;
    if (plan.refusal != SweepRefusal::None)
        return plan;

    const auto send = [&plan](SweepField field, double before, double after, bool enteredItself) {
        if (enteredItself || before != after)
            plan.sends.emplace_back(field, after);
    };
    const bool stopFirst = next.start == now.stop && next.stop != now.stop;
    send(SweepField::Steps, now.steps, next.steps, false);
    if (stopFirst)
        send(SweepField::Stop, now.stop, next.stop, true);
    send(SweepField::Start, now.start, next.start, entered == SweepField::Start);
    if (!stopFirst)
        send(SweepField::Stop, now.stop, next.stop, entered == SweepField::Stop);
    send(SweepField::StepTime, now.stepTime, next.stepTime,
         entered == SweepField::StepTime || entered == SweepField::TotalTime);
    return plan;
}

} // namespace Kavor::HandheldGui
