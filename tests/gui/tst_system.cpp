#include "portable/screens/system/listcfg.h"
#include "portable/screens/system/system_ops.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/vkeditors.h"
#include "tests/gui/paneltest.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <cstring>

using namespace Kavor::HandheldGui;

namespace {

const QString Disable = "Disable output in saved configuration?";

/// Every value that a configuration brings back differs from the factory's.
void changeEverything(ChannelRecord& r) {
    const auto word = [](char(&field)[32], const char* text) {
        qstrncpy(field, text, sizeof field);
    };
    r.rfOutput = 1;
    r.modulationEnable = 0x0A;
    r.frequency.value = 2.5e9;
    r.power.value = 3.25;
    r.phase.value = 12.5;
    r.runMode = 0;
    word(r.triggerSource, "TIMer");
    word(r.triggerEdge, "NEGative");
    word(r.triggerAdvance, "STEP");
    r.triggerCount.value = 7;
    r.triggerDelay.value = 2e-6;
    r.triggerTimer.value = 3e-3;
    word(r.referenceOscillator, "100MHz");
    r.amRate.value = 2000;
    r.amDepth.value = 30;
    r.fmRate.value = 3000;
    r.fmDeviation.value = 5000;
    r.pmRate.value = 4000;
    r.pmDeviation.value = 90;
    r.pulseFrequency.value = 6000;
    r.pulseWidth.value = 2e-6;
    for (auto source :
         {&ChannelRecord::amSource, &ChannelRecord::fmSource, &ChannelRecord::pmSource, &ChannelRecord::pulseSource})
        word(r.*source, "EXTernal");
    r.frswStart.value = 1.1e9;
    r.frswStop.value = 1.9e9;
    r.frswSteps.value = 5;
    r.frswDwell.value = 4e-3;
    word(r.frswDirection, "UPDOWN");
    r.prswStart.value = -15;
    r.prswStop.value = -5;
    r.prswSteps.value = 5;
    r.prswDwell.value = 5e-3;
    word(r.prswDirection, "UPDOWN");
}

} // namespace

/// The system screen on a simulated module: the stored configurations, the reference, the information panel.
class SystemTest : public PanelTest {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_home;

    QTableWidget& table() { return *panel().widget<QTableWidget>("cfgList"); }
    bool isShown(const QString& name) { return panel().widget<QWidget>(name)->isVisible(); }
    QString column(int index) {
        QStringList texts;
        for (int row = 0; row < table().rowCount(); ++row)
            texts << table().item(row, index)->text();
        return texts.join('|');
    }
    void open(PanelFixture::Setup setup = PanelFixture::Setup()) {
        setup.configurationFolder = cfgList::folder();
        start(setup);
        QVERIFY(panel().press("funcSystem"));
    }
    void file(const QString& name) {
        QVERIFY(QDir().mkpath(cfgList::folder()));
        QFile file(cfgList::folder() + '/' + name);
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    void hold(const std::function<void(ChannelRecord&)>& change) {
        panel().module().modify(0, change);
        panel().window().refreshFromModule();
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
        panel().dialogs().expectButton(DialogKind::Question, question, yes ? QMessageBox::Yes : QMessageBox::No);
    }
    void refuse(const QByteArray& header) {
        fail(Sim::Fault::Refuse, header);
        allowMessages("\\[SCPI\\] write failed");
    }

protected:
    void setUp() override {
        m_home = std::make_unique<QTemporaryDir>();
        qputenv("VELDA_HOME", QFile::encodeName(m_home->path()));
        open();
    }

private slots:
    void listOfConfigurations_data() {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("title");
        addRow("load", "sysRecall", "PRESET TO LOAD");
        addRow("save", "sysStore", "NEW OR EXISTING PRESET");
        addRow("delete", "sysErase", "SELECT PRESET TO DELETE");
    }
    /// Numbers in their order, then the other names; every ".json" and "preset-" in small letters goes. All are there,
    /// whatever their names; which of them can be used is another matter.
    void listOfConfigurations() {
        for (const char* name : {"preset-10.json", "preset-preset-2.json.json", "preset-7.JSON", "Preset-3.json",
                                 "bench.json", "notes.txt", "preset-1\n*RST.json"})
            file(name);
        QVERIFY(QDir(cfgList::folder()).mkdir("preset-5.json"));
        QFETCH(QString, button);
        const QString header = panel().text("header");
        QVERIFY(panel().press(button));
        const bool offersNew = button == "sysStore";
        QCOMPARE(table().horizontalHeaderItem(0)->text(), QString("#"));
        QTEST(table().horizontalHeaderItem(1)->text(), "title");
        QCOMPARE(table().horizontalHeaderItem(2)->text(), QString("STORAGE"));
        QCOMPARE(column(0), QString(offersNew ? "+|1|2|3|4|5|6" : "1|2|3|4|5|6"));
        QCOMPARE(column(1),
                 (offersNew ? "Click here to enter file name|" : "") + QString("2|10|1 *RST|7.JSON|Preset-3|bench"));
        QCOMPARE(column(2), (offersNew ? "system|" : "") + QString("usb/SD|usb/SD|usb/SD|usb/SD|usb/SD|usb/SD"));
        QCOMPARE(panel().text("header"), header);
        QVERIFY(panel().press("configurationsBack"));
        QVERIFY(isShown("pageSystem") && !isShown("pageConfigurations"));
        QCOMPARE(panel().sent(), QStringList());
    }

    void store_data() {
        QTest::addColumn<bool>("fresh");
        QTest::addColumn<bool>("disableOutput");
        QTest::addColumn<bool>("confirm");
        QTest::addColumn<QStringList>("sent");
        const QString automatic = ":OUTPut:RESTore:MODE AUTO";
        const QString manual = ":OUTPut:RESTore:MODE MANUAL";
        addRow("new, output comes back", true, false, true, QStringList{automatic, ":SYST:SET:STOR 12"});
        addRow("over an old one, output off", false, true, true, QStringList{manual, ":SYST:SET:STOR 4"});
        addRow("declined", true, true, false, QStringList());
    }
    void store() {
        QFETCH(bool, fresh);
        QFETCH(bool, confirm);
        file("preset-4.json");
        QVERIFY(panel().press("sysStore"));
        if (fresh)
            panel().dialogs().expectNumber("Enter numeric recall file name", "12", "keyEnter");
        QFETCH(bool, disableOutput);
        answer(Disable, disableOutput);
        answer(fresh ? "Store configuration as 12?" : "Store configuration as 4?", confirm);
        QVERIFY(choose(fresh ? cfgList::NewFile : QString("4")));
        QTEST(panel().sent(), "sent");
        QCOMPARE(isShown("pageSystem"), confirm); // declined: the list stays
        if (confirm) {
            QVERIFY(panel().press("sysRecall"));
            QCOMPARE(column(1), fresh ? QString("4|12") : QString("4"));
        }
    }

    void names_data() {
        QTest::addColumn<QString>("name"); // of a row, or typed for a new one behind a "+"
        QTest::addColumn<QString>("told"); // or the name that is stored
        const QString letters = "A name is letters, digits, \".\", \"-\" and \"_\" only";
        addRow("leading zeros", "+007", "7");
        addRow("highest", "+99999", "99999");
        addRow("too high", "+100000", "Range 1 to 99999");
        addRow("fifty digits", "+" + QString(50, '1'), "Range 1 to 99999");
        addRow("factory's", "+0", "Range 1 to 99999");
        addRow("of letters", "bench-3_a.b", "bench-3_a.b");
        addRow("factory's file", "0", "Configuration 0 is the factory preset");
        addRow("leading zeros of a file", "007", "A number has no sign, point or leading zero");
        addRow("nothing, negative", "-0", "A number has no sign, point or leading zero");
        addRow("two commands", "1;*RST", letters);
        addRow("line end", "1\n*RST", letters);
        addRow("blank", "a b", letters);
        addRow("none", "", letters);
        addRow("not ASCII", QString("\u00B5"), letters);
    }
    void names() {
        QFETCH(QString, name);
        QFETCH(QString, told);
        const bool fresh = name.startsWith('+');
        if (fresh)
            panel().dialogs().expectNumber(QString(), name.mid(1), "keyEnter");
        else
            file("preset-" + name.toUtf8() + ".json");
        const bool used = !told.contains(' ');
        for (const char* button : {"sysStore", "sysRecall", "sysErase"}) {
            if (fresh && button != QByteArray("sysStore"))
                continue;
            QVERIFY(panel().press(button));
            if (used && button == QByteArray("sysStore")) {
                answer(Disable, false);
                answer("Store configuration as " + told + '?', true);
            } else if (used) {
                answer((button == QByteArray("sysErase") ? "Delete configuration " : "Recall configuration ") + told,
                       true);
            }
            const int row = fresh || button != QByteArray("sysStore") ? 0 : 1;
            QTest::mouseClick(table().viewport(), Qt::LeftButton, Qt::NoModifier,
                              table().visualItemRect(table().item(row, 1)).center());
            const QStringList done{"stored", "recalled", "deleted"};
            if (used)
                QVERIFY(done.contains(panel().toast().section(' ', -1)) && panel().toast().contains(' ' + told + ' '));
            else
                QCOMPARE(panel().toast(), told);
            QCOMPARE(panel().sent().filter(" " + told).isEmpty(), !used);
            if (!used)
                QVERIFY(panel().press("configurationsBack"));
        }
    }

    /// A recall and a preset bring every value on every screen into line with what the module then holds.
    void recallRedrawsEverything() {
        PanelFixture::Setup setup;
        setup.refreshMs = 3600000; // nobody else may redraw
        open(setup);
        panel().module().modify(0, changeEverything);
        QVERIFY(panel().press("sysStore"));
        panel().dialogs().expectNumber(QString(), "7", "keyEnter");
        answer(Disable, false);
        answer("Store configuration as 7?", true);
        QVERIFY(choose(cfgList::NewFile));
        panel().sent();

        QVERIFY(panel().press("sysRecall"));
        answer("Recall configuration 7?", true);
        QVERIFY(choose("7"));
        QCOMPARE(panel().sent().value(0), QString(":SYST:SET:REC 7"));
        QVERIFY(isShown("pageSystem"));
        QCOMPARE(panel().toast(), QString("Configuration 7 recalled"));
        QCOMPARE(panel().disagreements(), QStringList());
        QCOMPARE(panel().text("statusFrequency"), QString("  Frequency: 2.500000000000 GHz"));
        QCOMPARE(panel().text("statusRunMode"), QString("Run Mode: Trigger"));

        answer("Reset system settings to factory defaults?", true);
        QVERIFY(panel().press("sysPreset"));
        QCOMPARE(panel().sent().value(0), QString(":SYST:SET:REC 0"));
        QCOMPARE(panel().disagreements(), QStringList());
    }

    /// Whatever channel is selected, all of them are taken anew, and what ran is forgotten.
    void recallTakesEveryChannel() {
        PanelFixture::Setup setup;
        setup.channels = 3;
        setup.refreshMs = 3600000; // nobody else may take them
        open(setup);
        for (unsigned channel = 0; channel < 3; ++channel)
            panel().module().modify(channel, [](ChannelRecord& r) {
                r.frequency.value = 3.3e9;
                r.amState = 1;
            });
        panel().window().refreshFromModule();
        for (int channel = 1; channel < 3; ++channel)
            QCOMPARE(panel().handler().revert_preset(channel), 0);
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

    void failures_data() {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QStringList>("questions");
        QTest::addColumn<QString>("header");
        addRow("store", "sysStore", QStringList{Disable, "Store configuration as 9?"}, ":SYST:SET:STOR");
        addRow("store's setting", "sysStore", QStringList{Disable, "Store configuration as 9?"},
               ":OUTPut:RESTore:MODE");
        addRow("recall", "sysRecall", QStringList{"Recall configuration 9?"}, ":SYST:SET:REC");
        addRow("erase", "sysErase", QStringList{"Delete configuration 9?"}, ":SYST:SET:CLE");
        addRow("preset", "sysPreset", QStringList{"Reset system settings to factory defaults?"}, ":SYST:SET:REC");
    }
    /// Declined, nothing happens; refused by the module, the user is told and everything stays.
    void failures() {
        QFETCH(QString, button);
        QFETCH(QStringList, questions);
        QFETCH(QString, header);
        file("preset-9.json");
        const bool fromList = button != "sysPreset";
        hold(changeEverything);
        refuse(header.toLatin1());
        if (fromList)
            QVERIFY(panel().press(button));
        for (const bool agreed : {false, true}) {
            for (const QString& question : questions)
                answer(question, agreed);
            QVERIFY(fromList ? choose("9") : panel().press(button));
            const QStringList sent = panel().sent();
            QCOMPARE(sent.filter(header).size(), agreed ? 1 : 0);
            QVERIFY(header.startsWith(":SYST") || sent.filter(":SYST").isEmpty());
            QCOMPARE(panel().toast(), QString(agreed ? "command send failure" : ""));
            QCOMPARE(isShown("pageConfigurations"), fromList);
        }
        QCOMPARE(panel().disagreements(), QStringList());
        QCOMPARE(panel().text("statusFrequency"), QString("  Frequency: 2.500000000000 GHz"));
        QCOMPARE(panel().text("statusRunMode"), QString("Run Mode: Trigger"));
    }

    void reference_data() {
        QTest::addColumn<QString>("held");
        QTest::addColumn<QString>("button");
        QTest::addColumn<QStringList>("sent");
        const QString ten = ":ROSC:EXT:FREQ 10MHz";
        const QString hundred = ":ROSC:EXT:FREQ 100MHz";
        addRow("to 100", "10MHz", "reference100MHz", QStringList{hundred});
        addRow("to 10", "100MHz", "reference10MHz", QStringList{ten});
        addRow("again", "10MHz", "reference10MHz", QStringList{ten});
        addRow("from an unknown word", "13MHz", "reference100MHz", QStringList{ten, hundred});
    }
    void reference() {
        QFETCH(QString, held);
        QFETCH(QString, button);
        hold([&held](ChannelRecord& r) {
            qstrncpy(r.referenceOscillator, held.toLatin1(), sizeof r.referenceOscillator);
        });
        QVERIFY(panel().press(button));
        QTEST(panel().sent(), "sent");
        QVERIFY(panel().hasStyle(button, PRESSED_WIDGET_BTN_STYLE));
        refuse(":ROSC");
        QVERIFY(panel().press(button == "reference10MHz" ? "reference100MHz" : "reference10MHz"));
        QCOMPARE(panel().toast(), QString("command send failure"));
        QVERIFY(panel().hasStyle(button, PRESSED_WIDGET_BTN_STYLE));
    }

    void information_data() {
        QTest::addColumn<double>("temperature");
        QTest::addColumn<QString>("shown");
        addRow("warm", 41.26, "41.3 °C");
        addRow("cold", -12.34, "-12.3 °C");
        addRow("a little below zero", -0.04, "0.0 °C");
        addRow("no reading", qQNaN(), "--- °C");
        addRow("no temperature", -1e300, "--- °C");
    }
    /// Follows the record by itself, and sends nothing for it.
    void information() {
        QFETCH(double, temperature);
        const QByteArray longest(31, 'W');
        panel().module().modify(0, [&](ChannelRecord& r) {
            r.temperature = temperature;
            qstrncpy(r.model, "<b>KV</b>", sizeof r.model);
            qstrncpy(r.serial, "1\n\n2\r\n3", sizeof r.serial);
            qstrncpy(r.calibrationDate, "2030-01-31", sizeof r.calibrationDate);
            std::memset(r.options, 'W', sizeof r.options); // without its end
            r.batteryProtection = 0;
        });
        QTRY_COMPARE(panel().text("sysCalibration"), QString("2030-01-31"));
        QTEST(panel().text("sysTemperature"), "shown");
        QCOMPARE(panel().text("sysModel"), QString("<b>KV</b>"));
        QCOMPARE(panel().text("sysSerial"), QString("1  2  3"));
        QCOMPARE(panel().widget<QLabel>("sysModel")->textFormat(), Qt::PlainText);
        QCOMPARE(panel().text("sysOptions").remove(QChar(0x200B)), QString(longest));
        const auto* options = panel().widget<QLabel>("sysOptions");
        QVERIFY(options->wordWrap() && options->heightForWidth(options->width()) <= options->height());
        QCOMPARE(panel().text("sysBatteryProtection"), QString("Battery protection OFF"));
        QCOMPARE(panel().sent(), QStringList());
    }
};

VELDA_TEST_MAIN(QApplication, SystemTest)
#include "tst_system.moc"
