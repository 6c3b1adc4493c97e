#include "common/instrument/scpi_words.h"
#include "sim/request_log.h"
#include "tests/sim/sim_client.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <QTcpServer>
#include <QTemporaryDir>

#include <memory>

using Getter = QString (*)(const ChannelRecord&);
Q_DECLARE_METATYPE(Getter)

namespace {

QString text(double number) {
    return QString::number(number, 'g', 17);
}

#define NUMBER(member)                                                                                                 \
    [](const ChannelRecord& r) {                                                                                       \
        return text(static_cast<double>(r.member));                                                                    \
    }
#define TEXT(member)                                                                                                   \
    [](const ChannelRecord& r) {                                                                                       \
        return QString::fromStdString(recordText(r.member));                                                           \
    }

/// A module of three channels and a client of it.
struct Bench {
    explicit Bench(Sim::Options options = optionsOf(3)) : simulator(options) {
        QString error;
        if (!simulator.start(&error))
            qFatal("%s", qPrintable(error));
        client = std::make_unique<SimClient>(simulator.port());
        region = std::make_unique<MappedRegion>(simulator.regionName());
    }
    QByteArray ask(const QByteArray& request) { return client->ask(request); }

    Sim::ModuleSimulator simulator;
    std::unique_ptr<SimClient> client;
    std::unique_ptr<MappedRegion> region;
};

} // namespace

class TestSimCommands : public TestBase {
    Q_OBJECT

private slots:
    void commandShowsInTheRecord_data() {
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<Getter>("field");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* command, Getter field, const QString& expected) {
            addRow(command, QByteArray(command), field, expected);
        };
        row(":FREQ 1234567890.123", NUMBER(frequency.value), text(1234567890.123));
        row(":Freq 6e9", NUMBER(frequency.value), text(6e9));
        row(":OUTP ON", NUMBER(rfOutput), "1");
        row(":MODulation:ENABle:MASK 10", NUMBER(modulationEnable), "10");
        row(":modulation:enable:mask 3", NUMBER(modulationEnable), "3");
        row(":TRIG:COUN 17", NUMBER(triggerCount.value), "17");
        row(":TRIG:INP:IMP 10K", NUMBER(triggerImpedance), "10000");
        row(":TRIG:SOUR tim", TEXT(triggerSource), "TIMer");
        row(":INIT:CONT OFF", NUMBER(runMode), "0");
        row(":FRSW ON", NUMBER(frswState), "1");
        row(":PRSW:DIR UPDOWN", TEXT(prswDirection), "UPDOWN");
        row(":SYST:COMM:LAN:DHCP ON", NUMBER(dhcp), "1");
        row(":SYST:COMM:LAN:IPAD \"10.0.0.7\"", TEXT(ipAddress), "10.0.0.7");
    }

    void commandShowsInTheRecord() {
        QFETCH(QByteArray, command);
        QFETCH(Getter, field);
        QFETCH(QString, expected);
        Bench bench;
        QVERIFY(bench.region->isMapped());
        QCOMPARE(bench.region->size(), 3 * kChannelRecordSize);
        QVERIFY(field(bench.region->at(0)) != expected);
        QCOMPARE(bench.ask(command), QByteArray("+OK"));
        QCOMPARE(field(bench.region->at(0)), expected); // at once: the answer comes after the change
        QCOMPARE(field(bench.simulator.record(0)), expected);
        QCOMPARE(bench.simulator.received(), QByteArrayList{command});
    }

    // The panel may run under another account than the module's service, whose umask may be strict.
    void everybodyMayReadTheRegion() {
        const mode_t before = umask(077);
        const Bench bench;
        umask(before);
        QCOMPARE(bench.region->mode(), 0644U);
    }

    /// What changes nothing: queries, and what the module does not take, with the beginning of the answer.
    void answers_data() {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<QByteArray>("answer");
        const auto row = [](const QByteArray& request, const char* answer) {
            addRow(request.constData(), request, QByteArray(answer));
        };
        row(":FREQ?", "1e+09");
        row(":FRSW:STEP? ", "11");
        row(":OUTP?", "0");
        row(":TRIG:SOUR?", "EXTernal");
        row(":SYST:COMM:LAN:MASK?", "255.255.255.0");
        row(":INST:SEL?", "0");
        row("*IDN?", "KAVOR,KV-6000,KV60-000101-1,1.4.2/2.07");
        row(Scpi::DeviceArchitectureQuery, "KV-6000,20000,3,usb,2001,168c,handheld");
        row("SIMulator:BLOCk? 30", "#230ABCDEFGHIJKLMNOPQRSTUVWXYZABCD");

        row(":FREQ 8999.999", "-ERR -222,");
        row(":POW 20.0001", "-ERR -222,");
        row(":FREQ abc", "-ERR -104,");
        row(":FREQ", "-ERR -109,");
        row(":FREQ:STAR 5", "-ERR -113,");
        row("::FREQ 1e9", "-ERR -113,");
        row(":TRIG:COUN 1.5", "-ERR -104,");
        row(":TRIG:COUN 0", "-ERR -222,");
        row(":TRIG:INP:IMP 75", "-ERR -224,");
        row(":TRIG:SOUR EXTernall", "-ERR -224,");
        row(":OUTP MAYBE", "-ERR -224,");
        row(":MODulation:ENABle:MASK 256", "-ERR -222,");
        row(":INST:SEL -1", "-ERR -222,");
        row(":SYST:COMM:LAN:IPAD \"1.2.3.256\"", "-ERR -224,");
        row(":SYST:COMM:LAN:IPAD \"1..2.3\"", "-ERR -224,");
        row(":SYST:COMM:LAN:PORT 65536", "-ERR -222,");
        row(":OUTPut:RESTore:MODE SOMETIMES", "-ERR -224,");
        row(":SYST:SET:REC 77", "-ERR -256,");
        row(":SYST:SET:CLE 77", "-ERR -256,");
        row(":SYST:SET:STOR 0", "-ERR -224,");
        row(":SYST:SET:STOR ../x", "-ERR -224,");
        row("*RST 5", "-ERR -108,");
        row(":PATT:DEF 1,2", "-ERR -104,");
        row("SIMulator:NOTHING", "-ERR -113,");
        row("SIMulator:FAULt WHAT", "-ERR -224,");
        row("SIMulator:BATTery 101,0", "-ERR -224,");

        row(":LIST:DATA #3016" + QByteArray::fromHex("010000E876481700E6FB02F401000000"), "+OK");
        row(":LIST:DATA #217" + QByteArray(17, 'x'), "-ERR -161,");
        row(":LIST:DATA #10", "-ERR -161,");
        row(":PATT:DATA #216" + QByteArray(16, 'x'), "-ERR -161,");
        row(":LIST:DATA #216" + QByteArray(17, 'x'), "-ERR -161,"); // longer than announced
        row(":LIST:DATA #x", "-ERR -113,");
        row(":LIST:DATA #0", "-ERR -113,");
        row(":LIST:DATA #9999999999", "-ERR -113,");
    }

    void answers() {
        QFETCH(QByteArray, request);
        QFETCH(QByteArray, answer);
        Bench bench;
        const ChannelRecord before = bench.simulator.record(0);
        const QByteArray given = bench.ask(request);
        QVERIFY2(given.startsWith(answer), given.constData());
        QVERIFY(!answer.startsWith("-ERR") || given.size() > answer.size() + 4); // it says why
        const ChannelRecord after = bench.simulator.record(0);
        QCOMPARE(memcmp(&before, &after, sizeof before), 0);
    }

    void conflictingModulationsAreRefused() {
        const QByteArrayList states{":AM:STAT",   ":FM:STAT",   ":PM:STAT",   ":FRSW",
                                    ":PRSW:STAT", ":PULS:STAT", ":LIST:STAT", ":PATT:STAT"};
        const auto isAngle = [](const QByteArray& state) {
            return state == ":FM:STAT" || state == ":PM:STAT";
        };
        Bench bench;
        for (const QByteArray& first : states) {
            for (const QByteArray& second : states) {
                const bool withAm = first == ":AM:STAT" || second == ":AM:STAT";
                const bool together = first == second || (!withAm && isAngle(first) != isAngle(second));
                QCOMPARE(bench.ask(first + " ON"), QByteArray("+OK"));
                QVERIFY2(bench.ask(second + " ON").startsWith(together ? "+OK" : "-ERR -221,"), first + second);
                QCOMPARE(bench.ask(second + "?"), QByteArray(together ? "1" : "0"));
                QCOMPARE(bench.ask(first + " OFF"), QByteArray("+OK"));
                QCOMPARE(bench.ask(second + " OFF"), QByteArray("+OK"));
            }
        }
    }

    void errorsQueueUp() {
        Bench bench;
        bench.ask(":FREQ 1");
        bench.ask(":NOT:THERE 1");
        QVERIFY(bench.ask(":SYST:ERR?").startsWith("-222,"));
        QVERIFY(bench.ask(":SYST:ERR?").startsWith("-113,"));
        QCOMPARE(bench.ask(":SYSTem:ERRor?"), QByteArray("0,No error"));
    }

    /// Settings are the selected channel's, the network is that of all.
    void channels() {
        Bench bench;
        for (const char* command :
             {":INST:SEL 2", ":FREQ 2e9", ":SYST:COMM:LAN:GAT \"10.1.1.1\"", ":SYST:COMM:LAN:DHCP ON"})
            QCOMPARE(bench.ask(command), QByteArray("+OK"));
        QCOMPARE(bench.region->at(0).frequency.value, 1e9);
        QCOMPARE(bench.region->at(2).frequency.value, 2e9);
        QCOMPARE(QByteArray(bench.region->at(0).gateway), QByteArray("10.1.1.1"));
        QCOMPARE(bench.region->at(1).dhcp, 1U);
    }

    /// Steps and step time may be fine and the sweep not.
    void sweepsKeepTheirTotalTime_data() {
        QTest::addColumn<QByteArray>("sweep");
        addRow("frequency", QByteArray(":FRSW"));
        addRow("power", QByteArray(":PRSW"));
    }
    void sweepsKeepTheirTotalTime() {
        QFETCH(QByteArray, sweep);
        Bench bench;
        const auto takes = [&](const char* rest) {
            return bench.ask(sweep + rest) == "+OK";
        };
        QVERIFY(takes(":TIME 1"));
        QVERIFY(takes(":STEP 3600")); // an hour
        QVERIFY(!takes(":STEP 3601"));
        QVERIFY(!takes(":TIME 1.000001"));
        QVERIFY(takes(":STEP 2"));
        QVERIFY(takes(":TIME 0.00001")); // the shortest: 20 us
        bench.simulator.modify(0, [](ChannelRecord& r) { r.frswTotalTime = r.prswTotalTime = {1, 0.5}; });
        QVERIFY(!takes(":TIME 0.00002"));
        QVERIFY(takes(":DIR UPDOWN")); // what does not change the time is not held up by it
    }

    void disconnectedChannelRefuses() {
        Sim::Options options = optionsOf(2);
        options.disconnectedChannels = 2;
        Bench bench(options);
        QVERIFY(bench.region->at(0).connected != 0);
        QCOMPARE(bench.region->at(1).connected, 0);
        bench.ask(":INST:SEL 1");
        QVERIFY(bench.ask(":FREQ 2e9").startsWith("-ERR -241,"));
        QCOMPARE(bench.ask("SIMulator:CONNected 1,ON"), QByteArray("+OK"));
        QCOMPARE(bench.ask(":FREQ 2e9"), QByteArray("+OK"));
    }

    void portMoves() {
        Bench bench;
        QTcpServer probe; // a port that is free
        QVERIFY(probe.listen(QHostAddress(QHostAddress::LocalHost)));
        const quint16 before = bench.simulator.port();
        const quint16 next = probe.serverPort();
        probe.close();
        QCOMPARE(bench.ask(":SYST:COMM:LAN:PORT " + QByteArray::number(next)), QByteArray("+OK"));
        QCOMPARE(QByteArray(bench.region->at(2).scpiPort), QByteArray::number(next));
        QCOMPARE(bench.ask(":SYST:COMM:LAN:PORT?"), QByteArray::number(next)); // the old connection stays
        QCOMPARE(SimClient(next).ask(":INST:SEL?"), QByteArray("0"));
        QVERIFY(!SimClient(before).connectTo(before));
    }

    void resetKeepsIdentityAndNetwork() {
        Bench bench;
        const ChannelRecord factory = bench.simulator.record(1);
        for (const char* command : {":SYST:COMM:LAN:IPAD \"10.0.0.7\"", ":INST:SEL 1", ":FREQ 2e9", ":AM:STAT ON",
                                    ":TRIG:SOUR BUS", ":MODulation:ENABle:MASK 1"})
            QCOMPARE(bench.ask(command), QByteArray("+OK"));
        QCOMPARE(bench.ask(Scpi::Reset), QByteArray("+OK"));
        const ChannelRecord& after = bench.region->at(1);
        QCOMPARE(memcmp(&after, &factory, offsetof(ChannelRecord, model)), 0);
        QCOMPARE(QByteArray(after.ipAddress), QByteArray("10.0.0.7"));
        QCOMPARE(QByteArray(after.model), QByteArray("KV-6000"));
    }

    void configurations() {
        const QTemporaryDir folder;
        Sim::Options options = optionsOf(2);
        options.configurationFolder = folder.filePath("preset");
        for (const quint32 output : {1U, 0U}) {
            const QByteArray mode = Scpi::PowerOnRestore + QByteArray(output == 1 ? "AUTO" : "MANUAL");
            Bench bench(options);
            for (const QByteArray& command : QByteArrayList{":FREQ 2e9", ":OUTP ON", ":AM:STAT ON", mode, ":INST:SEL 1",
                                                            ":POW 5", ":SYST:SET:STOR 12", ":SYST:SET:REC 0"})
                QCOMPARE(bench.ask(command), QByteArray("+OK"));
            QCOMPARE(bench.region->at(0).frequency.value, 1e9);
            QCOMPARE(bench.region->at(0).rfOutput, 0U);
            QCOMPARE(bench.ask(":SYST:SET:REC 12"), QByteArray("+OK"));
            QCOMPARE(bench.region->at(0).frequency.value, 2e9);
            QCOMPARE(bench.region->at(0).rfOutput, output);
            QCOMPARE(bench.region->at(0).amState, output);
            QCOMPARE(bench.region->at(1).power.value, 5.0);
        }
        QCOMPARE(QFile::exists(folder.filePath("preset/preset-12.json")), true);
        options.regionName = uniqueRegion();
        Bench later(options);
        QCOMPARE(later.ask(":SYST:SET:REC 12"), QByteArray("+OK"));
        QCOMPARE(later.ask(":SYST:SET:CLE 12"), QByteArray("+OK"));
        QVERIFY(later.ask(":SYST:SET:REC 12").startsWith("-ERR -256,"));
    }

    void stepsDefinedOneByOne() {
        Bench bench;
        for (const char* command : {":SOUR:LIST:DEF 1,1e+08,5,0,0,0.0005", ":SOUR:LIST:DEF 2,2e+08,5,1,0,0.0005"})
            QCOMPARE(bench.ask(command), QByteArray("+OK"));
        QCOMPARE(bench.ask(":PATT:DEF 1,8e-07,1e-06,1,1"), QByteArray("+OK"));
        QCOMPARE(bench.ask("SIMulator:LIST:DEFined?"), QByteArray("1: 100000000.000 Hz, 5.00 dBm, 500 us, Run; "
                                                                  "2: 200000000.000 Hz, 5.00 dBm, 500 us, Run, last"));
        QCOMPARE(bench.ask("SIMulator:PATTern:DEFined?"), QByteArray("1: on 800 ns, off 1000 ns, 1 times, last"));
    }

    /// The bytes of the manual, read back as words.
    void uploadedStepsAreDecoded() {
        Sim::Options options = optionsOf(1);
        QByteArrayList shown;
        options.onUpload = [&shown](const QByteArray& header, const QByteArrayList& steps) {
            shown << header << steps;
        };
        Bench bench(options);
        QCOMPARE(bench.ask("SIMulator:LIST?"), QByteArray());
        QCOMPARE(bench.ask(":LIST:DATA #232" + QByteArray::fromHex("010000E876481700E6FB02F401000000"
                                                                   "020000E876481700F40101E803000000")),
                 QByteArray("+OK"));
        QCOMPARE(bench.ask(":PATT:DATA #220" + QByteArray::fromHex("01000500E8030000000000002003000000000000")),
                 QByteArray("+OK"));
        QCOMPARE(bench.ask("SIMulator:LIST?"), QByteArray("1: 100000000.000 Hz, -10.50 dBm, 500 us, Wait; "
                                                          "2: 100000000.000 Hz, 5.00 dBm, 1000 us, Run, last"));
        QCOMPARE(bench.ask("SIMulator:PATTern?"), QByteArray("1: on 800 ns, off 1000 ns, 5 times, last"));
        QCOMPARE(shown.size(), 5);
        QCOMPARE(shown.at(3), QByteArray("PATT:DATA"));
    }

    void requestsAreCounted() {
        Bench bench;
        for (int i = 0; i < 3; ++i)
            QCOMPARE(bench.ask(Scpi::Trigger), QByteArray("+OK"));
        QCOMPARE(bench.ask("SIMulator:TRIGgers?"), QByteArray("3"));
        QCOMPARE(bench.simulator.count("*TRG"), 3);
        bench.ask("*IDN?");
        QCOMPARE(bench.simulator.count("*IDN"), 0);
        QCOMPARE(bench.simulator.count("*IDN?"), 1);
        bench.simulator.clearReceived();
        QCOMPARE(bench.simulator.received(), QByteArrayList());
        QCOMPARE(bench.simulator.count("*TRG"), 0);
    }

    /// It may run for days.
    void logIsBoundedAndCountsAreExact() {
        Sim::RequestLog log;
        log.add(":FREQ 1");
        for (int i = 0; i < Sim::RequestLog::MaximumLines; ++i)
            log.add(":pow " + QByteArray::number(i));
        QCOMPARE(log.lines().size(), Sim::RequestLog::MaximumLines);
        QCOMPARE(log.lines().first(), QByteArray(":pow 0"));
        QCOMPARE(log.count("FREQ"), 1);
        QCOMPARE(log.count(":POW"), Sim::RequestLog::MaximumLines);
    }

    void requestsInAnyPieces() {
        const QByteArray steps("\n\rOK\r\n\2\0#\0;\"\t.\0", 16);
        const QByteArray pattern("\n\r+O\r\n;#\0\0\0\0\"\t.\0\0\0\0", 20);
        const QByteArray stream = ":FREQ 2e9\r\n\r\n:POW?\n:LIST:DATA #216" + steps + "\r\n:OUTP ON\n:PATT:DATA #220" +
                                  pattern + "\n:OUTP?\r\n";
        for (const int piece : {1, 2, 7, 1000}) {
            Bench bench;
            for (int at = 0; at < stream.size(); at += piece)
                bench.client->send(stream.mid(at, piece));
            for (const char* answer : {"+OK", "-10", "+OK", "+OK", "+OK", "1"})
                QCOMPARE(bench.client->line(), QByteArray(answer));
            QCOMPARE(bench.simulator.data().lists.at(0), steps);
            QCOMPARE(bench.simulator.data().patterns.at(0), pattern);
            QCOMPARE(bench.simulator.received().at(2), ":LIST:DATA #216" + steps);
            QCOMPARE(bench.simulator.count(":LIST:DATA"), 1);
        }
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestSimCommands)
#include "tst_sim_commands.moc"
