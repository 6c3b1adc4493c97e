#include "tests/common/update/fpga_rig.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QSignalSpy>

namespace {

constexpr int kAckMs = 150;
constexpr int kPollMs = 5;
constexpr int kSilenceMs = 400;
constexpr int kTotalMs = 1000;

struct Report {
    int phase;
    int percent;
};

struct Run {
    bool ok = false;
    int finishedSignals = 0;
    bool finishedWith = false;
    std::vector<Report> reports;
};

QByteArray sha256(const QByteArray& image) {
    return QCryptographicHash::hash(image, QCryptographicHash::Sha256).toHex();
}

Run update(const FpgaRig& rig, const QByteArray& image, int ackMs = kAckMs) {
    Run run;
    onWorker([&] {
        FpgaUpdater updater;
        setImage(updater, image);
        updater.setTargets(rig.addresses.constData(), rig.addresses.size(), rig.port);
        updater.setProgressCallback(
            [](int, int phase, int percent, void* context) {
                static_cast<Run*>(context)->reports.push_back({phase, percent});
            },
            &run);
        QObject::connect(&updater, &FpgaUpdater::finished, [&run](bool ok) {
            ++run.finishedSignals;
            run.finishedWith = ok;
        });
        run.ok = updater.runBlocking(ackMs, kPollMs, kPollMs, kSilenceMs, kTotalMs);
    });
    return run;
}

Sim::FpgaBoardSettings quickBoard() {
    Sim::FpgaBoardSettings settings;
    settings.burnMs = 60;
    settings.statusMs = 5;
    return settings;
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
            QTest::newRow(name) << change << QString(failure);
        };
        const char* init = "Failed to initialize transfer";
        const char* eof = "Failed to verify EOF";
        const char* silence = "Inactivity Timeout during Burn";
        row("none", [](Faults&) {});
        row("silent at two INITs", [](Faults& f) { f.ignoredInits = 2; });
        row("silent at three INITs", [](Faults& f) { f.ignoredInits = 3; }, init);
        row("silent at five data blocks", [](Faults& f) { f.ignoredData = 5; });
        row("silent at two EOFs", [](Faults& f) { f.ignoredEofs = 2; });
        row("silent at EOF", [](Faults& f) { f.ignoredEofs = Faults::kAlways; }, eof);
        row("doubled acknowledgements", [](Faults& f) { f.doubledAcks = true; });
        row("stale acknowledgements", [](Faults& f) { f.staleAcks = true; });
        row("late acknowledgements", [](Faults& f) { f.lateAckMs = 30; });
        row("acknowledgements of the next block", [](Faults& f) { f.ackAhead = 1; });
        row("21 bytes", [](Faults& f) { f.shortDatagrams = true; }, init);
        row("wrong magic", [](Faults& f) { f.wrongMagic = true; }, init);
        row("strays from another address", [](Faults& f) { f.strayAddress = QHostAddress("127.0.0.9"); });
        row("strays, and the board itself silent", [](Faults& f) { f.strayAddress = QHostAddress("127.0.0.9"); f.ignoredInits = Faults::kAlways; }, init);
        row("end mark in the other field", [](Faults& f) { f.endMarkInState = true; });
        row("burns backwards", [](Faults& f) { f.burnsBackwards = true; });
        row("burns past the size", [](Faults& f) { f.burnsPastSize = true; });
        row("never ends", [](Faults& f) { f.neverEnds = true; }, "no message");
        row("silent while burning", [](Faults& f) { f.silentBurn = true; }, silence);
        // clang-format on
    }

    // The second of two boards has the fault; the silence of one alone shows only when the other is silent as well.
    void fault() {
        QFETCH(Change, change);
        QFETCH(QString, failure);
        FpgaRig rig;
        QVERIFY(rig.start(2, quickBoard()));
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
        QCOMPARE(run.finishedSignals, 1);
        QCOMPARE(run.finishedWith, run.ok);
        const bool transferred = run.ok || !failure.startsWith("Failed to init");
        for (const auto& board : rig.boards) {
            QCOMPARE(board->sha256(), sha256(transferred ? image : QByteArray()));
            QCOMPARE(board->counts().malformed, 0);
        }
        QCOMPARE(!run.reports.empty() && run.reports.back().phase == 3, run.ok);
    }

    void silentAtInitSendsNothingElse() {
        FpgaRig rig;
        QVERIFY(rig.start(4, quickBoard()));
        Faults silent;
        silent.ignoredInits = Faults::kAlways;
        rig.boards[2]->setFaults(silent);
        expectMessage("Failed to initialize transfer with all devices\\.$");
        expectMessage("Transfer Phase Failed");
        QVERIFY(!update(rig, testImage(3000)).ok);
        for (const auto& board : rig.boards) {
            QCOMPARE(board->counts().inits, 3);
            QCOMPARE(board->counts().data + board->counts().eofs, 0);
        }
    }

    void imageOfSize_data() {
        QTest::addColumn<int>("size");
        QTest::addColumn<int>("blocks");
        QTest::newRow("1 byte") << 1 << 1;
        QTest::newRow("33 bytes") << 33 << 1;
        QTest::newRow("34 bytes") << 34 << 1;
        QTest::newRow("a block") << 1024 << 1;
        QTest::newRow("a block and one") << 1025 << 2;
        QTest::newRow("65534 blocks") << 65534 * 1024 << 65534;
        QTest::newRow("65534 blocks and one byte") << 65534 * 1024 + 1 << 0;
    }

    void imageOfSize() {
        QFETCH(int, size);
        QFETCH(int, blocks);
        FpgaRig rig;
        QVERIFY(rig.start(1, quickBoard()));
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
        QCOMPARE(board.sha256(), sha256(run.ok ? image : QByteArray()));
    }

    void nothingToSend_data() {
        QTest::addColumn<int>("targets");
        QTest::addColumn<int>("size");
        QTest::newRow("no target") << 0 << 10;
        QTest::newRow("negative count") << -1 << 10;
        QTest::newRow("no bytes") << 1 << 0;
        QTest::newRow("no image") << 1 << -1;
    }

    void nothingToSend() {
        QFETCH(int, targets);
        QFETCH(int, size);
        const QByteArray image = testImage(std::max(size, 0));
        const QHostAddress address(QStringLiteral("127.0.0.2"));
        FpgaUpdater updater;
        if (size >= 0)
            setImage(updater, image);
        updater.setTargets(&address, targets, 1);
        QSignalSpy finished(&updater, &FpgaUpdater::finished);
        QVERIFY(!updater.runBlocking(1, 1, 1, 1, 1));
        QCOMPARE(finished.size(), 1);
        QCOMPARE(finished.first().first().toBool(), false);
    }

    // The markers get through: three attempts each are too few for four boards at this loss, by the protocol's own
    // rule.
    void lossyLine() {
        FpgaRig rig;
        QVERIFY(rig.start(4, quickBoard()));
        for (std::size_t i = 0; i < rig.boards.size(); ++i) {
            Faults faults;
            faults.lossPercent = 20;
            faults.lossSparesMarkers = true;
            faults.seed = 100 + static_cast<quint32>(i);
            faults.doubledAcks = i % 2 == 0;
            faults.staleAcks = i % 2 == 1;
            faults.strayAddress = QHostAddress(QStringLiteral("127.0.0.%1").arg(20 + i));
            rig.boards[i]->setFaults(faults);
        }
        const QByteArray image = testImage(40 * 1024 + 1);
        const Run run = update(rig, image, 15);
        QVERIFY(run.ok);
        for (const auto& board : rig.boards) {
            QCOMPARE(board->sha256(), sha256(image));
            QVERIFY(board->counts().dropped > 10);
            QVERIFY(board->counts().repeated > 10);
        }
    }

    void lossOfMarkersTooNeverGivesAWrongImage() {
        allowMessages("^\\[FPGA\\] ");
        const QByteArray image = testImage(8 * 1024);
        int good = 0;
        for (quint32 seed = 1; seed <= 60 && good < 2; ++seed) {
            FpgaRig rig;
            QVERIFY(rig.start(2, quickBoard()));
            Faults faults;
            faults.lossPercent = 20;
            for (std::size_t i = 0; i < rig.boards.size(); ++i) {
                faults.seed = seed * 10 + static_cast<quint32>(i);
                rig.boards[i]->setFaults(faults);
            }
            if (!update(rig, image, 15).ok)
                continue;
            ++good;
            for (const auto& board : rig.boards)
                QCOMPARE(board->sha256(), sha256(image));
        }
        QCOMPARE(good, 2);
    }

    void progressRises() {
        FpgaRig rig;
        QVERIFY(rig.start(2, quickBoard()));
        const Run run = update(rig, testImage(3 * 1024));
        QVERIFY(run.ok);
        QCOMPARE(run.reports[0].percent, 33);
        QCOMPARE(run.reports[1].percent, 66);
        QCOMPARE(run.reports[2].percent, 100);
        for (std::size_t i = 1; i < run.reports.size(); ++i) {
            const Report& before = run.reports[i - 1];
            const Report& now = run.reports[i];
            QVERIFY(now.phase > before.phase || (now.phase == before.phase && now.percent >= before.percent));
        }
        QCOMPARE(run.reports.back().phase, 3);
        QCOMPARE(run.reports.back().percent, 100);
    }

    // Made and bound on the thread of the screens, as an update flow does it.
    void runsOnTheThreadItWasMovedTo() {
        FpgaRig rig;
        QVERIFY(rig.start(2, quickBoard()));
        const QByteArray image = testImage(2000);
        auto* updater = new FpgaUpdater;
        setImage(*updater, image);
        updater->setTargets(rig.addresses.constData(), 2, rig.port);
        QThread thread;
        updater->moveToThread(&thread);
        connect(&thread, &QThread::started, updater,
                [updater] { updater->runBlocking(2000, kPollMs, kPollMs, kSilenceMs, kTotalMs); });
        connect(&thread, &QThread::finished, updater, &QObject::deleteLater);
        QVector<bool> finished;
        connect(updater, &FpgaUpdater::finished, this, [&](bool ok) { finished << ok; }); // queued to this thread
        thread.start();
        QTRY_COMPARE(finished, QVector<bool>{true});
        thread.quit();
        QVERIFY(thread.wait(5000));
        QCOMPARE(rig.boards[1]->sha256(), sha256(image));
    }

    void interruptionEndsAWaitWithoutLimit() {
        FpgaRig rig;
        QVERIFY(rig.start(1, quickBoard()));
        Faults faults;
        faults.ignoredData = Faults::kAlways;
        rig.boards[0]->setFaults(faults);
        expectMessage("Transfer Phase Failed");
        const QByteArray image = testImage(10);
        bool ok = true;
        std::unique_ptr<QThread> thread(QThread::create([&] {
            FpgaUpdater updater;
            setImage(updater, image);
            updater.setTargets(rig.addresses.constData(), 1, rig.port);
            ok = updater.runBlocking(20, kPollMs, kPollMs, kSilenceMs, kTotalMs);
        }));
        thread->start();
        QTRY_VERIFY(rig.boards[0]->counts().data > 3); // it goes on past three attempts
        thread->requestInterruption();
        QVERIFY(thread->wait(5000));
        QVERIFY(!ok);
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestFwUpdater)
#include "tst_fwupdater.moc"
