#pragma once

#include "common/wire/channel_record.h"

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace Kavor::HandheldGui {

// clang-format off
/// What an entry on a sweep page means for the module. The module holds start, stop, number of steps and the time of one
/// step; step size and total time are shown from those, so that
///
///     step size  = (stop - start) / (steps - 1)        total time = steps x step time
///
/// hold between what is shown and what the module has. A step size that was entered stays as entered, though the stop
/// that it leads to is rounded on the wire: the next calculation starts from it. What is sent in which order:
///
///     entered      stop is entered (size calculated)     size is entered (stop calculated)
///     start        start                                 start, stop = start + size x (steps - 1)
///     stop         stop                                  (cannot be entered)
///     step size    (cannot be entered)                   stop = start + size x (steps - 1)
///     steps        steps                                 steps, stop = start + size x (steps - 1)
///     step time    step time                             step time
///     total time   step time = total time / steps        the same
///
/// A calculated stop or step time is first rounded to what its command carries; the value that was entered is then shown
/// as the rounded one makes it. Every derived value is checked against the module's limits before anything is sent; start
/// and stop are never equal. When the new start is the old stop, the stop is sent first, so that they are not equal
/// between the two commands either.
// clang-format on
enum class SweepField { Start, Stop, StepSize, Steps, StepTime, TotalTime };

/// Start and stop in Hz or dBm, times in nanoseconds.
struct SweepValues {
    double start = 0;
    double stop = 0;
    double steps = 0;
    double stepTime = 0;
    std::optional<double> enteredSize = {}; ///< where the step size is what is entered

    /// The entered one, otherwise what the ends and the steps make of it: 0 with fewer than two steps.
    double stepSize() const;
    double totalTime() const;
};

/// Limits in the same units; 0 and 0: not known, not checked.
struct SweepLimits {
    ValueLimits stop;
    ValueLimits stepTime;
    ValueLimits totalTime;
};

enum class SweepRefusal { None, StartEqualsStop, StopEqualsStart, StopRange, StepTimeRange, TotalTimeRange };

struct SweepPlan {
    SweepRefusal refusal = SweepRefusal::None;
    std::vector<std::pair<SweepField, double>> sends; ///< in this order; empty when nothing changes
};

/// What an entered value leads to. The value itself has passed its own limits. stopIsEntered: the lock state. round:
/// the value as the command of that field carries it.
SweepPlan planSweep(SweepField entered, double value, bool stopIsEntered, const SweepValues& now,
                    const SweepLimits& limits, const std::function<double(SweepField, double)>& round);

} // namespace Kavor::HandheldGui
