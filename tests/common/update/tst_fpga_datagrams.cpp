#include "tests/common/update/fpga_rig.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <QUdpSocket>

namespace {

using Datagrams = QVector<QByteArray>;

const QHostAddress Peer(QStringLiteral("127.0.0.2"));

// Written down by hand and not by the code under test.
QByteArray ack(const QByteArray& block) {
    return QByteArray::fromHex("4b565044" + block + "00000000000000000000000000000000");
}

} // namespace

/// The updater against a bare socket: the bytes it sends and what it makes of the bytes it gets.
class TestFpgaDatagrams : public TestBase {
    Q_OBJECT

private slots:
    void sentBytes() {
        Datagrams got;
        connect(m_peer.get(), &QUdpSocket::readyRead, this, [&] {
            while (m_peer->hasPendingDatagrams()) {
                got << received();
                answerAll({ack(got.last().mid(4, 2).toHex())});
            }
        });
        QByteArray image;
        for (const auto& [size, datagrams] : {std::make_pair(1, 3), std::make_pair(1024, 3), std::make_pair(1025, 4)}) {
            got.clear();
            image = testImage(size);
            bool ok = false;
            onWorker([&] {
                FpgaUpdater updater;
                setImage(updater, image);
                updater.setTargets(&Peer, 1, m_peer->localPort());
                ok = updater.doTransfer(2000, 10);
            });
            QVERIFY(ok);
            QCOMPARE(got.size(), datagrams);
        }
        const auto header = [](const char* fields) {
            return QByteArray::fromHex(QByteArray("4b565044") + fields + "0000");
        };
        QCOMPARE(got, (Datagrams{header("0000ffffffffffffffff000001040000"),
                                 header("00010400ffffffffffff000000000000") + image.left(1024),
                                 header("00020001ffffffffffff000000000000") + image.right(1),
                                 header("0003ffffffffffffffff000000000000")}));
    }

    void acknowledgement() {
        const QPair<Datagrams, int> table[] = {
            // what the board answers to block 0x104, and the block that counts, 0 for none
            {{ack("0104")}, 0x104},
            {{ack("0105")}, 0x105},
            {{ack("0103")}, 0},
            {{ack("0104").left(21)}, 0},
            {{ack("0104").replace(0, 4, "KVPE")}, 0},
            {{QByteArray(), ack("0104") + QByteArray(3000, 'x')}, 0x104}};
        for (const auto& [answers, lastAcked] : table) {
            setUp();
            beginWith(0x104);
            answerAll(answers);
            QCOMPARE(m_updater->waitForAllAcks(0x104, 60, 5), lastAcked > 0);
            QCOMPARE(int{m_updater->targets().first().lastAckedBlock}, lastAcked);
        }
        setUp();
        beginWith(0x106);
        m_peer->close();
        QVERIFY(m_peer->bind(QHostAddress("127.0.0.9"), 0)); // a stranger
        answerAll({ack("0106")});
        QVERIFY(!m_updater->waitForAllAcks(0x106, 60, 5));
    }

protected:
    void setUp() override {
        m_peer = std::make_unique<QUdpSocket>();
        QVERIFY(m_peer->bind(Peer, 0));
        m_updater = std::make_unique<FpgaUpdater>();
        m_updater->setTargets(&Peer, 1, m_peer->localPort());
    }

private:
    void beginWith(quint16 block) {
        m_updater->sendBlockToAll(block, nullptr, 0, false);
        received();
    }

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
