#include "portable/widgets/ToastOverlay.h"
#include "portable/widgets/styles/styles.h"
#include "portable/window/splash.h"
#include "tests/gui/paneltest.h"

#include <QApplication>
#include <QLabel>
#include <QSignalSpy>

using namespace Kavor::HandheldGui;

/// The window around the screens: state machine, battery, boxes, link mark, start.
class MainWindowTest : public PanelTest {
    Q_OBJECT

    MainWindow& window() { return panel().window(); }
    QString picture(const QString& label) { return panel().widget<QLabel>(label)->property("picture").toString(); }
    bool shown(const QString& name) { return panel().widget<QWidget>(name)->isVisible(); }
    QStringList shownPages() {
        QStringList pages;
        for (const QWidget* page : window().contentArea()->findChildren<QWidget*>(QRegularExpression("^page"))) {
            if (page->isVisible())
                pages << page->objectName();
        }
        return pages;
    }

    void battery(int percent, int current, int threshold) {
        panel().module().modify(0, [=](ChannelRecord& r) {
            r.batteryCurrent = static_cast<std::int16_t>(current);
            r.batteryCharge = percent;
            r.lowBatteryThreshold = static_cast<std::uint16_t>(threshold);
        });
        window().refreshFromModule();
        QCoreApplication::processEvents(); // a warning comes from the event loop
    }

protected:
    void setUp() override {
        PanelFixture::Setup setup;
        setup.refreshMs = 3600000; // by hand: refreshFromModule()
        start(setup);
    }

private slots:
    void batteryStates_data() {
        addColumns<int, int, QString, bool>("percent", "current", "icon", "charging");
        addRow("80", 80, -10, ":/Battery4.png", false);
        addRow("11", 11, -10, ":/Battery1.png", false);
        addRow("charging, 10", 10, 10, ":/Battery0.png", true);
        addRow("full, no current", 100, 0, ":/Battery5.png", true);
    }
    void batteryStates() {
        QFETCH(int, percent);
        QFETCH(int, current);
        battery(percent, current, 5);
        QTEST(picture("batteryIcon"), "icon");
        QTEST(shown("chargingIcon"), "charging");
        QCOMPARE(panel().text("batteryPercent"), QString("%1%").arg(percent));
    }

    void lowBatteryWarning() {
        // Percent, current, and the warnings so far: one for each rise over 10, each charging and each fall to 15.
        for (const auto& [percent, current, warnings] : {std::tuple(10, -10, 1),
                                                         {9, -10, 1},
                                                         {11, -10, 1},
                                                         {10, -10, 2},
                                                         {11, -10, 2},
                                                         {12, -10, 3},
                                                         {12, 10, 3},
                                                         {12, -10, 4},
                                                         {16, -10, 4},
                                                         {15, -10, 5},
                                                         {8, -10, 5}}) {
            if (warnings > panel().dialogs().asked().size())
                panel().dialogs().expectButton(DialogKind::Critical, "Warning: Low Battery!!", QMessageBox::Ok);
            battery(percent, current, 15);
            QCOMPARE(panel().dialogs().asked().size(), warnings);
        }
        QCOMPARE(picture("batteryIcon"), QString(":/lowBat.gif"));
    }

    /// What another client has started since the last look is switched off as well.
    void offLooksFirst() {
        for (const QString off : {"modOff", "rfOff"}) {
            panel().module().modify(0, [](ChannelRecord& r) { r.rfOutput = 1; });
            window().refreshFromModule();
            panel().module().modify(0, [](ChannelRecord& r) { r.fmState = 1; });
            QVERIFY(sentAfter(off).contains(":FM:STAT OFF"));
        }
    }

    /// A warning that finds another box open comes after it, and there are never two.
    void boxesOneAfterTheOther() {
        panel().dialogs().expect(DialogKind::Critical, "first", [this](QDialog& dialog) {
            window().reportError("second"); // dropped
            battery(5, -10, 15);            // looked at when the box has gone
            dialog.accept();
        });
        panel().dialogs().expectButton(DialogKind::Critical, "Warning: Low Battery!!", QMessageBox::Ok);
        window().reportError("first");
        window().reportError("");
        QTRY_COMPARE(panel().dialogs().asked().size(), 2);
    }

    void aBoxRaisedBeforeTheWindowIsShownWaits() {
        window().hide();
        window().reportError("kept");
        panel().dialogs().expectButton(DialogKind::Critical, "kept", QMessageBox::Ok);
        window().show();
        QTRY_COMPARE(panel().dialogs().asked(), QStringList{"critical: kept"});
    }

    /// What runs at start shows as running, and what is enabled is started.
    void startsWithWhatTheModuleHolds() {
        panel().module().modify(0, [](ChannelRecord& r) {
            r.rfOutput = 1;
            r.modulationEnable = 0x22;
            r.fmState = 1;
            r.runMode = 0;
        });
        window().refreshFromModule();
        panel().sent();
        window().update_from_config(STATE_NONE);
        QVERIFY(panel().sent().contains(":PULS:STAT ON"));
        QCOMPARE(panel().text("statusModulation"), QString("Mode: FM, Pulse"));
        QCOMPARE(panel().text("statusRunMode"), QString("Run Mode: Trigger"));
        QVERIFY(panel().widget<QWidget>("trigger")->isEnabled());
    }

    void startWithoutAModule() {
        allowMessages("initializarion failure|ldshmem|there is no client");
        PanelFixture::Setup setup;
        setup.startModule = false;
        start(setup);
        QVERIFY(shown("linkLost"));
        QVERIFY(panel().enter("cwPower", "1"));
        QCOMPARE(panel().toast(), QString("command send failure"));
    }

    /// On every screen and uncovered, within a second of being noticed; it goes by itself, and nothing is sent for it.
    void linkMark() {
        allowMessages("\\[SCPI\\]");
        panel().module().stop();
        QTRY_VERIFY(!panel().handler().isLinkUp());
        QTRY_VERIFY_WITH_TIMEOUT(shown("linkLost"), 1000);
        const auto* mark = panel().widget<QWidget>("linkLost");
        for (const char* page : {"funcSweep", "funcList", "funcRunMode", "funcSystem", "funcAbout", "funcCw"}) {
            QVERIFY(panel().press(page));
            QCOMPARE(window().childAt(mark->mapTo(&window(), mark->rect().center())), mark);
        }
        QVERIFY(panel().module().start());
        QTRY_VERIFY(panel().handler().isLinkUp());
        QTRY_VERIFY_WITH_TIMEOUT(!shown("linkLost"), 1000);
        QCOMPARE(panel().sent(), QStringList());
        QVERIFY(panel().enter("cwPower", "2")); // the very next entry works
        QCOMPARE(panel().record().power.value, 2.0);
    }

    void splashEndsAfterOnePass() {
        for (const char* movie : {":/logo.gif", ":/no-such-movie.gif"}) {
            auto* splash = new Splash(movie);
            QSignalSpy ended(splash, &Splash::ended);
            QSignalSpy gone(splash, &QObject::destroyed);
            splash->start();
            QTRY_COMPARE_WITH_TIMEOUT(gone.count(), 1, 20000);
            QCOMPARE(ended.count(), 1);
        }
    }

    void about() {
        panel().module().modify(
            0, [](ChannelRecord& r) { qstrncpy(r.firmwareVersion, "9.8.7/6.54", sizeof r.firmwareVersion); });
        QVERIFY(panel().press("funcAbout"));
        window().refreshFromModule();
        const QStringList names{"aboutModule", "aboutModel", "aboutPanel", "aboutQt"};
        const QStringList shown{"9.8.7/6.54", "KV-6000", VELDA_VERSION, qVersion()};
        for (int i = 0; i < names.size(); ++i)
            QCOMPARE(panel().text(names[i]), shown[i]);
        QVERIFY(QRegularExpression("^\\d{4}-\\d\\d-\\d\\d, \\w+$").match(panel().text("aboutBuild")).hasMatch());
    }

    void toast() {
        ToastOverlay& toast = *window().toast();
        QSignalSpy ended(&toast, &ToastOverlay::messageEnded);
        toast.showMessage("one", 0.05F);
        QTRY_VERIFY(!toast.isVisible());
        QCOMPARE(ended.count(), 1);
        toast.showPersistent("two");
        QVERIFY(panel().press("funcSweep")); // a touch anywhere, and it still means what it meant
        QTRY_VERIFY(!toast.isVisible());
        QCOMPARE(int(window().currentState()), int(STATE_FRSW));
    }
};

VELDA_TEST_MAIN(QApplication, MainWindowTest)
#include "tst_mainwindow.moc"
