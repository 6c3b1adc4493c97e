#include "portable/screens/system/listcfg.h"
#include "rig/lookrules.h"
#include "tests/gui/paneltest.h"

#include <QApplication>
#include <QDir>
#include <QTableWidget>
#include <QTemporaryDir>
#include <cstdio>

using namespace Kavor::HandheldGui;

/// What people do with the instrument every day, from the CW screen, with the touches that it takes: what is touched is
/// counted on its way to the widget.
class TasksTest : public PanelTest {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_home;
    int m_taps = 0;

    bool eventFilter(QObject* watched, QEvent* event) override {
        const auto* widget = qobject_cast<QWidget*>(watched);
        // What the panel hands on itself is no touch.
        m_taps += widget && event->spontaneous() && event->type() == QEvent::MouseButtonPress &&
                  (LookRules::canBeTouched(*widget) || widget->objectName() == QLatin1String("qt_scrollarea_viewport"));
        return false;
    }

    /// "name" is pressed, "name=number key" entered, "!row" touched in the list of configurations; "?" answers the
    /// question that the next step brings with Yes, "#number" types into its keyboard.
    bool perform(const QString& step) {
        if (step == QLatin1String("?")) {
            panel().dialogs().expectButton(DialogKind::Question, QString(), QMessageBox::Yes);
            return true;
        }
        if (step.startsWith('#')) {
            panel().dialogs().expectNumber(QString(), step.mid(1), "keyEnter");
            return true;
        }
        if (step.contains('=')) {
            const QStringList entry = step.section('=', 1).split(' ');
            return panel().enter(step.section('=', 0, 0), entry[0], entry.value(1, "keyEnter"));
        }
        if (step.startsWith('!')) {
            auto& table = *panel().widget<QTableWidget>("cfgList");
            const QRect cell = table.visualItemRect(table.item(step.mid(1).toInt(), 1));
            const bool isShown = table.isVisible();
            QTest::mouseClick(table.viewport(), Qt::LeftButton, Qt::NoModifier, cell.center());
            return isShown;
        }
        return panel().press(step);
    }

protected:
    void setUp() override {
        m_home = std::make_unique<QTemporaryDir>();
        qputenv("VELDA_HOME", QFile::encodeName(m_home->path()));
        PanelFixture::Setup setup;
        setup.configurationFolder = cfgList::folder();
        start(setup);
        qApp->installEventFilter(this);
    }
    void tearDown() override {
        qApp->removeEventFilter(this);
        PanelTest::tearDown();
        qunsetenv("VELDA_HOME");
    }

private slots:
    void tasks_data() {
        addColumns<QString, QString, int>("steps", "sent", "most");
        addRow("2.4 GHz, -30 dBm, RF on", "cwFrequency=2.4 keyUnit0;cwPower=-30;rfOn",
               ":FREQ 2400000000.000;:POW -30.0000;:OUTP ON", 11);
        addRow("AM of 1 KHz and 30 %", "rfOn;amFrequency=1 keyUnit1;amDepth=30;enableAM;modOn",
               ":OUTP ON;:AM:INT:FREQ 1000.000;:AM:DEPT 30.0;:MODulation:ENABle:MASK 1;:AM:STAT ON", 10);
        addRow(
            "sweep of 1 to 2 GHz in 101 steps of 10 ms",
            "funcSweep;frswStart=1 keyUnit0;frswStop=2 keyUnit0;frswSteps=101;frswStepTime=10 keyUnit2;frswEnable;rfOn;"
            "modOn",
            ":FRSW:STAR 1000000000.000;:FRSW:STOP 2000000000;:FRSW:STEP 101;:FRSW:TIME 0.010000000;:FRSW ON", 19);
        addRow("triggered by a falling edge outside", "funcRunMode;runTrigger;sourceExt;slopeNegative",
               ":INIT:CONT OFF;:TRIG:SOUR EXTernal;:TRIG:EDG NEGative", 4);
        addRow("stored and recalled", "funcSystem;sysStore;#12;?;?;!0;sysRecall;?;!0",
               ":SYST:SET:STOR 12;:SYST:SET:REC 12", 11);
        addRow("+1 MHz ten times", QStringList(QVector<QString>(10, "frequencyStepUp").toList()).join(';'),
               ":FREQ 1010000000.000", 10);
    }
    void tasks() {
        QFETCH(QString, steps);
        QFETCH(QString, sent);
        QFETCH(int, most);
        panel().module().modify(0, [](ChannelRecord& r) { r.frequency.value = 1e9; });
        panel().window().refreshFromModule();
        panel().sent();
        m_taps = 0;
        for (const QString& step : steps.split(';'))
            QVERIFY2(perform(step), qPrintable(step));
        QVERIFY(panel().settle());
        const QStringList received = panel().sent();
        std::printf("%s: %d taps\n", QTest::currentDataTag(), m_taps);
        for (const QString& command : sent.split(';'))
            QVERIFY2(received.contains(command), qPrintable(command + " of " + received.join(';')));
        QVERIFY(m_taps > 0 && m_taps <= most);
    }
};

VELDA_TEST_MAIN(QApplication, TasksTest)
#include "tst_tasks.moc"
