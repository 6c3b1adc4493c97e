#include "sim/step_limits.h"

#include <initializer_list>

namespace Sim {
namespace {

struct Check {
    const char* what;
    double value;
    ValueLimits limits;
};

template <typename Limited>
ValueLimits limitsOf(const Limited& limited) {
    return {static_cast<double>(limited.maximum), static_cast<double>(limited.minimum)};
}

ValueLimits nanosecondLimits(const StepValueLimits& seconds) {
    return {nanoseconds(seconds.maximum), nanoseconds(seconds.minimum)};
}

QByteArray firstOutside(quint64 step, std::initializer_list<Check> checks) {
    const auto text = [](double number) {
        return QByteArray::number(number, 'g', 12);
    };
    for (const Check& check : checks) {
        if (!check.limits.contains(check.value))
            return "Step " + QByteArray::number(step) + ": a " + check.what + " of " + text(check.value) +
                   " is outside " + text(check.limits.minimum) + " to " + text(check.limits.maximum);
    }
    return {};
}

} // namespace

QByteArray outsideLimits(const std::vector<ListStep>& steps, const ChannelRecord& limits) {
    for (const ListStep& step : steps) {
        const QByteArray wrong =
            firstOutside(step.number, {{"frequency", step.hertz, limitsOf(limits.frequency)},
                                       {"power", step.dBm, limitsOf(limits.power)},
                                       {"dwell", step.dwellNs, nanosecondLimits(limits.listDwell)}});
        if (!wrong.isEmpty())
            return wrong;
    }
    return {};
}

QByteArray outsideLimits(const std::vector<PatternStep>& steps, const ChannelRecord& limits) {
    const ValueLimits times = nanosecondLimits(limits.patternTime);
    for (const PatternStep& step : steps) {
        const QByteArray wrong = firstOutside(
            step.number, {{"on time", step.onNs, times},
                          {"off time", step.offNs, times},
                          {"repetition", static_cast<double>(step.loops), limitsOf(limits.patternRepetitions)}});
        if (!wrong.isEmpty())
            return wrong;
    }
    return {};
}

} // namespace Sim
