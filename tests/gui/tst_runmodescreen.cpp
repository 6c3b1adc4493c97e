#include "portable/widgets/ToastOverlay.h"
#include "portable/widgets/styles/styles.h"
#include "tests/gui/paneltest.h"

#include <QApplication>

using namespace Kavor::HandheldGui;

/// Run mode and trigger on a simulated module that runs continuously at first.
class RunModeScreenTest : public PanelTest {
    Q_OBJECT

    bool shown(const QString& name) { return panel().widget<QWidget>(name)->isVisible(); }
    bool pressedLook(const QString& name) { return panel().hasStyle(name, PRESSED_WIDGET_BTN_STYLE); }

protected:
    void setUp() override {
        start();
        panel().module().modify(0, [](ChannelRecord& r) {
            r.triggerCount = {1, 1000000, 1};
            r.triggerDelay = {0, 10, 0};
            r.triggerTimer = {1e-3, 1, 1e-6};
        });
        panel().window().refreshFromModule();
        QVERIFY(panel().press("funcRunMode"));
    }

private slots:
    void runMode() {
        QVERIFY(pressedLook("runContinuous"));
        QVERIFY(!shown("trigDelay"));
        QVERIFY(!panel().widget<QWidget>("trigger")->isEnabled());
        QCOMPARE(sentAfter("runTrigger"), QStringList{":INIT:CONT OFF"});
        QVERIFY(pressedLook("runTrigger") && !pressedLook("runContinuous"));
        QVERIFY(shown("trigDelay"));
        QVERIFY(panel().widget<QWidget>("trigger")->isEnabled());
        QCOMPARE(panel().text("statusRunMode"), QString("Run Mode: Trigger"));
        QCOMPARE(sentAfter("trigger"), QStringList{"*TRG "});
        QCOMPARE(panel().module().data().triggers, 1);
        fail(Sim::Fault::Keep);
        QVERIFY(panel().press("runContinuous"));
        QCOMPARE(panel().toast(), QString("command send failure"));
        QVERIFY(pressedLook("runTrigger"));
        panel().module().clearFaults();
        QCOMPARE(sentAfter("runContinuous"), QStringList{":INIT:CONT ON"});
        QCOMPARE(panel().text("statusRunMode"), QString("Run Mode: Continuous"));
        QVERIFY(!shown("trigDelay"));
    }

    void choices_data() {
        addColumns<QString, QString, QString, bool>("button", "sent", "rowAffected", "rowShown");
        addRow("timer", "sourceTimer", ":TRIG:SOUR TIMer", "trigTimer", true);
        addRow("external", "sourceExt", ":TRIG:SOUR EXTernal", "trigTimer", false);
        addRow("bus", "sourceBus", ":TRIG:SOUR BUS", "trigTimer", false);
        addRow("once", "advanceOnce", ":TRIG:ADV ONCe", "trigCount", true);
        addRow("step", "advanceStep", ":TRIG:ADV STEP", "trigCount", false);
        addRow("positive", "slopePositive", ":TRIG:EDG POSitive", "", false);
        addRow("negative", "slopeNegative", ":TRIG:EDG NEGative", "", false);
    }
    void choices() {
        QFETCH(QString, button);
        QFETCH(QString, sent);
        QFETCH(QString, rowAffected);
        QVERIFY(panel().press("runTrigger"));
        QCOMPARE(sentAfter(button), QStringList{sent});
        QVERIFY(pressedLook(button));
        if (!rowAffected.isEmpty())
            QTEST(shown(rowAffected), "rowShown");
        // One that the module does not take leaves the pressed button as it was.
        fail(Sim::Fault::Keep);
        QVERIFY(panel().press("sourceTimer") && panel().press("advanceOnce") && panel().press("slopeNegative"));
        QCOMPARE(panel().toast(), QString("command send failure"));
        QVERIFY(pressedLook(button));
    }

    void entries_data() {
        addColumns<QString, QString, QString>("editor", "number", "endKey");
        addColumns<QString, QString, QString>("sent", "shown", "toast");
        addRow("delay", "trigDelay", "1.5", "keyUnit1", ":TRIG:DEL 0.0000015000", "1.500", "");
        addRow("delay in the last unit", "trigDelay", "2000", "keyUnit2", ":TRIG:DEL 2.0000000000", "2000.000000", "");
        addRow("delay too long", "trigDelay", "20000", "keyUnit2", "", "20000.000000",
               "Valid Trigger Delay  range: 0 ns to 10 s");
        addRow("timer", "trigTimer", "5", "keyUnit2", ":TRIG:TIM:TIME 0.0050000000", "5.000000", "");
        addRow("timer too short", "trigTimer", "10", "keyUnit0", "", "10",
               "Valid Trigger Timer time  range: 1 µs to 1 s");
        addRow("count is truncated", "trigCount", "2.9", "keyEnter", ":TRIG:COUN 2", "2", "");
        addRow("largest count", "trigCount", "1000000", "keyEnter", ":TRIG:COUN 1000000", "1000000", "");
        addRow("count too large", "trigCount", "1000001", "keyEnter", "", "1", "Range 1 to 1000000");
        addRow("count of nothing", "trigCount", "0", "keyEnter", "", "1", "Range 1 to 1000000");
        addRow("count of minus nothing", "trigCount", "-0", "keyEnter", "", "1", "Range 1 to 1000000");
    }
    void entries() {
        QFETCH(QString, editor);
        QFETCH(QString, number);
        QFETCH(QString, endKey);
        QFETCH(QString, sent);
        QVERIFY(panel().press("runTrigger"));
        QVERIFY(panel().press("sourceTimer"));
        QVERIFY(panel().press("advanceOnce"));
        panel().sent();
        QVERIFY(panel().enter(editor, number, endKey));
        QCOMPARE(panel().sent(), sent.isEmpty() ? QStringList() : QStringList{sent});
        QTEST(panel().text(editor), "shown");
        QTEST(panel().toast(), "toast");
    }

    /// Words of the module in whatever spelling: a source that is neither timer nor bus shows as external.
    void followsTheModule() {
        panel().module().modify(0, [](ChannelRecord& r) {
            r.runMode = 0;
            qstrncpy(r.triggerSource, "KEY", sizeof r.triggerSource);
            qstrncpy(r.triggerAdvance, "STEP", sizeof r.triggerAdvance);
            qstrncpy(r.triggerEdge, "NEGative", sizeof r.triggerEdge);
            r.triggerDelay.value = 3e-6;
        });
        QTRY_VERIFY(pressedLook("runTrigger"));
        QVERIFY(pressedLook("sourceExt") && pressedLook("advanceStep") && pressedLook("slopeNegative"));
        QVERIFY(!shown("trigCount") && !shown("trigTimer"));
        QCOMPARE(panel().text("trigDelay"), QString("3.000"));
        QCOMPARE(panel().text("statusRunMode"), QString("Run Mode: Trigger"));
        QCOMPARE(panel().sent(), QStringList());
    }
};

VELDA_TEST_MAIN(QApplication, RunModeScreenTest)
#include "tst_runmodescreen.moc"
