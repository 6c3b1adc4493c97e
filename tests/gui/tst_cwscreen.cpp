#include "portable/screens/cw/wdgrfmod.h"
#include "portable/widgets/ToastOverlay.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/vkbutton.h"
#include "tests/gui/paneltest.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QTimer>

using namespace Kavor::HandheldGui;

/// The CW and modulation screen on a simulated module: what reaches the module, what the screen shows.
class CwScreenTest : public PanelTest {
    Q_OBJECT

private slots:
    /// The main job: tap the frequency, 1.5, GHz.
    void frequencyEndToEnd() {
        QVERIFY(panel().enter("cwFrequency", "1.5", "keyUnit0"));
        QCOMPARE(panel().sent(), QStringList{":FREQ 1500000000.000"});
        QCOMPARE(panel().record().frequency.value, 1.5e9);
        QCOMPARE(panel().text("statusFrequency"), QString("  Frequency: 1.500000000000 GHz"));
        QCOMPARE(panel().text("cwFrequency"), QString("1.500000000000"));
        QCOMPARE(panel().text("cwFrequencyUnit"), QString("GHz"));
    }

    void entries_data() {
        addColumns<QString, QString, QString, QString>("tab", "editor", "number", "endKey");
        addColumns<QString, QString, QString, QString>("sent", "shown", "unit", "toast"); // sent empty: nothing may be

        const QString none;
        addRow("frequency normalises", none, "cwFrequency", "1500", "keyUnit1", ":FREQ 1500000000.000",
               "1.500000000000", "GHz", none);
        addRow("frequency to a millihertz", none, "cwFrequency", "100000.0015", "keyUnit2", ":FREQ 100000001.500",
               "100.000001500", "MHz", none);
        addRow("frequency too low", none, "cwFrequency", "1", "keyUnit2", none, "1.000000", "KHz",
               "Valid CW frequency  range: 9 KHz to 6 GHz");
        addRow("power", none, "cwPower", "-7.5", "keyEnter", ":POW -7.5000", "-7.50", none, none);
        addRow("power out of range", none, "cwPower", "90", "keyEnter", none, "-10.00", none,
               "Valid CW Power  range: -60 dBm to 20 dBm");
        addRow("unit key alone", none, "cwFrequency", "", "keyUnit1", ":FREQ 1000000.000", "1.000000000", "MHz", none);
        addRow("taken back", none, "cwFrequency", "7", "keyEsc", none, "1.000000000000", "GHz", none);
        addRow("power in mV", none, "cwPower", "1000", "keyUnit3", ":POW 13.0103", "13.01", none, none);
        addRow("no voltage", none, "cwPower", "0", "keyUnit3", none, "-10.00", none,
               "mV and µV values must be greater than zero");
        addRow("phase", none, "cwPhase", "12.5", "keyEnter", ":PHAS 12.500", "12.500", none, none);
        addRow("AM depth is rounded to the wire", "AM", "amDepth", "30.26", "keyEnter", ":AM:DEPT 30.3", "30.3", none,
               none);
        addRow("AM depth out of range", "AM", "amDepth", "101", "keyEnter", none, "50.0", none, "Range 0% to 100%");
        addRow("FM rate takes whole hertz", "FM", "fmFrequency", "1000.4", "keyUnit2", ":FM:INT:FREQ 1000", "1.000000",
               "KHz", none);
        addRow("FM rate that would become none", "FM", "fmFrequency", "0.4", "keyUnit2", none, "0.000", "Hz",
               "Valid FM Frequency  range: 0.1 Hz to 1 MHz");
        addRow("out of range by digits that do not show", "Pulse", "pulseRate", "5.0000000001", "keyUnit0", none,
               "5.0000000001", "MHz", "Valid Pulse rate  range: 0.1 Hz to 5 MHz");
        addRow("pulse width", "Pulse", "pulseWidth", "1.5", "keyUnit1", ":PULS:WIDT 0.000001500", "1.500", "µs", none);
    }
    void entries() {
        QFETCH(QString, tab);
        QFETCH(QString, editor);
        QFETCH(QString, number);
        QFETCH(QString, endKey);
        QFETCH(QString, sent);
        QFETCH(QString, unit);
        if (!tab.isEmpty())
            QVERIFY(panel().press("tab" + tab));
        const QStringList keys = endKey.split(' ');
        if (keys.size() == 1) {
            QVERIFY(panel().enter(editor, number, endKey));
        } else {
            panel().dialogs().expectKeys(QString(), QStringList{"keyDot"} + keys);
            QVERIFY(panel().press(editor));
        }
        QCOMPARE(panel().sent(), sent.isEmpty() ? QStringList() : QStringList{sent});
        QTEST(panel().text(editor), "shown");
        if (!unit.isEmpty())
            QCOMPARE(panel().text(editor + "Unit"), unit);
        QTEST(panel().toast(), "toast");
    }

    /// Out of range: red beside its message, the module's value when the message has gone, and never sent.
    void refusedEntryGoesBack() {
        const QString before = panel().text("cwFrequency");
        QVERIFY(panel().enter("cwFrequency", "7", "keyUnit0"));
        QCOMPARE(panel().text("cwFrequency"), QString("7.000000000000"));
        QVERIFY(panel().hasStyle("cwFrequency", WIDGET_EDIT_LARGE_STYLE_RED));
        panel().module().modify(0, [](ChannelRecord& r) { r.power.value = -20; });
        QTRY_COMPARE(panel().text("cwPower"), QString("-20.00")); // the refresh leaves the refused entry alone
        QCOMPARE(panel().text("cwFrequency"), QString("7.000000000000"));
        QVERIFY(panel().enter("cwPower", "90")); // another message takes the place of its own
        QCOMPARE(panel().text("cwFrequency"), before);
        QVERIFY(panel().hasStyle("cwFrequency", WIDGET_EDIT_LARGE_STYLE));
        QCOMPARE(panel().sent(), QStringList());
    }

    /// A refused entry is opened again while its message fades: the unit on the keyboard stays the entry's.
    void refusedEntryKeepsItsUnitWhileEdited() {
        QVERIFY(panel().enter("cwFrequency", "8", "keyUnit2")); // 8 KHz is too low
        panel().dialogs().expect(DialogKind::Keyboard, "CW frequency", [this](QDialog& dialog) {
            panel().window().toast()->hideImmediate();
            QVERIFY(pressButton(dialog, "key9"));
            QVERIFY(pressButton(dialog, "keyEnter"));
        });
        QVERIFY(panel().press("cwFrequency"));
        QCOMPARE(panel().sent(), QStringList{":FREQ 9000.000"});
    }

    void unitBoxReadsTheEntryAnew() {
        QVERIFY(panel().enter("cwFrequency", "1.5", "keyUnit0"));
        panel().sent();
        panel().widget<QComboBox>("cwFrequencyUnit")->setCurrentIndex(1);
        QCOMPARE(panel().sent(), QStringList{":FREQ 1500000.000"});
        QCOMPARE(panel().text("statusFrequency"), QString("  Frequency: 1.500000000 MHz"));
    }

    /// The driver reports one press as a touch and as a mouse press: a check box must not go on and off again, and the
    /// second report must not hit the keyboard that the first one opened.
    void onePressReportedTwice() {
        QVERIFY(panel().touch("enableAM"));
        QVERIFY(panel().press("enableAM"));
        QCOMPARE(panel().sent(), QStringList{":MODulation:ENABle:MASK 1"});
        panel().dialogs().expect(DialogKind::Keyboard, "CW Power", [this](QDialog& dialog) {
            const auto* editor = panel().widget<QWidget>("cwPower");
            QPoint place = editor->mapToGlobal(editor->rect().center()) - QPoint(0, 20);
            VKButton* below = nullptr;
            for (int moved = 0; !below && moved < 40; moved += 4, place.ry() += 4)
                below = qobject_cast<VKButton*>(dialog.childAt(dialog.mapFromGlobal(place)));
            QVERIFY(below);
            const QString before = dialog.findChild<QLineEdit*>("keyboardEntry")->text();
            QTest::mouseClick(below, Qt::LeftButton, Qt::NoModifier, below->mapFromGlobal(place));
            QCOMPARE(dialog.findChild<QLineEdit*>("keyboardEntry")->text(), before);
            dialog.reject();
        });
        QVERIFY(panel().touch("cwPower"));
    }

    /// Whatever becomes of the answer, the read-back decides what the user is told and sees.
    void faults_data() {
        addColumns<int, bool>("fault", "taken");
        addRow("refused", int(Sim::Fault::Refuse), false);
        addRow("module keeps another value", int(Sim::Fault::Keep), false);
        addRow("silent", int(Sim::Fault::Silent), false);
        addRow("answer lost", int(Sim::Fault::Lost), true);
        addRow("connection closed mid-reply", int(Sim::Fault::Drop), true);
        addRow("answer in pieces", int(Sim::Fault::Split), true);
        addRow("answered twice", int(Sim::Fault::Double), true);
    }
    void faults() {
        QFETCH(int, fault);
        QFETCH(bool, taken);
        PanelFixture::Setup setup;
        setup.commandTimeoutMs = 200;
        start(setup);
        allowMessages("\\[SCPI\\]");
        const QString shown = taken ? QString("5.00") : panel().text("cwPower");
        fail(static_cast<Sim::Fault::Kind>(fault));
        QVERIFY(panel().enter("cwPower", "5"));
        QCOMPARE(panel().toast(), QString(taken ? "" : "command send failure"));
        QCOMPARE(panel().text("cwPower"), shown);
        QCOMPARE(panel().text("statusPower"), QString("Power: %1 dBm").arg(shown));
        panel().module().clearFaults();
        QVERIFY(panel().enter("cwPower", "6"));
        QCOMPARE(panel().text("cwPower"), QString("6.00"));
    }

    void enableBoxes() {
        QVERIFY(panel().press("enableAM"));
        // FM beside AM is refused before anything is sent; unchecking itself sends the unchanged mask.
        QVERIFY(panel().press("tabFM"));
        QCOMPARE(sentAfter("enableFM"), QStringList());
        QCOMPARE(panel().toast(), QString("cannot enable FM with AM on"));
        QTRY_VERIFY(!panel().widget<QCheckBox>("enableFM")->isChecked());
        QVERIFY(panel().settle());
        QCOMPARE(panel().sent(), QStringList{":MODulation:ENABle:MASK 1"});
    }

    void pulseStartsWithWhatTheScreenShows() {
        QVERIFY(panel().press("rfOn"));
        QVERIFY(panel().press("tabPulse"));
        QVERIFY(panel().press("enablePulse"));
        const QStringList sent = sentAfter("modulateOn");
        QCOMPARE(sent.size(), 3);
        QVERIFY(sent[0].startsWith(":PULS:WIDT "));
        QVERIFY(sent[1].startsWith(":PULS:FREQ "));
        QCOMPARE(sent[2], QString(":PULS:STAT ON"));
    }

    void modulationThatCannotStart() {
        QVERIFY(panel().press("rfOn"));
        QVERIFY(panel().press("modOn"));
        QCOMPARE(panel().toast(), QString("no mudulation enabled"));
        QVERIFY(panel().press("enableAM"));
        fail(Sim::Fault::Refuse, ":AM:STAT");
        expectMessage("\\[SCPI\\] write failed");
        QVERIFY(panel().press("modOn"));
        QCOMPARE(panel().toast(), QString("Couldn't start Mode: AM modulations"));
        QVERIFY(panel().hasStyle("modOff", PRESSED_MOD_BTN_STYLE));
    }

    void source() {
        QCOMPARE(sentAfter("sourceExternal"), QStringList{":AM:SOUR EXTernal"});
        QVERIFY(panel().settle()); // the next look leaves it: the other tabs have sources of their own
        QVERIFY(panel().hasStyle("sourceExternal", PRESSED_WIDGET_BTN_STYLE));
        QVERIFY(!panel().widget<QWidget>("amFrequency")->isEnabled());
        fail(Sim::Fault::Keep);
        QVERIFY(panel().press("sourceInternal"));
        QCOMPARE(panel().toast(), QString("command send failure"));
        QVERIFY(panel().hasStyle("sourceExternal", PRESSED_WIDGET_BTN_STYLE));
    }

    /// Another client, or the module itself, changes something: the screen follows and sends nothing.
    void followsTheModule() {
        panel().module().modify(0, [](ChannelRecord& r) {
            r.frequency.value = 2.4e9;
            r.rfOutput = 1;
            r.modulationEnable = 2;
            r.fmState = 1;
        });
        QTRY_COMPARE(panel().text("cwFrequency"), QString("2.400000000000"));
        QTRY_COMPARE(panel().text("statusModulation"), QString("Mode: FM"));
        QVERIFY(panel().hasStyle("rfOn", PRESSED_MOD_BTN_STYLE));
        QVERIFY(panel().hasStyle("modOn", PRESSED_MOD_BTN_STYLE));
        QVERIFY(panel().widget<QCheckBox>("enableFM")->isChecked());
        QCOMPARE(panel().sent(), QStringList());
    }

    /// What changes while a keyboard is open shows when it is closed, and not in the field under edit before.
    void fieldUnderEdit() {
        const QString before = panel().text("cwFrequency");
        panel().dialogs().expect(DialogKind::Keyboard, "CW frequency", [&](QDialog& dialog) {
            panel().module().modify(0, [](ChannelRecord& r) { r.frequency.value = 2.4e9, r.power.value = 3; });
            panel().window().refreshFromModule();
            QCOMPARE(panel().text("cwFrequency"), before);
            QCOMPARE(panel().text("cwPower"), QString("-10.00")); // nor what stands behind the keyboard
            dialog.reject();
        });
        QVERIFY(panel().press("cwFrequency"));
        QTRY_COMPARE(panel().text("cwFrequency"), QString("2.400000000000"));
        QCOMPARE(panel().sent(), QStringList());
    }

    /// A second box is ticked while the first one's command waits: the module gets both.
    void twoEnablesAtOnce() {
        QVERIFY(panel().press("tabFM"));
        fail(Sim::Fault::Late, ":MOD", 200);
        QTimer::singleShot(50, [this] { QVERIFY(panel().press("tabPulse") && panel().press("enablePulse")); });
        QVERIFY(panel().press("enableFM"));
        QTRY_COMPARE(panel().record().modulationEnable, 0x22U);
        QVERIFY(panel().widget<QCheckBox>("enableFM")->isChecked());
        QVERIFY(panel().widget<QCheckBox>("enablePulse")->isChecked());
        QCOMPARE(panel().toast(), QString());
    }

    /// A modulation that cannot be stopped keeps the boxes locked, so that it stays the one that Off stops.
    void failedOffKeepsTheBoxesLocked() {
        QVERIFY(panel().press("rfOn") && panel().press("enableAM") && panel().press("modOn"));
        fail(Sim::Fault::Refuse, ":AM:STAT");
        expectMessage("\\[SCPI\\] write failed");
        QVERIFY(panel().press("modOff"));
        QCOMPARE(panel().toast(), QString("Couldn't stop Mode: AM modulations"));
        QVERIFY(!panel().widget<QCheckBox>("enableAM")->isEnabled());
        panel().module().clearFaults();
        QVERIFY(panel().press("modOff"));
        QCOMPARE(panel().record().amState, 0U);
    }
};

VELDA_TEST_MAIN(QApplication, CwScreenTest)
#include "tst_cwscreen.moc"
