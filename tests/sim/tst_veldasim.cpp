#include "tests/sim/sim_client.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <QProcess>

#include <csignal>

/// The program as a user starts it.
class TestVeldasim : public TestBase {
    Q_OBJECT

private slots:
    void servesUntilASignal_data();
    void servesUntilASignal();
    void badArguments_data();
    void badArguments();
    void help();
};

void TestVeldasim::servesUntilASignal_data() {
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
}

void TestVeldasim::servesUntilASignal() {
    QFETCH(int, signal);
    const std::string region = uniqueRegion();
    QProcess program;
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    program.start(VELDASIM_PROGRAM,
                  {"--region", QString::fromStdString(region), "--channels", "3", "--disconnected", "0,2", "--battery",
                   "0:12:-300", "--command", ":INST:SEL 1", "--command", ":FREQ 2e9"});
    QVERIFY(program.waitForStarted());
    QTRY_VERIFY_WITH_TIMEOUT(program.canReadLine(), 10000);
    const QRegularExpressionMatch ready =
        QRegularExpression("^veldasim: port (\\d+), region (\\S+), channels 3$").match(program.readLine().trimmed());
    QVERIFY(ready.hasMatch());
    QCOMPARE(ready.captured(2).toStdString(), region);
    {
        const MappedRegion mapped(region);
        QCOMPARE(mapped.size(), 3 * kChannelRecordSize);
        QCOMPARE(mapped.at(0).connected, 0);
        QVERIFY(mapped.at(1).connected != 0);
        QCOMPARE(mapped.at(1).frequency.value, 2e9);
        QCOMPARE(mapped.at(1).batteryCharge, 12);
        SimClient client(ready.captured(1).toUShort());
        QCOMPARE(client.ask(":POW 3"), QByteArray("+OK"));
        QCOMPARE(mapped.at(1).power.value, 3.0);
        kill(static_cast<pid_t>(program.processId()), signal);
        QVERIFY(program.waitForFinished(10000));
        QVERIFY(client.waitForEnd());
    }
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 0);
    QVERIFY(!MappedRegion(region).isMapped());
}

void TestVeldasim::badArguments_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("sentence");
    QTest::newRow("channels") << QStringList{"--channels", "5"} << "--channels takes 1 to 4";
    QTest::newRow("port") << QStringList{"--port", "70000"} << "--port takes 0 to 65535";
    QTest::newRow("region") << QStringList{"--region", "data"} << "--region takes one name behind a slash";
    QTest::newRow("nested region") << QStringList{"--region", "/a/b"} << "--region takes one name behind a slash";
    QTest::newRow("disconnected") << QStringList{"--disconnected", "4"} << "--disconnected takes channels from 0";
    QTest::newRow("battery") << QStringList{"--battery", "full"} << "\"full\" is no battery point";
    QTest::newRow("boards") << QStringList{"--boards", "5"} << "--boards takes 0 to 4";
    QTest::newRow("board address") << QStringList{"--board-address", "::1"} << "--board-address takes IPv4 addresses";
    QTest::newRow("too few addresses") << QStringList{"--boards", "2", "--board-address", "127.0.0.2"}
                                       << "--board-address names fewer addresses";
    QTest::newRow("loss of all") << QStringList{"--board-loss", "100"} << "--board-loss takes 0 to 99";
    QTest::newRow("silent board") << QStringList{"--boards", "1", "--board-silent", "2"}
                                  << "--board-silent takes 0 to 1";
    QTest::newRow("address of nobody here")
        << QStringList{"--boards", "1", "--board-address", "192.0.2.1"} << "192.0.2.1:7502: ";
    QTest::newRow("command") << QStringList{"--command", ":POW 99"} << "\":POW 99\": -ERR -222,";
}

void TestVeldasim::badArguments() {
    QFETCH(QStringList, arguments);
    QFETCH(QString, sentence);
    QProcess program;
    if (!arguments.contains("--region"))
        arguments << "--region" << QString::fromStdString(uniqueRegion());
    program.start(VELDASIM_PROGRAM, arguments);
    QVERIFY(program.waitForFinished(10000));
    QCOMPARE(program.exitCode(), 2);
    const QString output = program.readAllStandardError();
    QVERIFY2(output.startsWith("veldasim: " + sentence), qPrintable(output));
}

void TestVeldasim::help() {
    QProcess program;
    program.start(VELDASIM_PROGRAM, {"--help"});
    QVERIFY(program.waitForFinished(10000));
    QCOMPARE(program.exitCode(), 0);
    QVERIFY(program.readAllStandardOutput().contains("--channels"));
}

VELDA_TEST_MAIN(QCoreApplication, TestVeldasim)
#include "tst_veldasim.moc"
