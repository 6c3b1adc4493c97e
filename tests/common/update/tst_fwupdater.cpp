#include "common/update/fpga_image.h"
#include "common/update/fpga_trailer.h"
#include "common/update/fpga_update_job.h"
#include "platform/devicepaths.h"
#include "tests/common/update/fpga_rig.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

namespace {

constexpr int kPollMs = 5;
constexpr int kSilenceMs = 400;
constexpr int kTotalMs = 1000;

struct Run {
    bool ok = false;
    QVector<bool> finished;
    QVector<QPair<int, int>> reports; ///< phase and percent
};

// Made and bound on this thread, run on another: as an update flow does it.
Run update(const FpgaRig& rig, const QByteArray& image, int ackMs = 150) {
    Run run;
    FpgaUpdater updater;
    setImage(updater, image);
    updater.setTargets(rig.addresses.constData(), rig.addresses.size(), rig.port);
    updater.setProgressCallback([](int, int phase, int percent,
                                   void* context) { static_cast<Run*>(context)->reports << qMakePair(phase, percent); },
                                &run);
    QThread* home = QThread::currentThread();
    QThread thread;
    QEventLoop loop;
    updater.moveToThread(&thread);
    QObject::connect(&updater, &FpgaUpdater::finished, &loop, [&run](bool ok) { run.finished << ok; });
    QObject::connect(&thread, &QThread::started, &updater, [&] {
        run.ok = updater.runBlocking(ackMs, kPollMs, kPollMs, kSilenceMs, kTotalMs);
        updater.moveToThread(home);
        QThread::currentThread()->quit();
    });
    QObject::connect(&thread, &QThread::finished, &loop, &QEventLoop::quit);
    thread.start();
    loop.exec();
    thread.wait();
    return run;
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
        const auto row = [](const char* name, Change change, const char* failure = "") {
            addRow(name, change, QString(failure));
        };
        const char* init = "Failed to initialize transfer with all devices\\.$";
        const char* eof = "Failed to verify EOF with all devices\\.$";
        const char* silence = "Inactivity Timeout during Burn Phase\\.$";
        row("none", [](Faults&) {});
        row("silent at two INITs", [](Faults& f) { f.ignoredInits = 2; });
        row("silent at three INITs", [](Faults& f) { f.ignoredInits = 3; }, init);
        row("silent at five data blocks", [](Faults& f) { f.ignoredData = 5; });
        row("silent at two EOFs", [](Faults& f) { f.ignoredEofs = 2; });
        row("silent at three EOFs", [](Faults& f) { f.ignoredEofs = 3; }, eof);
        row("doubled acknowledgements", [](Faults& f) { f.doubledAcks = true; });
        row("stale acknowledgements", [](Faults& f) { f.staleAcks = true; });
        row("late acknowledgements", [](Faults& f) { f.lateAckMs = 30; });
        row("strays from another address", [](Faults& f) { f.strayAddress = QHostAddress("127.0.0.9"); });
        row("never ends", [](Faults& f) { f.neverEnds = true; }, "no message");
        row("silent while burning", [](Faults& f) { f.silentBurn = true; }, silence);
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
        if (faults.silentBurn)
            rig.boards[0]->setFaults(faults);
        if (failure.startsWith("Failed"))
            expectMessage("\\[FPGA\\] Transfer Phase Failed\\.");
        if (!failure.isEmpty() && failure != "no message")
            expectMessage("^\\[FPGA\\] " + failure);
        const QByteArray image = testImage(5 * 1024 + 7);
        const Run run = update(rig, image);
        QCOMPARE(run.ok, failure.isEmpty());
        QCOMPARE(run.finished, QVector<bool>{run.ok});
        const bool begun = !failure.startsWith("Failed to init");
        for (const auto& board : rig.boards) {
            QCOMPARE(board->image(), begun ? image : QByteArray());
            QCOMPARE(board->counts().malformed, 0);
            QCOMPARE(board->counts().inits, begun ? 1 + std::min(faults.ignoredInits, 2) : 3);
            QCOMPARE(board->counts().data > 0, begun);
        }
        QCOMPARE(run.reports.contains(qMakePair(3, 100)), run.ok);
        QVector<QPair<int, int>> sent{{0, 16}, {0, 33}, {0, 50}, {0, 66}, {0, 83}, {0, 100}};
        QCOMPARE(run.reports.mid(0, 6), sent.mid(0, begun ? 6 : 0));
    }

    void mostBlocks_data() {
        QTest::addColumn<int>("size");
        QTest::addColumn<int>("blocks");
        addRow("65534 blocks", 65534 * 1024, 65534);
        addRow("one byte more", 65534 * 1024 + 1, 0);
    }

    void mostBlocks() {
        QFETCH(int, size);
        QFETCH(int, blocks);
        FpgaRig rig;
        QVERIFY(rig.start(1));
        if (blocks == 0) {
            expectMessage("Nothing can be sent");
            expectMessage("Transfer Phase Failed");
        }
        const QByteArray image = testImage(size);
        const Run run = update(rig, image, 2000);
        const Sim::FpgaBoard& board = *rig.boards[0];
        QCOMPARE(run.ok, blocks > 0);
        QCOMPARE(board.counts().data - board.counts().repeated, blocks);
        QCOMPARE(board.counts().inits > 0, run.ok);
        QVERIFY(board.image() == (run.ok ? image : QByteArray()));
    }

    void nothingToSend() {
        const QHostAddress address(QStringLiteral("127.0.0.2"));
        const QByteArray image = testImage(10);
        const auto* bytes = reinterpret_cast<const unsigned char*>(image.constData());
        const struct {
            int targets;
            const unsigned char* image;
            quint32 size;
        } table[] = {{0, bytes, 10}, {-1, bytes, 10}, {1, bytes, 0}, {1, nullptr, 10}};
        for (const auto& row : table) {
            FpgaUpdater updater;
            updater.setImage(row.image, row.size);
            updater.setTargets(&address, row.targets, 1);
            QSignalSpy finished(&updater, &FpgaUpdater::finished);
            QVERIFY(!updater.runBlocking(1, 1, 1, 1, 1));
            QCOMPARE(finished, QList<QVariantList>{{false}});
        }
    }

    // A data block is repeated for ever; a job that goes ends that too.
    void jobRemovedWhileItWaits() {
        QTemporaryDir folder;
        QFile file(folder.filePath("image"));
        FpgaTrailer trailer;
        trailer.design = kFpgaDesign;
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(withFpgaTrailer("image", trailer)) > 0 && file.flush());
        FpgaRig rig;
        QVERIFY(rig.start(1));
        Faults silent;
        silent.ignoredData = Faults::kAlways;
        rig.boards[0]->setFaults(silent);
        FpgaUpdateSettings settings;
        settings.boards = rig.addresses;
        settings.port = rig.port;
        settings.ackTimeoutMs = 50;
        expectMessage("Transfer Phase Failed");
        auto job = std::make_unique<FpgaUpdateJob>(settings);
        QSignalSpy ended(job.get(), &FpgaUpdateJob::ended);
        job->start(file.fileName());
        QTRY_VERIFY(rig.boards[0]->counts().data > 3);
        QElapsedTimer timer;
        timer.start();
        job.reset();
        QVERIFY(timer.elapsed() < 5000);
        QCOMPARE(ended.size(), 0);
    }

    void boardsOfTheChannels() {
        const QVector<QPair<int, int>> table{{-3, 0}, {0, 0}, {1, 1}, {4, 4}, {9, 4}};
        for (const auto& row : table)
            QCOMPARE(FpgaUpdateSettings::forChannels(row.first).boards.size(), row.second);
        QCOMPARE(DevicePaths::fpgaAddresses().join(' '), QString("192.168.7.1 192.168.8.1 192.168.9.1 192.168.10.1"));
    }

    void lossyLine_data() {
        QTest::addColumn<bool>("sparesMarkers");
        addRow("INIT and EOF get through", true);
        // Three attempts each are too few for four boards most times, by the protocol's own rule.
        addRow("INIT and EOF are lost too", false);
    }

    // A fifth is lost on either way, the rest comes twice, late, out of order and from strangers as well. Whenever an
    // update says that it succeeded, every board holds the image.
    void lossyLine() {
        QFETCH(bool, sparesMarkers);
        allowMessages("^\\[FPGA\\] (Failed|Transfer Phase Failed)");
        const QByteArray image = testImage((sparesMarkers ? 24 : 4) * 1024 + 1);
        int tries = 0;
        for (bool ok = false; !ok; ++tries) {
            QVERIFY(tries < (sparesMarkers ? 1 : 100));
            FpgaRig rig;
            QVERIFY(rig.start(4));
            for (int i = 0; i < 4; ++i) {
                Faults faults;
                faults.lossPercent = 20;
                faults.lossSparesMarkers = sparesMarkers;
                faults.seed = static_cast<quint32>(100 * tries + i);
                faults.doubledAcks = i % 2 == 0;
                faults.staleAcks = i % 2 == 1;
                faults.lateAckMs = i == 3 ? 2 : 0;
                faults.strayAddress = QHostAddress(QStringLiteral("127.0.0.%1").arg(20 + i));
                rig.boards[static_cast<std::size_t>(i)]->setFaults(faults);
            }
            ok = update(rig, image, 15).ok;
            for (const auto& board : rig.boards) {
                QVERIFY(!ok || board->image() == image);
                QVERIFY(!sparesMarkers || (board->counts().dropped > 10 && board->counts().repeated > 10));
            }
        }
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestFwUpdater)
#include "tst_fwupdater.moc"
