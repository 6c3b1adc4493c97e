#include "portable/screens/sweep/screensweep.h"
#include "portable/widgets/ToastOverlay.h"
#include "portable/widgets/styles/styles.h"
#include "tests/gui/paneltest.h"

#include <QApplication>
#include <QComboBox>
#include <QTimer>
#include <cmath>

using namespace Kavor::HandheldGui;

/// Both sweep pages on a simulated module: 1 to 2 GHz and -20 to 0 dBm in 11 steps of 1 ms.
class SweepScreenTest : public PanelTest {
    Q_OBJECT

    /// The relations between what is shown and what the module holds.
    void checkRelations(const QString& prefix) {
        const ChannelRecord r = panel().record();
        const bool frequency = prefix == "frsw";
        const double start = frequency ? r.frswStart.value : r.prswStart.value;
        const double stop = frequency ? r.frswStop.value : r.prswStop.value;
        const double steps = frequency ? r.frswSteps.value : r.prswSteps.value;
        const double dwell = frequency ? r.frswDwell.value : r.prswDwell.value;
        const auto shown = [&](const QString& name) {
            const double scale[] = {1e9, 1e6, 1e3, 1};
            const double times[] = {1, 1e3, 1e6};
            const QString editor = prefix + name;
            const auto* unit = panel().widget<QComboBox>(editor + "Unit");
            const double factor = !unit                   ? 1
                                  : name.endsWith("Time") ? times[unit->currentIndex()]
                                                          : scale[unit->currentIndex()];
            return panel().text(editor).toDouble() * factor;
        };
        const double resolution = frequency ? 0.001 : 0.0001;
        QVERIFY(std::abs(shown("Start") - start) < resolution);
        QVERIFY(std::abs(shown("Stop") - stop) < resolution);
        QVERIFY(std::abs(shown("StepSize") - (stop - start) / (steps - 1)) < resolution);
        QCOMPARE(shown("Steps"), steps);
        QVERIFY(std::abs(shown("StepTime") - dwell * 1e9) < 0.01);
        QVERIFY(std::abs(shown("TotalTime") - steps * dwell * 1e9) < 1);
    }

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
        QTest::addColumn<QString>("page");
        QTest::addColumn<bool>("sizeEntered");
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("number");
        QTest::addColumn<QString>("endKey");
        QTest::addColumn<QStringList>("sent");
        QTest::addColumn<QString>("toast");
        const auto row = [](const char* name, const char* page, bool sizeEntered, const char* field, const char* number,
                            const char* endKey, const QStringList& sent, const char* toast = "") {
            addRow(name, page, sizeEntered, field, number, endKey, sent, toast);
        };
        row("start", "frsw", false, "Start", "1.5", "keyUnit0", {":FRSW:STAR 1500000000.000"});
        row("start below the range", "frsw", false, "Start", "1", "keyUnit2", {},
            "Valid Start Frequency  range: 9 KHz to 6 GHz");
        row("start on the stop", "frsw", false, "Start", "2", "keyUnit0", {}, "start equal to stop");
        row("start would move the stop out", "frsw", true, "Start", "5.5", "keyUnit0", {},
            "Valid Stop Frequency  range: 9 KHz to 6 GHz");
        row("stop below the start sweeps down", "frsw", false, "Stop", "500", "keyUnit1", {":FRSW:STOP 500000000"});
        row("one hertz apart", "frsw", false, "Stop", "1000000001", "keyUnit3", {":FRSW:STOP 1000000001"});
        row("stop on the start", "frsw", false, "Stop", "1", "keyUnit0", {}, "Stop equal to start");
        row("step size", "frsw", true, "StepSize", "50", "keyUnit1", {":FRSW:STOP 1500000000"});
        row("steps", "frsw", false, "Steps", "2", "keyEnter", {":FRSW:STEP 2"});
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
        panel().window().toast()->hideImmediate();
        checkRelations(page);
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
        checkRelations("frsw");
    }

    /// The second of two commands fails: what the module kept is shown, and the user is told.
    void halfAnEntryTaken() {
        QVERIFY(panel().press("frswSizeLock"));
        fail(Sim::Fault::Keep, ":FRSW:STOP");
        QVERIFY(panel().enter("frswStart", "1.5", "keyUnit0"));
        QCOMPARE(panel().toast(), QString("command send failure"));
        checkRelations("frsw");
    }

    /// An entry that is asked for while another one is on its way comes after it, from the values that it left.
    void aSecondEntryMeanwhile() {
        QVERIFY(panel().press("frswSizeLock"));
        fail(Sim::Fault::Late, QByteArray(), 300);
        QTimer::singleShot(100, [&] { QVERIFY(panel().press("frswSteps")); });
        panel().dialogs().expectNumber("Start", "1.5", "keyUnit0");
        panel().dialogs().expectNumber("Steps", "6", "keyEnter");
        QVERIFY(panel().press("frswStart") && panel().settle());
        QCOMPARE(panel().toast(), QString());
        QCOMPARE(panel().sent(), (QStringList{":FRSW:STAR 1500000000.000", ":FRSW:STOP 2500000000", ":FRSW:STEP 6",
                                              ":FRSW:STOP 2000000000"}));
        checkRelations("frsw");
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

    void locks() {
        const auto editable = [this](const QString& name) {
            return panel().widget<QWidget>(name)->isEnabled() && panel().hasStyle(name, WIDGET_EDIT_STYLE);
        };
        QVERIFY(editable("frswStop") && !editable("frswStepSize"));
        QVERIFY(panel().press("frswStopLock"));
        QVERIFY(editable("frswStepSize") && !editable("frswStop"));
        QVERIFY(editable("prswStop")); // each page has its own
        QVERIFY(panel().press("frswSizeLock"));
        QVERIFY(editable("frswStop") && !editable("frswStepSize"));
        QCOMPARE(panel().sent(), QStringList());
    }

    void direction() {
        QCOMPARE(sentAfter("frswUpDown"), QStringList{":FRSW:DIR UPDOWN"});
        QVERIFY(panel().hasStyle("frswUpDown", PRESSED_WIDGET_BTN_STYLE));
        fail(Sim::Fault::Keep);
        QVERIFY(panel().press("frswNormal"));
        QCOMPARE(panel().toast(), QString("command send failure"));
        QVERIFY(panel().hasStyle("frswUpDown", PRESSED_WIDGET_BTN_STYLE));
    }

    void runs() {
        QCOMPARE(sentAfter("frswEnable"), QStringList{":MODulation:ENABle:MASK 8"});
        QVERIFY(panel().press("tabPrsw"));
        QVERIFY(panel().press("prswEnable"));
        QCOMPARE(panel().toast(), QString("cannot enable PRSW with FRSW on"));
        QVERIFY(panel().press("rfOn"));
        QCOMPARE(sentAfter("modOn"), QStringList{":FRSW ON"});
        QCOMPARE(panel().text("statusModulation"), QString("Mode: FRSW"));
        QVERIFY(!panel().widget<QWidget>("prswEnable")->isEnabled());
        QCOMPARE(sentAfter("modOff"), QStringList{":FRSW OFF"});
    }
};

VELDA_TEST_MAIN(QApplication, SweepScreenTest)
#include "tst_sweepscreen.moc"
