#include "common/update/fwUpdater.h"
#include "tests/sim/sim_client.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QProcess>
#include <QUdpSocket>
#include <csignal>

/// The program as a user starts it.
class TestVeldasim : public TestBase {
    Q_OBJECT

private slots:
    void servesUntilASignal_data();
    void servesUntilASignal();
    void boardsTakeAnImage();
};

void TestVeldasim::servesUntilASignal_data() {
    QTest::addColumn<int>("signal");
    addRow("SIGTERM", SIGTERM);
    addRow("SIGINT", SIGINT);
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
        QCOMPARE(mapped.size(), 3 * ChannelRecordSize);
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

void TestVeldasim::boardsTakeAnImage() {
    QUdpSocket free;
    QVERIFY(free.bind(QHostAddress("127.0.0.12"), 0));
    const quint16 port = free.localPort();
    free.close();
    const QVector<QHostAddress> boards{QHostAddress("127.0.0.12"), QHostAddress("127.0.0.13")};
    QProcess program;
    program.start(VELDASIM_PROGRAM,
                  {"--region", QString::fromStdString(uniqueRegion()), "--boards", "2", "--board-address",
                   "127.0.0.12,127.0.0.13,127.0.0.14", "--board-port", QString::number(port), "--burn-ms", "100"});
    QTRY_VERIFY_WITH_TIMEOUT(program.canReadLine(), 10000);
    program.readLine();
    const QByteArray image(3000, 'i');
    FpgaUpdater updater;
    updater.setImage(reinterpret_cast<const unsigned char*>(image.constData()), 3000);
    updater.setTargets(boards.constData(), boards.size(), port);
    QVERIFY(updater.runBlocking(5000, 10, 10, 5000, 10000));
    QByteArray told;
    QTRY_COMPARE_WITH_TIMEOUT((told += program.readAll()).count('\n'), 2, 10000);
    const QByteArray sum = QCryptographicHash::hash(image, QCryptographicHash::Sha256).toHex();
    for (const QHostAddress& board : boards)
        QVERIFY(told.contains("board " + board.toString().toLatin1() + " has burnt 3000 bytes, SHA-256 " + sum));
    program.terminate();
    QVERIFY(program.waitForFinished(10000));
}

VELDA_TEST_MAIN(QCoreApplication, TestVeldasim)
#include "tst_veldasim.moc"
