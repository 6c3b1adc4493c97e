#include "tests/common/update/fpga_rig.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <QUdpSocket>

namespace {

using Datagrams = QVector<QByteArray>;

const QHostAddress kPeer(QStringLiteral("127.0.0.2"));

// What goes over the wire, written down by hand and not by the code under test.
QByteArray hostDatagram(const char* block, const char* length, const char* counter, const QByteArray& payload = {}) {
    return QByteArray::fromHex(QByteArray("4b565044") + block + length + "ffffffffffff0000" + counter + "0000") +
           payload;
}

QByteArray ack(const char* block) {
    return QByteArray::fromHex(QByteArray("4b565044") + block + "00000000000000000000000000000000");
}

QByteArray status(const char* length, const char* state, const char* counter) {
    return QByteArray::fromHex(QByteArray("4b5650440000") + length + "000000000000" + state + counter + "0000");
}

} // namespace

Q_DECLARE_METATYPE(Datagrams)

/// The updater against a bare socket: the bytes it sends and what it makes of the bytes it gets.
class TestFpgaDatagrams : public TestBase {
    Q_OBJECT

private slots:
    void sentBytes_data() {
        // clang-format off
        QTest::addColumn<QByteArray>("image");
        QTest::addColumn<Datagrams>("expected");
        const auto row = [](const char* name, int size, const char* counter, const Datagrams& blocks, const char* eof) {
            addRow(name, testImage(size), (Datagrams{hostDatagram("0000", "ffff", counter)} + blocks +
                                    Datagrams{hostDatagram(eof, "ffff", "00000000")}));
        };
        const auto data = [](const char* block, const char* length, int size, int from, int count) {
            return hostDatagram(block, length, "00000000", testImage(size).mid(from, count));
        };
        row("one byte", 1, "01000000", {data("0001", "0001", 1, 0, 1)}, "0002");
        row("33 bytes", 33, "21000000", {data("0001", "0021", 33, 0, 33)}, "0002");
        row("a block", 1024, "00040000", {data("0001", "0400", 1024, 0, 1024)}, "0002");
        row("a block and one", 1025, "01040000", {data("0001", "0400", 1025, 0, 1024), data("0002", "0001", 1025, 1024, 1)}, "0003");
        // clang-format on
    }

    void sentBytes() {
        QFETCH(QByteArray, image);
        QFETCH(Datagrams, expected);
        Datagrams got;
        connect(m_peer.get(), &QUdpSocket::readyRead, this, [&] {
            while (m_peer->hasPendingDatagrams()) {
                got << received();
                answerAll({QByteArray::fromHex("4b565044") + got.last().mid(4, 2) + QByteArray(16, '\0')});
            }
        });
        bool ok = false;
        onWorker([&] {
            FpgaUpdater updater;
            setImage(updater, image);
            updater.setTargets(&kPeer, 1, m_peer->localPort());
            ok = updater.doTransfer(2000, 10);
        });
        QVERIFY(ok);
        QCOMPARE(got, expected);
    }

    void acknowledgement_data() {
        // clang-format off
        QTest::addColumn<Datagrams>("answers");
        QTest::addColumn<bool>("satisfied");
        QTest::addColumn<int>("lastAcked");
        addRow("the block", Datagrams{ack("0104")}, true, 0x104);
        addRow("a later one", Datagrams{ack("0105")}, true, 0x105);
        addRow("an earlier one", Datagrams{ack("0103")}, false, 0);
        addRow("the other byte order", Datagrams{ack("0401").replace(4, 2, QByteArray::fromHex("0004"))}, false, 0);
        addRow("21 bytes", Datagrams{ack("0104").left(21)}, false, 0);
        addRow("empty, then the block", Datagrams{QByteArray(), ack("0104")}, true, 0x104);
        addRow("another magic", Datagrams{ack("0104").replace(0, 4, "KVPE")}, false, 0);
        addRow("longer than any", Datagrams{ack("0104") + QByteArray(3000, 'x')}, true, 0x104);
        addRow("other fields are not read", Datagrams{QByteArray::fromHex("4b5650440104ffffffffffffffffffffffffffffffff")}, true, 0x104);
        // clang-format on
    }

    void acknowledgement() {
        QFETCH(Datagrams, answers);
        m_updater->sendBlockToAll(0x104, nullptr, 0, false);
        received();
        answerAll(answers);
        QTEST(m_updater->waitForAllAcks(0x104, 60, 5), "satisfied");
        QTEST(int{m_updater->targets().first().lastAckedBlock}, "lastAcked");
    }

    void strangerDoesNotAcknowledge() {
        QUdpSocket stranger;
        QVERIFY(stranger.bind(QHostAddress("127.0.0.9"), 0));
        m_updater->sendBlockToAll(4, nullptr, 0, false);
        received();
        stranger.writeDatagram(ack("0004"), QHostAddress(QHostAddress::LocalHost), m_port);
        QVERIFY(!m_updater->waitForAllAcks(4, 60, 5));
        // The same board from another port of its own is the board.
        QUdpSocket otherPort;
        QVERIFY(otherPort.bind(kPeer, 0));
        otherPort.writeDatagram(ack("0004"), QHostAddress(QHostAddress::LocalHost), m_port);
        QVERIFY(m_updater->waitForAllAcks(4, 2000, 5));
    }

    void burnStatus_data() {
        // clang-format off
        QTest::addColumn<Datagrams>("statuses");
        QTest::addColumn<bool>("done");
        QTest::addColumn<int>("percent");
        // Of an image of 1000 bytes.
        addRow("nothing yet", Datagrams{status("0000", "0000", "00000000")}, false, 0);
        addRow("truncated", Datagrams{status("0000", "0000", "e7030000")}, false, 99);
        addRow("past the size", Datagrams{status("0000", "0000", "ffffffff")}, false, 100);
        addRow("backwards", Datagrams{status("0000", "0000", "f4010000"), status("0000", "0000", "64000000")}, false, 10);
        addRow("end in the length", Datagrams{status("ffff", "0000", "00000000")}, true, 100);
        addRow("end in the state", Datagrams{status("0000", "ffff", "00000000")}, true, 100);
        addRow("nearly an end", Datagrams{status("fffe", "feff", "00000000")}, false, 0);
        addRow("end cut short", Datagrams{status("ffff", "0000", "00000000").left(21)}, false, 0);
        // clang-format on
    }

    void burnStatus() {
        QFETCH(Datagrams, statuses);
        QFETCH(bool, done);
        const QByteArray image = testImage(1000);
        setImage(*m_updater, image);
        QVector<QPair<int, int>> reports;
        m_updater->setProgressCallback(
            [](int first, int phase, int percent, void* context) {
                QCOMPARE(first, 0);
                *static_cast<QVector<QPair<int, int>>*>(context) << qMakePair(phase, percent);
            },
            &reports);
        m_updater->sendBlockToAll(1, nullptr, 0, false);
        received();
        answerAll(statuses);
        QCOMPARE(m_updater->doBurnVerify(20, 10000, 80), done);
        QTEST(m_updater->targets().first().burnPercent, "percent");
        QCOMPARE(m_updater->targets().first().burnDone, done);
        QCOMPARE(reports.last().first, done ? 3 : 1);
        QTEST(reports.last().second, "percent");
    }

    void anyDatagramKeepsTheBurnAlive() {
        QTimer invalid;
        connect(&invalid, &QTimer::timeout, this, [this] { answerAll({ack("0001").left(21)}); });
        connect(m_peer.get(), &QUdpSocket::readyRead, this, [&] {
            received();
            invalid.start(20);
        });
        bool ok = true;
        onWorker([&] {
            FpgaUpdater updater;
            updater.setTargets(&kPeer, 1, m_peer->localPort());
            updater.sendBlockToAll(1, nullptr, 0, false);
            ok = updater.doBurnVerify(5, 500, 1000); // ends by its total, which has no message, and not by the silence
        });
        QVERIFY(!ok);
    }

protected:
    void setUp() override {
        m_peer = std::make_unique<QUdpSocket>();
        QVERIFY(m_peer->bind(kPeer, 0));
        m_updater = std::make_unique<FpgaUpdater>();
        m_updater->setTargets(&kPeer, 1, m_peer->localPort());
    }

private:
    QByteArray received() {
        if (!m_peer->hasPendingDatagrams() && !m_peer->waitForReadyRead(2000))
            return {};
        QByteArray datagram(4096, '\0');
        datagram.resize(static_cast<int>(m_peer->readDatagram(datagram.data(), datagram.size(), &m_host, &m_port)));
        return datagram;
    }

    void answerAll(const Datagrams& datagrams) {
        for (const QByteArray& datagram : datagrams)
            m_peer->writeDatagram(datagram, QHostAddress(QHostAddress::LocalHost), m_port);
    }

    std::unique_ptr<QUdpSocket> m_peer;
    std::unique_ptr<FpgaUpdater> m_updater;
    QHostAddress m_host;
    quint16 m_port = 0;
};

VELDA_TEST_MAIN(QCoreApplication, TestFpgaDatagrams)
#include "tst_fpga_datagrams.moc"
