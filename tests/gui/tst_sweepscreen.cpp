#include "portable/screens/sweep/screensweep.h"
#include "portable/widgets/ToastOverlay.h"
#include "portable/widgets/styles/styles.h"
#include "tests/gui/paneltest.h"

#include <QApplication>

using namespace Kavor::HandheldGui;

/// Both sweep pages on a simulated module: 1 to 2 GHz and -20 to 0 dBm in 11 steps of 1 ms.
class SweepScreenTest : public PanelTest {
    Q_OBJECT

protected:
    void setUp() override {
        start();
        panel().module().modify(0, [](ChannelRecord& r) {
            r.frswStart.value = 1e9;
            r.frswStop.value = 2e9;
            r.frswSteps.value = 11;
            r.frswDwell.value = 1e-3;
            r.prswStart.value = -20;
            r.prswStop.value = 0;
            r.prswSteps.value = 11;
            r.prswDwell.value = 1e-3;
        });
        panel().window().refreshFromModule();
        QVERIFY(panel().press("funcSweep"));
    }

private slots:
    void entries_data() {
        addColumns<QString, bool, QString, QString, QString>("page", "sizeEntered", "field", "number", "endKey");
        addColumns<QStringList, QString>("sent", "toast");
        const auto row = [](const char* name, const char* page, bool sizeEntered, const char* field, const char* number,
                            const char* endKey, const QStringList& sent, const char* toast = "") {
            addRow(name, page, sizeEntered, field, number, endKey, sent, toast);
        };
        row("start", "frsw", false, "Start", "1.5", "keyUnit0", {":FRSW:STAR 1500000000.000"});
        row("start below the range", "frsw", false, "Start", "1", "keyUnit2", {},
            "Valid Start Frequency  range: 9 KHz to 6 GHz");
        row("start on the stop", "frsw", false, "Start", "2", "keyUnit0", {}, "start equal to stop");
        row("stop on the start", "frsw", false, "Stop", "1", "keyUnit0", {}, "Stop equal to start");
        row("step size", "frsw", true, "StepSize", "50", "keyUnit1", {":FRSW:STOP 1500000000"});
        row("steps move the stop", "frsw", true, "Steps", "6", "keyEnter", {":FRSW:STEP 6", ":FRSW:STOP 1500000000"});
        row("total time that does not divide", "frsw", false, "TotalTime", "10", "keyUnit2",
            {":FRSW:TIME 0.000909091"});
        row("power is the CW power", "frsw", false, "Fixed", "-3", "keyEnter", {":POW -3.0000"});

        row("power start", "prsw", false, "Start", "-30", "keyEnter", {":PRSW:STAR -30.00"});
        row("power step time", "prsw", false, "StepTime", "500", "keyUnit1", {":PRSW:TIME 0.000500000"});
        row("frequency is the CW frequency", "prsw", false, "Fixed", "2.4", "keyUnit0", {":FREQ 2400000000.000"});
    }
    void entries() {
        QFETCH(QString, page);
        QFETCH(bool, sizeEntered);
        QFETCH(QString, field);
        QFETCH(QString, number);
        QFETCH(QString, endKey);
        QVERIFY(panel().press(page == "frsw" ? "tabFrsw" : "tabPrsw"));
        if (sizeEntered)
            QVERIFY(panel().press(page + "SizeLock"));
        panel().sent();
        QVERIFY(panel().enter(page + field, number, endKey));
        QTEST(panel().sent(), "sent");
        QTEST(panel().toast(), "toast");
    }

    void stepsRangesAndTotalTime() {
        panel().module().modify(0, [](ChannelRecord& r) {
            r.frswSteps.minimum = 2;
            r.frswSteps.maximum = 1000;
            r.frswTotalTime = {0.1, 1e-6};
        });
        panel().window().refreshFromModule();
        QVERIFY(panel().enter("frswSteps", "1001"));
        QCOMPARE(panel().toast(), QString("Steps Range 2 to 1000"));
        QVERIFY(panel().enter("frswSteps", "101"));
        QCOMPARE(panel().toast(), QString("Valid Total Time  range: 1 µs to 100 ms"));
        QCOMPARE(panel().sent(), QStringList());
        QVERIFY(panel().enter("frswSteps", "100")); // exactly the longest
        QCOMPARE(panel().sent(), QStringList{":FRSW:STEP 100"});
        QCOMPARE(panel().text("frswTotalTime") + panel().text("frswTotalTimeUnit"), QString("100.000000ms"));
    }

    /// The second of two commands fails: what the module kept is shown, and the user is told.
    void halfAnEntryTaken() {
        QVERIFY(panel().press("frswSizeLock"));
        fail(Sim::Fault::Keep, ":FRSW:STOP");
        QVERIFY(panel().enter("frswStart", "1.5", "keyUnit0"));
        QCOMPARE(panel().toast(), QString("command send failure"));
        QCOMPARE(panel().text("frswStop"), QString("2.000000000000"));
        QCOMPARE(panel().text("frswStepSize") + panel().text("frswStepSizeUnit"), QString("50.000000000MHz"));
    }

    /// The step size that was entered stays what the next stop is made of, whatever the wire rounds; nobody else's
    /// change is overlooked.
    void enteredSizeIsKept() {
        QVERIFY(panel().press("tabPrsw") && panel().press("prswSizeLock"));
        QVERIFY(panel().enter("prswStart", "-10") && panel().enter("prswSteps", "3"));
        QVERIFY(panel().enter("prswStepSize", "0.125", "keyUnit0"));
        for (const char* steps : {"12", "2", "101"})
            QVERIFY(panel().enter("prswSteps", steps));
        QCOMPARE(panel().record().prswStop.value, 2.5);
        QCOMPARE(panel().text("prswStepSize"), QString("0.125"));
        panel().sent();
        QVERIFY(panel().enter("prswSteps", "101"));
        QCOMPARE(panel().sent(), QStringList());

        // The start is taken and its stop is not: the size stays.
        fail(Sim::Fault::Keep, ":PRSW:STOP");
        QVERIFY(panel().enter("prswStart", "-9"));
        QCOMPARE(panel().text("prswStepSize"), QString("0.125"));
        panel().module().clearFaults();
        panel().module().modify(0, [](ChannelRecord& r) { r.prswStop.value = 11; });
        QTRY_COMPARE(panel().text("prswStepSize"), QString("0.20"));
        // Nor does it outlive the lock.
        QVERIFY(panel().enter("prswStepSize", "0.125", "keyUnit0") && panel().enter("prswSteps", "12"));
        QCOMPARE(panel().text("prswStepSize"), QString("0.125"));
        QVERIFY(panel().press("prswSizeLock"));
        QTRY_COMPARE(panel().text("prswStepSize"), QString("0.1255"));
    }

    /// A stop that stands refused becomes the calculated one: it shows what the module holds.
    void refusedStopBecomesCalculated() {
        const QString held = panel().text("frswStop");
        QVERIFY(panel().enter("frswStop", "7", "keyUnit0"));
        QVERIFY(panel().text("frswStop") != held);
        QVERIFY(panel().press("frswStopLock"));
        QCOMPARE(panel().text("frswStop"), held);
        QVERIFY(panel().hasStyle("frswStop", WIDGET_NO_EDIT_STYLE_GRAY));
    }

    void stepsDownwards() {
        panel().module().modify(0, [](ChannelRecord& r) {
            r.frswStart.value = 6e9;
            r.frswStop.value = 9000;
            r.frswSteps.value = 2;
        });
        QTRY_COMPARE(panel().text("frswStepSize") + panel().text("frswStepSizeUnit"), QString("-5.999991000000GHz"));
    }

    void direction() {
        QCOMPARE(sentAfter("frswUpDown"), QStringList{":FRSW:DIR UPDOWN"});
        QVERIFY(panel().hasStyle("frswUpDown", PRESSED_WIDGET_BTN_STYLE));
        fail(Sim::Fault::Keep);
        QVERIFY(panel().press("frswNormal"));
        QCOMPARE(panel().toast(), QString("command send failure"));
        QVERIFY(panel().hasStyle("frswUpDown", PRESSED_WIDGET_BTN_STYLE));
    }
};

VELDA_TEST_MAIN(QApplication, SweepScreenTest)
#include "tst_sweepscreen.moc"
