#include "portable/screens/sweep/sweepplan.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <cmath>

using namespace Kavor::HandheldGui;

namespace {

/// Whole hertz for the stop, nanoseconds to a whole one for times: what the commands carry.
double onTheWire(SweepField field, double value) {
    return field == SweepField::Start ? std::round(value * 1000) / 1000 : std::round(value);
}

QString text(const SweepPlan& plan) {
    static const char* const names[] = {"start", "stop", "size", "steps", "time", "total"};
    static const char* const refusals[] = {"", "start=stop", "stop=start", "stop range", "time range", "total range"};
    if (plan.refusal != SweepRefusal::None)
        return QLatin1String(refusals[static_cast<int>(plan.refusal)]);
    QStringList sends;
    for (const auto& [field, value] : plan.sends)
        sends << QStringLiteral("%1 %2").arg(QLatin1String(names[static_cast<int>(field)])).arg(value, 0, 'g', 12);
    return sends.join(QStringLiteral(", "));
}

} // namespace

/// The decision table of the sweep pages: what was entered in which lock state, and what is sent in which order.
class SweepPlanTest : public TestBase {
    Q_OBJECT

private slots:
    void table_data() {
        addColumns<int, double, QString, QString>("field", "value", "stopEntered", "sizeEntered");
        // From 1000 to 2000 in 11 steps (100 apart) of 50 ns each; stop 0 to 5000, times 10 to 100, total to 1000.
        const auto row = [](const char* name, SweepField field, double value, const char* stopEntered,
                            const char* sizeEntered) {
            addRow(name, static_cast<int>(field), value, QString(stopEntered), QString(sizeEntered));
        };
        row("start", SweepField::Start, 500, "start 500", "start 500, stop 1500");
        row("start, as it is", SweepField::Start, 1000, "start 1000", "start 1000");
        row("start onto the stop", SweepField::Start, 2000, "start=stop", "stop 3000, start 2000");
        row("start that moves the stop out", SweepField::Start, 4500, "start 4500", "stop range");
        row("start above the stop sweeps down", SweepField::Start, 3000, "start 3000", "start 3000, stop 4000");
        row("stop", SweepField::Stop, 4000, "stop 4000", "stop 4000");
        row("stop onto the start", SweepField::Stop, 1000, "stop=start", "stop=start");
        row("one apart", SweepField::Stop, 1001, "stop 1001", "stop 1001");
        row("size", SweepField::StepSize, 50, "stop 1500", "stop 1500");
        row("size downwards", SweepField::StepSize, -50, "stop 500", "stop 500");
        row("size of nothing", SweepField::StepSize, 0, "stop=start", "stop=start");
        row("size that rounds to nothing", SweepField::StepSize, 0.01, "stop=start", "stop=start");
        row("size too wide", SweepField::StepSize, 500, "stop range", "stop range");
        row("steps", SweepField::Steps, 3, "steps 3", "steps 3, stop 1200");
        row("as many steps", SweepField::Steps, 11, "", "");
        row("as many steps as the total time bears", SweepField::Steps, 20, "steps 20", "steps 20, stop 2900");
        row("steps too long", SweepField::Steps, 21, "total range", "total range");
        row("two steps", SweepField::Steps, 2, "steps 2", "steps 2, stop 1100");
        row("step time", SweepField::StepTime, 90, "time 90", "time 90");
        row("step time too long in all", SweepField::StepTime, 91, "total range", "total range");
        row("total time", SweepField::TotalTime, 990, "time 90", "time 90");
        row("total time at its limit", SweepField::TotalTime, 1000, "time 90", "time 90");
        row("total time too short for a step", SweepField::TotalTime, 55, "time range", "time range");
    }
    void table() {
        QFETCH(int, field);
        QFETCH(double, value);
        const SweepValues now{1000, 2000, 11, 50};
        const SweepLimits limits{{5000, 0}, {100, 10}, {1000, 10}};
        const auto entered = static_cast<SweepField>(field);
        QTEST(text(planSweep(entered, value, true, now, limits, onTheWire)), "stopEntered");
        QTEST(text(planSweep(entered, value, false, now, limits, onTheWire)), "sizeEntered");
    }

    /// Whatever is entered, in any order, the relations hold between what the module has and what is shown.
    void relationsHold() {
        SweepValues now{1000, 2000, 11, 50};
        const SweepLimits limits{{1e6, -1e6}, {1e6, 1}, {1e7, 1}};
        std::uint32_t seed = 12345;
        const auto random = [&seed](int below) {
            seed = seed * 1664525U + 1013904223U;
            return static_cast<int>((seed >> 8) % static_cast<std::uint32_t>(below));
        };
        for (int i = 0; i < 5000; ++i) {
            const auto field = static_cast<SweepField>(random(6));
            const double value = field == SweepField::Steps ? 2 + random(500) : random(200000) / 7.0;
            const SweepPlan plan = planSweep(field, value, random(2) == 0, now, limits, onTheWire);
            for (const auto& [target, number] : plan.sends) {
                QCOMPARE(number, target == SweepField::Steps ? number : onTheWire(target, number));
                (target == SweepField::Start   ? now.start
                 : target == SweepField::Stop  ? now.stop
                 : target == SweepField::Steps ? now.steps
                                               : now.stepTime) = number;
            }
            QVERIFY(now.start != now.stop);
            QVERIFY(now.totalTime() <= limits.totalTime.maximum);
            QVERIFY(std::abs(now.start + now.stepSize() * (now.steps - 1) - now.stop) < 1e-6);
            if (plan.refusal == SweepRefusal::None && field == SweepField::StepSize)
                QVERIFY(std::abs(now.stepSize() - value) <= 0.5 / (now.steps - 1) + 1e-9);
        }
    }
};

VELDA_TEST_MAIN(QCoreApplication, SweepPlanTest)
#include "tst_sweepplan.moc"
