#include "common/update/signature.h"
#include "platform/devicepaths.h"
#include "portable/update/listfirmware.h"
#include "portable/update/update_dialog.h"
#include "portable/update/update_packages.h"
#include "rig/boardnetwork.h"
#include "rig/lookrules.h"
#include "rig/updatestick.h"
#include "tests/common/update/fpga_rig.h"
#include "tests/gui/paneltest.h"
#include "tests/support/patience.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QLabel>
#include <QSemaphore>
#include <QTimer>
#include <sys/mman.h>

using namespace Kavor::HandheldGui;

namespace {

const QString SoftwareQuestion = "Continue to update Firmware to version 2.1?";
const QString FpgaQuestion = "Continue to update FPGA to version 1.4?";
const QString ModuleQuestion = "Continue to update NMX module to version 5.0?";
const QString NoImage = "FPGA image authentication failed.\n\nThe image may be corrupted, unsigned,\n"
                        "or not intended for this device.";
QByteArray sha256(const QByteArray& bytes) {
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
}

const QString Drop = "home/kavor/upgrade/veldax/";

} // namespace

/// The updates as a user walks them on the screen: list, question, installation, outcome.
class UpdateTest : public PanelTest {
    Q_OBJECT

    std::unique_ptr<UpdateStick> m_stick;
    std::unique_ptr<FpgaRig> m_rig;
    std::unique_ptr<UpdatePackages> m_updates;
    std::unique_ptr<UpdatePackages> m_closing; ///< outlives the window it was made for
    QByteArray m_image;
    QSemaphore m_walked; ///< a slow look has found the manifests
    QSemaphore m_go;     ///< and may read them
    QStringList m_looks; ///< what the rules of the look found in the dialogs

    UpdateStick& stick() { return *m_stick; }
    ScriptedDialogs& dialogs() { return panel().dialogs(); }
    fwList& list() { return *panel().widget<fwList>("fwList"); }

    QString noteShown() {
        const auto* note = panel().widget<QWidget>("pagePackages")->findChild<QLabel*>("listNote");
        return note->isVisible() ? note->text() : QString();
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

    /// A slow stick: each look waits for the test.
    PackageLook slowLook() {
        return [this](const QString& root) {
            const QStringList found = findManifests(root);
            m_walked.release();
            while (!m_go.tryAcquire(1, 1)) {
                if (QThread::currentThread()->isInterruptionRequested())
                    throw std::runtime_error("Error reading fw files: broken off");
            }
            return readPackages(found);
        };
    }

    void startPanel(unsigned channels, const PackageLook& look = packagesBelow) {
        UpdateSettings settings;
        settings.look = look;
        settings.watchMs = 50;
        settings.trust = stick().trustSettings();
        settings.patienceMs = 60000; // a busy machine is no slow stick
        settings.fpga = [port = m_rig->port](int count) {
            FpgaUpdateSettings fpga = FpgaUpdateSettings::forChannels(count);
            if (!BoardNetwork::entered())
                fpga.port = port;
            fpga.ackTimeoutMs = 300 * patience();
            fpga.burnPollMs = 5;
            return fpga;
        };
        m_closing = std::move(m_updates);
        m_updates = std::make_unique<UpdatePackages>(settings);
        PanelFixture::Setup setup;
        setup.channels = channels;
        setup.updateEntry = m_updates.get();
        start(setup);
        m_closing.reset();
    }

protected:
    void setUp() override {
        m_stick = std::make_unique<UpdateStick>();
        m_image = testImage(64 * 1024 + 7);
        m_rig = std::make_unique<FpgaRig>();
        Sim::FpgaBoardSettings board = quickBoard();
        board.burnMs = 400 * patience();
        if (BoardNetwork::entered()) {
            board.port = FpgaUpdateSettings().port;
            QVERIFY(m_rig->start(4, board, DevicePaths::fpgaAddresses()));
        } else {
            qputenv("VELDA_FPGA_ADDRESSES", "127.0.0.2,127.0.0.3,127.0.0.4,127.0.0.5");
            QVERIFY(m_rig->start(4, board));
        }
        m_looks.clear();
        m_walked.acquire(m_walked.available());
        startPanel(4);
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
    void listsWhatIsThere() {
        openList(0);
        QTRY_COMPARE(noteShown(), QString("No update package found"));
        fillStick();
        stick().put("media/tester/4-broken/Manifest", "{");
        openList(4);
        const auto cell = [this](int row, int column) {
            return list().item(row, column)->text();
        };
        QCOMPARE(cell(0, 1) + ' ' + cell(1, 1) + ' ' + cell(2, 1) + cell(3, 1), QString("1.4 5.0 2.1"));
        m_looks << LookRules::violations(panel().window());
        expectFailure("Unknown package type");
        QVERIFY(choose(3));
        QTRY_VERIFY(mainPageIsShown());
        QVERIFY(QDir(stick().at("media")).removeRecursively());
        QVERIFY(panel().press("sysUpdate"));
        QTRY_COMPARE(noteShown(), QString("No update package found")); // nothing of the former look is left
    }

    /// The page goes on meanwhile, and an older look says nothing any more.
    void slowStick() {
        startPanel(1, slowLook());
        fillStick();
        QVERIFY(panel().press("funcSystem") && panel().press("sysUpdate"));
        QTRY_COMPARE(noteShown(), QString("Looking for update packages... 3 s"));
        m_looks << LookRules::violations(panel().window());
        QVERIFY(panel().press("packagesBack") && mainPageIsShown());
        stick().addModule("4-module", "6.0", "newer");
        QVERIFY(panel().press("sysUpdate")); // a newer look, in place of the one that hangs
        QTRY_COMPARE(m_walked.available(), 2);
        m_go.release();
        QTRY_COMPARE(list().rowCount(), 4);
        QCOMPARE(dialogs().asked(), QStringList()); // a look that was broken off is no failure
        startPanel(1);                              // the window goes while it looks
    }

    void stickPulledInTheLook() {
        startPanel(1, slowLook());
        fillStick();
        QVERIFY(panel().press("funcSystem") && panel().press("sysUpdate"));
        QTRY_COMPARE(m_walked.available(), 1);
        QVERIFY(QDir(stick().at("media")).removeRecursively());
        expectFailure("the medium was removed");
        m_go.release();
        QTRY_COMPARE(dialogs().asked().size(), 1);
        QCOMPARE(noteShown(), QString("The media cannot be read"));
    }

    void softwareIsInstalled() {
        stick().addSoftware("s", "2.1",
                            {"file|app|copy|%D/installed", "file|until [ -e %D/go ]; do sleep 0.02; done|action",
                             "file|sudo reboot|action"});
        openList(1);
        answer(SoftwareQuestion);
        bool stayed = false;
        expectProgress("Wait until upgrade process finished", [&](QDialog& dialog) {
            QTest::keyClick(&dialog, Qt::Key_Escape);
            dialog.close();
            stayed = dialog.isVisible() && dialog.findChildren<QAbstractButton*>().isEmpty();
            stick().put("go", QByteArray());
        });
        QVERIFY(choose(0));
        QVERIFY(stayed);
        QCOMPARE(dialogs().asked().size(), 2);
        QCOMPARE(panel().toast(), QString("Firmware 2.1 installed"));
        QCOMPARE(stick().sudoed(), (QStringList{"cp %D/home/tmpfw/patch/app %D/installed", "reboot"}));
        QCOMPARE(stick().contentOf("installed"), QByteArray("the application"));
        QVERIFY(mainPageIsShown() && panel().press("sysUpdate"));
        QCOMPARE(panel().text("historyWhat0") + ": " + panel().text("historyEnd0"), QString("Software 2.1: done"));
    }

    void imageReachesEveryBoard_data() {
        QTest::addColumn<unsigned>("channels");
        addRow("1", 1U);
        addRow("4", 4U);
    }
    void imageReachesEveryBoard() {
        QFETCH(unsigned, channels);
        if (channels != 4)
            startPanel(channels);
        stick().addFpga("f", "1.4", m_image);
        openList(1);
        answer(FpgaQuestion);
        QStringList texts;
        QTimer sampler;
        QElapsedTimer sinceLook;
        qint64 longestMs = 0; // that the event loop stood while the boards were served
        expectProgress("Transferring FPGA image", [&](QDialog& dialog) {
            sinceLook.start();
            const auto look = [&] {
                texts << static_cast<UpdateDialog&>(dialog).text()
                      << "row: " + dialog.findChild<QLabel*>("boardWord1")->text();
                longestMs = qMax(longestMs, sinceLook.restart());
            };
            look();
            connect(&sampler, &QTimer::timeout, &dialog, look);
            connect(&dialog, &QDialog::finished, &dialog, look);
            sampler.start(5);
        });
        expectBox(DialogKind::Information, "FPGA update completed.\nPlease power OFF/ON the device.", QMessageBox::Ok);
        QVERIFY(choose(0));
        for (unsigned i = 0; i < 4; ++i)
            QCOMPARE(m_rig->boards[i]->sha256(), sha256(i < channels ? m_image : QByteArray()));
        for (const char* phase :
             {"Programming FPGA: ", "Verifying FPGA: ", "row: waiting", "row: programming", "row: done"})
            QVERIFY2(!texts.filter(phase).isEmpty(), phase);
        QVERIFY2(longestMs < 500 * patience(), qPrintable(QString::number(longestMs)));
        QCOMPARE(panel().sent(), QStringList());
        QVERIFY(mainPageIsShown());
    }

    void fails_data() {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<QString>("message");
        addRow("archive that is none", "archive", "Upgrade failed. Error code: -4");
        addRow("a board that is silent", "board", "FPGA update failed (timeout/communication error).\nNo answer from ");
        addRow("a spoilt image", "image", NoImage);
    }
    void fails() {
        QFETCH(QString, fault);
        QFETCH(QString, message);
        fillStick();
        if (fault == "archive") {
            stick().spoil("3-software", "FW-2.1.tar.gz", "no archive");
            expectMessage("failed extracting package");
        } else if (fault == "board") {
            Sim::FpgaFaults silent;
            silent.ignoredInits = Sim::FpgaFaults::Always;
            m_rig->boards[3]->setFaults(silent);
            message += DevicePaths::fpgaAddresses().at(3);
            expectMessage("Failed to initialize");
            expectMessage("Transfer Phase Failed");
        } else {
            QByteArray bytes = stick().contentOf("media/tester/1-fpga/1-fpga.img");
            bytes[100] = static_cast<char>(bytes[100] ^ 1);
            stick().spoil("1-fpga", "1-fpga.img", bytes);
        }
        openList(3);
        panel().sent();
        answer(fault == "archive" ? SoftwareQuestion : FpgaQuestion);
        if (fault != "image")
            expectProgress(fault == "board" ? "Transferring FPGA image..." : "Wait until upgrade process finished");
        expectFailure(message);
        QVERIFY(choose(fault == "archive" ? 2 : 0));
        QCOMPARE(m_rig->boards[0]->counts().data, 0);
        QVERIFY(fault == "board" || nothingWasDone());
        QVERIFY(mainPageIsShown());
    }

    void notReady_data() {
        QTest::addColumn<int>("charge");
        QTest::addColumn<int>("current");
        QTest::addColumn<int>("radiates"); ///< a channel, -1 for none
        QTest::addColumn<bool>("goesOn");
        addRow("low battery", 10, -1, 0, false);
        addRow("low, but charging", 3, 1, -1, true);
        addRow("enough", 11, -1, -1, true);
        addRow("RF stays on", 50, -1, 0, false);
        addRow("RF is switched off", 50, -1, 0, true);
        addRow("of another channel", 50, -1, 2, true);
    }
    /// No update with RF on or on a battery that may not live to its end; the user is told what to do.
    void notReady() {
        QFETCH(int, charge);
        QFETCH(int, current);
        QFETCH(int, radiates);
        QFETCH(bool, goesOn);
        panel().module().modify(0, [&](ChannelRecord& r) {
            r.batteryCharge = charge;
            r.batteryCurrent = static_cast<std::int16_t>(current);
            r.lowBatteryThreshold = 0;
        });
        panel().module().modify(qMax(radiates, 0), [&](ChannelRecord& r) { r.rfOutput = radiates >= 0; });
        stick().addModule("m", "5.0", "module software");
        openList(1);
        panel().sent();
        answer(ModuleQuestion);
        if (charge <= 10 && current < 0)
            expectFailure("The battery is at 10 %: connect the charger before an update.");
        else if (radiates >= 0)
            answer(QString("RF output is on: channel %1").arg(radiates + 1), goesOn);
        QVERIFY(choose(0));
        QCOMPARE(QDir(stick().at(Drop)).exists(), goesOn);
        for (int channel = 0; channel < 4; ++channel)
            QCOMPARE(panel().module().record(channel).rfOutput, channel == radiates && !goesOn ? 1U : 0U);
        QCOMPARE(panel().handler().currentChannel(), 0U);
        QCOMPARE(panel().sent().contains(":GUI:UPD:SOFT "), goesOn);
        QCOMPARE(panel().toast(), goesOn ? QString("NMX module 5.0 handed over") : QString());
    }

    void policies_data() {
        addColumns<QString, QString, QString>("policy", "package", "told"); ///< told: empty when it is installed
        const QString notSigned("This package is not signed.");
        addRow("as it should be", QString("require"), QString("ours 7 KV-6000"), QString());
        addRow("unsigned", QString("require"), QString("none"), notSigned);
        addRow("unsigned, warned", QString("warn"), QString("none"), "?" + notSigned);
        addRow("foreign key", QString("require"), QString("theirs 7 KV-6000"), QString("is broken"));
        addRow("older", QString("require"), QString("ours 4 KV-6000"), QString("release 5 is installed"));
        addRow("other model", QString("require"), QString("ours 7 KV-7"), QString("for KV-7 and not for KV-6000"));
        addRow("policy of no meaning", QString("none"), QString("none"), notSigned);
        addRow("other manifest", QString("require"), QString("ours 7 KV-6000 Manifest"), QString("another manifest"));
        addRow("other package", QString("require"), QString("ours 7 KV-6000 3-software.bin"), QString("is damaged"));
    }
    void policies() {
        QFETCH(QString, policy);
        QFETCH(QString, package);
        QFETCH(QString, told);
        const auto ours = Signature::makeKeyPair();
        const auto theirs = Signature::makeKeyPair();
        const QStringList words = package.split(' ');
        stick().trust(ours->publicKey, policy.toUtf8());
        if (words[0] != "none")
            stick().signing = {words[0] == "ours" ? ours->seed : theirs->seed, words[1].toInt(), words[2]};
        MANIFEST_DATA before;
        before.name = "NMX";
        before.version = "4.9";
        before.seal = Seal::Signed;
        before.release = 5;
        QVERIFY(UpdateMemory().note(before, true, "done"));
        stick().addModule("3-software", "5.0", "module software");
        openList(1);
        QCOMPARE(list().item(0, 4)->text(), words[0] == "none"   ? QString("Unsigned")
                                            : words[0] == "ours" ? QString("Signed")
                                                                 : QString("Broken"));
        const QString changed = "media/tester/3-software/" + words.value(3);
        dialogs().expect(DialogKind::Question, ModuleQuestion, [&](QDialog& dialog) {
            if (words.size() > 3) // between the question and its answer
                stick().put(changed, stick().contentOf(changed) + ' ');
            QTest::mouseClick(qobject_cast<QMessageBox*>(&dialog)->button(QMessageBox::Yes), Qt::LeftButton);
        });
        if (told.startsWith('?'))
            answer(told.mid(1));
        else if (!told.isEmpty())
            expectFailure(told);
        QVERIFY(choose(0));
        const bool installed = told.isEmpty() || told.startsWith('?');
        QCOMPARE(QDir(stick().at(Drop)).exists(), installed);
        QCOMPARE(UpdateMemory().installedRelease(PackageType::Module), told.isEmpty() ? 7 : 5);
        QCOMPARE(QDir(stick().at("home/kavor/upgrade")).entryList({".velda*"}, QDir::AllEntries | QDir::Hidden),
                 QStringList());
    }

    /// It comes in, or goes, while the list is open; the row that is chosen stays.
    void stickComesAndGoes() {
        stick().addModule("m", "5.0", "module software");
        stick().addModule("n", "5.1", "module software");
        openList(2);
        list().selectRow(1);
        stick().addModule("a", "4.0", "older");
        QTRY_COMPARE(list().rowCount(), 3);
        QCOMPARE(list().item(list().currentRow(), 1)->text(), QString("5.1"));
        QVERIFY(QDir(stick().package("n")).removeRecursively());
        QTRY_COMPARE(list().rowCount(), 2);
        QCOMPARE(list().currentRow(), 0);
    }

    /// Without records nobody knows how many boards there are.
    void noRegion() {
        stick().addFpga("f", "1.4", m_image);
        openList(1);
        allowMessages("ldshmem|region is gone");
        QCOMPARE(shm_unlink(panel().module().regionName().c_str()), 0);
        answer(FpgaQuestion);
        expectFailure("The number of FPGA boards is not known");
        QVERIFY(choose(0));
        QVERIFY(nothingWasDone());
    }

    void cutOffInstallationIsTold() {
        m_updates->clearUp(panel().window());
        stick().put("home/kavor/upgrade/unfinished", "FW 2.1");
        stick().put("home/kavor/upgrade/.velda-staged-aB3dE6/p", "half a package");
        expectFailure("The installation of FW 2.1 was cut off. Please install it again.");
        m_updates->clearUp(panel().window());
        QTRY_COMPARE(dialogs().asked().size(), 1);
        expectFailure("updates.json cannot be written");
        QVERIFY(QFile::remove(stick().at("home/kavor/upgrade/unfinished")));
        QVERIFY(QDir().mkpath(stick().at("home/kavor/upgrade/updates.json")));
        stick().trust(QByteArray(32, 'k'), "warn");
        m_updates->clearUp(panel().window());
        QTRY_COMPARE(dialogs().asked().size(), 2);
        QVERIFY(QDir().rmdir(stick().at("home/kavor/upgrade/updates.json")));
        QCOMPARE(QDir(stick().at("home/kavor/upgrade")).entryList(QDir::Hidden | QDir::AllDirs | QDir::NoDotAndDotDot),
                 QStringList());
    }

    /// Two packages that differ in their last letters look different.
    void longNamesAreShownWhole() {
        const QString name = QString("handheld-signal-generator-release-candidate-").repeated(2);
        for (const char* end : {"a", "b"}) {
            const QString text = name + end;
            stick().put(QString("media/tester/%1/Manifest").arg(end),
                        QString(R"({"name":"FW","version":"%1","package":"%1"})").arg(text).toUtf8());
        }
        openList(2);
        for (const int column : {1, 3}) {
            QImage rows[2];
            for (const int row : {0, 1}) {
                QCOMPARE(list().item(row, column)->text().remove(QChar(0x200B)), name + (row == 0 ? "a" : "b"));
                QVERIFY(list().rowHeight(row) > 200); // as many lines as it takes
                list().clearSelection();
                rows[row] = list().viewport()->grab(list().visualItemRect(list().item(row, column))).toImage();
            }
            QVERIFY(rows[0] != rows[1]);
        }
        m_looks << LookRules::violations(panel().window());
    }

    void moduleSoftwareIsHandedOver() {
        stick().addModule("m", "5.0", "new module software");
        stick().put(Drop + "m.bin", "a longer old one of the same name");
        QVERIFY(QDir().mkpath(stick().at("home/kavor/upgrade/updates.json")));
        openList(1);
        answer(ModuleQuestion);
        expectFailure("updates.json cannot be written"); // once, and the update goes on
        panel().sent();
        QVERIFY(choose(0));
        QCOMPARE(stick().contentOf(Drop + "m.bin"), QByteArray("new module software"));
        QCOMPARE(QDir(stick().at(Drop)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{"m.bin"});
        QCOMPARE(panel().sent(), QStringList{":GUI:UPD:SOFT "});
        QVERIFY(mainPageIsShown());
    }

    void notInstalled_data() {
        QTest::addColumn<int>("row");
        QTest::addColumn<QString>("question");
        QTest::addColumn<QString>("pulled"); ///< what is told when the stick was pulled before the choice
        const QString notFound = "Upgrade package not found:\n";
        for (const bool pulled : {false, true}) {
            const auto row = [pulled](const char* kind, int number, const QString& question, const QString& message) {
                QTest::addRow("%s, %s", kind, pulled ? "pulled" : "declined")
                    << number << question << (pulled ? message : QString());
            };
            row("FPGA", 0, FpgaQuestion, "Cannot open FPGA image:\n");
            row("module", 1, ModuleQuestion, notFound);
            row("software", 2, SoftwareQuestion, notFound);
        }
    }
    void notInstalled() {
        QFETCH(int, row);
        QFETCH(QString, question);
        QFETCH(QString, pulled);
        fillStick();
        openList(3);
        panel().sent();
        const QString path = stick().package(QStringList{"1-fpga", "2-module", "3-software"}[row]) + '/';
        answer(question, !pulled.isEmpty());
        if (!pulled.isEmpty()) {
            QVERIFY(QDir(stick().at("media")).removeRecursively());
            expectFailure(pulled + path + list().item(row, 3)->text());
        }
        QVERIFY(choose(row));
        QVERIFY(nothingWasDone());
        QVERIFY(mainPageIsShown());
    }

    /// A manifest is a file that anybody can write.
    void textsOfAManifestAreOnlyTexts() {
        const QByteArray version = "<h1>9</h1>" + QByteArray(5000, 'W') + "\\n";
        stick().put("media/tester/x/Manifest", "{\"name\":\"FW\",\"version\":\"" + version + "\",\"package\":\"p\"}");
        openList(1);
        answer("Continue to update Firmware to version <h1>9</h1>WWW");
        expectFailure("Upgrade package not found:\n");
        QVERIFY(choose(0));
    }
};

int main(int argc, char** argv) {
    BoardNetwork::enter(argv);
    QApplication app(argc, argv);
    UpdateTest test;
    return runTest(test, argc, argv);
}

#include "tst_update.moc"
