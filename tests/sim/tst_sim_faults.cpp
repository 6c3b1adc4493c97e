#include "sim/battery_curve.h"
#include "tests/sim/sim_client.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <thread>

static const QByteArray Ok("+OK");

class TestSimFaults : public TestBase {
    Q_OBJECT

private slots:
    void answerAndRecord_data() {
        QTest::addColumn<QByteArray>("fault");
        QTest::addColumn<QByteArray>("answer"); // every byte that comes for ":FREQ 2e9"
        QTest::addColumn<int>("slow");          // milliseconds
        QTest::addColumn<double>("frequency");  // what the region shows then
        QTest::addColumn<double>("later");      // what it shows after another command
        const auto row = [](const char* fault, const char* answer, double frequency, double later, int slow = 0) {
            addRow(fault, QByteArray(fault), QByteArray(answer), slow, frequency, later);
        };
        row("SILent", "", 1e9, 1e9);
        row("LOST", "", 2e9, 2e9);
        row("LATE,MS=120", "+OK\r\n", 2e9, 2e9, 110);
        row("SPLit,MS=30", "+OK\r\n", 2e9, 2e9, 110); // four pauses
        row("REFuse,TEXT=\"7,no, not now\"", "-ERR 7,no, not now\r\n", 1e9, 1e9);
        row("ANSWer,TEXT=\"what\"", "what\r\n", 2e9, 2e9);
        row("DOUBle", "+OK\r\n+OK\r\n", 2e9, 2e9);
        row("NOEnd", "+OK", 2e9, 2e9);
        row("KEEP", "+OK\r\n", 1e9, 1e9);
        row("OTHer,TEXT=1", "+OK\r\n", 1e9, 1e9); // the module itself would refuse that one
        row("STALe", "+OK\r\n", 1e9, 2e9);
    }

    void answerAndRecord() {
        QFETCH(QByteArray, fault);
        QFETCH(QByteArray, answer);
        QFETCH(int, slow);
        const Bench b;
        QCOMPARE(b.ask("SIMulator:FAULt " + fault + ",COUNt=1"), Ok);
        QCOMPARE(b.simulator.pendingFaults(), 1);
        QElapsedTimer timer;
        timer.start();
        b.client->send(":FREQ 2e9\r\n:POW?\r\n");
        QCOMPARE(b.client->bytes(answer.size() + 5), answer + "-10\r\n"); // in order, however slow
        QVERIFY(timer.elapsed() >= slow);
        QTEST(b.region->at(0).frequency.value, "frequency");
        QCOMPARE(b.simulator.pendingFaults(), 0);
        QCOMPARE(b.ask(":POW 3"), Ok);
        QTEST(b.region->at(0).frequency.value, "later");
        QCOMPARE(b.simulator.received(), QByteArrayList({":FREQ 2e9", ":POW?", ":POW 3"}));
    }

    void replacedRegion() {
        Bench b;
        QVERIFY(b.simulator.replaceRegion(4));
        QCOMPARE(b.ask(":FREQ 3e9"), Ok);
        const MappedRegion larger(b.simulator.regionName());
        QCOMPARE(larger.size(), 4 * ChannelRecordSize);
        QCOMPARE(larger.at(0).frequency.value, 3e9);
        QCOMPARE(b.region->at(0).frequency.value, 1e9);
        QCOMPARE(b.ask(":INST:SEL 3"), Ok);
        QVERIFY(b.simulator.replaceRegion(2));
        QCOMPARE(b.ask(":INST:SEL?"), QByteArray("1")); // the last one that is left
    }

    void changesFromManyThreads() {
        Bench b;
        std::thread modifier([&b] {
            for (int i = 0; i < 200; ++i)
                b.simulator.modify(0, [](ChannelRecord& record) { record.temperature += 1; });
        });
        std::thread controller([&b] {
            for (int i = 0; i < 20; ++i) {
                b.simulator.stop();
                const int listed = b.simulator.received().size();
                if (!b.simulator.start() || b.simulator.count(":TRIG:COUN") < listed)
                    qCritical("the port did not come back, or the log is wrong");
            }
        });
        for (int i = 1; i <= 200; ++i) {
            if (b.ask(":TRIG:COUN " + QByteArray::number(i)).isEmpty())
                b.client->connectTo(b.simulator.port());
        }
        modifier.join();
        controller.join();
        QCOMPARE(b.region->at(0).temperature, 238.5);
    }

    void batteryFollowsItsCurve() {
        QString error;
        Sim::Options options = optionsOf(2);
        options.battery = *Sim::BatteryCurve::parse("0:20:-400,0.4:0:-100", error);
        QCOMPARE(options.battery.at(0.2).current, -250.0);
        const Bench b(options);
        QCOMPARE(b.region->at(1).batteryCharge, 20);
        QTRY_COMPARE(b.region->at(1).batteryCharge, 0);
        QTRY_COMPARE(b.region->at(1).batteryCurrent, qint16(-100));
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestSimFaults)
#include "tst_sim_faults.moc"
