#include "portable/widgets/ToastOverlay.h"
#include "portable/widgets/msgbox.h"
#include "portable/widgets/vkeyboard.h"
#include "tests/gui/panelfixture.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QMovie>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>
#include <cstdio>

using namespace Kavor::HandheldGui;

namespace {

/// Takes the pictures: the window with whatever stands above it, as the instrument's screen composes them.
class Gallery {
public:
    explicit Gallery(const QString& folder) : m_folder(folder) {}

    void start(const PanelFixture::Setup& setup = PanelFixture::Setup()) {
        m_panel.reset();
        m_panel = std::make_unique<PanelFixture>(setup);
        module([](ChannelRecord& r) {
            r.frequency.value = 1.5e9;
            r.power.value = -7.5;
            r.batteryCharge = 78;
            r.batteryCurrent = -300;
        });
    }

    PanelFixture& panel() { return *m_panel; }

    void module(const std::function<void(ChannelRecord&)>& change) {
        panel().module().modify(0, change);
        panel().window().refreshFromModule();
    }

    void shot(const QString& name, QWidget* above = nullptr) {
        QCoreApplication::processEvents();
        const QWidget& window = panel().window();
        QPixmap picture = panel().window().grab();
        QPainter painter(&picture);
        if (above)
            painter.drawPixmap(above->mapToGlobal(QPoint()) - window.mapToGlobal(QPoint()), above->grab());
        ToastOverlay* toast = panel().window().toast();
        if (toast->isTelling()) {
            QPixmap bubble(toast->size());
            bubble.fill(Qt::transparent);
            toast->setGraphicsEffect(nullptr);
            toast->render(&bubble, QPoint(), QRegion(), QWidget::DrawChildren);
            painter.setClipRegion(toast->mask().translated(toast->pos() - window.pos()));
            painter.drawPixmap(toast->pos() - window.pos(), bubble);
        }
        painter.end();
        save(name, picture);
    }

    void save(const QString& name, const QPixmap& picture) {
        const QString file = name + QStringLiteral(".png");
        if (!picture.save(QDir(m_folder).filePath(file)))
            qFatal("%s cannot be written.", qPrintable(file));
        m_names << name;
    }

    /// Opens a dialog by pressing, pictures it and rejects it.
    void dialogShot(const QString& name, DialogKind kind, const std::function<void()>& open) {
        panel().dialogs().expect(kind, QString(), [this, name](QDialog& dialog) {
            shot(name, &dialog);
            dialog.reject();
        });
        open();
        QCoreApplication::processEvents(); // some boxes come from the event loop
    }

    void writeIndex() {
        QFile index(QDir(m_folder).filePath(QStringLiteral("index.html")));
        if (!index.open(QIODevice::WriteOnly | QIODevice::Text))
            qFatal("index.html cannot be written.");
        QTextStream out(&index);
        out << "<!doctype html><meta charset=\"utf-8\"><title>Panel pictures</title>\n"
               "<style>body{background:#222;color:#ddd;font-family:sans-serif}img{width:640px;margin:4px}"
               "figure{display:inline-block;margin:8px}</style>\n";
        for (const QString& name : m_names)
            out << "<figure><img src=\"" << name << ".png\"><figcaption>" << name << "</figcaption></figure>\n";
    }

    int count() const { return m_names.size(); }

private:
    QString m_folder;
    QStringList m_names;
    std::unique_ptr<PanelFixture> m_panel;
};

void cwPictures(Gallery& g) {
    g.start();
    g.shot("cw-rf-off");
    g.panel().press("rfOn");
    g.panel().press("enableAM");
    g.panel().press("modOn");
    g.shot("cw-am-running");
    g.panel().press("modOff");
    g.panel().press("sourceExternal");
    g.shot("cw-am-external");
    for (const char* tab : {"FM", "PM", "Pulse"}) {
        g.panel().press(QString("tab") + tab);
        g.shot(QString("cw-tab-") + QString(tab).toLower());
    }
    g.panel().press("tabFM");
    g.panel().press("enableFM");
    g.shot("cw-conflict");
    g.start();
    g.panel().enter("cwFrequency", "7", "keyUnit0");
    g.shot("cw-out-of-range");
    g.start();
    g.panel().window().setFocus();
    auto* box = g.panel().widget<QComboBox>("cwFrequencyUnit");
    box->showPopup();
    g.shot("cw-unit-list", box->view()->window());
    box->hidePopup();
}

void keyboardPictures(Gallery& g) {
    g.start();
    g.dialogShot("keyboard-frequency", DialogKind::Keyboard, [&g] { g.panel().press("cwFrequency"); });
    g.dialogShot("keyboard-power", DialogKind::Keyboard, [&g] { g.panel().press("cwPower"); });
    g.dialogShot("keyboard-phase", DialogKind::Keyboard, [&g] { g.panel().press("cwPhase"); });
    g.dialogShot("keyboard-address", DialogKind::Keyboard, [&g] {
        VirtKeyboard keyboard(&g.panel().window(), "Enter static IP for device", QString(), "192.168.1.20");
        keyboard.setIPMask();
        DialogRunner::current().run(keyboard, DialogKind::Keyboard, "Enter static IP for device");
    });
    g.dialogShot("keyboard-text", DialogKind::Keyboard, [&g] {
        VirtKeyboard keyboard(&g.panel().window(), "List filename", QString(), "My list");
        keyboard.setTextMode(32);
        DialogRunner::current().run(keyboard, DialogKind::Keyboard, "List filename");
    });
}

void pagePictures(Gallery& g) {
    g.start();
    for (const char* page : {"Sweep", "List", "RunMode", "System", "About"}) {
        g.panel().press(QString("func") + page);
        g.shot(QString("page-") + QString(page).toLower());
    }
    g.panel().press("funcCw");
    g.panel().press("tabPattern");
    g.shot("page-pattern");
}

/// A folder of saved configurations and a network with long names.
void systemPictures(Gallery& g) {
    QTemporaryDir home;
    qputenv("VELDA_HOME", QFile::encodeName(home.path()));
    PanelFixture::Setup setup;
    setup.readNetwork = [] {
        NetworkFacts facts;
        facts.hostName = "velda-handheld-signal-generator-000101-laboratory-3-bench-twelve";
        facts.interfaces = {{false, "00:1B:44:11:3A:B7", {{"192.168.100.150", "255.255.255.0"}}}};
        return facts;
    };
    g.start(setup);
    g.panel().press("funcSystem");
    g.panel().press("sysRecall");
    g.shot("system-recall-empty");
    const QString folder = home.path() + "/kavor/preset/preset/";
    QDir().mkpath(folder);
    for (int i = 1; i <= 12; ++i) {
        QFile file(folder + QString("preset-%1.json").arg(i * 3));
        if (!file.open(QIODevice::WriteOnly))
            qFatal("%s cannot be written.", qPrintable(file.fileName()));
    }
    g.panel().press("configurationsBack");
    g.panel().press("sysStore");
    g.shot("system-store");
    g.panel().press("configurationsBack");
    g.panel().press("sysErase");
    g.shot("system-erase");
    g.dialogShot("system-preset-question", DialogKind::Question, [&g] {
        g.panel().press("configurationsBack");
        g.panel().press("sysPreset");
    });
    g.panel().press("sysLan");
    if (!QTest::qWaitFor([&g] { return !g.panel().text("lanHostName").isEmpty(); }, 5000))
        qFatal("The network is not read.");
    g.shot("system-lan");
    g.panel().enter("lanPort", "5025");
    g.panel().press("lanDynamic");
    g.shot("system-lan-edited");
    g.panel().press("lanBack");
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
    g.panel().press("funcAbout");
    g.shot("about-long-texts");
    g.panel().press("funcSystem");
    g.panel().dialogs().expectButton(DialogKind::Critical, "Low Battery", QMessageBox::Ok);
    g.module([](ChannelRecord& r) { r.batteryCharge = 0; });
    if (!QTest::qWaitFor([&g] { return g.panel().widget<QWidget>("sysBatteryEmpty")->isVisible(); }, 5000))
        qFatal("The empty battery is not noticed.");
    g.shot("system-battery-empty");
    qunsetenv("VELDA_HOME");
}

void headerPictures(Gallery& g) {
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
    g.shot("link-lost");
    g.panel().enter("cwPower", "1");
    g.shot("command-failure");
}

void boxPictures(Gallery& g) {
    g.start();
    g.dialogShot("box-no-connection", DialogKind::Critical,
                 [&g] { g.panel().window().reportError("No connection to internal veldaX module. Please restart."); });
    g.dialogShot("question", DialogKind::Question, [&g] {
        confirmAction(&g.panel().window(), "Disable output in saved configuration?",
                      "Prevent active modulations auto-start...");
    });
    g.dialogShot("box-progress", DialogKind::Progress, [&g] {
        cMessageBox box(&g.panel().window(), "Update in progress", QMessageBox::Cancel, QSize(640, 320), 50);
        box.setProgressBar(QRect(48, 120, 544, 64));
        DialogRunner::current().run(box, DialogKind::Progress, "Update in progress");
    });
    QMovie movie(":/logo.gif");
    for (int frame = 0; frame < 18; ++frame) // a GIF is read forwards
        movie.jumpToNextFrame();
    g.save("splash", movie.currentPixmap());
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    if (application.arguments().size() != 2) {
        std::fprintf(stderr, "usage: panel_gallery DIR\n");
        return 2;
    }
    Gallery gallery(application.arguments().at(1));
    cwPictures(gallery);
    keyboardPictures(gallery);
    pagePictures(gallery);
    systemPictures(gallery);
    headerPictures(gallery);
    boxPictures(gallery);
    gallery.writeIndex();
    std::printf("%d pictures\n", gallery.count());
    return 0;
}
