#include "tests/sim/sim_client.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <QThread>

#include <atomic>
#include <thread>

namespace {

const QByteArray kOk("+OK");

bool startSimulator(Sim::ModuleSimulator& simulator) {
    QString error;
    const bool started = simulator.start(&error);
    if (!started)
        qCritical("%s", qPrintable(error));
    return started;
}

} // namespace

/// A running simulator of so many channels, its region and a client of it.
struct Bench {
    explicit Bench(unsigned channels = 1) : simulator(optionsOf(channels)) {}

    Sim::ModuleSimulator simulator;
    const bool started = startSimulator(simulator);
    const MappedRegion region{simulator.regionName()};
    SimClient client{simulator.port()};
};

class TestSimFaults : public TestBase {
    Q_OBJECT

private slots:
    void answerAndRecord_data() {
        // clang-format off
        QTest::addColumn<QByteArray>("fault");
        QTest::addColumn<QByteArray>("answer"); // every byte that comes for ":FREQ 2e9"
        QTest::addColumn<double>("frequency");  // what the region shows then
        QTest::addColumn<double>("later");      // what it shows after another command
        const auto row = [](const char* fault, const char* answer, double frequency, double later) {
            addRow(fault, QByteArray(fault), QByteArray(answer), frequency, later);
        };
        row("SILent", "", 1e9, 1e9);
        row("LOST", "", 2e9, 2e9);
        row("REFuse", "-ERR -200,Execution error\r\n", 1e9, 1e9);
        row("REFuse,TEXT=\"7,no, not now\"", "-ERR 7,no, not now\r\n", 1e9, 1e9);
        row("DOUBle", "+OK\r\n+OK\r\n", 2e9, 2e9);
        row("NOEnd", "+OK", 2e9, 2e9);
        row("KEEP", "+OK\r\n", 1e9, 1e9);
        row("OTHer,TEXT=1", "+OK\r\n", 1e9, 1e9); // the module itself would refuse that one
        row("STALe", "+OK\r\n", 1e9, 2e9);
        // clang-format on
    }

    void answerAndRecord() {
        QFETCH(QByteArray, fault);
        QFETCH(QByteArray, answer);
        QFETCH(double, frequency);
        QFETCH(double, later);
        Bench b;
        QCOMPARE(b.client.ask("SIMulator:FAULt " + fault + ",COUNt=1"), kOk);
        QCOMPARE(b.simulator.pendingFaults(), 1);
        b.client.send(":FREQ 2e9\r\n");
        QCOMPARE(b.client.bytes(answer.size()), answer);
        QVERIFY(b.simulator.waitForReceived([](const QByteArrayList& lines) { return lines.size() == 1; }, 5000));
        QCOMPARE(b.region.at(0).frequency.value, frequency);
        QCOMPARE(b.simulator.pendingFaults(), 0);
        // Nothing else comes: the next bytes are the next command's answer.
        b.client.send(":POW 3\r\n");
        QCOMPARE(b.client.bytes(5), QByteArray("+OK\r\n"));
        QCOMPARE(b.region.at(0).frequency.value, later);
        QCOMPARE(b.simulator.received(), QByteArrayList({":FREQ 2e9", ":POW 3"}));
    }

    void onlyMatchingCommandsAndOnlySoOften() {
        Bench b;
        Sim::Fault fault;
        fault.kind = Sim::Fault::Refuse;
        fault.header = ":frsw:sta";
        fault.count = 2;
        b.simulator.addFault(fault);
        QCOMPARE(b.client.ask("SIMulator:FAULt KEEP,FOR=\":POW \""), kOk);
        QCOMPARE(b.client.ask(":FRSW ON"), kOk);
        QVERIFY(b.client.ask(":FRSW:STAR 2e9").startsWith("-ERR"));
        QVERIFY(b.client.ask("FRSW:STAR 2e9").startsWith("-ERR"));
        QCOMPARE(b.client.ask(":FRSW:STAR 2e9"), kOk);
        for (int i = 0; i < 3; ++i)
            QCOMPARE(b.client.ask(":POW 3"), kOk);
        QCOMPARE(b.simulator.record(0).power.value, -10.0);
        QCOMPARE(b.client.ask("SIMulator:FAULt:PENDing?"), QByteArray("1"));
        QCOMPARE(b.client.ask("SIMulator:FAULt:CLEar"), kOk);
        QCOMPARE(b.client.ask(":POW 3"), kOk);
        QCOMPARE(b.simulator.record(0).power.value, 3.0);
        QCOMPARE(b.client.ask("SIMulator:COUNt? :FRSW:STAR"), QByteArray("3"));
    }

    void slowAnswersKeepTheirOrder() {
        for (const char* fault : {"LATE,MS=120", "SPLit,MS=30"}) { // the latter with four pauses
            Bench b;
            b.client.ask(QByteArray("SIMulator:FAULt ") + fault + ",FOR=\":FREQ\"");
            QElapsedTimer timer;
            timer.start();
            b.client.send(":FREQ 2e9\r\n:POW?\r\n");
            QCOMPARE(b.client.bytes(10), QByteArray("+OK\r\n-10\r\n"));
            QVERIFY(timer.elapsed() >= 110);
        }
    }

    void mergedAnswersComeTogether() {
        Bench b;
        b.client.ask("SIMulator:FAULt MERGe,COUNt=1");
        b.client.send(":FREQ 2e9\r\n");
        QVERIFY(b.simulator.waitForReceived([](const QByteArrayList& lines) { return lines.size() == 1; }, 5000));
        QCOMPARE(b.client.bytes(1, 50), QByteArray());
        b.client.send(":POW?\r\n");
        QCOMPARE(b.client.bytes(10), QByteArray("+OK\r\n-10\r\n"));
        QCOMPARE(b.client.ask(":POW?"), QByteArray("-10"));
    }

    void dropClosesMidReply() {
        Bench b;
        b.client.ask("SIMulator:FAULt DROP,COUNt=1");
        b.client.send(":TRIG:SOUR?\r\n:POW 3\r\n");
        QCOMPARE(b.client.bytes(100), QByteArray("EXTe"));
        QVERIFY(b.client.waitForEnd());
        QVERIFY(b.client.connectTo(b.simulator.port()));
        QCOMPARE(b.client.ask(":TRIG:SOUR?"), QByteArray("EXTernal"));
    }

    void frozenRegionCatchesUp() {
        Bench b;
        QCOMPARE(b.client.ask("SIMulator:FREeze ON"), kOk);
        QCOMPARE(b.client.ask(":FREQ 2e9"), kOk);
        QCOMPARE(b.region.at(0).frequency.value, 1e9);
        QCOMPARE(b.client.ask("SIMulator:FREeze OFF"), kOk);
        QCOMPARE(b.region.at(0).frequency.value, 2e9);
    }

    void serviceGone_data() {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<QByteArray>("answer");
        addRow("told to", QByteArray("SIMulator:GONE 150"), QByteArray("+OK\r\n"));
        addRow("by a command", QByteArray(":FREQ 2e9"), QByteArray());
        addRow("by the program", QByteArray(), QByteArray());
    }

    void serviceGone() {
        QFETCH(QByteArray, request);
        QFETCH(QByteArray, answer);
        Bench b;
        const quint16 port = b.simulator.port();
        QCOMPARE(b.client.ask("SIMulator:FAULt GONE,MS=150,FOR=\":FREQ\",COUNt=1"), kOk);
        QElapsedTimer timer;
        timer.start();
        if (request.isEmpty())
            b.simulator.goAway(150);
        else
            b.client.send(request + "\r\n");
        QCOMPARE(b.client.bytes(100), answer);
        QVERIFY(b.client.waitForEnd());
        QTRY_VERIFY_WITH_TIMEOUT(b.client.connectTo(port), 5000);
        QVERIFY(timer.elapsed() >= 140); // nobody listened until then
        QCOMPARE(b.client.ask(":POW?"), QByteArray("-10"));
        QCOMPARE(b.simulator.record(0).frequency.value, 1e9);
        QCOMPARE(b.simulator.port(), port);
    }

    void stoppedServiceComesBack() {
        Bench b;
        const quint16 port = b.simulator.port();
        QCOMPARE(b.client.ask(":FREQ 2e9"), kOk);
        b.simulator.stop();
        QVERIFY(b.client.waitForEnd());
        QVERIFY(!b.client.connectTo(port));
        QCOMPARE(b.region.at(0).frequency.value, 2e9);
        QVERIFY(b.simulator.startOn(0));
        QCOMPARE(QByteArray(b.region.at(0).scpiPort), QByteArray::number(b.simulator.port()));
        QVERIFY(b.client.connectTo(b.simulator.port()));
        QCOMPARE(b.client.ask(":FREQ?"), QByteArray("2e+09"));
    }

    void takenPortIsRefused() {
        Sim::ModuleSimulator first(optionsOf(1));
        QVERIFY(startSimulator(first));
        Sim::Options options = optionsOf(1);
        options.port = first.port();
        Sim::ModuleSimulator second(options);
        QString error;
        QVERIFY(!second.start(&error));
        QVERIFY2(error.contains(QString::number(first.port())), qPrintable(error));
        QVERIFY(!MappedRegion(second.regionName()).isMapped());
        SimClient client(first.port());
        QVERIFY(client.ask(":FREQ?").startsWith("1e"));
        // The first one keeps its port when it is sent to one that is taken.
        QVERIFY(second.startOn(0));
        QVERIFY(client.ask(":SYST:COMM:LAN:PORT " + QByteArray::number(second.port())).startsWith("-ERR -200,"));
        QCOMPARE(QByteArray(first.record(0).scpiPort), QByteArray::number(first.port()));
    }

    void replacedRegion() {
        Bench b;
        const MappedRegion before(b.simulator.regionName());
        SimClient client(b.simulator.port());
        QCOMPARE(client.ask(":FREQ 2e9"), kOk);
        QVERIFY(b.simulator.replaceRegion());
        const MappedRegion same(b.simulator.regionName());
        QVERIFY(same.inode() != before.inode());
        QCOMPARE(client.ask(":FREQ 3e9"), kOk);
        QCOMPARE(same.at(0).frequency.value, 3e9);
        QCOMPARE(before.at(0).frequency.value, 2e9);
        QCOMPARE(client.ask("SIMulator:REGion:REPLace 4"), kOk);
        const MappedRegion larger(b.simulator.regionName());
        QCOMPARE(larger.size(), 4 * kChannelRecordSize);
        QCOMPARE(larger.at(0).frequency.value, 3e9);
        QCOMPARE(larger.at(3).frequency.value, 1e9);
        QCOMPARE(QByteArray(larger.at(3).scpiPort), QByteArray::number(b.simulator.port()));
        QCOMPARE(client.ask(":INST:SEL 3"), kOk);
        QVERIFY(b.simulator.replaceRegion(2));
        QCOMPARE(client.ask(":INST:SEL?"), QByteArray("1")); // the last one that is left
    }

    void regionOfASuccessorStays() {
        const Sim::Options options = optionsOf(1);
        auto first = std::make_unique<Sim::ModuleSimulator>(options);
        QVERIFY(startSimulator(*first));
        {
            Sim::ModuleSimulator second(options);
            QVERIFY(startSimulator(second));
            first.reset();
            QVERIFY(MappedRegion(options.regionName).isMapped());
            QCOMPARE(QByteArray(MappedRegion(options.regionName).at(0).scpiPort), QByteArray::number(second.port()));
        }
        QVERIFY(!MappedRegion(options.regionName).isMapped());
    }

    void changesFromManyThreads() {
        Bench b;
        constexpr int kRounds = 200;
        std::thread modifier([&b] {
            for (int i = 0; i < kRounds; ++i)
                b.simulator.modify(0, [](ChannelRecord& record) { record.temperature += 1; });
        });
        std::thread controller([&b] {
            for (int i = 0; i < 20; ++i) {
                b.simulator.stop();
                if (!b.simulator.start())
                    qCritical("the port did not come back");
                b.simulator.addFault({Sim::Fault::Late, ":NONE", 1, 5, {}});
                b.simulator.clearFaults();
            }
        });
        std::atomic<bool> over{false};
        std::thread observer([&b, &over] {
            while (!over) {
                const int listed = b.simulator.received().size();
                if (b.simulator.count(":TRIG:COUN") < listed)
                    qCritical("a request was lost from the log");
            }
        });
        SimClient client(b.simulator.port());
        int answered = 0;
        for (int i = 0; i < kRounds; ++i) {
            client.send(":TRIG:COUN " + QByteArray::number(i + 1) + "\r\n");
            const QByteArray answer = client.line(1000);
            answered += answer == "+OK" ? 1 : 0;
            if (answer.isNull())
                client.connectTo(b.simulator.port());
        }
        modifier.join();
        controller.join();
        over = true;
        observer.join();
        QVERIFY(answered > 0);
        QCOMPARE(b.region.at(0).temperature, 38.5 + kRounds);
        QVERIFY(client.connectTo(b.simulator.port()));
        QCOMPARE(client.ask(":TRIG:COUN?"), QByteArray::number(b.region.at(0).triggerCount.value));
    }

    void batteryFollowsItsCurve() {
        QString error;
        const auto curve = Sim::BatteryCurve::parse("0:20:-400,0.4:0:-100", error);
        QVERIFY2(curve, qPrintable(error));
        Sim::Options options = optionsOf(2);
        options.battery = *curve;
        Sim::ModuleSimulator simulator(options);
        QVERIFY(startSimulator(simulator));
        const MappedRegion region(simulator.regionName());
        QCOMPARE(region.at(1).batteryCharge, 20);
        QCOMPARE(region.at(1).batteryCurrent, qint16(-400));
        QTRY_COMPARE(region.at(1).batteryCharge, 0);
        QTRY_COMPARE(region.at(1).batteryCurrent, qint16(-100));
        SimClient client(simulator.port());
        QCOMPARE(client.ask("SIMulator:BATTery 77,250"), kOk);
        QCOMPARE(client.ask("SIMulator:TEMPerature 41.5"), kOk);
        QCOMPARE(region.at(0).batteryCharge, 77);
        QCOMPARE(region.at(0).batteryCurrent, qint16(250));
        QCOMPARE(region.at(0).temperature, 41.5);
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestSimFaults)
#include "tst_sim_faults.moc"
