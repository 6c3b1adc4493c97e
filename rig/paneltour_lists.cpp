#include "lists/table/list_files.h"
#include "lists/table/list_table.h"
#include "portable/widgets/ToastOverlay.h"
#include "portable/widgets/styles/styles.h"
#include "rig/panelfixture.h"
#include "rig/tourguide.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Kavor::HandheldGui;

namespace {

void writeFile(const QString& path, const QByteArray& content) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("%s cannot be written.", qPrintable(path));
}

/// The file browser while there are sticks, one with an unusual name, and what is said about them.
void stickStops(TourGuide& g, const QString& prefix) {
    const QTemporaryDir media;
    qputenv("VELDA_MEDIA", QFile::encodeName(media.path()));
    qputenv("VELDA_USER", "velda");
    const QString stick = media.path() + "/velda/FIELD KIT";
    for (const char* name : {"/velda/FIELD KIT", "/velda/a volume with a very long name & more of it"})
        QDir().mkpath(media.path() + name);
    const bool list = prefix == QLatin1String("list");
    const QByteArray good = list ? "frequency,power,dwell\n1 GHz,0,1 ms\n" : "on,off\n1,1\n";
    for (const char* name : {"/Band III-2.json", "/antenna_check.csv", "/hop 2.4 GHz.csv", "/x.csv"})
        writeFile(stick + name, good);
    writeFile(stick + "/bad.csv", good + "\"2,4 GHz\",0,1 ms\n");
    auto* files = g.panel().widget<ListFiles>(prefix + "Files");
    const auto open = [&](const char* button, int rows) {
        g.press(prefix + button);
        const auto offers = [&] {
            const auto* tab = g.panel().widget<QWidget>(prefix + "Place2");
            return tab && tab->isVisible();
        };
        if (!QTest::qWaitFor(offers, 5000))
            qFatal("The sticks are not found.");
        g.press(prefix + "Place1");
        if (!QTest::qWaitFor([&] { return files->rowCount() == rows; }, 5000))
            qFatal("The stick is not read.");
    };
    const auto told = [&](const char* name) {
        if (!QTest::qWaitFor([&] { return !g.panel().toast().isEmpty(); }, 5000))
            qFatal("Nothing is said.");
        g.shot(prefix + name);
        g.panel().window().toast()->hideImmediate();
    };
    open("Load", 5);
    files->setCurrentCell(3, 1);
    g.shot(prefix + "-stick-load");
    files->onCellActivated(2, 1);
    told("-stick-refused");
    g.press(prefix + "Cancel");
    open("Save", 7);
    g.shot(prefix + "-stick-save");
    g.panel().dialogs().expectKeys(QString(), {"keyA", "keyEnter"});
    files->onCellActivated(0, 1);
    told("-stick-saved");
    open("Load", 6);
    QDir(stick).removeRecursively();
    told("-stick-removed");
    g.press(prefix + "Cancel");
    qunsetenv("VELDA_MEDIA");
    qunsetenv("VELDA_USER");
}

/// Numbers that have no room beside each other, and many rows.
void longListStops(TourGuide& g, ListTable& table) {
    QString error;
    while (table.rowCount() < 10000) {
        if (!table.addStep(error))
            qFatal("%s", qPrintable(error));
    }
    for (int i = 0; i < 3; ++i) {
        const char* numbers[][2] = {
            {"2.400000000001", "keyUnit0"}, {"-12.345678", "keyUnit0"}, {"999.999999", "keyUnit2"}};
        for (int column = 1; column <= 3; ++column) {
            if (column == 3 && g.panel().hasStyle("listDwellFixed", PRESSED_WIDGET_BTN_STYLE))
                continue;
            g.panel().dialogs().expectNumber(QString(), numbers[column - 1][0], numbers[column - 1][1]);
            table.requestEdit(9995 + i, column);
        }
    }
    table.scrollToBottom();
    g.shot("list-long");
}

} // namespace

void stepListStops(TourGuide& g, const QString& prefix, const QStringList& way) {
    g.start();
    PanelFixture& panel = g.panel();
    for (const QString& button : way)
        g.press(button);
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
            g.press(prefix + "Add");
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
    panel.dialogs().expectNumber(QString(), "9999999", list ? "keyUnit0" : "keyUnit3");
    table->requestEdit(1, 1);
    if (g.panel().toast().isEmpty())
        qFatal("%s is not out of range.", qPrintable(prefix));
    g.shot(name("out-of-range"));
    panel.window().toast()->hideImmediate();
    if (list) {
        g.press("listRunSelection");
        g.shot(name("selection"));
        g.press("listRunList");
        g.press("listDwellFixed");
        g.shot(name("fixed-dwell"));
        panel.enter("listFixedDwell", "1", "keyUnit3");
        g.shot(name("fixed-dwell-second"));
        panel.enter("listFixedDwell", "200", "keyUnit3");
        g.shot(name("fixed-dwell-out-of-range"));
        panel.window().toast()->hideImmediate();
        g.dialogShot(name("question-new"), DialogKind::Question, [&] { g.press("listNew"); });
    }
    g.dialogShot(name("uploaded"), DialogKind::Information, [&] { g.press(prefix + "Upload"); });
    for (const char* file : {"hop", "Band III-2", "scan_long"}) {
        g.press(prefix + "Save");
        panel.dialogs().expect(DialogKind::Keyboard, QString(), [file](QDialog& dialog) {
            for (const QChar c : QString(file))
                QTest::keyClick(&dialog, c.toLatin1());
            pressButton(dialog, "keyEnter");
        });
        panel.widget<ListFiles>(prefix + "Files")->onCellActivated(0, 1);
    }
    g.shot(name("saved"));
    g.press(prefix + "Save");
    g.shot(name("files-save"));
    g.dialogShot(name("keyboard-filename"), DialogKind::Keyboard,
                 [&] { panel.widget<ListFiles>(prefix + "Files")->onCellActivated(0, 1); });
    g.dialogShot(name("question-overwrite"), DialogKind::Question,
                 [&] { panel.widget<ListFiles>(prefix + "Files")->onCellActivated(1, 1); });
    g.press(prefix + "Cancel");
    const QString folder = panel.home() + "/kavor/" + prefix + "/1/";
    for (int i = 0; i < 12; ++i)
        QFile::copy(folder + "hop.json", folder + QString("scan %1.json").arg(i + 1));
    QFile::copy(folder + "hop.json", folder + "a " + QString(180, 'n') + ".json");
    g.press(prefix + "Load");
    panel.widget<ListFiles>(prefix + "Files")->setCurrentCell(4, 1);
    g.shot(name("files-load"));
    g.press(prefix + "Cancel");
    g.press(prefix + "Delete");
    g.shot(name("files-delete"));
    g.dialogShot(name("question-delete"), DialogKind::Question,
                 [&] { panel.widget<ListFiles>(prefix + "Files")->onCellActivated(0, 1); });
    g.press(prefix + "Cancel");
    g.dialogShot(name("keyboard-go-to"), DialogKind::Keyboard, [&] { g.press(prefix + "Position"); });
    stickStops(g, prefix);
    g.press("rfOn");
    g.press(prefix + "Enable");
    g.press("modOn");
    g.shot(name("running"));
    if (list)
        longListStops(g, *table);
}
