#include "common/wire/scpi_words.h"
#include "sim/request_log.h"
#include "tests/sim/sim_client.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>

class TestSimCommands : public TestBase {
    Q_OBJECT

private slots:
    /// What changes no record: queries, steps, and what the module does not take, with the beginning of the answer.
    void answers_data() {
        // clang-format off
        addColumns<QByteArray, QByteArray>("request", "answer");
        const auto row = [](const QByteArray& request, const char* answer) {
            addRow(request.constData(), request, QByteArray(answer));
        };
        row("*IDN?", "KAVOR,KV-6000,KV60-000101-1,1.4.2/2.07");
        row(Scpi::DeviceArchitectureQuery, "KV-6000,20000,3,usb,2001,168c,handheld");

        row(":FREQ 8999.999", "-ERR -222,");
        row(":POW 20.0001", "-ERR -222,");
        row(":FREQ:STAR 5", "-ERR -113,");
        row(":TRIG:COUN 1.5", "-ERR -104,");
        row(":TRIG:INP:IMP 75", "-ERR -224,");
        row(":INST:SEL -1", "-ERR -222,");
        row(":SYST:SET:REC 77", "-ERR -256,");
        row(":SYST:SET:STOR ../x", "-ERR -224,");

        // Steps at and beyond the limits that the module publishes, in both forms of an upload.
        row(":LIST:DATA #216" + QByteArray::fromHex("010000E876481700E6FB02F401000000"), "+OK");
        row(":LIST:DATA #216" + QByteArray::fromHex("010000E876481700E6FB020900000000"), "-ERR -222,Step 1: a dwell of 9000 ");
        row(":LIST:DATA #217" + QByteArray(17, 'x'), "-ERR -161,");
        row(":LIST:DATA #216" + QByteArray(17, 'x'), "-ERR -161,"); // longer than announced
        row(":LIST:DATA #9999999999", "-ERR -113,");
        row(":SOUR:LIST:DEF 1,9000,-60,0,0,1e-05", "+OK");
        row(":SOUR:LIST:DEF 1,6e9,20,0,0,100", "+OK");
        row(":SOUR:LIST:DEF 1,8999.99,0,0,0,1e-05", "-ERR -222,Step 1: a frequency of 8999.99 is outside 9000 to 6000000000");
        row(":PATT:DEF 1,1e-07,10,65535,1", "+OK");
        row(":PATT:DEF 1,9.9e-08,1,1,1", "-ERR -222,Step 1: a on time of 99 ");
        row(":PATT:DEF 1,1,1,0,1", "-ERR -222,Step 1: a repetition of 0 is outside 1 to 65535");
        // clang-format on
    }

    void answers() {
        QFETCH(QByteArray, request);
        QFETCH(QByteArray, answer);
        const Bench bench;
        const ChannelRecord before = bench.region->at(0);
        const QByteArray given = bench.ask(request);
        QVERIFY2(given.startsWith(answer), given.constData());
        QVERIFY(!answer.startsWith("-ERR") || given.size() > 14); // it says why
        QCOMPARE(memcmp(&before, &bench.region->at(0), sizeof before), 0);
        QVERIFY(!answer.startsWith("-ERR") || bench.simulator.data().lists.at(0).isEmpty());
    }

    /// The bytes of the manual, read back as words.
    void uploadedStepsAreDecoded() {
        const Bench bench;
        QCOMPARE(bench.ask(":LIST:DATA #232" + QByteArray::fromHex("010000E876481700E6FB02F401000000"
                                                                   "020000E876481700F40101E803000000")),
                 QByteArray("+OK"));
        QCOMPARE(bench.ask(":PATT:DATA #220" + QByteArray::fromHex("01000500E8030000000000002003000000000000")),
                 QByteArray("+OK"));
        QCOMPARE(bench.ask("SIMulator:LIST?"), QByteArray("1: 100000000.000 Hz, -10.50 dBm, 500 us, Wait; "
                                                          "2: 100000000.000 Hz, 5.00 dBm, 1000 us, Run, last"));
        QCOMPARE(bench.ask("SIMulator:PATTern?"), QByteArray("1: on 800 ns, off 1000 ns, 5 times, last"));
    }

    void requestsInAnyPieces() {
        const QByteArray steps("\n\rOK\r\n\2\0#\0;\"\t.\0", 16);
        const QByteArray pattern("\n\r+O\r\n;#\0\0\0\0\"\t.\0\0\0\0", 20);
        const QByteArray stream = ":FREQ 2e9\r\n\r\n:POW?\n:LIST:DATA #216" + steps + "\r\n:OUTP ON\n:PATT:DATA #220" +
                                  pattern + "\n:OUTP?\r\n";
        for (const int piece : {1, 2, 7, 1000}) {
            const Bench bench;
            for (int at = 0; at < stream.size(); at += piece)
                bench.client->send(stream.mid(at, piece));
            QCOMPARE(bench.client->bytes(28), QByteArray("+OK\r\n-10\r\n+OK\r\n+OK\r\n+OK\r\n1\r\n"));
            QCOMPARE(bench.simulator.data().lists.at(0), steps);
            QCOMPARE(bench.simulator.data().patterns.at(0), pattern);
        }
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestSimCommands)
#include "tst_sim_commands.moc"
