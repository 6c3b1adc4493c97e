#include "tests/sim/sim_client.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <QProcess>
#include <csignal>

/// The program as a user starts it.
class TestVeldasim : public TestBase {
    Q_OBJECT

private slots:
    void servesUntilASignal() {
        const std::string region = uniqueRegion();
        QProcess program;
        program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        program.start(VELDASIM_PROGRAM,
                      {"--region", QString::fromStdString(region), "--channels", "3", "--disconnected", "0,2",
                       "--battery", "0:12:-300", "--command", ":INST:SEL 1", "--command", ":FREQ 2e9"});
        QVERIFY(program.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(program.canReadLine(), 10000);
        const QRegularExpressionMatch ready = QRegularExpression("^veldasim: port (\\d+), region (\\S+), channels 3$")
                                                  .match(program.readLine().trimmed());
        QVERIFY(ready.hasMatch());
        QCOMPARE(ready.captured(2).toStdString(), region);
        {
            const MappedRegion mapped(region);
            QCOMPARE(mapped.size(), 3 * ChannelRecordSize);
            QCOMPARE(mapped.at(0).connected, 0);
            QVERIFY(mapped.at(1).connected != 0);
            QCOMPARE(mapped.at(1).frequency.value, 2e9);
            QCOMPARE(mapped.at(1).batteryCharge, 12);
            SimClient client(ready.captured(1).toUShort());
            QCOMPARE(client.ask(":POW 3"), QByteArray("+OK"));
            QCOMPARE(mapped.at(1).power.value, 3.0);
            kill(static_cast<pid_t>(program.processId()), SIGTERM);
            QVERIFY(program.waitForFinished(10000));
            QVERIFY(client.waitForEnd());
        }
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
        QVERIFY(!MappedRegion(region).isMapped());
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestVeldasim)
#include "tst_veldasim.moc"
