#include "sim/battery_curve.h"
#include "tests/sim/sim_client.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>

static const QByteArray Ok("+OK");

class TestSimFaults : public TestBase {
    Q_OBJECT

private slots:
    void answerAndRecord_data() {
        // every byte that comes for ":FREQ 2e9", after how many milliseconds; what the region shows then, and later
        addColumns<QByteArray, QByteArray, int>("fault", "answer", "slow");
        addColumns<double, double>("frequency", "later");
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
};

VELDA_TEST_MAIN(QCoreApplication, TestSimFaults)
#include "tst_sim_faults.moc"
