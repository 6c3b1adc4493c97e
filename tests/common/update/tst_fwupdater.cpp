#include "tests/common/update/fpga_rig.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>

namespace {

bool update(const FpgaRig& rig, const QByteArray& image, int ackMs = 150, QStringList* silent = nullptr) {
    bool ok = false;
    onWorker([&] {
        FpgaUpdater updater;
        setImage(updater, image);
        updater.setTargets(rig.addresses.constData(), rig.addresses.size(), rig.port);
        ok = updater.runBlocking(ackMs, 5, 5, 400, 1000);
        if (silent)
            *silent = updater.silentBoards();
    });
    return ok;
}

using Faults = Sim::FpgaFaults;
using Change = void (*)(Faults&);

} // namespace

Q_DECLARE_METATYPE(Change)

class TestFwUpdater : public TestBase {
    Q_OBJECT

private slots:
    void fault_data() {
        // clang-format off
        QTest::addColumn<Change>("change");
        QTest::addColumn<QString>("failure");
        const auto row = [](const char* name, Change change, const QString& failure = {}) {
            addRow(name, change, failure);
        };
        row("silent at two INITs", [](Faults& f) { f.ignoredInits = 2; });
        row("silent at three INITs", [](Faults& f) { f.ignoredInits = 3; }, "Failed to initialize transfer with all devices\\.$");
        row("silent at data blocks", [](Faults& f) { f.ignoredData = 5; });
        row("silent at three EOFs", [](Faults& f) { f.ignoredEofs = 3; }, "Failed to verify EOF with all devices\\.$");
        row("never ends", [](Faults& f) { f.neverEnds = true; }, "no message");
        row("silent while burning", [](Faults& f) { f.silentBurn = true; }, "Inactivity Timeout during Burn Phase\\.$");
        // clang-format on
    }

    // The second of two boards has the fault; the silence of one alone shows only when the other is silent as well.
    void fault() {
        QFETCH(Change, change);
        QFETCH(QString, failure);
        FpgaRig rig;
        QVERIFY(rig.start(2));
        Faults faults;
        change(faults);
        rig.boards[1]->setFaults(faults);
        rig.boards[0]->setFaults(faults.silentBurn ? faults : Faults());
        if (failure.startsWith("Failed"))
            expectMessage("\\[FPGA\\] Transfer Phase Failed\\.");
        if (!failure.isEmpty() && failure != "no message")
            expectMessage("^\\[FPGA\\] " + failure);
        const QByteArray image = testImage(5 * 1024 + 7);
        QCOMPARE(update(rig, image), failure.isEmpty());
        const bool begun = !failure.startsWith("Failed to init");
        for (const auto& board : rig.boards) {
            QCOMPARE(board->image(), begun ? image : QByteArray());
            QCOMPARE(board->counts().malformed, 0);
            QCOMPARE(board->counts().inits, begun ? 1 + std::min(faults.ignoredInits, 2) : 3);
        }
    }

    /// A board that falls silent among the data blocks is seen in its row while the same block goes on being sent.
    void silentBoardIsSeen() {
        FpgaRig rig;
        QVERIFY(rig.start(2));
        const QByteArray image = testImage(40 * 1024);
        FpgaBoardStates last;
        bool interrupted = false;
        Faults deaf;
        deaf.silentFrom = 11;
        rig.boards[1]->setFaults(deaf);
        QStringList silent;
        QString step;
        onWorker([&] {
            FpgaUpdater updater;
            setImage(updater, image);
            updater.setTargets(rig.addresses.constData(), rig.addresses.size(), rig.port);
            updater.setSilentAfter(800);
            updater.setBoardCallback([&](const FpgaBoardStates& states) {
                last = states;
                if (states[1].isSilent) {
                    interrupted = true;
                    QThread::currentThread()->requestInterruption();
                }
            });
            interrupted = !updater.doTransfer(150, 5) && interrupted;
            silent = updater.silentBoards();
            step = updater.step();
        });
        QVERIFY(interrupted && last[0].phase == FpgaBoardState::Acknowledged && !last[0].isSilent);
        QVERIFY(last[1].phase == FpgaBoardState::Waiting && last[1].quietMs < 1300 && last[1].percent < 100);
        QCOMPARE(silent, QStringList(rig.addresses[1].toString()));
        QCOMPARE(step, QString("Block 11 of 40"));
        QVERIFY(rig.boards[0]->counts().repeated >= 3); // the same block, to all, every 150 ms
    }

    // Block numbers have 16 bits, and the first and the last are markers.
    void mostBlocks() {
        for (const int extra : {0, 1}) {
            FpgaRig rig;
            QVERIFY(rig.start(1));
            if (extra == 1) {
                expectMessage("Nothing can be sent");
                expectMessage("Transfer Phase Failed");
            }
            const QByteArray image = testImage(65534 * 1024 + extra);
            QStringList silent;
            QCOMPARE(update(rig, image, 2000, &silent), extra == 0);
            QCOMPARE(silent, QStringList()); // who was sent nothing
            QCOMPARE(rig.boards[0]->counts().inits > 0, extra == 0);
            QVERIFY(rig.boards[0]->image() == (extra == 0 ? image : QByteArray()));
        }
    }

    // A fifth of the data is lost on either way, the rest comes twice, late, out of order and from strangers as well.
    void lossyLine() {
        FpgaRig rig;
        QVERIFY(rig.start(4));
        for (int i = 0; i < 4; ++i) {
            Faults faults;
            faults.lossPercent = 20;
            faults.lossSparesMarkers = true; // three attempts each are too few for four boards most times
            faults.seed = static_cast<quint32>(i);
            faults.doubledAcks = i % 2 == 0;
            faults.staleAcks = i % 2 == 1;
            faults.lateAckMs = i == 3 ? 2 : 0;
            faults.strayAddress = QHostAddress(QStringLiteral("127.0.0.%1").arg(20 + i));
            rig.boards[static_cast<std::size_t>(i)]->setFaults(faults);
        }
        const QByteArray image = testImage(24 * 1024 + 1);
        QVERIFY(update(rig, image, 15));
        for (const auto& board : rig.boards) {
            QCOMPARE(board->image(), image);
            QVERIFY(board->counts().dropped > 10 && board->counts().repeated > 10);
        }
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestFwUpdater)
#include "tst_fwupdater.moc"
