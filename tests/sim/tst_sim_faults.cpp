#include "tests/sim/sim_client.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <QThread>

#include <atomic>
#include <thread>

namespace {

bool startSimulator(Sim::ModuleSimulator& simulator) {
    QString error;
    const bool started = simulator.start(&error);
    if (!started)
        qCritical("%s", qPrintable(error));
    return started;
}

} // namespace

class TestSimFaults : public TestBase {
    Q_OBJECT

private slots:
    void answerAndRecord_data();
    void answerAndRecord();
    void onlyMatchingCommandsAndOnlySoOften();
    void lateAnswersKeepTheirOrder();
    void splitAnswerComesInPieces();
    void mergedAnswersComeTogether();
    void dropClosesMidReply();
    void frozenRegionCatchesUp_data();
    void frozenRegionCatchesUp();
    void serviceGone_data();
    void serviceGone();
    void stoppedServiceComesBack_data();
    void stoppedServiceComesBack();
    void takenPortIsRefused();
    void badStartCommandIsRefused();
    void replacedRegion();
    void regionOfASuccessorStays();
    void twoSideBySide();
    void changesFromManyThreads();
    void waitForReceived();
    void batteryFollowsItsCurve();
};

void TestSimFaults::answerAndRecord_data() {
    QTest::addColumn<QByteArray>("fault");
    QTest::addColumn<QByteArray>("answer"); // every byte that comes for ":FREQ 2e9"
    QTest::addColumn<double>("frequency");  // what the region shows then
    QTest::addColumn<double>("later");      // what it shows after another command
    const auto row = [](const char* fault, const char* answer, double frequency, double later) {
        QTest::newRow(fault) << QByteArray(fault) << QByteArray(answer) << frequency << later;
    };
    row("SILent", "", 1e9, 1e9);
    row("LOST", "", 2e9, 2e9);
    row("REFuse", "-ERR -200,Execution error\r\n", 1e9, 1e9);
    row("REFuse,TEXT=\"7,no, not now\"", "-ERR 7,no, not now\r\n", 1e9, 1e9);
    row("ANSWer,TEXT=\"what?\"", "what?\r\n", 2e9, 2e9);
    row("DOUBle", "+OK\r\n+OK\r\n", 2e9, 2e9);
    row("NOEnd", "+OK", 2e9, 2e9);
    row("KEEP", "+OK\r\n", 1e9, 1e9);
    row("OTHer,TEXT=3e9", "+OK\r\n", 3e9, 3e9);
    row("OTHer,TEXT=1", "+OK\r\n", 1e9, 1e9); // the module itself would refuse that one
    row("STALe", "+OK\r\n", 1e9, 2e9);
    row("LATE,MS=30", "+OK\r\n", 2e9, 2e9);
    row("SPLit,MS=2", "+OK\r\n", 2e9, 2e9);
}

void TestSimFaults::answerAndRecord() {
    QFETCH(QByteArray, fault);
    QFETCH(QByteArray, answer);
    QFETCH(double, frequency);
    QFETCH(double, later);
    Sim::ModuleSimulator simulator(optionsOf(1));
    QVERIFY(startSimulator(simulator));
    const MappedRegion region(simulator.regionName());
    SimClient client(simulator.port());
    QCOMPARE(client.ask("SIMulator:FAULt " + fault + ",COUNt=1"), QByteArray("+OK"));
    QCOMPARE(simulator.pendingFaults(), 1);
    client.send(":FREQ 2e9\r\n");
    QCOMPARE(client.bytes(answer.size()), answer);
    QVERIFY(simulator.waitForReceived([](const QByteArrayList& lines) { return lines.size() == 1; }, 5000));
    QCOMPARE(region.at(0).frequency.value, frequency);
    QCOMPARE(simulator.pendingFaults(), 0);
    // Nothing else comes: the next bytes are the next command's answer.
    client.send(":POW 3\r\n");
    QCOMPARE(client.bytes(5), QByteArray("+OK\r\n"));
    QCOMPARE(region.at(0).frequency.value, later);
    QCOMPARE(simulator.received(), QByteArrayList({":FREQ 2e9", ":POW 3"}));
}

void TestSimFaults::onlyMatchingCommandsAndOnlySoOften() {
    Sim::ModuleSimulator simulator(optionsOf(1));
    QVERIFY(startSimulator(simulator));
    SimClient client(simulator.port());
    Sim::Fault fault;
    fault.kind = Sim::Fault::Refuse;
    fault.header = ":frsw:sta";
    fault.count = 2;
    simulator.addFault(fault);
    QCOMPARE(client.ask("SIMulator:FAULt KEEP,FOR=\":POW \""), QByteArray("+OK"));
    QCOMPARE(client.ask(":FRSW ON"), QByteArray("+OK"));
    QVERIFY(client.ask(":FRSW:STAR 2e9").startsWith("-ERR"));
    QVERIFY(client.ask("FRSW:STAR 2e9").startsWith("-ERR"));
    QCOMPARE(client.ask(":FRSW:STAR 2e9"), QByteArray("+OK"));
    for (int i = 0; i < 3; ++i)
        QCOMPARE(client.ask(":POW 3"), QByteArray("+OK"));
    QCOMPARE(simulator.record(0).power.value, -10.0);
    QCOMPARE(client.ask("SIMulator:FAULt:PENDing?"), QByteArray("1"));
    QCOMPARE(client.ask("SIMulator:FAULt:CLEar"), QByteArray("+OK"));
    QCOMPARE(client.ask(":POW 3"), QByteArray("+OK"));
    QCOMPARE(simulator.record(0).power.value, 3.0);
    QCOMPARE(client.ask("SIMulator:COUNt? :FRSW:STAR"), QByteArray("3"));
    QCOMPARE(client.ask("SIMulator:RECeived:CLEar"), QByteArray("+OK"));
    QCOMPARE(simulator.count(":FRSW:STAR"), 0);
}

void TestSimFaults::lateAnswersKeepTheirOrder() {
    Sim::ModuleSimulator simulator(optionsOf(1));
    QVERIFY(startSimulator(simulator));
    SimClient client(simulator.port());
    client.ask("SIMulator:FAULt LATE,MS=120,FOR=\":FREQ\"");
    QElapsedTimer timer;
    timer.start();
    client.send(":FREQ 2e9\r\n:POW?\r\n");
    QCOMPARE(client.line(), QByteArray("+OK"));
    QVERIFY(timer.elapsed() >= 110);
    QCOMPARE(client.line(), QByteArray("-10"));
}

void TestSimFaults::splitAnswerComesInPieces() {
    Sim::ModuleSimulator simulator(optionsOf(1));
    QVERIFY(startSimulator(simulator));
    SimClient client(simulator.port());
    client.ask("SIMulator:FAULt SPLit,MS=30,COUNt=1");
    QElapsedTimer timer;
    timer.start();
    client.send(":FREQ 2e9\r\n");
    QCOMPARE(client.bytes(1), QByteArray("+"));
    QCOMPARE(client.bytes(4), QByteArray("OK\r\n"));
    QVERIFY(timer.elapsed() >= 110); // four pauses
}

void TestSimFaults::mergedAnswersComeTogether() {
    Sim::ModuleSimulator simulator(optionsOf(1));
    QVERIFY(startSimulator(simulator));
    SimClient client(simulator.port());
    client.ask("SIMulator:FAULt MERGe,COUNt=1");
    client.send(":FREQ 2e9\r\n");
    QVERIFY(simulator.waitForReceived([](const QByteArrayList& lines) { return lines.size() == 1; }, 5000));
    QCOMPARE(client.bytes(1, 50), QByteArray());
    client.send(":POW?\r\n");
    QCOMPARE(client.bytes(10), QByteArray("+OK\r\n-10\r\n"));
    QCOMPARE(client.ask(":POW?"), QByteArray("-10"));
}

void TestSimFaults::dropClosesMidReply() {
    Sim::ModuleSimulator simulator(optionsOf(1));
    QVERIFY(startSimulator(simulator));
    SimClient client(simulator.port());
    client.ask("SIMulator:FAULt DROP,COUNt=1");
    client.send(":TRIG:SOUR?\r\n:POW 3\r\n");
    QCOMPARE(client.bytes(100), QByteArray("EXTe"));
    QVERIFY(client.waitForEnd());
    QVERIFY(client.connectTo(simulator.port()));
    QCOMPARE(client.ask(":TRIG:SOUR?"), QByteArray("EXTernal"));
}

void TestSimFaults::frozenRegionCatchesUp_data() {
    QTest::addColumn<bool>("overTheWire");
    QTest::newRow("from the program") << false;
    QTest::newRow("over the wire") << true;
}

void TestSimFaults::frozenRegionCatchesUp() {
    QFETCH(bool, overTheWire);
    Sim::ModuleSimulator simulator(optionsOf(1));
    QVERIFY(startSimulator(simulator));
    const MappedRegion region(simulator.regionName());
    SimClient client(simulator.port());
    const auto freeze = [&](bool on) {
        if (overTheWire)
            QCOMPARE(client.ask(on ? "SIMulator:FREeze ON" : "SIMulator:FREeze OFF"), QByteArray("+OK"));
        else
            simulator.setFrozen(on);
    };
    freeze(true);
    QCOMPARE(client.ask(":FREQ 2e9"), QByteArray("+OK"));
    QCOMPARE(client.ask(":POW 3"), QByteArray("+OK"));
    QCOMPARE(region.at(0).frequency.value, 1e9);
    QCOMPARE(simulator.record(0).power.value, -10.0);
    freeze(false);
    QCOMPARE(region.at(0).frequency.value, 2e9);
    QCOMPARE(region.at(0).power.value, 3.0);
}

void TestSimFaults::serviceGone_data() {
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("told to") << QByteArray("SIMulator:GONE 150") << QByteArray("+OK\r\n");
    QTest::newRow("by a command") << QByteArray(":FREQ 2e9") << QByteArray();
    QTest::newRow("by the program") << QByteArray() << QByteArray();
}

void TestSimFaults::serviceGone() {
    QFETCH(QByteArray, request);
    QFETCH(QByteArray, answer);
    Sim::ModuleSimulator simulator(optionsOf(1));
    QVERIFY(startSimulator(simulator));
    const quint16 port = simulator.port();
    SimClient client(port);
    QCOMPARE(client.ask("SIMulator:FAULt GONE,MS=150,FOR=\":FREQ\",COUNt=1"), QByteArray("+OK"));
    QElapsedTimer timer;
    timer.start();
    if (request.isEmpty())
        simulator.goAway(150);
    else
        client.send(request + "\r\n");
    QCOMPARE(client.bytes(100), answer);
    QVERIFY(client.waitForEnd());
    QTRY_VERIFY_WITH_TIMEOUT(client.connectTo(port), 5000);
    QVERIFY(timer.elapsed() >= 140); // nobody listened until then
    QCOMPARE(client.ask(":POW?"), QByteArray("-10"));
    QCOMPARE(simulator.record(0).frequency.value, 1e9);
    QCOMPARE(simulator.port(), port);
}

void TestSimFaults::stoppedServiceComesBack_data() {
    QTest::addColumn<bool>("otherPort");
    QTest::newRow("on its port") << false;
    QTest::newRow("on another port") << true;
}

void TestSimFaults::stoppedServiceComesBack() {
    QFETCH(bool, otherPort);
    Sim::ModuleSimulator simulator(optionsOf(2));
    QVERIFY(startSimulator(simulator));
    const MappedRegion region(simulator.regionName());
    const quint16 port = simulator.port();
    SimClient client(port);
    QCOMPARE(client.ask(":FREQ 2e9"), QByteArray("+OK"));
    simulator.stop();
    QVERIFY(client.waitForEnd());
    QVERIFY(!client.connectTo(port));
    QCOMPARE(MappedRegion(simulator.regionName()).inode(), region.inode());
    QCOMPARE(region.at(0).frequency.value, 2e9);
    QVERIFY(otherPort ? simulator.startOn(0) : simulator.start());
    QVERIFY(otherPort || simulator.port() == port);
    QCOMPARE(QByteArray(region.at(1).scpiPort), QByteArray::number(simulator.port()));
    QVERIFY(client.connectTo(simulator.port()));
    QCOMPARE(client.ask(":FREQ?"), QByteArray("2e+09"));
}

void TestSimFaults::takenPortIsRefused() {
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

void TestSimFaults::badStartCommandIsRefused() {
    Sim::Options options = optionsOf(1);
    options.startCommands << ":FREQ 2e9"
                          << ":POW 99";
    Sim::ModuleSimulator simulator(options);
    QString error;
    QVERIFY(!simulator.start(&error));
    QVERIFY2(error.contains(":POW 99") && error.contains("-222"), qPrintable(error));
    QVERIFY(!MappedRegion(simulator.regionName()).isMapped());
}

void TestSimFaults::replacedRegion() {
    Sim::ModuleSimulator simulator(optionsOf(1));
    QVERIFY(startSimulator(simulator));
    const MappedRegion before(simulator.regionName());
    SimClient client(simulator.port());
    QCOMPARE(client.ask(":FREQ 2e9"), QByteArray("+OK"));
    QVERIFY(simulator.replaceRegion());
    const MappedRegion same(simulator.regionName());
    QVERIFY(same.inode() != before.inode());
    QCOMPARE(client.ask(":FREQ 3e9"), QByteArray("+OK"));
    QCOMPARE(same.at(0).frequency.value, 3e9);
    QCOMPARE(before.at(0).frequency.value, 2e9);
    QCOMPARE(client.ask("SIMulator:REGion:REPLace 4"), QByteArray("+OK"));
    const MappedRegion larger(simulator.regionName());
    QCOMPARE(larger.size(), 4 * kChannelRecordSize);
    QCOMPARE(larger.at(0).frequency.value, 3e9);
    QCOMPARE(larger.at(3).frequency.value, 1e9);
    QCOMPARE(QByteArray(larger.at(3).scpiPort), QByteArray::number(simulator.port()));
    QCOMPARE(client.ask(":INST:SEL 3"), QByteArray("+OK"));
    QVERIFY(simulator.replaceRegion(2));
    QCOMPARE(client.ask(":INST:SEL?"), QByteArray("1")); // the last one that is left
}

void TestSimFaults::regionOfASuccessorStays() {
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

void TestSimFaults::twoSideBySide() {
    Sim::ModuleSimulator first(optionsOf(1));
    Sim::ModuleSimulator second(optionsOf(2));
    QVERIFY(startSimulator(first) && startSimulator(second));
    QVERIFY(first.port() != second.port());
    SimClient firstClient(first.port());
    SimClient secondClient(second.port());
    QCOMPARE(firstClient.ask("SIMulator:FAULt REFuse"), QByteArray("+OK"));
    QVERIFY(firstClient.ask(":FREQ 2e9").startsWith("-ERR"));
    QCOMPARE(secondClient.ask(":FREQ 3e9"), QByteArray("+OK"));
    QCOMPARE(MappedRegion(first.regionName()).at(0).frequency.value, 1e9);
    QCOMPARE(MappedRegion(second.regionName()).at(0).frequency.value, 3e9);
    QCOMPARE(first.received(), QByteArrayList{":FREQ 2e9"});
    QCOMPARE(second.received(), QByteArrayList{":FREQ 3e9"});
}

void TestSimFaults::changesFromManyThreads() {
    Sim::ModuleSimulator simulator(optionsOf(1));
    QVERIFY(startSimulator(simulator));
    const MappedRegion region(simulator.regionName());
    constexpr int kRounds = 200;
    std::thread modifier([&simulator] {
        for (int i = 0; i < kRounds; ++i)
            simulator.modify(0, [](ChannelRecord& record) { record.temperature += 1; });
    });
    std::thread controller([&simulator] {
        for (int i = 0; i < 20; ++i) {
            simulator.stop();
            if (!simulator.start())
                qCritical("the port did not come back");
            simulator.addFault({Sim::Fault::Late, ":NONE", 1, 5, {}});
            simulator.clearFaults();
        }
    });
    std::atomic<bool> over{false};
    std::thread observer([&simulator, &over] {
        while (!over) {
            const int listed = simulator.received().size();
            if (simulator.count(":TRIG:COUN") < listed)
                qCritical("a request was lost from the log");
        }
    });
    SimClient client(simulator.port());
    int answered = 0;
    for (int i = 0; i < kRounds; ++i) {
        client.send(":TRIG:COUN " + QByteArray::number(i + 1) + "\r\n");
        const QByteArray answer = client.line(1000);
        answered += answer == "+OK" ? 1 : 0;
        if (answer.isNull())
            client.connectTo(simulator.port());
    }
    modifier.join();
    controller.join();
    over = true;
    observer.join();
    QVERIFY(answered > 0);
    QCOMPARE(region.at(0).temperature, 38.5 + kRounds);
    QVERIFY(client.connectTo(simulator.port()));
    QCOMPARE(client.ask(":TRIG:COUN?"), QByteArray::number(region.at(0).triggerCount.value));
}

void TestSimFaults::waitForReceived() {
    Sim::ModuleSimulator simulator(optionsOf(1));
    QVERIFY(startSimulator(simulator));
    const auto twoLines = [](const QByteArrayList& lines) {
        return lines.size() == 2;
    };
    QVERIFY(!simulator.waitForReceived(twoLines, 0));
    std::thread sender([port = simulator.port()] {
        SimClient client(port);
        client.ask(":FREQ 2e9");
        client.ask(":FREQ 3e9");
    });
    QVERIFY(simulator.waitForReceived(twoLines, 5000));
    QCOMPARE(simulator.record(0).frequency.value, 3e9); // listed after it shows
    sender.join();
}

void TestSimFaults::batteryFollowsItsCurve() {
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
    QCOMPARE(client.ask("SIMulator:BATTery 77,250"), QByteArray("+OK"));
    QCOMPARE(client.ask("SIMulator:TEMPerature 41.5"), QByteArray("+OK"));
    QCOMPARE(region.at(0).batteryCharge, 77);
    QCOMPARE(region.at(0).batteryCurrent, qint16(250));
    QCOMPARE(region.at(0).temperature, 41.5);
}

VELDA_TEST_MAIN(QCoreApplication, TestSimFaults)
#include "tst_sim_faults.moc"
