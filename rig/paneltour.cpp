#include "rig/paneltour.h"

#include "portable/update/update_packages.h"
#include "portable/widgets/ToastOverlay.h"
#include "portable/widgets/boxes.h"
#include "rig/panelfixture.h"
#include "rig/tourguide.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <tuple>

using namespace Kavor::HandheldGui;

namespace {

void cwStops(TourGuide& g) {
    g.start();
    g.shot("cw-rf-off");
    g.press("rfOn");
    g.press("enableAM");
    g.press("modOn");
    g.shot("cw-am-running");
    g.press("modOff");
    g.press("sourceExternal");
    g.shot("cw-am-external");
    for (const char* tab : {"FM", "PM", "Pulse"}) {
        g.press(QString("tab") + tab);
        g.shot(QString("cw-tab-") + QString(tab).toLower());
    }
    g.press("tabFM");
    g.press("enableFM");
    g.shot("cw-conflict");
    g.start();
    g.panel().enter("cwFrequency", "7", "keyUnit0");
    g.shot("cw-out-of-range");
    g.start();
    g.panel().window().setFocus();
    auto* box = g.panel().widget<QComboBox>("cwFrequencyUnit");
    box->showPopup();
    QWidget* list = box->view()->window(); // the offscreen platform squeezes it into a screen 800 pixels wide
    list->move(box->mapToGlobal(QPoint()).x(), list->y());
    g.shot("cw-unit-list", list);
    box->hidePopup();
}

void keyboardStops(TourGuide& g) {
    g.start();
    g.dialogShot("keyboard-frequency", DialogKind::Keyboard, [&g] { g.press("cwFrequency"); });
    g.dialogShot("keyboard-power", DialogKind::Keyboard, [&g] { g.press("cwPower"); });
    g.dialogShot("keyboard-phase", DialogKind::Keyboard, [&g] { g.press("cwPhase"); });
    g.press("tabAM");
    g.dialogShot("keyboard-percent", DialogKind::Keyboard, [&g] { g.press("amDepth"); });
    g.press("tabPulse");
    g.dialogShot("keyboard-time", DialogKind::Keyboard, [&g] { g.press("pulseWidth"); });
    g.press("funcSweep");
    g.dialogShot("keyboard-number", DialogKind::Keyboard, [&g] { g.press("frswSteps"); });
}

void pageStops(TourGuide& g) {
    UpdatePackages updates;
    PanelFixture::Setup setup;
    setup.updateEntry = &updates;
    g.start(setup);
    g.press("funcSystem");
    g.shot("page-system");
    for (const char* page : {"Sweep", "List", "RunMode", "About"}) {
        g.press(QString("func") + page);
        g.shot(QString("page-") + QString(page).toLower());
    }
    g.press("funcCw");
    g.press("tabPattern");
    g.shot("page-pattern");
    g.press("funcRunMode");
    g.press("runTrigger");
    g.shot("runmode-trigger");
    g.press("sourceTimer");
    g.press("advanceStep");
    g.press("slopeNegative");
    g.shot("runmode-timer");
    g.press("funcSweep");
    g.press("tabPrsw");
    g.shot("sweep-power");
    g.press("rfOn");
    g.pressedShot("prswEnable");
    g.press("prswEnable");
    g.press("modOn");
    g.shot("sweep-power-running");
    for (const char* name : {"rfOff", "modOn", "funcList", "prswExport", "tabFrsw"})
        g.pressedShot(name);
}

/// A folder of saved configurations and a network with long names.
void systemStops(TourGuide& g) {
    const QTemporaryDir netClass;
    qputenv("VELDA_NET_CLASS", QFile::encodeName(netClass.path()));
    PanelFixture::Setup setup;
    setup.readNetwork = [] {
        NetworkFacts facts;
        facts.hostName = "velda-handheld-signal-generator-000101-laboratory-3-bench-twelve";
        facts.interfaces = {{false, "00:1B:44:11:3A:B7", {{"192.168.100.150", "255.255.255.0"}}, "eth0", true}};
        return facts;
    };
    g.start(setup);
    const auto question = [&g](const QString& name, int row) {
        auto* list = g.panel().widget<QTableWidget>("cfgList");
        g.dialogShot(name, DialogKind::Question, [list, row] {
            QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier,
                              list->visualItemRect(list->item(row, 1)).center());
        });
    };
    g.press("funcSystem");
    g.press("sysRecall");
    g.shot("system-recall-empty");
    const QString folder = g.panel().home() + "/kavor/preset/preset/";
    QDir().mkpath(folder);
    for (int i = 1; i <= 12; ++i) {
        QFile file(folder + QString("preset-%1.json").arg(i * 3));
        if (!file.open(QIODevice::WriteOnly))
            qFatal("%s cannot be written.", qPrintable(file.fileName()));
    }
    g.press("configurationsBack");
    g.press("sysRecall");
    g.shot("system-recall");
    question("system-recall-question", 1);
    g.press("configurationsBack");
    g.press("sysErase");
    g.shot("system-erase");
    question("system-erase-question", 1);
    g.press("configurationsBack");
    g.press("sysStore");
    g.shot("system-store");
    g.dialogShot("system-store-keyboard", DialogKind::Keyboard, [&g] {
        auto* list = g.panel().widget<QTableWidget>("cfgList");
        QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier,
                          list->visualItemRect(list->item(0, 1)).center());
    });
    g.panel().dialogs().expectButton(DialogKind::Question, "Disable output", QMessageBox::No);
    question("system-store-question", 2);
    g.press("configurationsBack");
    g.dialogShot("system-preset-question", DialogKind::Question, [&g] { g.press("sysPreset"); });
    g.press("sysLan");
    if (!QTest::qWaitFor([&g] { return !g.panel().text("lanHostName").isEmpty(); }, 5000))
        qFatal("The network is not read.");
    g.shot("system-lan");
    g.dialogShot("keyboard-address", DialogKind::Keyboard, [&g] { g.press("lanAddress"); });
    g.panel().enter("lanPort", "5025");
    g.press("lanDynamic");
    g.shot("system-lan-edited");
    g.dialogShot("system-lan-no-cable", DialogKind::Critical, [&g] { g.press("lanApply"); });
    g.press("lanBack");
    g.module([](ChannelRecord& r) {
        for (auto* text : {&r.model, &r.serial, &r.options, &r.firmwareVersion, &r.calibrationDate})
            qstrncpy(*text, "PM,SWEEP,LIST,PATTERN,PULSE,OCX", sizeof *text);
        qstrncpy(r.serial, "WWWWWWWWWWWWWWWWWWWWWWWWWWWWWWW", sizeof r.serial);
        r.temperature = -12.34;
        r.batteryCharge = -1;
        r.batteryProtection = 0;
        qstrncpy(r.referenceOscillator, "100MHz", sizeof r.referenceOscillator);
    });
    g.shot("system-long-texts-no-battery");
    g.press("funcAbout");
    g.shot("about-long-texts");
    g.press("funcSystem");
    g.panel().dialogs().expectButton(DialogKind::Critical, "Low Battery", QMessageBox::Ok);
    g.module([](ChannelRecord& r) { r.batteryCharge = 0; });
    if (!QTest::qWaitFor([&g] { return g.panel().widget<QWidget>("sysBatteryEmpty")->isVisible(); }, 5000))
        qFatal("The empty battery is not noticed.");
    g.shot("system-battery-empty");
    qunsetenv("VELDA_NET_CLASS");
}

void headerStops(TourGuide& g) {
    g.start();
    g.module([](ChannelRecord& r) { r.batteryCurrent = 200; });
    g.panel().window().set_battery_level(55);
    g.shot("header-charging");
    g.panel().window().set_battery_level(101);
    g.shot("header-no-battery");
    g.module([](ChannelRecord& r) {
        r.batteryCurrent = -200;
        r.lowBatteryThreshold = 10;
    });
    g.dialogShot("box-low-battery", DialogKind::Critical, [&g] { g.panel().window().set_battery_level(8); });
    g.shot("header-low-battery");
    g.panel().module().stop();
    if (!QTest::qWaitFor([&g] { return !g.panel().handler().isLinkUp(); }, 5000))
        qFatal("The lost link is not noticed.");
    for (const char* page : {"Sweep", "List", "RunMode", "System", "About", "Cw"}) {
        g.press(QString("func") + page);
        g.shot(QString("link-lost-") + QString(page).toLower());
    }
    g.press("tabPattern");
    g.shot("link-lost-pattern");
    g.press("funcCw");
    g.press("tabAM");
    g.panel().enter("cwPower", "1");
    g.shot("command-failure");
}

/// A command that takes its time, one that is asked for meanwhile, and a module that has stopped answering.
void waitStops(TourGuide& g) {
    PanelFixture::Setup setup;
    setup.commandTimeoutMs = 700;
    g.start(setup);
    Sim::Fault silent;
    silent.kind = Sim::Fault::Silent;
    g.panel().module().addFault(silent);
    QTimer::singleShot(50, [&g] { g.press("sourceExternal"); });
    QTimer::singleShot(500, [&g] { g.shot("pending"); });
    g.press("rfOn");
    g.panel().window().toast()->hideImmediate();
    g.shot("no-answer");
    g.panel().module().clearFaults();
}

void boxStops(TourGuide& g) {
    g.start();
    g.dialogShot("box-no-connection", DialogKind::Critical,
                 [&g] { g.panel().window().reportError("No connection to internal veldaX module. Please restart."); });
    g.dialogShot("question", DialogKind::Question, [&g] {
        confirmAction(&g.panel().window(), "Disable output in saved configuration?",
                      "Prevent active modulations auto-start...");
    });
    splashStop(g);
}

} // namespace

PanelTour::PanelTour(Visit visit) : m_visit(std::move(visit)) {}

void PanelTour::run() {
    m_count = 0;
    TourGuide guide(m_visit, m_count);
    cwStops(guide);
    keyboardStops(guide);
    pageStops(guide);
    systemStops(guide);
    stepListStops(guide, "list", {"funcList"});
    stepListStops(guide, "pattern", {"funcCw", "tabPattern"});
    channelStops(guide);
    aboutStops(guide);
    updateStops(guide);
    headerStops(guide);
    waitStops(guide);
    boxStops(guide);
}
