#include "common/update/update_texts.h"
#include "lists/list_files.h"
#include "lists/list_table.h"
#include "portable/screens/update_boxes.h"
#include "portable/screens/update_dialog.h"
#include "portable/screens/update_packages.h"
#include "portable/widgets/ToastOverlay.h"
#include "portable/widgets/msgbox.h"
#include "portable/widgets/vkeyboard.h"
#include "tests/gui/panelfixture.h"
#include "tests/gui/updatestick.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QGraphicsEffect>
#include <QLabel>
#include <QMovie>
#include <QPainter>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <tuple>

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
            toast->graphicsEffect()->setEnabled(false);
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

/// The table page with some steps, the edit of a cell, the refusals, and the file browser of one of the list
/// screens.
void stepListPictures(Gallery& g, const QString& prefix, const QStringList& way) {
    g.start();
    PanelFixture& panel = g.panel();
    for (const QString& button : way)
        panel.press(button);
    const auto name = [&prefix](const char* part) {
        return prefix + QLatin1Char('-') + QLatin1String(part);
    };
    g.shot(name("new"));
    const bool list = prefix == QLatin1String("list");
    const QStringList first{"2.4", "100", "433.92", "915", "5.8", "1.57542", "88.1"};
    const QStringList second{"5", "-10", "0", "-3.5", "2.25", "-40", "-12.75"};
    const QStringList third{"500", "1", "500", "250", "500", "10", "75"};
    auto* table = panel.widget<ListTable>(prefix + "Table");
    for (int row = 0; row < first.size(); ++row) {
        if (row > 0)
            panel.press(prefix + "Add");
        const auto edit = [&](int column, const QString& number, const QString& key) {
            panel.dialogs().expectNumber(QString(), number, key);
            table->requestEdit(row, column);
        };
        if (list) {
            edit(1, first.at(row), row == 0 || row == 4 || row == 5 ? "keyUnit0" : "keyUnit1");
            edit(2, second.at(row), "keyUnit0");
            edit(3, third.at(row), row == 1 || row == 5 ? "keyUnit2" : "keyUnit1");
            if (row % 3 == 1)
                table->requestEdit(row, 4);
        } else {
            edit(1, third.at(row), "keyUnit1");
            edit(2, first.at(row), "keyUnit1");
            edit(3, QString::number(row + 1), row == 2 ? "keyUnit1" : "keyUnit0");
        }
    }
    table->setCurrentCell(1, 1);
    table->scrollToTop();
    g.shot(name("edited"));
    g.dialogShot(name("keyboard"), DialogKind::Keyboard, [&] { table->requestEdit(1, list ? 3 : 1); });
    g.dialogShot(name("keyboard-second"), DialogKind::Keyboard, [&] { table->requestEdit(1, list ? 2 : 3); });
    panel.dialogs().expectNumber(QString(), "9999999", "keyUnit0");
    table->requestEdit(1, 1);
    g.shot(name("out-of-range"));
    panel.window().toast()->hideImmediate();
    if (list) {
        panel.press("listDwellFixed");
        g.shot(name("fixed-dwell"));
        panel.enter("listFixedDwell", "1", "keyUnit3");
        g.shot(name("fixed-dwell-second"));
        panel.enter("listFixedDwell", "200", "keyUnit3");
        g.shot(name("fixed-dwell-out-of-range"));
        panel.window().toast()->hideImmediate();
        g.dialogShot(name("question-new"), DialogKind::Question, [&] { panel.press("listNew"); });
    }
    g.dialogShot(name("uploaded"), DialogKind::Information, [&] { panel.press(prefix + "Upload"); });
    for (const char* file : {"hop", "Band III-2", "scan_long"}) {
        panel.press(prefix + "Save");
        panel.dialogs().expect(DialogKind::Keyboard, QString(), [file](QDialog& dialog) {
            for (const QChar c : QString(file))
                QTest::keyClick(&dialog, c.toLatin1());
            pressButton(dialog, "keyEnter");
        });
        panel.widget<ListFiles>(prefix + "Files")->onCellActivated(0, 1);
    }
    g.shot(name("saved"));
    panel.press(prefix + "Save");
    g.shot(name("files-save"));
    g.dialogShot(name("keyboard-filename"), DialogKind::Keyboard,
                 [&] { panel.widget<ListFiles>(prefix + "Files")->onCellActivated(0, 1); });
    g.dialogShot(name("question-overwrite"), DialogKind::Question,
                 [&] { panel.widget<ListFiles>(prefix + "Files")->onCellActivated(1, 1); });
    panel.press(prefix + "Cancel");
    const QString folder = panel.home() + "/kavor/" + prefix + "/1/";
    for (int i = 0; i < 12; ++i)
        QFile::copy(folder + "hop.json", folder + QString("scan %1.json").arg(i + 1));
    QFile::copy(folder + "hop.json", folder + "a " + QString(180, 'n') + ".json");
    panel.press(prefix + "Load");
    panel.widget<ListFiles>(prefix + "Files")->setCurrentCell(4, 1);
    g.shot(name("files-load"));
    panel.press(prefix + "Cancel");
    panel.press("rfOn");
    panel.press(prefix + "Enable");
    panel.press("modOn");
    g.shot(name("running"));
}

/// A stick with a package of each kind, what is asked about them, and how their installation shows and ends.
void updatePictures(Gallery& g) {
    UpdateStick stick;
    UpdatePackages updates;
    PanelFixture::Setup setup;
    setup.updateEntry = &updates;
    const auto openList = [&g](int packages) {
        g.panel().press("funcSystem");
        g.panel().press("sysUpdate");
        const auto* list = g.panel().widget<QTableWidget>("fwList");
        if (!QTest::qWaitFor([&] { return list->rowCount() == packages; }, 5000))
            qFatal("The packages are not found.");
    };
    const auto choose = [&g](int row) {
        auto* list = g.panel().widget<QTableWidget>("fwList");
        QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier,
                          list->visualItemRect(list->item(row, 1)).center());
    };
    g.start(setup);
    openList(0);
    const QList<QLabel*> labels = g.panel().widget<QWidget>("pagePackages")->findChildren<QLabel*>();
    const auto saysSo = [&labels] {
        return std::any_of(labels.begin(), labels.end(),
                           [](const QLabel* label) { return label->text() == "No update package found"; });
    };
    if (!QTest::qWaitFor(saysSo, 5000))
        qFatal("The look for packages does not end.");
    g.shot("update-list-empty");
    stick.addFpga("1-fpga", "1.4", QByteArray(5000, 'x'));
    stick.addModule("2-module", "5.0", "module software");
    stick.addSoftware("3-software", "2.1.0", {});
    openList(3);
    g.shot("update-list");
    for (const auto& row : {"fpga", "module", "software"}) {
        openList(3);
        const int index = QStringList{"fpga", "module", "software"}.indexOf(row);
        g.dialogShot(QString("update-question-") + row, DialogKind::Question, [&] { choose(index); });
    }
    QWidget* window = &g.panel().window();
    g.dialogShot("update-installing", DialogKind::Progress, [&] {
        UpdateDialog dialog(window, "installProgress", "Wait until upgrade process finished");
        QTimer::singleShot(1500, &dialog, &UpdateDialog::end);
        DialogRunner::current().run(dialog, DialogKind::Progress, dialog.text());
    });
    for (const auto& [name, phase, percent] :
         {std::make_tuple("begin", -1, 0), std::make_tuple("transfer", 0, 37), std::make_tuple("programming", 1, 29),
          std::make_tuple("verifying", 1, 83)}) {
        g.dialogShot(QString("update-fpga-") + name, DialogKind::Progress, [&, phase = phase, percent = percent] {
            FpgaProgressDialog dialog(window);
            const FpgaProgressDialog::Display display = FpgaProgressDialog::displayOf(phase, percent);
            if (phase >= 0) {
                dialog.setInfoText(display.text);
                dialog.setProgress(display.percent);
            }
            QTimer::singleShot(1500, &dialog, &UpdateDialog::end);
            DialogRunner::current().run(dialog, DialogKind::Progress, dialog.text());
        });
    }
    const UpdateBoxes boxes(window, "FPGA Update", 1000);
    g.dialogShot("update-fpga-done", DialogKind::Information, [&] { boxes.information(UpdateTexts::fpgaDone()); });
    const QString path = stick.package("a-folder-with-quite-a-long-name/and-another-one-in-it") + "/image.fpga";
    int number = 0;
    for (const QString& text :
         {UpdateTexts::imageRefused(), UpdateTexts::fpgaFailed(), UpdateTexts::cannotOpenImage(path),
          QString("Upgrade failed. Error code: -4"),
          QString("Failed to copy %1 to %2").arg(path, "/home/velda/kavor/upgrade/veldax/module-software-5.0.bin")})
        g.dialogShot(QString("update-failure-%1").arg(++number), DialogKind::Critical, [&] { boxes.failure(text); });
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

    stepListPictures(gallery, "list", {"funcList"});
    stepListPictures(gallery, "pattern", {"funcCw", "tabPattern"});
    updatePictures(gallery);
    headerPictures(gallery);
    boxPictures(gallery);
    gallery.writeIndex();
    std::printf("%d pictures\n", gallery.count());
    return 0;
}
