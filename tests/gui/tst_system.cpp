#include "portable/screens/listcfg.h"
#include "portable/screens/screensystem.h"
#include "portable/screens/system_ops.h"
#include "portable/screens/system_updateentry.h"
#include "portable/widgets/styles/styles.h"
#include "tests/gui/panelfixture.h"
#include "tests/support/testbase.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <cstring>
#include <time.h>

using namespace Kavor::HandheldGui;

namespace {

const QString Disable = "Disable output in saved configuration?";

/// A list of one package, as the update flows will bring theirs.
class OnePackage : public UpdateEntry {
public:
    QTableWidget* makeList(QWidget* parent, PanelHost&) override {
        m_table = new QTableWidget(0, 1, parent);
        m_table->setObjectName("packages");
        return m_table;
    }
    void refresh() override { m_table->setRowCount(m_packages); }
    void install(MANIFEST_DATA&, PanelHost&) override {}
    int m_packages = 0;

private:
    QTableWidget* m_table = nullptr;
};

/// Every value that a configuration brings back differs from the factory's.
void changeEverything(ChannelRecord& r) {
    r.frequency.value = 2.5e9;
    r.power.value = 3.25;
    r.phase.value = 12.5;
    r.modulationEnable = 0x2;
    r.runMode = 0;
    qstrncpy(r.triggerSource, "TIMer", sizeof r.triggerSource);
    qstrncpy(r.triggerEdge, "NEGative", sizeof r.triggerEdge);
    qstrncpy(r.triggerAdvance, "ONCe", sizeof r.triggerAdvance);
    r.triggerCount.value = 7;
    r.triggerDelay.value = 2e-6;
    r.triggerTimer.value = 3e-3;
    qstrncpy(r.referenceOscillator, "100MHz", sizeof r.referenceOscillator);
    r.amRate.value = 2000;
    r.amDepth.value = 30;
    r.fmRate.value = 3000;
    r.fmDeviation.value = 5000;
    r.pmRate.value = 4000;
    r.pmDeviation.value = 90;
    r.pulseFrequency.value = 6000;
    r.pulseWidth.value = 2e-6;
    qstrncpy(r.fmSource, "EXTernal", sizeof r.fmSource);
    r.frswStart.value = 1.1e9;
    r.frswStop.value = 1.9e9;
    r.frswSteps.value = 5;
    r.frswDwell.value = 4e-3;
    qstrncpy(r.frswDirection, "UPDOWN", sizeof r.frswDirection);
    r.prswStart.value = -15;
    r.prswStop.value = -5;
    r.prswSteps.value = 6;
    r.prswDwell.value = 5e-3;
}

/// Where each of those values shows.
const QStringList ValueWidgets{"cwFrequency", "cwPower",      "cwPhase",       "amFrequency",     "amDepth",
                               "fmFrequency", "fmDeviation",  "pmFrequency",   "pmDeviation",     "pulseWidth",
                               "pulseRate",   "trigDelay",    "trigTimer",     "trigCount",       "frswStart",
                               "frswStop",    "frswSteps",    "frswStepTime",  "prswStart",       "prswStop",
                               "prswSteps",   "prswStepTime", "statusRunMode", "statusFrequency", "statusPower"};

} // namespace

/// The system screen on a simulated module: the stored configurations, the reference, the information panel.
class SystemTest : public TestBase {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<PanelFixture> m_panel;
    OnePackage m_update;

    PanelFixture& panel() { return *m_panel; }
    ScriptedDialogs& dialogs() { return panel().dialogs(); }
    QTableWidget& table() { return *panel().widget<QTableWidget>("cfgList"); }
    bool shown(const QString& name) { return panel().widget<QWidget>(name)->isVisible(); }
    QString column(int index) {
        QStringList texts;
        for (int row = 0; row < table().rowCount(); ++row)
            texts << table().item(row, index)->text();
        return texts.join('|');
    }
    void start(PanelFixture::Setup setup = PanelFixture::Setup()) {
        m_panel.reset();
        setup.configurationFolder = cfgList::folder();
        m_panel = std::make_unique<PanelFixture>(setup);
        QVERIFY(panel().press("funcSystem"));
    }
    void file(const QString& name) {
        QVERIFY(QDir().mkpath(cfgList::folder()));
        QFile file(cfgList::folder() + '/' + name);
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    /// Touches the row with that name in the list of configurations.
    bool choose(const QString& name) {
        const QList<QTableWidgetItem*> found = table().findItems(name, Qt::MatchExactly);
        if (found.isEmpty() || !table().isVisible())
            return false;
        QTableWidgetItem* item = found.last(); // the running numbers stand to the left
        table().scrollToItem(item);
        QTest::mouseClick(table().viewport(), Qt::LeftButton, Qt::NoModifier, table().visualItemRect(item).center());
        return true;
    }
    void answer(const QString& question, bool yes) {
        dialogs().expectButton(DialogKind::Question, question, yes ? QMessageBox::Yes : QMessageBox::No);
    }
    void fail(const QByteArray& header) {
        Sim::Fault fault;
        fault.kind = Sim::Fault::Refuse;
        fault.header = header;
        panel().module().addFault(fault);
        allowMessages("\\[SCPI\\] write failed");
    }
    QMap<QString, QString> values() {
        QMap<QString, QString> all;
        for (const QString& name : ValueWidgets)
            all.insert(name, panel().text(name) + ' ' + panel().text(name + "Unit"));
        return all;
    }

protected:
    void setUp() override {
        m_home = std::make_unique<QTemporaryDir>();
        qputenv("VELDA_HOME", QFile::encodeName(m_home->path()));
        m_update.m_packages = 0;
        start();
    }
    void tearDown() override {
        const QStringList problems = m_panel ? dialogs().problems() : QStringList();
        m_panel.reset();
        if (!problems.isEmpty())
            QFAIL(qPrintable(problems.join("; ")));
    }

private slots:
    void bareNames_data() {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("name");
        QTest::newRow("a number") << "preset-12.json"
                                  << "12";
        QTest::newRow("a suffix in capitals stays") << "preset-7.JSON"
                                                    << "7.JSON";
        QTest::newRow("a prefix in capitals stays") << "Preset-7.json"
                                                    << "Preset-7";
        QTest::newRow("a word") << "bench.json"
                                << "bench";
        QTest::newRow("every one goes") << "preset-preset-1.json.json"
                                        << "1";
    }
    void bareNames() {
        QFETCH(QString, file);
        QTEST(cfgList::bareName(file), "name");
    }

    void listOfConfigurations_data() {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("numbers");
        QTest::addColumn<QString>("names");
        QTest::addColumn<QString>("storage");
        QTest::newRow("load") << "sysRecall"
                              << "PRESET TO LOAD"
                              << "1|2|3|4"
                              << "2|10|7.JSON|bench"
                              << "usb/SD|usb/SD|usb/SD|usb/SD";
        QTest::newRow("save") << "sysStore"
                              << "NEW OR EXISTING PRESET"
                              << "+|1|2|3|4"
                              << "Click here to enter file name|2|10|7.JSON|bench"
                              << "system|usb/SD|usb/SD|usb/SD|usb/SD";
        QTest::newRow("delete") << "sysErase"
                                << "SELECT PRESET TO DELETE"
                                << "1|2|3|4"
                                << "2|10|7.JSON|bench"
                                << "usb/SD|usb/SD|usb/SD|usb/SD";
    }
    void listOfConfigurations() {
        for (const char* name :
             {"preset-10.json", "preset-2.json", "preset-7.JSON", "bench.json", "notes.txt", "preset-1\n*RST.json"})
            file(name);
        QVERIFY(QDir(cfgList::folder()).mkdir("preset-5.json"));
        QFETCH(QString, button);
        const QString header = panel().text("header");
        QVERIFY(panel().press(button));
        QCOMPARE(table().horizontalHeaderItem(0)->text(), QString("#"));
        QTEST(table().horizontalHeaderItem(1)->text(), "title");
        QCOMPARE(table().horizontalHeaderItem(2)->text(), QString("STORAGE"));
        QTEST(column(0), "numbers");
        QTEST(column(1), "names");
        QTEST(column(2), "storage");
        QCOMPARE(panel().text("header"), header);
        QVERIFY(panel().press("configurationsBack"));
        QVERIFY(shown("pageSystem") && !shown("pageConfigurations"));
        QCOMPARE(panel().sent(), QStringList());
    }

    /// The finger-sized rows and scroll handle, and a list that is left by any function button.
    void listOfManyConfigurations() {
        for (int i = 1; i <= 40; ++i)
            file(QString("preset-%1.json").arg(i));
        QVERIFY(panel().press("sysRecall"));
        QVERIFY(table().rowHeight(0) >= 68);
        QVERIFY(table().verticalScrollBar()->width() >= 56);
        answer("Recall configuration 33?", false);
        QVERIFY(choose("33"));
        QVERIFY(panel().press("funcSystem"));
        QVERIFY(shown("pageSystem") && !shown("pageConfigurations"));
        QVERIFY(panel().press("sysErase"));
        QVERIFY(panel().press("funcCw"));
        QVERIFY(!shown("pageConfigurations") && !shown("pageSystem"));
    }

    void store_data() {
        QTest::addColumn<bool>("fresh");
        QTest::addColumn<bool>("disableOutput");
        QTest::addColumn<bool>("confirm");
        QTest::addColumn<QStringList>("sent");
        const QString automatic = ":OUTPut:RESTore:MODE AUTO";
        const QString manual = ":OUTPut:RESTore:MODE MANUAL";
        QTest::newRow("new, output comes back") << true << false << true << QStringList{automatic, ":SYST:SET:STOR 12"};
        QTest::newRow("new, output off") << true << true << true << QStringList{manual, ":SYST:SET:STOR 12"};
        QTest::newRow("over an old one") << false << true << true << QStringList{manual, ":SYST:SET:STOR 4"};
        QTest::newRow("declined") << true << true << false << QStringList();
    }
    void store() {
        QFETCH(bool, fresh);
        QFETCH(bool, disableOutput);
        QFETCH(bool, confirm);
        file("preset-4.json");
        QVERIFY(panel().press("sysStore"));
        if (fresh)
            dialogs().expectNumber("Enter numeric recall file name", "12", "keyEnter");
        answer(Disable, disableOutput);
        answer(fresh ? "Store configuration as 12?" : "Store configuration as 4?", confirm);
        QVERIFY(choose(fresh ? cfgList::NewFile : QString("4")));
        QTEST(panel().sent(), "sent");
        QCOMPARE(shown("pageSystem"), confirm); // declined: the list stays
        if (confirm) {
            QVERIFY(panel().press("sysRecall"));
            QCOMPARE(column(1), fresh ? QString("4|12") : QString("4"));
        }
    }

    void storeWithoutAName() {
        QVERIFY(panel().press("sysStore"));
        dialogs().expectKeys("Enter numeric recall file name", {"key3", "keyEsc"});
        QVERIFY(choose(cfgList::NewFile));
        dialogs().expect(DialogKind::Keyboard, QString(), [](QDialog& dialog) {
            QVERIFY(!pressButton(dialog, "keyDot") && !pressButton(dialog, "keySign"));
            dialog.reject();
        });
        QVERIFY(choose(cfgList::NewFile));
        QVERIFY(shown("pageConfigurations"));
        QCOMPARE(panel().sent(), QStringList());
    }

    /// A recall and a preset bring every screen into line with what the module then holds.
    void recallRedrawsEverything() {
        panel().module().modify(0, changeEverything);
        panel().window().refreshFromModule();
        const QMap<QString, QString> changed = values();
        QVERIFY(panel().press("sysStore"));
        dialogs().expectNumber(QString(), "7", "keyEnter");
        answer(Disable, false);
        answer("Store configuration as 7?", true);
        QVERIFY(choose(cfgList::NewFile));
        panel().sent();

        answer("Reset system settings to factory defaults?", true);
        QVERIFY(panel().press("sysPreset"));
        QCOMPARE(panel().sent().value(0), QString(":SYST:SET:REC 0"));
        const QMap<QString, QString> factory = values();
        for (const QString& name : ValueWidgets)
            QVERIFY2(factory[name] != changed[name], qPrintable(name + " did not change: " + factory[name]));
        QVERIFY(!panel().widget<QCheckBox>("enableFM")->isChecked());
        QVERIFY(panel().hasStyle("reference10MHz", PRESSED_WIDGET_BTN_STYLE));
        QVERIFY(panel().hasStyle("runContinuous", PRESSED_WIDGET_BTN_STYLE));

        QVERIFY(panel().press("sysRecall"));
        answer("Recall configuration 7?", true);
        QVERIFY(choose("7"));
        QCOMPARE(panel().sent().value(0), QString(":SYST:SET:REC 7"));
        const QMap<QString, QString> recalled = values();
        for (const QString& name : ValueWidgets)
            QCOMPARE(name + ' ' + recalled[name], name + ' ' + changed[name]);
        QVERIFY(panel().widget<QCheckBox>("enableFM")->isChecked());
        QVERIFY(panel().hasStyle("reference100MHz", PRESSED_WIDGET_BTN_STYLE));
        QVERIFY(panel().hasStyle("runTrigger", PRESSED_WIDGET_BTN_STYLE));
        QVERIFY(panel().hasStyle("slopeNegative", PRESSED_WIDGET_BTN_STYLE));
        QVERIFY(panel().hasStyle("sourceTimer", PRESSED_WIDGET_BTN_STYLE));
        QVERIFY(shown("pageSystem"));
        QCOMPARE(panel().toast(), QString());
    }

    /// Whatever channel is selected, all of them are taken anew, and what ran is forgotten.
    void recallTakesEveryChannel() {
        PanelFixture::Setup setup;
        setup.channels = 3;
        setup.refreshMs = 3600000; // nobody else may take them
        start(setup);
        for (unsigned channel = 0; channel < 3; ++channel)
            panel().module().modify(channel, [](ChannelRecord& r) {
                r.frequency.value = 3.3e9;
                r.amState = 1;
            });
        panel().window().refreshFromModule();
        QCOMPARE(panel().handler().getModulationsState(), 1U);
        QLineEdit focus(&panel().window());
        focus.show();
        QVERIFY(doPreset(&panel().handler(), &focus, 3));
        QTRY_VERIFY(focus.hasFocus());
        QCOMPARE(panel().handler().getModulationsState(), 0U);
        for (unsigned channel = 0; channel < 3; ++channel) {
            QCOMPARE(panel().handler().set_channel(channel), 0);
            QCOMPARE(panel().handler().snapshot().frequency.value, 1e9);
        }
    }

    void erase() {
        file("preset-9.json");
        QVERIFY(panel().press("sysErase"));
        answer("Delete configuration 9?", false);
        QVERIFY(choose("9"));
        QCOMPARE(panel().sent(), QStringList());
        answer("Delete configuration 9?", true);
        QVERIFY(choose("9"));
        QCOMPARE(panel().sent(), QStringList{":SYST:SET:CLE 9"});
        QVERIFY(!QFile::exists(cfgList::folder() + "/preset-9.json"));
        QVERIFY(panel().press("sysErase"));
        QCOMPARE(table().rowCount(), 0);
    }

    void failures_data() {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QStringList>("questions");
        QTest::addColumn<QString>("header");
        QTest::newRow("store") << "sysStore" << QStringList{Disable, "Store configuration as 9?"} << ":SYST:SET:STOR";
        QTest::newRow("recall") << "sysRecall" << QStringList{"Recall configuration 9?"} << ":SYST:SET:REC";
        QTest::newRow("erase") << "sysErase" << QStringList{"Delete configuration 9?"} << ":SYST:SET:CLE";
        QTest::newRow("preset") << "sysPreset" << QStringList{"Reset system settings to factory defaults?"}
                                << ":SYST:SET:REC";
    }
    void failures() {
        QFETCH(QString, button);
        QFETCH(QStringList, questions);
        QFETCH(QString, header);
        file("preset-9.json");
        panel().module().modify(0, changeEverything);
        panel().window().refreshFromModule();
        const QMap<QString, QString> before = values();
        fail(header.toLatin1());
        for (const QString& question : questions)
            answer(question, true);
        QVERIFY(panel().press(button));
        if (button != "sysPreset")
            QVERIFY(choose("9"));
        QCOMPARE(panel().toast(), QString("command send failure"));
        QCOMPARE(values(), before);
        QCOMPARE(shown("pageConfigurations"), button != "sysPreset");
    }

    void presetDeclined() {
        answer("Reset system settings to factory defaults?", false);
        QVERIFY(panel().press("sysPreset"));
        QCOMPARE(panel().sent(), QStringList());
    }

    /// A second tap while the module takes its time starts nothing, and leaving the screen is not undone.
    void tapsWhileAnOperationWaits() {
        Sim::Fault late;
        late.kind = Sim::Fault::Late;
        late.milliseconds = 300;
        panel().module().addFault(late);
        answer("Reset system settings to factory defaults?", true);
        QTimer::singleShot(100, [this] {
            panel().press("sysPreset");
            panel().press("funcAbout");
        });
        QVERIFY(panel().press("sysPreset"));
        panel().module().clearFaults();
        QCOMPARE(panel().sent().filter(":SYST:SET:REC"), QStringList{":SYST:SET:REC 0"});
        QVERIFY(shown("pageAbout") && !shown("pageSystem"));
    }

    void reference_data() {
        QTest::addColumn<QString>("held");
        QTest::addColumn<QString>("button");
        QTest::addColumn<QStringList>("sent");
        const QString ten = ":ROSC:EXT:FREQ 10MHz";
        const QString hundred = ":ROSC:EXT:FREQ 100MHz";
        QTest::newRow("to 100") << "10MHz"
                                << "reference100MHz" << QStringList{hundred};
        QTest::newRow("to 10") << "100MHz"
                               << "reference10MHz" << QStringList{ten};
        QTest::newRow("again") << "10MHz"
                               << "reference10MHz" << QStringList{ten};
        QTest::newRow("from an unknown word") << "13MHz"
                                              << "reference100MHz" << QStringList{ten, hundred};
    }
    void reference() {
        QFETCH(QString, held);
        QFETCH(QString, button);
        panel().module().modify(0, [&held](ChannelRecord& r) {
            qstrncpy(r.referenceOscillator, held.toLatin1(), sizeof r.referenceOscillator);
        });
        panel().window().refreshFromModule();
        QVERIFY(panel().press(button));
        QTEST(panel().sent(), "sent");
        QVERIFY(panel().hasStyle(button, PRESSED_WIDGET_BTN_STYLE));
    }

    void referenceThatTheModuleKeeps() {
        fail(":ROSC");
        QVERIFY(panel().press("reference100MHz"));
        QCOMPARE(panel().toast(), QString("command send failure"));
        QVERIFY(panel().hasStyle("reference10MHz", PRESSED_WIDGET_BTN_STYLE));
    }

    void information_data() {
        QTest::addColumn<double>("temperature");
        QTest::addColumn<QString>("shown");
        QTest::newRow("warm") << 41.26 << "41.3 °C";
        QTest::newRow("cold") << -12.34 << "-12.3 °C";
        QTest::newRow("a little below zero") << -0.04 << "0.0 °C";
        QTest::newRow("no reading") << qQNaN() << "--- °C";
    }
    /// Follows the record by itself, and sends nothing for it.
    void information() {
        QFETCH(double, temperature);
        const QByteArray longest(31, 'W');
        panel().module().modify(0, [&](ChannelRecord& r) {
            r.temperature = temperature;
            qstrncpy(r.model, "<b>KV</b>", sizeof r.model);
            qstrncpy(r.calibrationDate, "2030-01-31", sizeof r.calibrationDate);
            std::memset(r.options, 'W', sizeof r.options); // without its end
            r.batteryProtection = 0;
        });
        QTRY_COMPARE(panel().text("sysCalibration"), QString("2030-01-31"));
        QTEST(panel().text("sysTemperature"), "shown");
        QCOMPARE(panel().text("sysModel"), QString("<b>KV</b>"));
        QCOMPARE(panel().widget<QLabel>("sysModel")->textFormat(), Qt::PlainText);
        QCOMPARE(panel().text("sysOptions").remove(QChar(0x200B)), QString(longest));
        QVERIFY(panel().widget<QLabel>("sysOptions")->heightForWidth(panel().widget<QLabel>("sysOptions")->width()) <=
                panel().widget<QLabel>("sysOptions")->height());
        QCOMPARE(panel().text("sysBatteryProtection"), QString("Battery protection OFF"));
        QCOMPARE(panel().sent(), QStringList());
    }

    void emptyBattery_data() {
        QTest::addColumn<int>("charge");
        QTest::addColumn<int>("current");
        QTest::addColumn<bool>("shown");
        QTest::newRow("empty and discharging") << 0 << -10 << true;
        QTest::newRow("empty and charging") << 0 << 10 << false;
        QTest::newRow("nearly empty") << 1 << -10 << false;
        QTest::newRow("no battery") << -1 << -10 << false;
    }
    void emptyBattery() {
        QFETCH(int, charge);
        QFETCH(int, current);
        QFETCH(bool, shown);
        panel().module().modify(0, [=](ChannelRecord& r) {
            r.batteryCharge = charge;
            r.batteryCurrent = static_cast<std::int16_t>(current);
            r.lowBatteryThreshold = 0;
            r.temperature = 77; // marks the look that has seen all this
        });
        if (charge == 0 && current < 0)
            dialogs().expectButton(DialogKind::Critical, "Warning: Low Battery!!", QMessageBox::Ok);
        QTRY_COMPARE(panel().text("sysTemperature"), QString("77.0 °C"));
        QTRY_COMPARE(panel().widget<QWidget>("sysBatteryEmpty")->isVisible(), shown);
        QCOMPARE(panel().widget<QWidget>("batteryIcon")->isVisible(), charge >= 0);
        if (shown)
            QTRY_COMPARE(dialogs().asked().size(), 1);
    }

    /// Once a second, half a percent of a core is five milliseconds.
    void aLookCostsLittle() {
        PanelFixture::Setup setup;
        setup.refreshMs = 3600000;
        start(setup);
        systemScreen screen(&panel().window(), {STATE_SYSTEM});
        constexpr int Looks = 200;
        const auto cpuMs = [] {
            timespec used{};
            clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
            return static_cast<double>(used.tv_sec) * 1e3 + static_cast<double>(used.tv_nsec) / 1e6;
        };
        const double before = cpuMs();
        for (int i = 0; i < Looks; ++i) {
            panel().module().modify(0, [i](ChannelRecord& r) { r.temperature = 20 + i; });
            screen.updateValues();
        }
        const double each = (cpuMs() - before) / Looks;
        QVERIFY2(each < 5, qPrintable(QString("%1 ms").arg(each)));
        QCOMPARE(panel().sent(), QStringList());
    }

    void updateEntry() {
        QVERIFY(!panel().widget<QWidget>("sysUpdate")->isEnabled()); // nothing to update from
        PanelFixture::Setup setup;
        setup.updateEntry = &m_update;
        start(setup);
        const auto noteIsShown = [this] {
            for (const QLabel* label : panel().widget<QWidget>("pagePackages")->findChildren<QLabel*>()) {
                if (label->text() == "No update package found")
                    return label->isVisible();
            }
            return false;
        };
        QVERIFY(panel().press("sysUpdate"));
        QVERIFY(shown("packages") && noteIsShown());
        QVERIFY(panel().press("packagesBack"));
        m_update.m_packages = 1;
        QVERIFY(panel().press("sysUpdate"));
        QCOMPARE(panel().widget<QTableWidget>("packages")->rowCount(), 1);
        QVERIFY(!noteIsShown());
        panel().window().change_state(STATE_SYSTEM); // as the flows do when they have ended
        QVERIFY(shown("pageSystem") && !shown("packages"));
    }
};

VELDA_TEST_MAIN(QApplication, SystemTest)
#include "tst_system.moc"
