#include "portable/widgets/ToastOverlay.h"
#include "portable/widgets/actiongate.h"
#include "portable/widgets/combobox.h"
#include "portable/widgets/pendingmark.h"
#include "portable/widgets/styles/styles.h"
#include "tests/gui/paneltest.h"

#include <QApplication>
#include <QCheckBox>
#include <QTimer>

using namespace Kavor::HandheldGui;

/// Taps that come while a command waits: they are done in order, an Off goes next, and nothing that was told as failed
/// or taken back runs afterwards.
class GateTest : public PanelTest {
    Q_OBJECT

    /// Presses the first of "name name@ms ...", the others so many milliseconds later, and waits until all is over.
    bool tap(const QString& taps) {
        QStringList later = taps.split(' ', Qt::SkipEmptyParts);
        const QString first = later.takeFirst();
        int due = later.size();
        for (const QString& item : qAsConst(later)) {
            const QString name = item.section('@', 0, 0);
            QTimer::singleShot(item.section('@', 1).toInt(), this, [this, name, &due] {
                --due;
                panel().press(name);
            });
        }
        const bool pressed = panel().press(first);
        return QTest::qWaitFor([&due] { return due == 0; }) && pressed && panel().settle();
    }

    /// What the module holds as on, in the order of the bits, RF in front.
    QString running() {
        const ChannelRecord r = panel().record();
        const std::pair<const char*, unsigned> states[] = {
            {"RF", r.rfOutput},      {"AM", r.amState},     {"FM", r.fmState},
            {"PM", r.pmState},       {"FRSW", r.frswState}, {"PRSW", r.prswState},
            {"Pulse", r.pulseState}, {"List", r.listState}, {"Pattern", r.patternState}};
        QStringList names;
        for (const auto& [name, state] : states) {
            if (state == 1)
                names << name;
        }
        return names.join(' ');
    }

    bool boxAgrees(const char* name, unsigned bit) {
        const auto* box = panel().widget<QCheckBox>(name);
        return box->isChecked() == ((panel().record().modulationEnable & bit) != 0);
    }

    void startWith(int commandTimeoutMs) {
        PanelFixture::Setup setup;
        setup.commandTimeoutMs = commandTimeoutMs;
        start(setup);
        allowMessages("\\[SCPI\\]");
    }

private slots:
    void scenarios_data() {
        // "before" is pressed before the module becomes slow
        addColumns<unsigned, QString, int>("mask", "before", "late");
        addColumns<QString, QString, QString>("taps", "sent", "running");
        const QString fmAndSweep = ":FM:STAT ON|:OUTP OFF|:FM:STAT OFF";
        for (const int late : {0, 20, 150}) {
            const QByteArray ms = QByteArray::number(late) + " ms, ";
            const auto row = [&](const char* what, unsigned mask, const QString& before, const QString& taps,
                                 const QString& sent, const QString& running) {
                addRow((ms + what).constData(), mask, before, late, taps, sent, running);
            };
            if (late > 0) {
                row("RF Off in a start", 0x0AU, "rfOn", "modOn rfOff@5", fmAndSweep, "");
                row("MOD Off in a start", 0x42U, "rfOn", "modOn modOff@5", ":FM:STAT ON|:FM:STAT OFF", "RF");
                row("Modulate Off in a start", 0x12U, "rfOn", "modOn modulateOff@5", ":FM:STAT ON|:FM:STAT OFF", "RF");
                row("RF Off overtakes MOD Off", 0x22U, "rfOn modOn", "modOff rfOff@5",
                    ":FM:STAT OFF|:OUTP OFF|:PULS:STAT OFF", "");
                row("RF Off passes a held MOD Off", 0x22U, "rfOn modOn", "sourceExternal modOff@5 rfOff@10",
                    ":AM:SOUR EXTernal|:OUTP OFF|:FM:STAT OFF|:PULS:STAT OFF", "");
                row("Off takes a held On back", 2U, "", "rfOn rfOff@5 rfOn@10 rfOff@15", ":OUTP ON|:OUTP OFF", "");
            }
            row("On after Off", 2U, "rfOn modOn", "modOff modOn@5", ":FM:STAT OFF|:FM:STAT ON", "RF FM");
            row("RF on again", 1U, "rfOn modOn", "rfOff rfOn@5", ":OUTP OFF|:AM:STAT OFF|:OUTP ON", "RF");
            row("On, Off, On", 2U, "rfOn", "modOn modOff@5 modOn@10", ":FM:STAT ON|:FM:STAT OFF|:FM:STAT ON", "RF FM");
            row("a box touched while a start is under way", 8U, "rfOn", "modOn frswEnable@5", ":FRSW ON", "RF FRSW");
        }
    }
    void scenarios() {
        QFETCH(unsigned, mask);
        QFETCH(QString, before);
        QFETCH(int, late);
        QFETCH(QString, taps);
        QFETCH(QString, sent);
        panel().module().modify(0, [mask](ChannelRecord& r) { r.modulationEnable = mask; });
        panel().window().refreshFromModule();
        for (const QString& name : before.split(' ', Qt::SkipEmptyParts))
            QVERIFY(tap(name));
        panel().sent();
        if (late > 0)
            fail(Sim::Fault::Late, QByteArray(), late);
        QVERIFY(tap(taps));
        QCOMPARE(panel().sent().join('|'), sent);
        QTEST(running(), "running");
        const bool on = panel().record().rfOutput == 1;
        QVERIFY(panel().hasStyle(on ? "rfOn" : "rfOff", PRESSED_MOD_BTN_STYLE));
        QVERIFY(panel().hasStyle(running().section(' ', 1).isEmpty() ? "modOff" : "modOn", PRESSED_MOD_BTN_STYLE));
        QCOMPARE(panel().widget<QCheckBox>("enableFM")->isEnabled(), running().section(' ', 1).isEmpty());
    }

    /// The Off of the RF output has cut MOD Off short and is refused: the modulations are stopped all the same.
    void refusedOffThatOvertook() {
        startWith(2000);
        panel().module().modify(0, [](ChannelRecord& r) { r.modulationEnable = 0x22; });
        panel().window().refreshFromModule();
        QVERIFY(tap("rfOn") && tap("modOn"));
        fail(Sim::Fault::Late, ":FM:STAT", 100);
        fail(Sim::Fault::Refuse, ":OUTP");
        QVERIFY(tap("modOff rfOff@20"));
        QCOMPARE(running(), QString("RF"));
    }

    /// What was chosen in a unit list while an Off was under way beside it is not lost to the look that follows the
    /// Off.
    void unitChosenBesideAnOff() {
        fail(Sim::Fault::Late, ":OUTP", 100);
        auto* unit = panel().widget<ComboBox>("cwFrequencyUnit");
        unit->showPopup();
        QTimer::singleShot(20, this, [unit] {
            unit->setCurrentIndex(1);
            unit->hidePopup();
        });
        QVERIFY(tap("rfOff"));
        QCOMPARE(panel().sent().join('|'), QString(":OUTP OFF|:FREQ 1000000.000"));
    }

    void offPassesFiveTriggers() {
        QVERIFY(tap("rfOn") && tap("funcRunMode") && tap("runTrigger"));
        panel().sent();
        fail(Sim::Fault::Late, QByteArray(), 60);
        QVERIFY(tap("trigger trigger@5 trigger@10 trigger@15 trigger@20 rfOff@25"));
        QCOMPARE(panel().sent().join('|'), QString("*TRG |:OUTP OFF|*TRG |*TRG |*TRG |*TRG "));
    }

    /// Nobody waits for four time-outs: the first is told, what was asked for meanwhile is not done, an Off is.
    void muteModule() {
        startWith(200);
        QVERIFY(tap("funcRunMode") && tap("runTrigger"));
        panel().sent();
        fail(Sim::Fault::Silent);
        QElapsedTimer time;
        time.start();
        qint64 told = 0;
        connect(&panel().handler(), &EventHandler::timedOut, this, [&] { told = told ? told : time.elapsed(); });
        QVERIFY(tap("sourceBus advanceStep@20 slopeNegative@40 rfOn@60 rfOff@80"));
        QVERIFY2(told >= 150 && told < 1000, qPrintable(QString::number(told)));
        QCOMPARE(panel().sent().join('|'), QString(":TRIG:SOUR BUS|:OUTP OFF"));
        QCOMPARE(panel().text("linkLost"), QString("No answer"));
        QVERIFY(panel().widget<QWidget>("linkLost")->isVisible());
        panel().module().stop(); // nobody there is no answer either
        QVERIFY(tap("sourceBus") && !panel().handler().isAnswering());
        QVERIFY(panel().module().start());
        panel().module().clearFaults();
        QVERIFY(tap("sourceBus"));
        QVERIFY(!panel().widget<QWidget>("linkLost")->isVisible());
    }

    /// RF off, everything runs, nobody answers: the panel's own sequence ends at the first time-out, a user's Off does
    /// not.
    void sequencesOnAMuteModule() {
        startWith(150);
        panel().module().modify(0, [](ChannelRecord& r) {
            r.amState = r.fmState = r.pmState = r.frswState = r.prswState = r.pulseState = r.listState =
                r.patternState = 1;
        });
        panel().window().refreshFromModule();
        fail(Sim::Fault::Silent);
        panel().window().postInit();
        QCOMPARE(panel().sent().size(), 1);
        panel().module().modify(0, [](ChannelRecord& r) { r.rfOutput = 1; });
        panel().window().refreshFromModule();
        QVERIFY(tap("modOff"));
        QCOMPARE(panel().sent().size(), 8);
        QCOMPARE(panel().toast(),
                 QString("Couldn't stop Mode: AM, FM, PM, FRSW, PRSW, Pulse, List, Pattern modulations"));
    }

    /// A start that timed out may be carried out late: the Off that follows stops it although it does not show as on.
    void startThatTimedOutIsStopped() {
        startWith(150);
        QVERIFY(tap("tabFM") && tap("enableFM") && tap("rfOn"));
        fail(Sim::Fault::Silent, ":FM:STAT ON");
        bool locked = false;
        QTimer::singleShot(50, this, [&] { locked = !panel().widget<QWidget>("enableFM")->isEnabled(); });
        QVERIFY(tap("modOn") && locked);
        panel().module().clearFaults();
        panel().sent();
        QVERIFY(tap("modOff"));
        QCOMPARE(panel().sent(), QStringList{":FM:STAT OFF"});
        QVERIFY(tap("modOff"));
        QCOMPARE(panel().sent(), QStringList());
    }

    void enableThatFails_data() {
        QTest::addColumn<int>("fault");
        addRow("refused", int(Sim::Fault::Refuse));
        addRow("not taken", int(Sim::Fault::Keep));
        addRow("timed out", int(Sim::Fault::Silent));
    }
    void enableThatFails() {
        QFETCH(int, fault);
        startWith(150);
        for (const unsigned before : {0U, 1U}) {
            panel().module().modify(0, [before](ChannelRecord& r) { r.modulationEnable = before; });
            QTRY_VERIFY(boxAgrees("enableAM", 1));
            fail(static_cast<Sim::Fault::Kind>(fault));
            for (int again = 0; again < 3; ++again) {
                panel().sent();
                QVERIFY(tap("enableAM"));
                QCOMPARE(panel().sent().size(), 1);
                QCOMPARE(panel().toast(), QString("command send failure"));
                QVERIFY(boxAgrees("enableAM", 1));
                panel().window().toast()->hideImmediate();
            }
            panel().module().clearFaults();
            QVERIFY(tap("enableAM"));
            QCOMPARE(panel().record().modulationEnable, 1U - before);
        }
    }

    void boxOnAndOffMeanwhile() {
        fail(Sim::Fault::Late, QByteArray(), 100);
        QVERIFY(tap("enableAM enableAM@20"));
        QCOMPARE(panel().sent().join('|'), QString(":MODulation:ENABle:MASK 1|:MODulation:ENABle:MASK 0"));
        QCOMPARE(panel().toast(), QString());
        QVERIFY(boxAgrees("enableAM", 1));
    }

    /// Set here, put back by another client before the next look: the screen shows what the module holds.
    void putBackByAnotherClient() {
        QVERIFY(panel().enter("cwPower", "5"));
        panel().module().modify(0, [](ChannelRecord& r) { r.power.value = -10; });
        QTRY_COMPARE(panel().text("cwPower"), QString("-10.00"));
        QVERIFY(tap("enableAM"));
        panel().module().modify(0, [](ChannelRecord& r) { r.modulationEnable = 0; });
        QTRY_VERIFY(boxAgrees("enableAM", 1));
        QVERIFY(tap("funcRunMode") && tap("runTrigger") && tap("slopeNegative"));
        panel().module().modify(0, [](ChannelRecord& r) {
            r.runMode = 1;
            qstrcpy(r.triggerEdge, "POSitive");
        });
        QTRY_VERIFY(panel().hasStyle("slopePositive", PRESSED_WIDGET_BTN_STYLE));
        QTRY_COMPARE(panel().text("statusRunMode"), QString("Run Mode: Continuous"));
        QTRY_VERIFY(!panel().widget<QWidget>("trigger")->isEnabled());
    }

    /// A sweep that ends by itself frees the boxes, its own and the others.
    void sweepThatEnds() {
        QVERIFY(tap("funcSweep") && tap("frswEnable") && tap("rfOn") && tap("modOn"));
        QVERIFY(!panel().widget<QWidget>("frswEnable")->isEnabled());
        QVERIFY(!panel().widget<QWidget>("listEnable")->isEnabled());
        panel().module().modify(0, [](ChannelRecord& r) { r.frswState = 0; });
        QTRY_VERIFY(panel().widget<QWidget>("frswEnable")->isEnabled());
        QVERIFY(panel().widget<QWidget>("listEnable")->isEnabled());
    }

    void recordChangesUnderAnOpenList() {
        PanelFixture::Setup setup;
        setup.refreshMs = 3600000; // the closing of the list alone brings it
        start(setup);
        auto* unit = panel().widget<ComboBox>("cwFrequencyUnit");
        unit->showPopup();
        panel().module().modify(0, [](ChannelRecord& r) { r.frequency.value = 5e6; });
        panel().window().refreshFromModule();
        QCOMPARE(panel().text("cwFrequencyUnit"), QString("GHz")); // not under the finger
        unit->hidePopup();
        QTRY_COMPARE(panel().text("cwFrequency") + panel().text("cwFrequencyUnit"), QString("5.000000000MHz"));
        QCOMPARE(panel().text("statusFrequency"), QString("  Frequency: 5.000000000 MHz"));
        QCOMPARE(panel().sent(), QStringList());
    }

    /// Held actions are for controls that can still be touched when their turn comes.
    void heldActionsOfLostControls_data() {
        addColumns<QString, int>("taps", "sent");
        addRow("its page is left", "sourceExternal sourceInternal@20 funcSweep@40", 1);
        addRow("nothing happens to it", "sourceExternal sourceInternal@20", 2);
        addRow("no more than eight",
               "sourceExternal sourceInternal@5 sourceExternal@10 sourceInternal@15 sourceExternal@20 "
               "sourceInternal@25 sourceExternal@30 sourceInternal@35 sourceExternal@40 sourceInternal@45",
               9);
    }
    void heldActionsOfLostControls() {
        QFETCH(QString, taps);
        fail(Sim::Fault::Late, QByteArray(), 90);
        QVERIFY(tap(taps));
        QTEST(int(panel().sent().size()), "sent");
    }

    /// A second upload during the first would stand behind the first one's box.
    void uploadOnce() {
        QVERIFY(tap("funcList"));
        fail(Sim::Fault::Late, QByteArray(), 100);
        panel().dialogs().expectButton(DialogKind::Information, "Succeeded!", QMessageBox::Ok);
        QVERIFY(tap("listUpload listUpload@20"));
        QCOMPARE(panel().sent().size(), 1);
    }

    /// An upload pauses a running pulse; an Off meanwhile means that it stays off.
    void offDuringAnUpload() {
        panel().module().modify(0, [](ChannelRecord& r) {
            r.rfOutput = r.pulseState = 1;
            r.modulationEnable = 0x20;
        });
        panel().window().refreshFromModule();
        QVERIFY(tap("funcList"));
        fail(Sim::Fault::Late, QByteArray(), 60);
        panel().dialogs().expectButton(DialogKind::Information, "Succeeded!", QMessageBox::Ok);
        QVERIFY(tap("listUpload modOff@20"));
        QCOMPARE(running(), QString("RF"));
        for (const QString& line : panel().sent())
            QVERIFY2(!line.endsWith(" ON"), qPrintable(line));
    }

    /// A keyboard asked for during a wait opens afterwards, a box waits for an open keyboard, and a press beside the
    /// keyboard acts at once.
    void dialogsDoNotNestInWaits() {
        fail(Sim::Fault::Late, QByteArray(), 100);
        panel().dialogs().expect(DialogKind::Keyboard, "CW Power", [this](QDialog& dialog) {
            QVERIFY(!panel().handler().isWaiting());
            QCOMPARE(panel().record().rfOutput, 1U);
            QVERIFY(panel().hasStyle("rfOn", PRESSED_MOD_BTN_STYLE));
            panel().window().reportWhenFree("later");
            ActionGate::panel().ask(
                panel().widget<QWidget>("rfOff"), [this] { panel().window().onRfOffButton(true); },
                ActionGate::Kind::OffAll);
            QCOMPARE(panel().record().rfOutput, 0U);
            QVERIFY(dialog.isVisible());
            dialog.reject();
        });
        panel().dialogs().expectButton(DialogKind::Critical, "later", QMessageBox::Ok);
        QVERIFY(tap("rfOn cwPower@20"));
        QTRY_COMPARE(panel().dialogs().asked().size(), 2);
    }

    /// During a wait nothing on the screen is rewritten from the record; afterwards everything is.
    void lookWaitsForTheCommand() {
        fail(Sim::Fault::Late, QByteArray(), 150);
        QTimer::singleShot(50, this, [this] {
            panel().module().modify(0, [](ChannelRecord& r) { r.power.value = 7; });
            panel().window().refreshFromModule();
            QCOMPARE(panel().text("cwPower"), QString("-10.00"));
        });
        QVERIFY(tap("rfOn"));
        QCOMPARE(panel().text("cwPower"), QString("7.00"));
    }

    void whatTakesLongIsMarked() {
        fail(Sim::Fault::Late, QByteArray(), 600);
        bool early = false;
        QStringList marked;
        const auto marks = [this] {
            return panel().window().findChildren<PendingMark*>();
        };
        QTimer::singleShot(150, this, [&] { early = !marks().isEmpty(); });
        QTimer::singleShot(520, this, [&] {
            for (const PendingMark* mark : marks())
                marked << mark->parentWidget()->objectName();
        });
        QVERIFY(tap("rfOn sourceExternal@50"));
        QVERIFY(!early);
        QCOMPARE(marked, (QStringList{"sourceExternal", "rfOn"}));
        QVERIFY(marks().isEmpty());
    }
};

VELDA_TEST_MAIN(QApplication, GateTest)
#include "tst_gate.moc"
