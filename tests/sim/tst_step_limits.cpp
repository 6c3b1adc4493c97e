#include "common/instrument/step_encoding.h"
#include "tests/sim/sim_client.h"
#include "tests/support/testbase.h"

Q_DECLARE_METATYPE(list_point)
Q_DECLARE_METATYPE(pattern_point)

namespace {

list_point listStep(double hertz, double dBm, double microseconds) {
    return {2, hertz, "Hz", dBm, "dBm", microseconds, "\u00B5s", "Run", false};
}

pattern_point patternStep(double onNs, double offNs, std::uint32_t loops) {
    return {2, onNs, "ns", offNs, "ns", loops, false};
}

} // namespace

/// Steps at and beyond the limits that the module publishes, in both forms of an upload.
class TestStepLimits : public TestBase {
    Q_OBJECT

    std::unique_ptr<Sim::ModuleSimulator> m_simulator;
    std::unique_ptr<SimClient> m_client;

    // A good step and the given one, or what a refused upload must leave: the good step alone.
    template <typename Point>
    void check(Point step, QByteArray (*message)(const std::vector<Point*>&), std::string (*command)(const Point&),
               const char* askBlock, const char* askDefined, const QByteArray& wrong) {
        Point good = Point();
        std::vector<Point*> steps{&good};
        const QByteArray answer = wrong.isEmpty() ? "+OK" : "-ERR -222,Step 2: a " + wrong;
        QCOMPARE(m_client->ask(message(steps).trimmed()), QByteArray("+OK"));
        const QByteArray before = m_client->ask(askBlock);
        steps.push_back(&step);
        QCOMPARE(m_client->ask(message(steps).chopped(2)).left(answer.size()), answer);
        QCOMPARE(m_client->ask(askBlock) == before, !wrong.isEmpty());

        QCOMPARE(m_client->ask(QByteArray::fromStdString(command(good))), QByteArray("+OK"));
        QCOMPARE(m_client->ask(QByteArray::fromStdString(command(step))).left(answer.size()), answer);
        QCOMPARE(m_client->ask(askDefined).count(';'), wrong.isEmpty() ? 1 : 0);
    }

protected:
    void setUp() override {
        m_simulator = std::make_unique<Sim::ModuleSimulator>(optionsOf(1));
        QVERIFY(m_simulator->start());
        m_client = std::make_unique<SimClient>(m_simulator->port());
    }

private slots:
    void listSteps_data() {
        QTest::addColumn<list_point>("step");
        QTest::addColumn<QByteArray>("wrong");
        const auto row = [](const list_point& step, const char* wrong) {
            QTest::addRow("%g Hz, %g dBm, %g us", step.frequency, step.power, step.dwell) << step << QByteArray(wrong);
        };
        row(listStep(9e3, -60, 10), "");
        row(listStep(6e9, 20, 1e8), "");
        row(listStep(8999.99, 0, 10), "frequency of 8999.99 is outside 9000 to 6000000000");
        row(listStep(6.00001e9, 0, 10), "frequency of 6000010000 ");
        row(listStep(9e3, -60.01, 10), "power of -60.01 ");
        row(listStep(9e3, 20.01, 10), "power of 20.01 ");
        row(listStep(9e3, 0, 9), "dwell of 9000 ");
        row(listStep(9e3, 0, 1.00001e8), "dwell of 100001000000 ");
    }

    void listSteps() {
        QFETCH(list_point, step);
        QFETCH(QByteArray, wrong);
        check(step, StepWire::listMessage, StepWire::listCommand, "SIMulator:LIST?", "SIMulator:LIST:DEFined?", wrong);
    }

    void patternSteps_data() {
        QTest::addColumn<pattern_point>("step");
        QTest::addColumn<QByteArray>("wrong");
        const auto row = [](const pattern_point& step, const char* wrong) {
            QTest::addRow("%g ns, %g ns, %u", step.onTime, step.offTime, step.loops) << step << QByteArray(wrong);
        };
        row(patternStep(100, 1e10, 1), "");
        row(patternStep(1e10, 100, 65535), "");
        row(patternStep(99, 100, 1), "on time of 99 ");
        row(patternStep(100, 99, 1), "off time of 99 ");
        row(patternStep(1.00001e10, 100, 1), "on time of 10000100000 ");
        row(patternStep(100, -100, 1), "off time of -100 ");
        row(patternStep(100, 100, 0), "repetition of 0 is outside 1 to 65535");
    }

    void patternSteps() {
        QFETCH(pattern_point, step);
        QFETCH(QByteArray, wrong);
        check(step, StepWire::patternMessage, StepWire::patternCommand, "SIMulator:PATTern?",
              "SIMulator:PATTern:DEFined?", wrong);
    }

    // The limits that hold are those that the record shows, and none where it shows none.
    void limitsOfTheRecord() {
        m_simulator->modify(0, [](ChannelRecord& record) {
            record.frequency = {1e9, 1e9, 0, 0};
            record.listDwell.maximum = 1;
            record.patternRepetitions.maximum = 5;
        });
        QCOMPARE(m_client->ask(":SOUR:LIST:DEF 1,1e+12,0,1,0,1"), QByteArray("+OK"));
        QVERIFY(m_client->ask(":SOUR:LIST:DEF 1,1e+09,0,1,0,1.001").startsWith("-ERR -222,"));
        QVERIFY(m_client->ask(":PATT:DEF 1,1,1,6,1").startsWith("-ERR -222,"));
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestStepLimits)

#include "tst_step_limits.moc"
