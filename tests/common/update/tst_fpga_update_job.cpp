#include "common/update/fpga_trailer.h"
#include "common/update/fpga_update_job.h"
#include "tests/common/update/fpga_rig.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

class TestFpgaUpdateJob : public TestBase {
    Q_OBJECT

private slots:
    void imageReachesTheBoards() {
        FpgaUpdateJob job(m_settings);
        QVector<QPair<int, int>> reports;
        QThread* reportedOn = nullptr;
        connect(&job, &FpgaUpdateJob::progress, this, [&](int phase, int percent) {
            reports << qMakePair(phase, percent);
            reportedOn = QThread::currentThread();
        });
        QSignalSpy accepted(&job, &FpgaUpdateJob::imageAccepted);
        QSignalSpy ended(&job, &FpgaUpdateJob::ended);
        job.start(m_path);
        QTRY_COMPARE_WITH_TIMEOUT(ended.size(), 1, 30000);
        QCOMPARE(ended.first().at(0).toBool(), true);
        QCOMPARE(ended.first().at(1).toString(), QString("FPGA update completed.\nPlease power OFF/ON the device."));
        QCOMPARE(accepted.size(), 1);
        QCOMPARE(reportedOn, thread());
        QCOMPARE(reports.last(), qMakePair(3, 100));
        for (int i = 1; i < reports.size(); ++i)
            QVERIFY(reports.at(i) != reports.at(i - 1)); // 301 blocks, but a report only where the percentage changed
        for (const auto& board : m_rig->boards)
            QVERIFY(board->image() == m_image);
    }

    void refusedImageSendsNothing() {
        writeFile(m_image);
        FpgaUpdateJob job(m_settings);
        QSignalSpy accepted(&job, &FpgaUpdateJob::imageAccepted);
        QSignalSpy ended(&job, &FpgaUpdateJob::ended);
        job.start(m_path);
        QTRY_COMPARE(ended.size(), 1);
        QCOMPARE(ended.first().at(0).toBool(), false);
        QVERIFY(ended.first().at(1).toString().startsWith("FPGA image authentication failed.\n\n"));
        QCOMPARE(accepted.size(), 0);
        QCOMPARE(m_rig->boards[0]->counts().inits, 0);
    }

    void silentBoardEndsInAMessage() {
        Sim::FpgaFaults silent;
        silent.ignoredInits = Sim::FpgaFaults::kAlways;
        m_rig->boards[1]->setFaults(silent);
        expectMessage("Failed to initialize");
        expectMessage("Transfer Phase Failed");
        FpgaUpdateJob job(m_settings);
        QSignalSpy ended(&job, &FpgaUpdateJob::ended);
        job.start(m_path);
        QTRY_COMPARE(ended.size(), 1);
        QCOMPARE(ended.first().at(0).toBool(), false);
        QCOMPARE(ended.first().at(1).toString(), QString("FPGA update failed (timeout/communication error)."));
    }

    void removedWhileItWaits() {
        Sim::FpgaFaults silent;
        silent.ignoredData = Sim::FpgaFaults::kAlways; // the wait for a data block has no limit
        m_rig->boards[1]->setFaults(silent);
        m_settings.ackTimeoutMs = 60000;
        expectMessage("Transfer Phase Failed");
        auto job = std::make_unique<FpgaUpdateJob>(m_settings);
        QSignalSpy ended(job.get(), &FpgaUpdateJob::ended);
        job->start(m_path);
        QTRY_VERIFY(m_rig->boards[1]->counts().data > 0);
        QElapsedTimer timer;
        timer.start();
        job.reset();
        QVERIFY(timer.elapsed() < 5000);
        QCOMPARE(ended.size(), 0);
    }

    void boardsOfTheChannels_data() {
        QTest::addColumn<int>("channels");
        QTest::addColumn<int>("boards");
        QTest::newRow("none") << 0 << 0;
        QTest::newRow("negative") << -3 << 0;
        QTest::newRow("one") << 1 << 1;
        QTest::newRow("four") << 4 << 4;
        QTest::newRow("more than there are") << 9 << 4;
    }

    void boardsOfTheChannels() {
        QFETCH(int, channels);
        const FpgaUpdateSettings settings = FpgaUpdateSettings::forChannels(channels);
        QTEST(settings.boards.size(), "boards");
        QCOMPARE(settings.port, quint16{7502});
        if (channels > 0)
            QCOMPARE(settings.boards.first(), QHostAddress("192.168.7.1"));
    }

protected:
    void setUp() override {
        QVERIFY(m_dir.isValid());
        m_path = m_dir.filePath("image");
        m_image = testImage(300 * 1024 + 5);
        FpgaTrailer trailer;
        trailer.design = "velda_top";
        writeFile(withFpgaTrailer(m_image, trailer));
        m_rig = std::make_unique<FpgaRig>();
        Sim::FpgaBoardSettings board;
        board.burnMs = 60;
        board.statusMs = 5;
        QVERIFY(m_rig->start(2, board));
        m_settings.boards = m_rig->addresses;
        m_settings.port = m_rig->port;
        m_settings.ackTimeoutMs = 100;
        m_settings.ackPollMs = 5;
        m_settings.burnPollMs = 5;
    }

private:
    void writeFile(const QByteArray& bytes) {
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(bytes), bytes.size());
    }

    QTemporaryDir m_dir;
    QString m_path;
    QByteArray m_image;
    std::unique_ptr<FpgaRig> m_rig;
    FpgaUpdateSettings m_settings;
};

VELDA_TEST_MAIN(QCoreApplication, TestFpgaUpdateJob)
#include "tst_fpga_update_job.moc"
