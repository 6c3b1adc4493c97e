#include "portable/screens/listfirmware.h"
#include "portable/screens/screensystem.h"
#include "portable/screens/update_dialog.h"
#include "portable/screens/update_packages.h"
#include "tests/common/update/fpga_rig.h"
#include "tests/gui/lookrules.h"
#include "tests/gui/paneltest.h"
#include "tests/gui/updatestick.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QLabel>
#include <QTimer>

using namespace Kavor::HandheldGui;

namespace {

constexpr int Channels = 4;
const QString SoftwareQuestion = "Continue to update Firmware to version 2.1?";
const QString FpgaQuestion = "Continue to update FPGA to version 1.4?";
const QString ModuleQuestion = "Continue to update NMX module to version 5.0?";
const QString NoImage = "FPGA image authentication failed.\n\nThe image may be corrupted, unsigned,\n"
                        "or not intended for this device.";
const QString Drop = "home/kavor/upgrade/veldax/";

} // namespace

/// The updates as a user walks them on the screen: list, question, installation, outcome.
class UpdateTest : public PanelTest {
    Q_OBJECT

    std::unique_ptr<UpdateStick> m_stick;
    std::unique_ptr<FpgaRig> m_rig;
    std::unique_ptr<UpdatePackages> m_updates;
    QByteArray m_image;
    QStringList m_looks; ///< what the rules of the look found in the dialogs

    UpdateStick& stick() { return *m_stick; }
    ScriptedDialogs& dialogs() { return panel().dialogs(); }
    fwList& list() { return *panel().widget<fwList>("fwList"); }

    QString noteShown() {
        for (const QLabel* label : panel().widget<QWidget>("pagePackages")->findChildren<QLabel*>()) {
            if (label->isVisible() && (label->text().contains("update package")))
                return label->text();
        }
        return QString();
    }
    bool mainPageIsShown() { return panel().widget<QWidget>("pageSystem")->isVisible(); }

    void openList(int packages) {
        QVERIFY(panel().press("funcSystem") && panel().press("sysUpdate"));
        QVERIFY(list().isVisible());
        QTRY_COMPARE(list().rowCount(), packages);
    }
    bool choose(int row) {
        QTableWidgetItem* item = list().item(row, 1);
        if (!item || !list().isVisible())
            return false;
        QTest::mouseClick(list().viewport(), Qt::LeftButton, Qt::NoModifier, list().visualItemRect(item).center());
        return true;
    }
    void expectBox(DialogKind kind, const QString& text, QMessageBox::StandardButton button) {
        dialogs().expect(kind, text, [this, button](QDialog& dialog) {
            m_looks << LookRules::violations(dialog);
            QTest::mouseClick(qobject_cast<QMessageBox*>(&dialog)->button(button), Qt::LeftButton);
        });
    }
    void answer(const QString& question, bool yes = true) {
        expectBox(DialogKind::Question, question, yes ? QMessageBox::Yes : QMessageBox::No);
    }
    void expectFailure(const QString& text) { expectBox(DialogKind::Critical, text, QMessageBox::Ok); }
    void expectProgress(const QString& text, const ScriptedDialogs::Answer& look = {}) {
        dialogs().expect(DialogKind::Progress, text, [this, look](QDialog& dialog) {
            m_looks << LookRules::violations(dialog);
            if (look)
                look(dialog);
        });
    }
    void makeSilent(int board, int Sim::FpgaFaults::*what) {
        Sim::FpgaFaults faults;
        faults.*what = Sim::FpgaFaults::kAlways;
        m_rig->boards[static_cast<std::size_t>(board)]->setFaults(faults);
    }
    /// One of each kind; the list shows them in the order of their folders.
    void fillStick() {
        stick().addFpga("1-fpga", "1.4", m_image);
        stick().addModule("2-module", "5.0", "module software");
        stick().addSoftware("3-software", "2.1", {"file|app|copy|%D/installed"});
    }
    bool nothingWasDone() {
        bool untouched = stick().sudoed().isEmpty() && !QDir(stick().at(Drop)).exists() && panel().sent().isEmpty();
        for (const auto& board : m_rig->boards)
            untouched = untouched && board->counts().inits == 0;
        return untouched;
    }

protected:
    void setUp() override {
        m_stick = std::make_unique<UpdateStick>();
        m_image = testImage(64 * 1024 + 7);
        m_rig = std::make_unique<FpgaRig>();
        Sim::FpgaBoardSettings board;
        board.burnMs = 600;
        board.statusMs = 5;
        QVERIFY(m_rig->start(Channels, board));
        QStringList addresses;
        for (const QHostAddress& address : qAsConst(m_rig->addresses))
            addresses << address.toString();
        qputenv("VELDA_FPGA_ADDRESSES", addresses.join(',').toLatin1());
        UpdateSettings settings;
        settings.patienceMs = 60000; // a busy machine is no slow stick
        settings.fpga = [port = m_rig->port](int channels) {
            FpgaUpdateSettings fpga = FpgaUpdateSettings::forChannels(channels);
            fpga.port = port;
            fpga.ackTimeoutMs = 300;
            fpga.burnPollMs = 5;
            return fpga;
        };
        m_updates = std::make_unique<UpdatePackages>(settings);
        PanelFixture::Setup setup;
        setup.channels = Channels;
        setup.updateEntry = m_updates.get();
        m_looks.clear();
        start(setup);
    }
    void tearDown() override {
        PanelTest::tearDown();
        qunsetenv("VELDA_FPGA_ADDRESSES");
        const QStringList looks = m_looks;
        m_rig.reset();
        m_stick.reset();
        QVERIFY2(looks.isEmpty(), qPrintable(looks.join("\n")));
    }

private slots:
    void emptyStickSaysSo() {
        openList(0);
        QTRY_COMPARE(noteShown(), QString("No update package found"));
        stick().addModule("m", "5.0", "x");
        QVERIFY(panel().press("packagesBack") && panel().press("sysUpdate"));
        QTRY_COMPARE(list().rowCount(), 1);
        QCOMPARE(noteShown(), QString());
        QVERIFY(QDir(stick().package("m")).removeRecursively());
        QVERIFY(panel().press("packagesBack") && panel().press("sysUpdate"));
        QTRY_COMPARE(noteShown(), QString("No update package found")); // nothing of the former look is left
    }

    void listsWhatIsThere() {
        fillStick();
        stick().put("media/tester/4-broken/Manifest", "{");
        openList(4);
        const auto cell = [this](int row, int column) {
            return list().item(row, column)->text();
        };
        for (int row = 0; row < 4; ++row) {
            QCOMPARE(cell(row, 0), QString::number(row + 1));
            QCOMPARE(cell(row, 2), QString("usb/SD"));
            QVERIFY(!(list().item(row, 0)->flags() & Qt::ItemIsEditable) ||
                    list().editTriggers() == QAbstractItemView::NoEditTriggers);
        }
        QCOMPARE(cell(0, 1) + ' ' + cell(1, 1) + ' ' + cell(2, 1) + cell(3, 1), QString("1.4 5.0 2.1"));
        QCOMPARE(cell(1, 3), QString("2-module.bin"));
        QVERIFY(list().item(0, 0)->isSelected());
        m_looks << LookRules::violations(panel().window());
        expectFailure("Unknown package type");
        QVERIFY(choose(3));
        QTRY_VERIFY(mainPageIsShown());
    }

    void aNewLookReplacesTheOneUnderWay() {
        fillStick();
        openList(3);
        for (int i = 0; i < 20; ++i)
            list().update_view(0, "load");
        QCOMPARE(list().rowCount(), 0);
        QTRY_COMPARE(list().rowCount(), 3);
        list().update_view(0, "other");
        QCOMPARE(list().rowCount(), 0);
    }

    void softwareIsInstalled() {
        stick().addSoftware("s", "2.1",
                            {"file|app|copy|%D/installed", "file|until [ -e %D/go ]; do sleep 0.02; done|action",
                             "file|sudo reboot|action"});
        openList(1);
        answer(SoftwareQuestion);
        bool stayed = false;
        bool busy = false;
        expectProgress("Wait until upgrade process finished", [&](QDialog& dialog) {
            QTest::keyClick(&dialog, Qt::Key_Escape);
            QTest::keyClick(&dialog, Qt::Key_Return);
            dialog.close();
            dialog.reject();
            stayed = dialog.isVisible() && dialog.findChildren<QAbstractButton*>().isEmpty();
            auto* bar = dialog.findChild<QWidget*>("updateBusy");
            const QImage first = bar->grab().toImage();
            busy = bar->isVisible() && QTest::qWaitFor([&] { return bar->grab().toImage() != first; }, 5000);
            stick().put("go", QByteArray());
        });
        QVERIFY(choose(0));
        QVERIFY(stayed);
        QVERIFY(busy);
        QCOMPARE(dialogs().asked().size(), 2); // success is not told
        QCOMPARE(stick().sudoed(), (QStringList{"cp %D/home/tmpfw/patch/app %D/installed", "reboot"}));
        QCOMPARE(stick().contentOf("installed"), QByteArray("the application"));
        QVERIFY(mainPageIsShown());
    }

    /// What goes slowly or stands still looks different from what goes on.
    void standingProgressIsTold() {
        FpgaProgressDialog dialog(&panel().window());
        const auto shown = [&dialog](const QString& name) {
            return dialog.findChild<QWidget*>(name)->isVisible();
        };
        dialog.show();
        QVERIFY(shown("updateBusy") && !shown("updateProgress"));
        const auto times = [&dialog] {
            return dialog.findChild<QLabel*>("updateTimes")->text();
        };
        QTRY_COMPARE(times(), QString("0:01"));
        dialog.setProgress(3);
        QVERIFY(!shown("updateBusy") && shown("updateProgress"));
        QTRY_VERIFY_WITH_TIMEOUT(times().contains("No progress for 10 s"), 20000);
        m_looks << LookRules::violations(dialog);
        dialog.setProgress(4);
        QTRY_VERIFY(!times().contains("No progress"));
    }

    void failedInstallationNamesItsCode() {
        stick().addSoftware("s", "2.1", {"file|app|copy|%D/installed"});
        openList(1);
        const QString package = list().item(0, 3)->text();
        stick().put("media/tester/s/" + package, "no archive");
        expectMessage("failed extracting package");
        answer(SoftwareQuestion);
        expectProgress("Wait until upgrade process finished");
        expectFailure("Upgrade failed. Error code: -4");
        QVERIFY(choose(0));
        QCOMPARE(stick().sudoed(), QStringList());
    }

    void imageReachesEveryBoard() {
        stick().addFpga("f", "1.4", m_image);
        openList(1);
        answer(FpgaQuestion);
        QStringList texts;
        QTimer sampler;
        expectProgress("Transferring FPGA image", [&](QDialog& dialog) {
            QTest::keyClick(&dialog, Qt::Key_Escape);
            const auto look = [&texts, &dialog] {
                texts << static_cast<UpdateDialog&>(dialog).text();
            };
            connect(&sampler, &QTimer::timeout, &dialog, look);
            connect(&dialog, &QDialog::finished, &dialog, look);
            sampler.start(5);
        });
        expectBox(DialogKind::Information, "FPGA update completed.\nPlease power OFF/ON the device.", QMessageBox::Ok);
        QVERIFY(choose(0));
        const QByteArray expected = QCryptographicHash::hash(m_image, QCryptographicHash::Sha256).toHex();
        for (const auto& board : m_rig->boards)
            QCOMPARE(board->sha256(), expected);
        QCOMPARE(texts.last(), QString("FPGA update completed: 100%"));
        for (const char* phase : {"Programming FPGA: ", "Verifying FPGA: "})
            QVERIFY2(!texts.filter(phase).isEmpty(), phase);
        QCOMPARE(panel().sent(), QStringList());
        QVERIFY(mainPageIsShown());
    }

    /// A transfer that some other channel's board fails ends for all; the instrument has as many boards as channels.
    void silentBoardEndsInWords() {
        makeSilent(Channels - 1, &Sim::FpgaFaults::ignoredInits);
        stick().addFpga("f", "1.4", m_image);
        openList(1);
        answer(FpgaQuestion);
        expectProgress("Transferring FPGA image...");
        expectFailure("FPGA update failed (timeout/communication error).");
        expectMessage("Failed to initialize");
        expectMessage("Transfer Phase Failed");
        QVERIFY(choose(0));
        QCOMPARE(m_rig->boards[0]->counts().data, 0);
        QVERIFY(mainPageIsShown());
    }

    void spoiltImageIsRefused() {
        stick().addFpga("f", "1.4", m_image);
        const QString image = "media/tester/f/f.img";
        QByteArray bytes = stick().contentOf(image);
        bytes[100] = static_cast<char>(bytes[100] ^ 1);
        stick().put(image, bytes);
        openList(1);
        answer(FpgaQuestion);
        expectFailure(NoImage);
        QVERIFY(choose(0));
        QVERIFY(nothingWasDone());
    }

    void moduleSoftwareIsHandedOver() {
        stick().addModule("m", "5.0", "new module software");
        stick().put(Drop + "m.bin", "a longer old one of the same name");
        openList(1);
        answer(ModuleQuestion);
        panel().sent();
        QVERIFY(choose(0));
        QCOMPARE(stick().contentOf(Drop + "m.bin"), QByteArray("new module software"));
        QCOMPARE(QDir(stick().at(Drop)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{"m.bin"});
        QCOMPARE(panel().sent(), QStringList{":GUI:UPD:SOFT "});
        QVERIFY(mainPageIsShown());
    }

    void moduleHandOverFails_data() {
        QTest::addColumn<QString>("obstacle"); // a file in the way
        QTest::addColumn<bool>("refused");
        QTest::addColumn<QString>("message");
        QTest::newRow("no folder") << "home/kavor/upgrade" << false << "Failed to create upgrade folder:\n%D/" + Drop;
        QTest::newRow("no copy") << Drop + "m.bin/x" << false
                                 << "Failed to copy %D/media/tester/m/m.bin to %D/" + Drop + "m.bin";
        QTest::newRow("refused") << "home/x" << true << "Failed to start NMX upgrade for %D/" + Drop + "m.bin";
    }
    void moduleHandOverFails() {
        QFETCH(QString, obstacle);
        QFETCH(bool, refused);
        QFETCH(QString, message);
        stick().addModule("m", "5.0", "module software");
        stick().put(obstacle, "in the way");
        if (refused)
            fail(Sim::Fault::Refuse, ":GUI:UPD:SOFT");
        allowMessages("\\[SCPI\\] write failed");
        openList(1);
        panel().sent();
        answer(ModuleQuestion);
        expectFailure(message.replace("%D", stick().at(QString())));
        QVERIFY(choose(0));
        QCOMPARE(panel().sent().size(), refused ? 1 : 0);
    }

    void stickPulledBeforeTheChoice_data() {
        QTest::addColumn<int>("row");
        QTest::addColumn<QString>("question");
        QTest::addColumn<QString>("message");
        QTest::newRow("FPGA") << 0 << FpgaQuestion << "Cannot open FPGA image:\n";
        QTest::newRow("module") << 1 << ModuleQuestion << "Upgrade package not found:\n";
        QTest::newRow("software") << 2 << SoftwareQuestion << "Upgrade package not found:\n";
    }
    void stickPulledBeforeTheChoice() {
        QFETCH(int, row);
        QFETCH(QString, question);
        QFETCH(QString, message);
        fillStick();
        openList(3);
        panel().sent();
        const QStringList folders{"1-fpga", "2-module", "3-software"};
        const QString path = stick().package(folders[row]) + '/' + list().item(row, 3)->text();
        QVERIFY(QDir(stick().at("media")).removeRecursively());
        answer(question);
        expectFailure(message + path);
        QVERIFY(choose(row));
        QVERIFY(nothingWasDone());
        QVERIFY(mainPageIsShown());
    }

    void declinedQuestionDoesNothing_data() {
        QTest::addColumn<int>("row");
        QTest::addColumn<QString>("question");
        QTest::newRow("FPGA") << 0 << FpgaQuestion;
        QTest::newRow("module") << 1 << ModuleQuestion;
        QTest::newRow("software") << 2 << SoftwareQuestion;
    }
    void declinedQuestionDoesNothing() {
        QFETCH(int, row);
        QFETCH(QString, question);
        fillStick();
        openList(3);
        panel().sent();
        answer(question, false);
        QVERIFY(choose(row));
        QVERIFY(nothingWasDone());
        QVERIFY(mainPageIsShown());
    }

    void kindOfPackage_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("question");
        QTest::newRow("FW wins over FPGA") << "FPGA-FW" << SoftwareQuestion;
        QTest::newRow("FW wins over NMX") << "NMX-FW" << SoftwareQuestion;
    }
    void kindOfPackage() {
        QFETCH(QString, name);
        QFETCH(QString, question);
        stick().addSoftware("s", "2.1", {}, name);
        openList(1);
        answer(question, false);
        QVERIFY(choose(0));
    }

    /// A manifest is a file that anybody can write.
    void textsOfAManifestAreOnlyTexts() {
        const QString version = "<h1>9</h1>" + QString(5000, 'W') + "\n";
        stick().put("media/tester/x/Manifest", QString("{\"name\":\"FW\",\"version\":\"%1\",\"package\":\"%2\"}")
                                                   .arg(QString(version).replace("\n", "\\n"), QString(200, 'P'))
                                                   .toUtf8());
        openList(1);
        answer("Continue to update Firmware to version <h1>9</h1>WWW");
        expectFailure("Upgrade package not found:\n");
        QVERIFY(choose(0));
        for (const QString& asked : dialogs().asked())
            QVERIFY2(asked.size() < 600, qPrintable(asked));
    }

    void withoutAManifest() {
        systemScreen screen(&panel().window(), {STATE_SYSTEM});
        expectFailure("Upgrade failed to start");
        screen.onMsgLoadFWList(nullptr);
        const QString text = "Upgrade failed to start: no manifest.";
        for (int i = 0; i < 3; ++i)
            expectFailure(text);
        doFWUpdate(nullptr, &panel().window());
        doFpgaUpdate(nullptr, &panel().window(), &panel().handler());
        doNMXUpdate(nullptr, &panel().window(), &panel().handler());
    }

    void progressDisplay_data() {
        QTest::addColumn<int>("phase");
        QTest::addColumn<int>("percent");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("shown");
        QTest::newRow("sent") << 0 << 37 << "Transferring FPGA image: 37%" << 37;
        QTest::newRow("below") << 0 << -3 << "Transferring FPGA image: 0%" << 0;
        QTest::newRow("above") << 0 << 104 << "Transferring FPGA image: 100%" << 100;
        QTest::newRow("programmed") << 1 << 50 << "Programming FPGA: 100%" << 100;
        QTest::newRow("begins to verify") << 1 << 51 << "Verifying FPGA: 2%" << 2;
        QTest::newRow("verified") << 1 << 100 << "Verifying FPGA: 100%" << 100;
        QTest::newRow("verified apart") << 2 << 31 << "Verifying FPGA: 31%" << 65;
        QTest::newRow("done") << 3 << 12 << "FPGA update completed: 100%" << 100;
    }
    void progressDisplay() {
        QFETCH(int, phase);
        QFETCH(int, percent);
        const FpgaProgressDialog::Display display = FpgaProgressDialog::displayOf(phase, percent);
        QTEST(display.text, "text");
        QTEST(display.percent, "shown");
    }
};

VELDA_TEST_MAIN(QApplication, UpdateTest)
#include "tst_update.moc"
